#pragma once

#include "TorvelLibrary/WrapperConfig.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace torvel::cli {

// What is wrong with a value ("is not ..."); absent when nothing is.
using ValueCheck = std::optional<std::string> (*)(std::string_view value);
std::optional<std::string> checkPort(std::string_view value);       // 0 to 65535
std::optional<std::string> checkSeconds(std::string_view value);    // above 0, at most a day
std::optional<std::string> checkFlavour(std::string_view value);    // a name of WrapperConfig
std::optional<std::string> checkCipherKey(std::string_view value);  // 16 characters, as the cipher wants them

enum class Occurs { atMostOnce, once, anyTimes };

// One argument that a command takes. A name with a dash is an option's, any other stands by its position.
struct Option {
    std::string_view name;   // "--data", "-X", "TARGET"
    std::string_view value;  // what the help calls an option's value; empty: a switch
    std::string_view help;   // one line
    Occurs occurs = Occurs::atMostOnce;
    ValueCheck check = nullptr;
};

// A command line taken apart by the command's table: every value in it has passed its check.
class Arguments {
  public:
    // "--name VALUE" or "--name=VALUE", in any order; after "--" everything stands by position. "--help" is
    // every command's, and with it nothing else need be there. What is wrong is said on standard error (see
    // misused), and the result is absent.
    static std::optional<Arguments> parse(std::string_view command, std::span<const Option> options,
                                          std::span<char* const> words);

    bool has(std::string_view name) const { return m_values.contains(name); }
    // The value of an option or position; absent when it was not given.
    std::optional<std::string> text(std::string_view name) const;
    // The value, or the default.
    std::string text(std::string_view name, std::string_view otherwise) const {
        return text(name).value_or(std::string(otherwise));
    }
    std::vector<std::string> all(std::string_view name) const;
    // The value of an option with a numeric check.
    double number(std::string_view name, double otherwise) const;

    // The flavour that --flavour names, else the default one.
    WrapperConfig flavour() const;

    // For a command to return: says what is wrong on standard error and gives the exit code.
    int misused(const std::string& message) const;  // 2, with a hint at the help
    int failed(const std::string& message) const;   // 1

  private:
    explicit Arguments(std::string_view command) : m_command(command) {}
    std::string m_command;
    std::map<std::string, std::vector<std::string>, std::less<>> m_values;
};

// The page that --help prints.
std::string helpPage(std::string_view command, std::string_view summary, std::string_view details,
                     std::span<const Option> options);

}  // namespace torvel::cli
