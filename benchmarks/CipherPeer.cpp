#include "CipherPeer.h"

#include <array>
#include <memory>

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <string.h>

namespace torvel::bench::ordinary {
namespace {

using Context = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

// Letters and digits, every class as likely as the others.
std::string randomText() {
    constexpr std::string_view classes[] = {"abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
                                            "0123456789"};
    std::array<unsigned char, 64> random;
    std::string text;
    for (std::size_t used = random.size(); text.size() < 16; used += 2) {
        if (used == random.size()) RAND_bytes(random.data(), static_cast<int>(random.size())), used = 0;
        if (random[used] == 255) continue;
        const std::string_view kind = classes[random[used] % 3];
        const unsigned limit = 256 / static_cast<unsigned>(kind.size()) * static_cast<unsigned>(kind.size());
        if (random[used + 1] < limit) text += kind[random[used + 1] % kind.size()];
    }
    return text;
}

std::string base64(std::string_view in) {
    std::string text((in.size() + 2) / 3 * 4 + 1, '\0');
    text.resize(
        static_cast<std::size_t>(EVP_EncodeBlock(bytes(text), bytes(in), static_cast<int>(in.size()))));
    return text;
}

std::optional<std::string> fromBase64(std::string_view text) {
    std::string out(text.size() / 4 * 3, '\0');
    if (EVP_DecodeBlock(bytes(out), bytes(text), static_cast<int>(text.size())) < 0) return std::nullopt;
    out.resize(out.size() - (text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0));
    return out;
}

std::optional<std::string> cbc(bool encrypting, std::string_view key, std::string_view iv,
                               std::string_view in) {
    const Context context(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
    std::string out(in.size() + 16, '\0');
    int size = 0, rest = 0;
    if (EVP_CipherInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, bytes(key), bytes(iv), encrypting) !=
            1 ||
        EVP_CIPHER_CTX_set_padding(context.get(), encrypting) != 1 ||
        EVP_CipherUpdate(context.get(), bytes(out), &size, bytes(in), static_cast<int>(in.size())) != 1 ||
        EVP_CipherFinal_ex(context.get(), bytes(out) + size, &rest) != 1)
        return std::nullopt;
    out.resize(static_cast<std::size_t>(size + rest));
    return out;
}

// Bytes of the well-formed sequence that `text` begins with (Unicode, table 3-7); 0 when there is none.
std::size_t sequence(std::string_view text) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? bytes(text)[i] : 0U; };
    const auto tail = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const unsigned first = byte(0), second = byte(1);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    if (first < 0xE0) return tail(1) ? 2 : 0;
    if (first < 0xF0) {
        const unsigned low = first == 0xE0 ? 0xA0 : 0x80, high = first == 0xED ? 0x9F : 0xBF;
        return second >= low && second <= high && tail(2) ? 3 : 0;
    }
    const unsigned low = first == 0xF0 ? 0x90 : 0x80, high = first == 0xF4 ? 0x8F : 0xBF;
    return second >= low && second <= high && tail(2) && tail(3) ? 4 : 0;
}

bool isUTF8(std::string_view text) {
    while (!text.empty()) {
        std::uint64_t eight = 0x80;
        if (text.size() >= 8) memcpy(&eight, text.data(), 8);
        const std::size_t size = (eight & 0x8080808080808080) == 0 ? 8 : sequence(text);
        if (size == 0) return false;
        text.remove_prefix(size);
    }
    return true;
}

std::string withoutEvery(std::string_view prefix, std::string_view text) {
    std::string kept;
    std::size_t start = 0;
    for (std::size_t at; (at = text.find(prefix, start)) != std::string_view::npos;
         start = at + prefix.size())
        kept += text.substr(start, at - start);
    return kept += text.substr(start);
}

}  // namespace

std::optional<std::string> encryptString(std::string_view text, std::string_view password) {
    if (text.empty() || password.size() != 16) return std::nullopt;
    const std::string iv = randomText();
    const auto cipher = cbc(true, password, iv, text);
    if (!cipher) return std::nullopt;
    return iv + base64(*cipher);
}

std::optional<std::string> decryptString(std::string_view text, std::string_view password) {
    if (text.size() < 17 || password.size() != 16) return std::nullopt;
    const std::string_view prefix = text.substr(0, 24);
    const auto iv = fromBase64(prefix), cipher = fromBase64(withoutEvery(prefix, text));
    if (!iv || iv->size() != 16 || !cipher || cipher->empty()) return std::nullopt;
    auto plain = cbc(false, password, *iv, *cipher);
    if (!plain) return std::nullopt;
    const auto padding = static_cast<unsigned char>(plain->back());
    if (padding <= plain->size()) plain->resize(plain->size() - padding);
    if (!isUTF8(*plain)) return std::nullopt;
    return plain;
}

}  // namespace torvel::bench::ordinary
