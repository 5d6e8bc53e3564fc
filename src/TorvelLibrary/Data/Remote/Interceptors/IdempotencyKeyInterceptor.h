#pragma once

#include "TorvelLibrary/Data/Remote/Networking/RequestWrapper.h"
#include "TorvelPlatform/foundation/UUID.h"

#include <string>

namespace torvel {

// Marks a request with a key by which the server knows it again, so that a payment that was maybe sent may
// be sent once more. One interceptor stands for one payment: every attempt that it is given to bears the
// same key, the next payment takes a new interceptor. Place it anywhere in the chain. Immutable; any thread.
class IdempotencyKeyInterceptor final : public RequestWrapper {
  public:
    // The field that servers commonly read.
    static constexpr char usualHeader[] = "Idempotency-Key";

    // A `key` of the caller's own is one that it kept, to go on after a restart.
    explicit IdempotencyKeyInterceptor(std::string header = usualHeader, std::string key = randomUUIDString())
        : m_header(std::move(header)), m_key(std::move(key)) {}

    // For the caller to keep.
    const std::string& key() const { return m_key; }

    // The request with the field, unless it has one of that name already.
    URLRequest wrapRequest(URLRequest& request) override {
        if (!request.headers.contains(m_header)) request.headers.set(m_header, m_key);
        return request;
    }

  private:
    const std::string m_header;
    const std::string m_key;
};

}  // namespace torvel
