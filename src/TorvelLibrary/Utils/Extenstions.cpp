#include "TorvelLibrary/Utils/Extenstions.h"

#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/PercentEncoding.h"
#include "TorvelPlatform/foundation/URLComponents.h"

#include <filesystem>

namespace torvel {
namespace {

constexpr std::string_view source = "Utils/Extenstions";

std::optional<URLComponents> componentsOf(std::string_view text) {
    const std::optional<URL> url = URL::parse(text);
    return url ? URLComponents::of(*url) : std::nullopt;
}

}  // namespace

std::string getURLDomain(std::string_view text) {
    const std::optional<URL> url = URL::parse(text);
    return url ? url->host().value_or("") : "";
}

std::string path(std::string_view text) {
    const std::optional<URLComponents> components = componentsOf(text);
    return components ? components->path() : "";
}

PayloadDictionary queryParameters(std::string_view text) {
    PayloadDictionary parameters;
    const std::optional<URLComponents> components = componentsOf(text);
    if (!components || !components->queryItems()) return parameters;
    for (const URLQueryItem& item : *components->queryItems()) {
        const auto value = item.value ? removingPercentEncoding(*item.value) : std::nullopt;
        if (value)
            parameters.set(item.name, *value);
        else
            parameters.remove(item.name);
    }
    return parameters;
}

std::optional<URL> getPathURLFromBundle(std::string_view name, std::string_view extension,
                                        const Bundle& bundle) {
    std::optional<URL> url = bundle.url(name, extension);
    if (!url)
        LogUtils::e("Resource named " + std::string(name) + " not found at bundle.",
                    {source, "getPathURLFromBundle(_:bundle:)"});
    return url;
}

std::optional<URL> getPathURLFromDocumentsDirectory(std::string_view name, std::string_view extension,
                                                    const std::optional<URL>& directoryURL) {
    constexpr std::string_view function = "getPathURLFromDocumentsDirectory(_:directoryURL:)";
    if (!directoryURL) {
        LogUtils::e("Disk Folder named Documents Directory not found on Disk.", {source, function});
        return std::nullopt;
    }
    URL file = directoryURL->appendingPathComponent(std::string(name) + "." + std::string(extension));
    std::error_code error;
    if (std::filesystem::exists(file.path(), error)) return file;
    LogUtils::e("File named " + std::string(name) + " not found on Disk Space at Documents Directory.",
                {source, function});
    return std::nullopt;
}

Bundle resourceBundle(const Bundle& ofType, std::string_view module) {
    const auto path = module.empty() ? std::nullopt : ofType.path(module, "bundle");
    return (path ? Bundle::at(*path) : std::nullopt).value_or(ofType);
}

std::string_view mimeType(const Data& data) {
    switch (data.empty() ? 0 : data.bytes().front()) {
        case 0xFF:
            return "image/jpeg";
        case 0x89:
            return "image/png";
        case 0x47:
            return "image/gif";
        case 0x49:
        case 0x4D:
            return "image/tiff";
        case 0x25:
            return "application/pdf";
        case 0xD0:
            return "application/vnd";
        case 0x46:
            return "text/plain";
        default:
            return "application/octet-stream";
    }
}

}  // namespace torvel
