#include "TorvelLibrary/crypto/RandomText.h"

#include "TorvelLibrary/crypto/RandomSource.h"

#include <algorithm>

namespace torvel {
namespace {

// Every class of characters has 130 of the draws, which 26 letters and 10 digits divide evenly.
constexpr std::uint16_t drawsPerClass = 130;

// In 16 bits as well, so that vectors hold it.
std::uint16_t character(std::uint16_t draw) {
    const bool isUpper = draw >= drawsPerClass, isDigit = draw >= 2 * drawsPerClass;
    const auto within = static_cast<std::uint16_t>(draw - drawsPerClass * (isUpper + isDigit));
    const int letter = (isUpper ? 'A' : 'a') + within / (drawsPerClass / 26);
    const int other = draw >= 3 * drawsPerClass ? ' ' : '0' + within / (drawsPerClass / 10);
    return static_cast<std::uint16_t>(isDigit ? other : letter);
}

// All at once: no branch and no table depends on the draws for a password.
std::array<char, 16> characters(const RandomSource::Batch& draws) {
    RandomSource::Batch wide;
    std::array<char, 16> text;
    std::transform(draws.begin(), draws.end(), wide.begin(), character);
    std::transform(wide.begin(), wide.end(), text.begin(),
                   [](std::uint16_t c) { return static_cast<char>(c); });
    return text;
}

}  // namespace

std::string RandomText::make(std::int64_t length, bool justLowerCase, bool whitespace) {
    if (length <= 0) return {};
    RandomSource& source = RandomSource::ofThisThread();
    const auto draws = static_cast<std::uint16_t>(drawsPerClass * (justLowerCase ? 1 : whitespace ? 4 : 3));
    std::string text(static_cast<std::size_t>(length), '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        for (const char next : characters(source.batchBelow(draws))) {
            if (size == text.size()) break;
            text[size] = next;
            const bool secondSpace = next == ' ' && size > 0 && text[size - 1] == ' ';
            size += secondSpace ? 0 : 1;
        }
    }
    return text;
}

IVText RandomText::makeIV() { return characters(RandomSource::ofThisThread().batchBelow(3 * drawsPerClass)); }

}  // namespace torvel
