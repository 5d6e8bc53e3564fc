#pragma once

#include "TorvelLibrary/Data/Remote/Networking/ResponseParser.h"
#include "TorvelLibrary/crypto/SecretText.h"

#include <string>

namespace torvel {

// Opens the encrypted envelope of an answer. What is not JSON, is no envelope or does not decrypt passes
// unchanged, and so does everything while no encryption certificate is configured. JSON that is not an
// object, and an envelope whose members are not strings, stop the process. Immutable; any thread.
class DecryptResponseInterceptor final : public ResponseParser {
  public:
    // `key`: the same as the EncryptRequestInterceptor's.
    explicit DecryptResponseInterceptor(std::string key) : m_aesKey(std::move(key)) {}

    Data parseResponse(Data data) override;

  private:
    SecretText m_aesKey;
};

}  // namespace torvel
