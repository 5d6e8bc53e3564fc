#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/Locale.h"
#include "TorvelPlatform/foundation/PropertyList.h"
#include "TorvelPlatform/http/Session.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace torvel {
namespace {

// The best six, each a tenth below the one before: "fr-CA;q=1.0, en;q=0.9".
std::string acceptLanguage(const std::vector<std::string>& languages) {
    constexpr std::array qualities{"1.0", "0.9", "0.8", "0.7", "0.6", "0.5"};
    std::string text;
    for (std::size_t i = 0; i < std::min(languages.size(), qualities.size()); ++i)
        text.append(i == 0 ? "" : ", ").append(languages[i]).append(";q=").append(qualities[i]);
    return text;
}

// A field's value stays one: what is no visible ASCII in a program's name is left out.
std::string visible(std::string text) {
    std::erase_if(text, [](char c) { return c < ' ' || c > '~'; });
    return text.empty() ? "Unknown" : text;
}

// What the main bundle's Info.plist says.
std::string hostVersion() {
    const std::optional<std::string> path = Bundle::main().path("Info", "plist");
    if (!path) return {};
    std::ifstream file(*path, std::ios::binary);
    const auto list = PropertyList::parse(Data(std::string(std::istreambuf_iterator<char>(file), {})));
    const PropertyList::Dictionary* info = list ? list.value().dictionary() : nullptr;
    if (info == nullptr) return {};
    const auto version = info->find("CFBundleShortVersionString");
    const std::string* text = version == info->end() ? nullptr : version->second.string();
    return text == nullptr ? std::string() : *text;
}

std::string userAgent() {
    std::error_code ignored;
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", ignored).filename();
    return visible(program) + "/" + visible(hostVersion()) + " (" + visible(Bundle::main().identifier()) +
           "; Linux) Torvel/" + TORVEL_VERSION;
}

}  // namespace

URLSessionConfiguration URLSessionConfiguration::defaults() {
    URLSessionConfiguration configuration;
    configuration.headers.set("Accept-Encoding", "br;q=1.0, gzip;q=0.9, deflate;q=0.8");
    configuration.headers.set("Accept-Language", acceptLanguage(Locale::preferredLanguages()));
    configuration.headers.set("User-Agent", userAgent());
    return configuration;
}

}  // namespace torvel
