#pragma once

#include "TorvelLibrary/Data/Remote/Networking/RequestWrapper.h"

#include <string>
#include <utility>

namespace torvel {

// An interceptor of the host's own: its token, in every request.
class TokenInterceptor final : public RequestWrapper {
  public:
    explicit TokenInterceptor(std::string token) : m_token(std::move(token)) {}

    URLRequest wrapRequest(URLRequest& request) override {
        request.headers.set("Authorization", "Bearer " + m_token);
        return request;
    }

  private:
    std::string m_token;
};

}  // namespace torvel
