#pragma once

#include "TorvelLibrary/WrapperConfig.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/URL.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

class UIImage;

// Operations that host screens call without knowing which room a value lives in. Any thread.
class Utils {
  public:
    // The bytes of a file; a failure is logged as an error and gives an absent result.
    static std::optional<Data> loadFileContents(const URL& url);

    // The PostScript name of the font file `forName`.ttf of the main bundle, which is read anew at each call.
    // A file that is missing, is no font or has no name is logged as an error and gives an absent result. It
    // is not registered with the system: that is the host's to do.
    static std::optional<std::string> loadFontName(std::string_view forName);

    // --- Text files in the host's Documents directory (UserDirectories), which the first write makes. A name
    // is a single path component, used as given; any other, or a text that is not UTF-8, is a failure.
    // Writing replaces a file of that name, not atomically; false when it failed.
    static bool writeFileToDocumentDirectory(std::string_view fileName, std::string_view text);
    // The empty text when the file cannot be read or is not UTF-8.
    static std::string readFileFromDocumentDirectory(std::string_view fileName);
    // False when there is no such file or it cannot be removed.
    static bool deleteFileFromDocumentDirectory(std::string_view fileName);

    // --- Image files there, as JPEG of the best quality; for programs that link Torvel::UI. ---
    // Replaces a file of that name, which stays when the image cannot be encoded. What goes wrong with the
    // files is logged for debugging alone.
    static void writeImageFileToDocumentDirectory(std::string_view imageName, const UIImage& image);
    // Absent when there is no such file or no image in it.
    static std::optional<UIImage> readImageFileFromDocumentDirectory(std::string_view fileName);

    // --- The configuration, wherever a value lives. ---
    // The flavour.
    static WrapperConfig getWrapperConfig();
    // Absent when the host never set it.
    static std::optional<std::string> getBase64Token();

    // The pattern of TorvelConfigurations for such a text.
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

    // --- Numbers ---
    // Decimal digits, each drawn on its own from a generator fit for secrets. A negative length stops the
    // process.
    static std::string getRandomNumericString(std::int64_t length);
    // A number that was typed with a comma or the Arabic decimal separator, in digits of any script, with a
    // dot and in English digits ("1.5"); the empty text unless the whole text is a number. Deliberate: a
    // comma never groups, so that "1,000" is 1.
    static std::string getEnglishNumber(std::string_view numStr);
};

}  // namespace torvel
