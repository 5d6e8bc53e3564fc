#include "TorvelPlatform/http/TransferError.h"

#include <string>
#include <system_error>

namespace torvel {
namespace {

using Kind = SessionError::Kind;

Kind kindOf(CURLcode code, std::string_view detail) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return Kind::cannotFindHost;
        case CURLE_COULDNT_CONNECT:
        case CURLE_INTERFACE_FAILED:
        case CURLE_PROXY:
            return Kind::cannotConnect;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_ENGINE_INITFAILED:
        case CURLE_SSL_INVALIDCERTSTATUS:
        case CURLE_SSL_CLIENTCERT:
            return Kind::secureConnectionFailed;
        case CURLE_OPERATION_TIMEDOUT:
            return Kind::timedOut;
        case CURLE_URL_MALFORMAT:
            return Kind::invalidRequest;
        case CURLE_UNSUPPORTED_PROTOCOL:  // an answer without a status line
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_BAD_CONTENT_ENCODING:
        case CURLE_FILESIZE_EXCEEDED:
        case CURLE_OUT_OF_MEMORY:  // one header field over the client's bound
            return Kind::badServerResponse;
        case CURLE_RECV_ERROR:  // only the text tells a reset from a proxy that refuses and chunks that are
                                // none
            if (detail.starts_with("CONNECT tunnel failed")) return Kind::cannotConnect;
            return detail.find("chunked-encoding") == std::string_view::npos ? Kind::connectionLost
                                                                             : Kind::badServerResponse;
        default:
            return Kind::connectionLost;
    }
}

std::string sentence(Kind kind, const std::string& host) {
    switch (kind) {
        case Kind::cannotFindHost:
            return "The host " + host + " cannot be found";
        case Kind::cannotConnect:
            return "The server " + host + " cannot be reached";
        case Kind::secureConnectionFailed:
            return "No secure connection to " + host + " can be made";
        case Kind::timedOut:
            return "The connection to " + host + " took too long";
        case Kind::invalidRequest:
            return "The request to " + host + " cannot be sent";
        case Kind::badServerResponse:
            return "The answer from " + host + " is not valid";
        default:
            return "The connection to " + host + " was lost before the answer was whole";
    }
}

}  // namespace

SessionError transferError(CURLcode code, std::string_view host, std::string_view detail, long systemError) {
    const Kind kind = kindOf(code, detail);
    std::string description = sentence(kind, std::string(host)) + ": ";
    if (systemError != 0 && code == CURLE_COULDNT_CONNECT) {
        description += std::generic_category().message(static_cast<int>(systemError));
    } else if (code == CURLE_OUT_OF_MEMORY) {
        description += "a line of its head is too long";
    } else {
        description += detail.empty() ? std::string_view(curl_easy_strerror(code)) : detail;
    }
    if (!description.ends_with('.')) description += '.';
    return {kind, std::move(description), std::nullopt};
}

}  // namespace torvel
