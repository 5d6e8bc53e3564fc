#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"

#include "TorvelPlatform/foundation/Base64.h"

namespace torvel {
namespace {

Outcome<std::string, DecodingError> requiredString(const JSON& container, std::string_view name) {
    const std::optional<JSON> member = container.member(name);
    if (!member) return DecodingError{"The member \"" + std::string(name) + "\" is missing."};
    const std::optional<std::string_view> text = member->string();
    if (!text) return DecodingError{"The member \"" + std::string(name) + "\" is not a string."};
    return std::string(*text);
}

}  // namespace

Outcome<APITimeError, DecodingError> APITimeError::decode(const JSON& container) {
    if (!container.isObject()) return DecodingError{"The record is not an object."};
    auto message = requiredString(container, "message");
    if (!message) return message.error();
    auto code = requiredString(container, "errorCode");
    if (!code) return code.error();

    std::optional<Data> received;
    if (const auto member = container.member("receivedResponse"); member && !member->isNull()) {
        const std::optional<std::string_view> text = member->string();
        auto bytes = text ? Base64::decode(*text) : std::nullopt;
        if (!bytes) return DecodingError{"The member \"receivedResponse\" is not a base64 string."};
        received = std::move(*bytes);
    }
    return APITimeError(std::move(message).value(), std::move(code).value(), std::move(received));
}

}  // namespace torvel
