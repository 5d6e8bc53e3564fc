#pragma once  // internal

#include "TorvelPlatform/http/HTTPURLResponse.h"
#include "TorvelPlatform/http/SessionError.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <variant>

namespace torvel {

// The request that a redirect leads to.
struct Redirection {
    URLRequest request;
    bool keepsBody;
};

// What to do with a redirect that is not delivered: follow where it points, or fail.
using RedirectDecision = std::variant<Redirection, SessionError>;

// Follows 301, 302, 303, 307 and 308 as browsers do (Fetch, 4.4). `sent` is the request that was answered,
// `hasBody` whether it carried one, `sessionHeaders` what the session adds to every request. An answer
// without a usable Location is delivered: absent. To another host neither the caller's header fields travel,
// the few that say nothing about the user aside, nor a body; https never leads to http.
std::optional<RedirectDecision> decideRedirect(const URLRequest& sent, bool hasBody,
                                               const HTTPURLResponse& response,
                                               const HTTPHeaders& sessionHeaders);

}  // namespace torvel
