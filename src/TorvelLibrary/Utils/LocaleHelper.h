#pragma once

#include "TorvelPlatform/foundation/Bundle.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// The in-app language: which one is chosen, and the look-up that answers every bundle's texts in it.
class LocaleHelper {
  public:
    // Installs the replacement look-up for the whole process; a second call takes it out again. The host
    // calls it once, on its main thread, before texts are looked up concurrently.
    static void doTheSwizzling();

    // The language in force, without its region ("en-GB" gives "en"): the first of the stored ones, or the
    // default language when none is stored.
    static std::string currentAppleLanguage();
    // Makes `lang` the language in force, on disk when it returns; the previous one stays second. The writing
    // direction of the screen becomes the language's.
    static void setAppleLanguageTo(std::string_view lang);

    // A number that grows with every change in this process that may have made another language the current
    // one; for who keeps what depends on the language. Reading it costs some nanoseconds. Any thread.
    static std::uint64_t changeCount();

    // The language whose folder is used where the chosen one has none; "en" at first. Any thread.
    static void setDefaultAppLanguageTo(std::string_view lang);
    static std::string getDefaultAppLanguage();
};

// The replacement look-up: the main bundle's folder of the chosen language (else of the default one) answers
// first, so that the host can override any text of any bundle; then the bundle's own folder, then the bundle
// itself. An answer equal to the key counts as none. The table "Configurations" is always read in "en".
std::string specialLocalizedString(const Bundle& bundle, std::string_view forKey,
                                   std::optional<std::string_view> value, std::string_view table);

// The main bundle's folder of the first of the two languages that has one.
std::optional<Bundle> getMainBundlePath(std::string_view currentLanguage, std::string_view defaultLanguage);
// The same of any bundle, or the bundle itself.
Bundle getCallerBundlePath(const Bundle& bundle, std::string_view currentLanguage,
                           std::string_view defaultLanguage);

// The text's translation in a table of a bundle; the text itself is both the key and the fallback.
std::string getLocalisedValue(std::string_view text, const Bundle& targetBundle, std::string_view table);

}  // namespace torvel
