#include "TorvelPlatform/foundation/Characters.h"

#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/UnicodeText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace torvel {
namespace {

// Not zero when one of eight bytes is not ASCII or is a CR.
std::uint64_t specialBytes(const char* bytes) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    const std::uint64_t zeroForCR = word ^ '\r' * ones;
    return (word | ((zeroForCR - ones) & ~zeroForCR)) & 0x80 * ones;
}

// Whether every byte is a character by itself whatever stands beside it: ASCII, and no half of a CR LF.
inline bool isPlain(std::string_view text) {
    if (text.size() < 8)
        return std::none_of(text.begin(), text.end(),
                            [](char c) { return (static_cast<unsigned char>(c) & 0x80) != 0 || c == '\r'; });
    std::uint64_t special = specialBytes(text.data() + text.size() - 8);
    for (std::size_t i = 0; i + 8 < text.size(); i += 8) special |= specialBytes(text.data() + i);
    return special == 0;
}

// Calls `visit` with the end of each character in turn while it returns true. The iterator is made per call:
// it keeps pointing at its text.
template <class Visit>
void visitClusters(std::string_view text, Visit visit) {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> boundaries(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    const std::unique_ptr<UText, decltype(&utext_close)> source(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &error), &utext_close);
    if (U_SUCCESS(error)) boundaries->setText(source.get(), error);
    if (U_FAILURE(error)) fatalError("Characters: the Unicode library has no data");

    for (std::int32_t end; (end = boundaries->next()) != icu::BreakIterator::DONE;)
        if (!visit(static_cast<std::size_t>(end))) return;
}

// Walks over at most `limit` characters.
[[gnu::noinline]] CharacterPrefix prefixByClusters(std::string_view text, std::size_t limit) {
    CharacterPrefix prefix;
    if (limit == 0) return prefix;
    visitClusters(text, [&](std::size_t end) {
        prefix.length = end;
        return ++prefix.count < limit;
    });
    return prefix;
}

}  // namespace

std::size_t characterCount(std::string_view text) {
    return isPlain(text) ? text.size() : prefixByClusters(text, text.size()).count;
}

CharacterPrefix characterPrefix(std::string_view text, std::size_t count) {
    // The byte behind the last character must not join it either.
    const std::string_view seen = count < text.size() ? text.substr(0, count + 1) : text;
    if (!isPlain(seen)) return prefixByClusters(text, count);
    const std::size_t length = std::min(count, text.size());
    return {length, length};
}

std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> found;
    found.reserve(text.size());
    if (isPlain(text)) {
        for (std::size_t i = 0; i < text.size(); ++i) found.push_back(text.substr(i, 1));
        return found;
    }
    std::size_t start = 0;
    visitClusters(text, [&](std::size_t end) {
        found.push_back(text.substr(start, end - start));
        start = end;
        return true;
    });
    return found;
}

std::u32string unicodeScalars(std::string_view text) {
    const icu::UnicodeString source = unicodeText(text);
    std::u32string scalars;
    for (std::int32_t i = 0; i < source.length(); i = source.moveIndex32(i, 1))
        scalars.push_back(static_cast<char32_t>(source.char32At(i)));
    return scalars;
}

}  // namespace torvel
