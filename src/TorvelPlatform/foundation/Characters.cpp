#include "TorvelPlatform/foundation/Characters.h"

#include "TorvelPlatform/foundation/FatalError.h"

#include <memory>

#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace torvel {
namespace {

bool isASCII(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

struct Walk {
    std::size_t characters = 0;
    std::size_t length = 0;
};

// Walks over at most `limit` characters. Made per call: an iterator keeps pointing at its text.
Walk walkClusters(std::string_view text, std::size_t limit) {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> boundaries(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    const std::unique_ptr<UText, decltype(&utext_close)> source(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &error), &utext_close);
    if (U_SUCCESS(error)) boundaries->setText(source.get(), error);
    if (U_FAILURE(error)) fatalError("Characters: the Unicode library has no data");

    Walk walk;
    for (std::int32_t end; walk.characters < limit && (end = boundaries->next()) != icu::BreakIterator::DONE;
         ++walk.characters)
        walk.length = static_cast<std::size_t>(end);
    return walk;
}

// In ASCII every byte is a character but CR LF. A character that anything else may still join is not ASCII's
// to decide.
Walk walk(std::string_view text, std::size_t limit) {
    Walk walk;
    while (walk.length < text.size() && walk.characters < limit) {
        if (!isASCII(text[walk.length])) return walkClusters(text, limit);
        walk.length += text.substr(walk.length).starts_with("\r\n") ? 2 : 1;
        ++walk.characters;
    }
    const bool joined = walk.length < text.size() && !isASCII(text[walk.length]) && walk.characters > 0;
    return joined ? walkClusters(text, limit) : walk;
}

}  // namespace

std::size_t characterCount(std::string_view text) { return walk(text, text.size()).characters; }

std::size_t characterPrefixLength(std::string_view text, std::size_t count) {
    return walk(text, count).length;
}

}  // namespace torvel
