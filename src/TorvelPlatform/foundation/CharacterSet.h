#pragma once

#include <memory>
#include <string_view>

namespace torvel {

// An immutable set of Unicode scalar values. Cheap to copy, safe from any thread.
class CharacterSet {
  public:
    // The scalars of a UTF-8 text; malformed bytes count as U+FFFD.
    static CharacterSet charactersIn(std::string_view text);
    // Every scalar from `first` to `last`, both included.
    static CharacterSet range(char32_t first, char32_t last);

    // Unicode general category Nd.
    static const CharacterSet& decimalDigits();
    // Unicode general categories L* and M*.
    static const CharacterSet& letters();
    // The two above and the other numbers (L*, M*, N*).
    static const CharacterSet& alphanumerics();
    // Unicode general category Zs and the tab.
    static const CharacterSet& whitespaces();
    // Unicode property White_Space: the whitespaces, Zl, Zp, U+000A to U+000D and U+0085.
    static const CharacterSet& whitespacesAndNewlines();
    // What RFC 3986 allows unescaped in a query: ALPHA / DIGIT / "-._~" / sub-delims / ":@/?".
    static const CharacterSet& urlQueryAllowed();
    // What RFC 3986 allows unescaped in a path: as in a query, without "?".
    static const CharacterSet& urlPathAllowed();

    // Whether a scalar belongs to the set.
    bool contains(char32_t scalar) const;
    // The text without the set's scalars at both its ends.
    std::string_view trimming(std::string_view text) const;
    // The scalars of either set, or all that are not in this one.
    CharacterSet unionWith(const CharacterSet& other) const;
    CharacterSet inverted() const;

  private:
    struct Set;
    explicit CharacterSet(std::shared_ptr<const Set> set) : m_set(std::move(set)) {}
    std::shared_ptr<const Set> m_set;
};

}  // namespace torvel
