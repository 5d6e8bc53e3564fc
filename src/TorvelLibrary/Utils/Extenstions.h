#pragma once

#include "TorvelLibrary/Utils/PayloadDictionary.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/foundation/URL.h"

#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// All of it: any thread.

// --- Texts as URLs. A text that is no URL gives the empty result, never an error. ---

// The host.
std::string getURLDomain(std::string_view text);
// The path, percent-decoded.
std::string path(std::string_view text);
// The items of the query by name, as std::string values. Each value is percent-decoded twice, deliberately:
// senders escape values before they build a URL that escapes them again. Of items with one name the last
// counts; an item without a value, or one whose second decoding fails, removes what stood under its name.
PayloadDictionary queryParameters(std::string_view text);

// --- Files and resources. A failure is logged as an error and gives an absent result. ---

// The URL of the resource `name`.`extension` of a bundle.
std::optional<URL> getPathURLFromBundle(std::string_view name, std::string_view extension,
                                        const Bundle& bundle);
// The URL of the file `name`.`extension` in the Documents directory, as the caller found it.
std::optional<URL> getPathURLFromDocumentsDirectory(std::string_view name, std::string_view extension,
                                                    const std::optional<URL>& directoryURL);

// The bundle named after the type's module inside the bundle that holds the type, or else that bundle.
Bundle resourceBundle(const Bundle& ofType, std::string_view module);
template <class T>
Bundle resourceBundleFor() {
    return resourceBundle(TypeName<T>::bundle(), TypeName<T>::module);
}

// --- Values ---

// The MIME type that the first byte suggests, "application/octet-stream" for all that it does not know.
// Deliberately one byte: servers rely on the types that this gives.
std::string_view mimeType(const Data& data);

// A design measurement, made for a screen 375 points wide, scaled to the screen.
inline double dp(double measurement) { return measurement / 375.0 * ScreenEnvironment::widthInPoints; }

}  // namespace torvel
