#pragma once

#include "TorvelPlatform/http/Session.h"
#include "TorvelTesting/ScriptedServer.h"

#include <chrono>
#include <string>

namespace torvel::testing {

using Kind = SessionError::Kind;
using Peer = ScriptedServer::Peer;

inline const std::string okAnswer = response("200 OK", "hello");

inline URLRequest requestTo(const std::string& url, std::string method = "GET", double timeout = 60) {
    URLRequest request(*URL::parse(url));
    request.httpMethod = std::move(method);
    request.timeoutInterval = timeout;
    return request;
}

struct Answer {
    int completions = 0;
    DataResponse response;

    // "ok", or the failure's sentence.
    std::string outcome() const {
        if (completions == 0) return "never completed";
        return response.error ? response.error->localizedDescription : "ok";
    }
    std::optional<Kind> failure() const {
        return response.error ? std::optional(response.error->kind) : std::nullopt;
    }
    int status() const { return response.response ? response.response->statusCode : 0; }
    std::string data() const { return response.data ? response.data->raw() : "(absent)"; }
};

// Starts the request and runs the main queue until it has completed.
template <class Request>
Answer complete(Request request) {
    auto answer = std::make_shared<Answer>();  // a second completion would still find it
    request.responseData(DispatchQueue::main(), [answer](DataResponse response) {
        ++answer->completions;
        answer->response = std::move(response);
    });
    DispatchQueue::main().runUntil([&] { return answer->completions > 0; }, std::chrono::seconds(60));
    DispatchQueue::main().drain();
    return *answer;
}

inline Answer fetch(Session& session, URLRequest request) {
    return complete(session.request(std::move(request)));
}

// The same, of a request that takes no answer but a success of an accepted type.
inline Answer fetchValidated(Session& session, URLRequest request) {
    DataRequest sent = session.request(std::move(request));
    sent.validate();
    return complete(std::move(sent));
}

// What a server's connection does that takes a request and never answers it.
inline void neverAnswer(Peer& peer) {
    peer.receive();
    peer.stall();
}

inline Session plainSession() { return Session(URLSessionConfiguration{}); }

inline Answer fetch(URLRequest request) {
    Session session = plainSession();
    return fetch(session, std::move(request));
}

}  // namespace torvel::testing
