#pragma once  // internal

#include "TorvelPlatform/http/HTTPURLResponse.h"
#include "TorvelPlatform/http/SessionError.h"

#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// Demands status 200 to 299, then a content type that `accept` (the request's own Accept field) allows.
// Without one everything passes, and so does the type of an empty body.
std::optional<SessionError> validationError(const std::optional<std::string>& accept,
                                            const HTTPURLResponse& response, bool emptyBody);

// A response must have bytes, unless its status is 204 or 205 or the method HEAD.
std::optional<SessionError> emptinessError(std::string_view method, const HTTPURLResponse& response,
                                           bool emptyBody);

}  // namespace torvel
