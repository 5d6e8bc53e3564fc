#include "Fuzz.h"
#include "cli/Options.h"

#include <algorithm>
#include <cstring>
#include <iostream>

using namespace torvel::cli;

// A line a word.
void fuzz(std::string_view bytes) {
    std::cerr.setstate(std::ios::failbit);
    constexpr Option options[] = {
        {"TARGET", "", "", Occurs::once},
        {"-X", "METHOD", ""},
        {"--header", "FIELD", "", Occurs::anyTimes},
        {"--port", "N", "", Occurs::atMostOnce, checkPort},
    };
    std::string lines(bytes);
    std::vector<char*> words;
    std::replace(lines.begin(), lines.end(), '\n', '\0');
    for (char* word = lines.data(); word <= lines.data() + lines.size(); word += std::strlen(word) + 1)
        words.push_back(word);
    const auto arguments = Arguments::parse("fuzz", options, words);
    if (!arguments || arguments->has("--help")) return;
    mustHold(arguments->text("TARGET").has_value());
    mustHold(arguments->number("--port", 1) >= 0 && arguments->number("--port", 1) <= 65535);
}
