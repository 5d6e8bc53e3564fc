#pragma once

#include "TorvelLibrary/crypto/SecretText.h"

#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// Joins the two halves of an encrypted answer and decrypts them. Immutable; any thread.
class DecryptResponse {
  public:
    // `key`: the symmetric key, exactly 16 characters.
    explicit DecryptResponse(std::string key) : m_aesKey(std::move(key)) {}
    // Not usable without a key: stops the process.
    [[noreturn]] DecryptResponse();

    // The plain text of a base64 cipher text and the 24 characters of its base64 IV; absent when it does
    // not decrypt. Deliberate: the key goes to the debug log. Keep logging off where logs are kept.
    std::optional<std::string> decryptResponse(std::string_view responseData,
                                               std::string_view responseIV) const;

  private:
    SecretText m_aesKey;
};

}  // namespace torvel
