#include "TorvelPlatform/foundation/Characters.h"

#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/UnicodeText.h"

#include <memory>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace torvel {
namespace {

// Whether every byte is a character by itself whatever stands beside it: ASCII, and no half of a CR LF.
bool isPlain(std::string_view text) {
    unsigned char special = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        special |= static_cast<unsigned char>((byte & 0x80) | (byte == '\r'));
    }
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

struct Walk {
    std::size_t characters = 0;
    std::size_t length = 0;
};

// Walks over at most `limit` characters.
Walk walkClusters(std::string_view text, std::size_t limit) {
    Walk walk;
    if (limit == 0) return walk;
    visitClusters(text, [&](std::size_t end) {
        walk.length = end;
        return ++walk.characters < limit;
    });
    return walk;
}

Walk walk(std::string_view text, std::size_t limit) {
    // The byte behind the last character must not join it either.
    const std::string_view seen = limit < text.size() ? text.substr(0, limit + 1) : text;
    if (!isPlain(seen)) return walkClusters(text, limit);
    const std::size_t length = limit < text.size() ? limit : text.size();
    return {length, length};
}

}  // namespace

std::size_t characterCount(std::string_view text) { return walk(text, text.size()).characters; }

std::size_t characterPrefixLength(std::string_view text, std::size_t count) {
    return walk(text, count).length;
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
