#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"

#include "TorvelLibrary/Data/Remote/Interceptors/EnvelopeNames.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/crypto/PEMUtils.h"
#include "TorvelLibrary/crypto/RSAUtils.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "TorvelPlatform/foundation/Text.h"

#include <utility>

namespace torvel {
namespace {

constexpr std::string_view source = "Data/Remote/Interceptors/GenericRequestHeaderInterceptor";
constexpr std::string_view function = "wrapRequest(request:)";

// The key text for the server's eyes only; empty when it cannot be encrypted, which the server refuses.
std::string encryptedKeyText(const std::string& key, const SecKey& publicKey) {
    const auto encrypted = RSAUtils::encryptWithRSAKey(Data(key), publicKey, SecPadding::PKCS1);
    return encrypted ? Base64::encode(encrypted->bytes()) : "";
}

std::string encryptedBody(const Data& body, const std::string& key) {
    if (!isValidUTF8(body.raw())) fatalError("A request body must be UTF-8 text to be encrypted");
    std::optional<std::string> cipher = AES256CBC::encryptString(body.raw(), key);
    if (!cipher)
        fatalError("The request body cannot be encrypted: it is empty, or the key is not 16 characters");
    return std::move(*cipher);
}

// The request with another body; its own is put aside meanwhile instead of being copied.
URLRequest withBody(URLRequest& request, std::string body) {
    std::optional<Data> own = std::exchange(request.httpBody, std::nullopt);
    URLRequest other = request;
    other.httpBody = Data(std::move(body));
    request.httpBody = std::move(own);
    return other;
}

}  // namespace

URLRequest EncryptRequestInterceptor::wrapRequest(URLRequest& request) {
    const auto library = TorvelLibrary::sharedInstance();
    if (!library->encryptionCertName) {
        LogUtils::e("Encryption Cert Not setup", {source, function});
        return request;
    }
    const std::optional<SecKey> publicKey = PEMUtils::getSecKey();
    if (!publicKey) return request;
    const std::string keyText = encryptedKeyText(m_aesKey.text(), *publicKey);
    if (!request.httpBody) {
        URLRequest keyed = request;
        keyed.headers.add("RequestKey", keyText);  // by this name in every flavour
        return keyed;
    }

    const std::string cipher = encryptedBody(*request.httpBody, m_aesKey.text());
    constexpr std::size_t ivSize = 16;  // ASCII letters and digits
    const std::string_view iv = std::string_view(cipher).substr(0, ivSize);
    // Deliberate: every occurrence of the IV text goes, not only the leading one. Servers get what remains.
    const std::string data = removingOccurrences(cipher, iv);
    const std::string ivText = Base64::encode(Data(iv).bytes());
    const EnvelopeNames names = envelopeNames(library->wrapperConfig);
    auto envelope = prettyPrintedJSON(
        {{names.requestKey, keyText}, {names.requestData, data}, {names.requestIv, ivText}});
    if (!envelope) {
        LogUtils::e("The envelope cannot be written as JSON", {source, function});
        return request;
    }
    return withBody(request, std::move(*envelope));
}

}  // namespace torvel
