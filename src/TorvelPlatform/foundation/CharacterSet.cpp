#include "TorvelPlatform/foundation/CharacterSet.h"

#include <array>

#include <unicode/uniset.h>
#include <unicode/unistr.h>

namespace torvel {

struct CharacterSet::Set {
    explicit Set(icu::UnicodeSet characters) : unicode(std::move(characters)) {
        unicode.freeze();
        for (char32_t c = 0; c < ascii.size(); ++c) ascii[c] = unicode.contains(static_cast<UChar32>(c));
    }

    static CharacterSet make(icu::UnicodeSet characters) {
        return CharacterSet(std::make_shared<const Set>(std::move(characters)));
    }
    static CharacterSet ofPattern(const char* pattern) {
        UErrorCode status = U_ZERO_ERROR;
        return make(icu::UnicodeSet(icu::UnicodeString::fromUTF8(pattern), status));
    }

    icu::UnicodeSet unicode;
    std::array<bool, 128> ascii{};  // most questions are about ASCII
};

CharacterSet CharacterSet::charactersIn(std::string_view text) {
    const auto length = static_cast<std::int32_t>(text.size());
    icu::UnicodeSet characters;
    characters.addAll(icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), length)));
    return Set::make(std::move(characters));
}

CharacterSet CharacterSet::range(char32_t first, char32_t last) {
    return Set::make(icu::UnicodeSet(static_cast<UChar32>(first), static_cast<UChar32>(last)));
}

const CharacterSet& CharacterSet::decimalDigits() {
    static const CharacterSet set = Set::ofPattern("[:Nd:]");
    return set;
}

const CharacterSet& CharacterSet::letters() {
    static const CharacterSet set = Set::ofPattern("[[:L:][:M:]]");
    return set;
}

const CharacterSet& CharacterSet::alphanumerics() {
    static const CharacterSet set = Set::ofPattern("[[:L:][:M:][:N:]]");
    return set;
}

const CharacterSet& CharacterSet::whitespaces() {
    static const CharacterSet set = Set::ofPattern("[[:Zs:]\\t]");
    return set;
}

const CharacterSet& CharacterSet::whitespacesAndNewlines() {
    static const CharacterSet set = Set::ofPattern("[:White_Space:]");
    return set;
}

const CharacterSet& CharacterSet::urlQueryAllowed() {
    static const CharacterSet set = urlPathAllowed().unionWith(charactersIn("?"));
    return set;
}

const CharacterSet& CharacterSet::urlPathAllowed() {
    static const CharacterSet set = Set::ofPattern("[A-Za-z0-9\\-._~!\\$\\&'()*+,;=\\:@/]");
    return set;
}

bool CharacterSet::contains(char32_t scalar) const {
    if (scalar < m_set->ascii.size()) return m_set->ascii[scalar];
    return m_set->unicode.contains(static_cast<UChar32>(scalar));
}

std::string_view CharacterSet::trimming(std::string_view text) const {
    const auto stays = [this](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < m_set->ascii.size() && !m_set->ascii[byte];
    };
    // Most texts have nothing to trim.
    if (text.empty() || (stays(text.front()) && stays(text.back()))) return text;
    const auto length = static_cast<std::int32_t>(text.size());
    const std::int32_t end = m_set->unicode.spanBackUTF8(text.data(), length, USET_SPAN_CONTAINED);
    const std::int32_t start = m_set->unicode.spanUTF8(text.data(), end, USET_SPAN_CONTAINED);
    return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

CharacterSet CharacterSet::unionWith(const CharacterSet& other) const {
    icu::UnicodeSet both;
    both.addAll(m_set->unicode).addAll(other.m_set->unicode);
    return Set::make(std::move(both));
}

CharacterSet CharacterSet::inverted() const {
    icu::UnicodeSet others;
    others.addAll(m_set->unicode).complement();
    return Set::make(std::move(others));
}

}  // namespace torvel
