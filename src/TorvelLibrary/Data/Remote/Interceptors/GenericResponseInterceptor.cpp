#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"

#include "TorvelLibrary/Data/Remote/Interceptors/EnvelopeNames.h"
#include "TorvelLibrary/Data/Remote/Interceptors/Utils/DecryptResponse.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/JSON.h"

namespace torvel {
namespace {

constexpr std::string_view source = "Data/Remote/Interceptors/GenericResponseInterceptor";
constexpr std::string_view function = "parseResponse(_:)";

std::string_view requiredText(const std::optional<JSON>& member, std::string_view name) {
    const auto text = member ? member->string() : std::nullopt;
    if (!text) fatalError("The member " + std::string(name) + " of an encrypted response is not a string");
    return *text;
}

}  // namespace

Data DecryptResponseInterceptor::parseResponse(Data data) {
    const auto library = TorvelLibrary::sharedInstance();
    if (!library->encryptionCertName) {
        LogUtils::e("Encryption Cert Not setup", {source, function});
        return data;
    }
    const auto json = JSON::parse(data.raw());
    if (!json) {
        LogUtils::e(json.error().description, {source, function});
        return data;
    }
    const JSON& root = json.value();
    if (!root.isObject()) fatalError("The root of an encrypted response is not an object");

    const EnvelopeNames names = envelopeNames(library->wrapperConfig);
    const auto dataMember = root.member(names.responseData);
    if (!dataMember) return data;  // an answer in the clear
    const std::string_view dataText = requiredText(dataMember, names.responseData);
    const std::string_view ivText = requiredText(root.member(names.responseIv), names.responseIv);
    auto plain = DecryptResponse(m_aesKey.text()).decryptResponse(dataText, ivText);
    return plain ? Data(std::move(*plain)) : std::move(data);
}

}  // namespace torvel
