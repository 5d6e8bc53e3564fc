#pragma once

#include "TorvelPlatform/http/Session.h"

#include <chrono>
#include <string>

namespace torvel::testing {

inline URLRequest requestTo(const std::string& url, std::string method = "GET") {
    URLRequest request(*URL::parse(url));
    request.httpMethod = std::move(method);
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

inline Session plainSession() { return Session(URLSessionConfiguration{}); }

}  // namespace torvel::testing
