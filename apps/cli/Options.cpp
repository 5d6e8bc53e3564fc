#include "cli/Options.h"

#include "TorvelPlatform/foundation/Characters.h"
#include "cli/Command.h"
#include "cli/Output.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace torvel::cli {
namespace {

constexpr Option helpOption{"--help", "", "this page"};

bool isPosition(const Option& option) { return !option.name.starts_with('-'); }

// The whole text as a number; absent when it is none.
std::optional<double> numberOf(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string quoted(std::string_view text) { return std::string("'").append(text).append("'"); }

// The words of a command line, one after the other, against the table.
class Reader {
  public:
    using Values = std::map<std::string, std::vector<std::string>, std::less<>>;

    Reader(std::span<const Option> options, std::span<char* const> words, Values& values)
        : m_options(options), m_words(words), m_values(values) {}

    // What is wrong; absent when all is read.
    std::optional<std::string> read() {
        bool positionsOnly = false;
        while (m_next < m_words.size()) {
            const std::string_view word = m_words[m_next++];
            std::optional<std::string> fault;
            if (!positionsOnly && word == "--")
                positionsOnly = true;
            else if (!positionsOnly && word.size() > 1 && word.front() == '-')
                fault = readOption(word);
            else
                fault = readPosition(word);
            if (fault) return fault;
        }
        return missing();
    }

  private:
    const Option* find(std::string_view name) const {
        if (name == helpOption.name || name == "-h") return &helpOption;
        const auto found = std::ranges::find(m_options, name, &Option::name);
        return found == m_options.end() || isPosition(*found) ? nullptr : &*found;
    }

    std::optional<std::string> readOption(std::string_view word) {
        const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string_view::npos;
        const std::string_view name = word.substr(0, equals);
        const Option* const option = find(name);
        if (option == nullptr) return "there is no option " + quoted(name);
        if (option->value.empty()) {
            if (equals != std::string_view::npos) return std::string(name) + " takes no value";
            return add(*option, "");
        }
        if (equals != std::string_view::npos) return add(*option, word.substr(equals + 1));
        // Another option's name is not taken for a value: it is rather that the value was forgotten.
        if (m_next == m_words.size() || find(m_words[m_next]) != nullptr)
            return std::string(name) + " needs a value, " + std::string(option->value);
        return add(*option, m_words[m_next++]);
    }

    std::optional<std::string> readPosition(std::string_view word) {
        const auto takesIt = [this](const Option& option) {
            return isPosition(option) &&
                   (option.occurs == Occurs::anyTimes || !m_values.contains(option.name));
        };
        const auto option = std::ranges::find_if(m_options, takesIt);
        if (option == m_options.end()) return quoted(word) + " is one argument too many";
        return add(*option, word);
    }

    std::optional<std::string> add(const Option& option, std::string_view value) {
        if (option.check != nullptr) {
            if (const auto fault = option.check(value))
                return std::string(option.name) + ": " + quoted(value) + " " + *fault;
        }
        auto& values = m_values[std::string(option.name)];
        values.emplace_back(value);
        if (values.size() > 1 && option.occurs != Occurs::anyTimes)
            return std::string(option.name) + " is given twice";
        return std::nullopt;
    }

    std::optional<std::string> missing() const {
        if (m_values.contains(helpOption.name)) return std::nullopt;
        for (const Option& option : m_options) {
            if (option.occurs == Occurs::once && !m_values.contains(option.name))
                return std::string(option.name) + " is missing";
        }
        return std::nullopt;
    }

    std::span<const Option> m_options;
    std::span<char* const> m_words;
    std::size_t m_next = 0;
    Values& m_values;
};

// "-X METHOD" as the help writes it.
std::string spelt(const Option& option) {
    std::string text(option.name);
    if (!option.value.empty()) text.append(1, ' ').append(option.value);
    return text;
}

std::string usageLine(std::string_view command, std::span<const Option> options) {
    std::string line = "Usage: torvel ";
    line += command;
    bool more = false;
    for (const Option& option : options) {
        if (option.occurs == Occurs::once)
            line.append(1, ' ').append(spelt(option));
        else if (isPosition(option))
            line.append(" [").append(option.name).append(option.occurs == Occurs::anyTimes ? "]..." : "]");
        else
            more = true;
    }
    return line + (more ? " [OPTION]...\n" : "\n");
}

}  // namespace

std::optional<std::string> checkPort(std::string_view value) {
    unsigned port = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), port);
    if (error == std::errc() && end == value.data() + value.size() && port <= 65535) return std::nullopt;
    return "is not a port, 0 to 65535";
}

std::optional<std::string> checkSeconds(std::string_view value) {
    constexpr double day = 86400;
    const auto seconds = numberOf(value);
    if (seconds && *seconds > 0 && *seconds <= day) return std::nullopt;
    return "is not a number of seconds above 0 and up to 86400";
}

std::optional<std::string> checkFlavour(std::string_view value) {
    if (wrapperConfig(value)) return std::nullopt;
    return "is not a flavour: VelmMoney, VelmBPM, OrbelleRaw, QuentaMerchantApp, VelmWallet, Dunmere or "
           "Pellox";
}

std::optional<std::string> checkCipherKey(std::string_view value) {
    const std::size_t characters = characterCount(value);
    if (characters != 16) return "is not 16 characters but " + std::to_string(characters);
    if (value.size() == 16 || value.size() == 24 || value.size() == 32) return std::nullopt;
    return "is " + std::to_string(value.size()) + " bytes; the cipher takes 16, 24 or 32";
}

std::optional<Arguments> Arguments::parse(std::string_view command, std::span<const Option> options,
                                          std::span<char* const> words) {
    Arguments arguments(command);
    if (const auto fault = Reader(options, words, arguments.m_values).read()) {
        arguments.misused(*fault);
        return std::nullopt;
    }
    return arguments;
}

std::optional<std::string> Arguments::text(std::string_view name) const {
    const auto found = m_values.find(name);
    return found == m_values.end() ? std::nullopt : std::optional(found->second.back());
}

std::vector<std::string> Arguments::all(std::string_view name) const {
    const auto found = m_values.find(name);
    return found == m_values.end() ? std::vector<std::string>() : found->second;
}

double Arguments::number(std::string_view name, double otherwise) const {
    const auto value = text(name);
    return value ? numberOf(*value).value_or(otherwise) : otherwise;
}

WrapperConfig Arguments::flavour() const {
    return wrapperConfig(text("--flavour", "")).value_or(WrapperConfig::VelmMoney);
}

int Arguments::misused(const std::string& message) const {
    complain(m_command, message + " (see torvel " + m_command + " --help)");
    return exitUsage;
}

int Arguments::failed(const std::string& message) const {
    complain(m_command, message);
    return exitFailed;
}

std::string helpPage(std::string_view command, std::string_view summary, std::string_view details,
                     std::span<const Option> options) {
    std::vector<Option> rows(options.begin(), options.end());
    rows.push_back(helpOption);
    std::size_t width = 0;
    for (const Option& row : rows) width = std::max(width, spelt(row).size());

    std::string sentence(summary);
    sentence.front() = static_cast<char>(std::toupper(sentence.front()));
    std::string page = usageLine(command, options).append(sentence).append(".\n\n");
    for (const Option& row : rows) {
        std::string name = spelt(row);
        name.resize(width, ' ');
        page += "  " + name + "  " + std::string(row.help) + "\n";
    }
    if (!details.empty()) page.append("\n").append(details).append("\n");
    return page;
}

}  // namespace torvel::cli
