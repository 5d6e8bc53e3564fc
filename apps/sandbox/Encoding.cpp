#include "sandbox/Encoding.h"

#include <cstdlib>

#include <brotli/encode.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <zlib.h>

namespace torvel::sandbox {

namespace {

const unsigned char* octets(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* octets(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

// windowBits tells zlib the wrapping: 15 for its own, 15 + 16 for gzip.
std::optional<std::string> deflated(std::string_view body, int windowBits) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return std::nullopt;
    std::string out(deflateBound(&stream, body.size()), '\0');
    stream.next_in = const_cast<Bytef*>(octets(body));  // zlib reads only
    stream.avail_in = static_cast<uInt>(body.size());
    stream.next_out = octets(out);
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return result == Z_STREAM_END ? std::optional(out) : std::nullopt;
}

std::optional<std::string> brotlied(std::string_view body) {
    std::size_t size = BrotliEncoderMaxCompressedSize(body.size());
    std::string out(size, '\0');
    if (!BrotliEncoderCompress(5, BROTLI_DEFAULT_WINDOW, BROTLI_MODE_TEXT, body.size(), octets(body), &size,
                               octets(out)))
        return std::nullopt;
    out.resize(size);
    return out;
}

}  // namespace

std::string base64(std::string_view bytes) {
    std::string out((bytes.size() + 2) / 3 * 4 + 1, '\0');  // EVP_EncodeBlock ends with a NUL
    out.resize(static_cast<std::size_t>(
        EVP_EncodeBlock(octets(out), octets(bytes), static_cast<int>(bytes.size()))));
    return out;
}

std::optional<std::string> fromBase64(std::string_view text) {
    const std::string_view digits = text.substr(0, text.find_last_not_of('=') + 1);
    const std::size_t padding = text.size() - digits.size();
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    if (text.size() % 4 != 0 || padding > 2 || digits.find_first_not_of(alphabet) != std::string_view::npos)
        return std::nullopt;
    std::string out(text.size() / 4 * 3, '\0');
    if (EVP_DecodeBlock(octets(out), octets(text), static_cast<int>(text.size())) < 0) return std::nullopt;
    out.resize(out.size() - padding);  // EVP_DecodeBlock counts the padding as zero bytes
    return out;
}

std::string hex(std::string_view bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string out;
    for (const char c : bytes) {
        const auto octet = static_cast<unsigned char>(c);
        out += digits[octet >> 4];
        out += digits[octet & 15];
    }
    return out;
}

std::string randomBytes(std::size_t count) {
    std::string out(count, '\0');
    if (RAND_bytes(octets(out), static_cast<int>(count)) != 1) std::abort();  // no entropy: nothing can go on
    return out;
}

std::string sha256(std::string_view bytes) {
    std::string digest(32, '\0');
    EVP_Digest(bytes.data(), bytes.size(), octets(digest), nullptr, EVP_sha256(), nullptr);
    return hex(digest);
}

std::optional<std::string> contentCoded(std::string_view coding, std::string_view body) {
    if (coding == "gzip") return deflated(body, 15 + 16);
    if (coding == "deflate") return deflated(body, 15);
    if (coding == "br") return brotlied(body);
    return std::nullopt;
}

}  // namespace torvel::sandbox
