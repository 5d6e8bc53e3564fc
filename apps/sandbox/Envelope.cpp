#include "sandbox/Envelope.h"

#include "sandbox/Encoding.h"

#include <memory>

#include <nlohmann/json.hpp>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

namespace torvel::sandbox {

namespace {

using Json = nlohmann::json;
using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

constexpr std::size_t blockSize = 16;

struct RequestNames {
    EnvelopeForm form;
    const char *key, *data, *iv;
};
constexpr RequestNames requestNames[] = {
    {EnvelopeForm::plain, "RequestKey", "RequestData", "RequestIv"},
    {EnvelopeForm::payload, "payloadToken", "payloadText", "payloadVariable"},
};

const unsigned char* octets(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* octets(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

const EVP_CIPHER* cipherFor(const std::string& keyText) {
    switch (keyText.size()) {
        case 16:
            return EVP_aes_128_cbc();
        case 24:
            return EVP_aes_192_cbc();
        case 32:
            return EVP_aes_256_cbc();
        default:
            return nullptr;
    }
}

enum class Direction { open = 0, seal = 1 };

std::optional<std::string> aesCbc(Direction direction, std::string_view in, const std::string& keyText,
                                  const std::string& iv, Padding padding) {
    const EVP_CIPHER* cipher = cipherFor(keyText);
    const CipherContext context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    if (!cipher || !EVP_CipherInit_ex(context.get(), cipher, nullptr, octets(keyText), octets(iv),
                                      static_cast<int>(direction)))
        return std::nullopt;
    EVP_CIPHER_CTX_set_padding(context.get(), padding == Padding::pkcs7);
    std::string out(in.size() + blockSize, '\0');
    int body = 0, tail = 0;
    if (!EVP_CipherUpdate(context.get(), octets(out), &body, octets(in), static_cast<int>(in.size())) ||
        !EVP_CipherFinal_ex(context.get(), octets(out) + body, &tail))
        return std::nullopt;
    out.resize(static_cast<std::size_t>(body) + static_cast<std::size_t>(tail));
    return out;
}

Key privateKey(const std::string& pem) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> text(
        BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), BIO_free);
    return Key(PEM_read_bio_PrivateKey(text.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
}

// A text longer than a key's room for it comes as several blocks, each of the modulus' size.
std::optional<std::string> rsaOpen(EVP_PKEY* key, std::string_view sealed) {
    const KeyContext context(EVP_PKEY_CTX_new(key, nullptr), EVP_PKEY_CTX_free);
    if (EVP_PKEY_decrypt_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1)
        return std::nullopt;
    const auto modulus = static_cast<std::size_t>(EVP_PKEY_get_size(key));
    std::string out;
    for (; !sealed.empty(); sealed.remove_prefix(modulus)) {
        std::string block(modulus, '\0');
        std::size_t size = block.size();
        if (sealed.size() < modulus ||
            EVP_PKEY_decrypt(context.get(), octets(block), &size, octets(sealed), modulus) != 1)
            return std::nullopt;
        out.append(block, 0, size);
    }
    return out;
}

const RequestNames* namesIn(const Json& object) {
    if (!object.is_object()) return nullptr;
    for (const RequestNames& names : requestNames)
        for (const char* member : {names.key, names.data, names.iv})
            if (object.contains(member)) return &names;
    return nullptr;
}

Json parse(const std::string& json) { return Json::parse(json, nullptr, /*allow_exceptions=*/false); }

std::optional<EnvelopeError> missingMember(const Json& object, const RequestNames& names) {
    for (const char* member : {names.key, names.data, names.iv}) {
        if (!object.contains(member)) return EnvelopeError{std::string(member) + " is missing"};
        if (!object[member].is_string()) return EnvelopeError{std::string(member) + " is not a string"};
    }
    return std::nullopt;
}

Outcome<OpenedEnvelope, EnvelopeError> openData(const Json& object, const RequestNames& names,
                                                const std::string& keyText) {
    const auto iv = fromBase64(object[names.iv].get<std::string>());
    if (!iv || iv->size() != blockSize)
        return EnvelopeError{std::string(names.iv) + " is not 24 characters of base64 of 16 bytes"};
    const auto data = fromBase64(object[names.data].get<std::string>());
    if (!data) return EnvelopeError{std::string(names.data) + " is not base64"};
    if (data->empty() || data->size() % blockSize != 0)
        return EnvelopeError{std::string(names.data) + " is not a whole number of 16-byte blocks"};
    auto plain = aesCbc(Direction::open, *data, keyText, *iv, Padding::pkcs7);
    if (!plain) return EnvelopeError{std::string(names.data) + " does not open: wrong key or padding"};
    return OpenedEnvelope{names.form, keyText, std::move(*plain)};
}

}  // namespace

EnvelopeForm envelopeForm(std::string_view flavour) {
    return flavour == "QuentaMerchantApp" ? EnvelopeForm::payload : EnvelopeForm::plain;
}

bool isRequestEnvelope(const std::string& json) { return namesIn(parse(json)) != nullptr; }

Outcome<OpenedKey, EnvelopeError> openKey(const std::string& base64, const std::string& privateKeyPem,
                                          const std::string& name) {
    const auto sealed = fromBase64(base64);
    if (!sealed || sealed->empty()) return EnvelopeError{name + " is not base64 of an encrypted key"};
    const Key key = privateKey(privateKeyPem);
    if (!key) return EnvelopeError{"the server's private key is not PEM"};
    const auto keyText = rsaOpen(key.get(), *sealed);
    if (!keyText) return EnvelopeError{name + " does not open with the server's private key"};
    if (!cipherFor(*keyText))
        return EnvelopeError{name + " holds a key of " + std::to_string(keyText->size()) +
                             " bytes, not 16, 24 or 32"};
    return OpenedKey{*keyText};
}

Outcome<OpenedEnvelope, EnvelopeError> openRequestEnvelope(const std::string& json,
                                                           const std::string& privateKeyPem) {
    const Json object = parse(json);
    if (object.is_discarded()) return EnvelopeError{"the envelope is not JSON"};
    const RequestNames* names = namesIn(object);
    if (!names) return EnvelopeError{"the JSON is not an object with an envelope's members"};
    if (auto error = missingMember(object, *names)) return *error;
    const auto key = openKey(object[names->key].get<std::string>(), privateKeyPem, names->key);
    if (!key) return key.error();
    return openData(object, *names, key.value().keyText);
}

std::optional<std::string> sealResponse(std::string_view plain, const std::string& keyText, EnvelopeForm form,
                                        Padding padding) {
    const std::string iv = randomBytes(blockSize);
    const auto data = aesCbc(Direction::seal, plain, keyText, iv, padding);
    if (!data) return std::nullopt;
    if (form == EnvelopeForm::payload)
        return Json{{"payloadText", base64(*data)}, {"payloadVariable", base64(iv)}}.dump();
    return Json{{"ResponseData", base64(*data)}, {"ResponseIv", base64(iv)}}.dump();
}

}  // namespace torvel::sandbox
