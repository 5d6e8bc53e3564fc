#pragma once

#include "TorvelPlatform/foundation/Outcome.h"

#include <optional>
#include <string>
#include <string_view>

// The server's half of the payload envelope, done by OpenSSL alone so that it witnesses for the library's own
// cipher. All functions may be called from any thread.
namespace torvel::sandbox {

// The two families of member names:
//   plain    RequestKey, RequestData, RequestIv              answered by ResponseData, ResponseIv
//   payload  payloadToken, payloadText, payloadVariable      answered by payloadText, payloadVariable
enum class EnvelopeForm { plain, payload };

// "QuentaMerchantApp" speaks the payload names, every other flavour the plain ones.
EnvelopeForm envelopeForm(std::string_view flavour);

struct OpenedEnvelope {
    EnvelopeForm form;
    std::string keyText;    // the symmetric key as it travelled: 16, 24 or 32 bytes
    std::string plainText;  // the bytes that were sealed
};

// What is wrong with an envelope, as one line for whoever made it.
struct EnvelopeError {
    std::string message;
};

// True when the text is a JSON object with a member that only a request envelope has.
bool isRequestEnvelope(const std::string& json);

// Opens a request envelope: the key text by RSA PKCS#1 v1.5 (RFC 8017, one block or several in a row), the
// data by AES-CBC with PKCS#7 padding, the size by the key text's length. In this direction the IV member is
// the base64 of 16 ASCII characters that are the IV's bytes.
Outcome<OpenedEnvelope, EnvelopeError> openRequestEnvelope(const std::string& json,
                                                           const std::string& privateKeyPem);

struct OpenedKey {
    std::string keyText;
};
// Opens a key text alone, as the header field "RequestKey" carries it. `name` stands in the error's message.
Outcome<OpenedKey, EnvelopeError> openKey(const std::string& base64, const std::string& privateKeyPem,
                                          const std::string& name = "RequestKey");

enum class Padding { pkcs7, none };

// Seals an answer: JSON with the base64 of the data and the base64 of 16 random IV bytes (24 characters).
// Nothing when the key text is not 16, 24 or 32 bytes, or, without padding, the text no whole number of
// blocks.
std::optional<std::string> sealResponse(std::string_view plain, const std::string& keyText, EnvelopeForm form,
                                        Padding padding = Padding::pkcs7);

}  // namespace torvel::sandbox
