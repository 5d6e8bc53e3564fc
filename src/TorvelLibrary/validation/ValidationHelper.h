#pragma once

#include <string_view>

namespace torvel {

// Whether a text that the user typed is acceptable. The patterns are those of the configuration, as they are
// at the moment of the call: regular expressions of ICU that must match the whole text, nothing trimmed or
// folded before. An invalid pattern is logged as an error and matches nothing. Any thread.
class ValidationHelper {
  public:
    // By the configured pattern for such a text.
    static bool validateAmount(std::string_view amount);
    static bool validateAccountNo(std::string_view accountNo);
    static bool validateMobileNo(std::string_view mobileNo);
    static bool validateUserName(std::string_view userName);
    // By a pattern of the caller's.
    static bool validateData(std::string_view targetString, std::string_view regex);
};

}  // namespace torvel
