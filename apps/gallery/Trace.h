#pragma once

#include "TorvelLibrary/Data/Remote/Networking/RequestWrapper.h"
#include "TorvelLibrary/Data/Remote/Networking/ResponseParser.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace torvel::gallery {

// The way of one request through the chains of interceptors, for the network timeline.
struct Trace {
    struct Step {
        std::string name;    // the interceptor's, or what happened
        std::string detail;  // what it changed
        double milliseconds;
    };

    explicit Trace(std::string requestTitle) : title(std::move(requestTitle)) {}
    void add(std::string name, std::string detail);

    std::string title;  // "POST api/v1/login"
    std::vector<Step> steps;
    bool isEnded = false;
    bool isOk = false;

  private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

// Stand behind an interceptor in its chain and write down what it left.
class RequestProbe final : public RequestWrapper {
  public:
    RequestProbe(std::shared_ptr<Trace> trace, std::string interceptor)
        : m_trace(std::move(trace)), m_interceptor(std::move(interceptor)) {}
    URLRequest wrapRequest(URLRequest& request) override;

  private:
    std::shared_ptr<Trace> m_trace;
    std::string m_interceptor;
};

class ResponseProbe final : public ResponseParser {
  public:
    ResponseProbe(std::shared_ptr<Trace> trace, std::string interceptor)
        : m_trace(std::move(trace)), m_interceptor(std::move(interceptor)) {}
    Data parseResponse(Data data) override;

  private:
    std::shared_ptr<Trace> m_trace;
    std::string m_interceptor;
};

}  // namespace torvel::gallery
