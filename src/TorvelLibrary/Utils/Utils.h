#pragma once

#include "TorvelLibrary/WrapperConfig.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/URL.h"

#include <cstdint>
#include <optional>
#include <string>

namespace torvel {

// Operations that host screens call without knowing which room a value lives in.
class Utils {
  public:
    // The bytes of a file; a failure is logged as an error and gives an absent result.
    static std::optional<Data> loadFileContents(const URL& url);

    // --- The configuration, wherever a value lives. ---
    static WrapperConfig getWrapperConfig();
    // Absent when the host never set it.
    static std::optional<std::string> getBase64Token();

    static const std::string& getMobileNoRegex();
    static const std::string& getAccountNoRegex();
    static const std::string& getAmountRegex();
    static const std::string& getUsernameRegex();
    static const std::string& getDocumentIdRegex();
    static const std::string& getPassportRegex();
    static const std::string& getDebitPINRegex();
    static const std::string& getCardNumberRegex();

    // Deliberate: these three lengths are kept as texts, and one that is missing or no number reads as 0.
    static std::int64_t getDocumentIdLength();
    static std::int64_t getPassportLength();
    static std::int64_t getDebitCardLength();
    // While this one, like every length that is kept as a number, has a fallback (4).
    static std::int64_t getDebitPINLength();
};

}  // namespace torvel
