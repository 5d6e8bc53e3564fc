#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// Turns a text into a transportable cipher text and back with a shared password: AES in CBC mode (FIPS-197,
// SP 800-38A) with PKCS#7 padding. Texts are UTF-8 and counted in characters as a reader sees them (grapheme
// clusters).
//
// Despite the name, the password's bytes are the key as they are: 16 ASCII characters make AES-128, and 16
// characters of 24 or 32 bytes make AES-192 or AES-256. A password of 16 characters and any other number of
// bytes stops the process. Any thread, and several at a time.
class AES256CBC {
  public:
    AES256CBC() = delete;

    // A new IV text of 16 letters and digits, whose bytes are the IV, and then the cipher bytes in base64
    // (standard, one line). Absent when `str` is empty or the password is not 16 characters. A failure below
    // is told by one fixed line on standard output, and the result is absent.
    static std::optional<std::string> encryptString(std::string_view str, std::string_view password);

    // Reads what servers send: the first 24 characters are the base64 of the IV, the rest that of the cipher
    // bytes. It does not read what encryptString makes, whose IV is not base64: deliberate, the two ends
    // differ so. Every further occurrence of those 24 characters is removed as well before decoding, which
    // existing servers expect.
    //
    // Absent when `str` has fewer than 17 characters or the password is not 16. An IV that is not base64,
    // cipher bytes that do not fill whole blocks and a result that is not UTF-8 are told by one fixed line on
    // standard output, and the result is absent. A cipher text that is not base64, or of no bytes, stops the
    // process.
    static std::optional<std::string> decryptString(std::string_view str, std::string_view password);

    // randomText(16, false, false).
    static std::string generatePassword();

    // `length` random characters: "a" to "z", or with equal chances lower-case letters, upper-case letters,
    // digits and, with `whitespace`, spaces, of which no two stand side by side. `whitespace` has no effect
    // together with `justLowerCase`. Empty when `length` is 0 or less.
    static std::string randomText(std::int64_t length, bool justLowerCase, bool whitespace);
};

}  // namespace torvel
