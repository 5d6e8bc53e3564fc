#pragma once

#include "TorvelLibrary/Data/Remote/Networking/RequestWrapper.h"
#include "TorvelLibrary/crypto/SecretText.h"

#include <string>

namespace torvel {

// Replaces a request's body by an encrypted envelope: the body under a symmetric key, and that key under
// the server's public key. A request without a body gets the header "RequestKey" instead.
//
// Without an encryption certificate in the configuration, or without its key, requests pass unchanged. A
// body that is not UTF-8 or is empty, and a key text that is not 16 characters, stop the process. Immutable;
// any thread.
class EncryptRequestInterceptor final : public RequestWrapper {
  public:
    // `key`: exactly 16 characters, normally from AES256CBC::generatePassword(), the same as the
    // DecryptResponseInterceptor's.
    explicit EncryptRequestInterceptor(std::string key) : m_aesKey(std::move(key)) {}

    URLRequest wrapRequest(URLRequest& request) override;

  private:
    SecretText m_aesKey;
};

}  // namespace torvel
