#include "TorvelTesting/SessionDouble.h"

#include "TorvelLibrary/TorvelLibrary.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <optional>

namespace torvel::testing {
namespace {

using Kind = SessionError::Kind;

// What comes back for one request; nothing for one that hangs.
using Step = std::function<std::optional<TransferResult>(const URLRequest&)>;

std::string hostOf(const URLRequest& request) { return request.url->host().value_or(""); }

HTTPURLResponse head(const URLRequest& request, int status, std::string_view field, std::string_view value) {
    HTTPURLResponse response{*request.url, status, {}};
    if (!value.empty()) response.headers.set(field, value);
    return response;
}

// The server acted on these requests, or may have.
bool isCommonlySent(Kind kind) {
    return kind != Kind::invalidRequest && kind != Kind::cannotFindHost && kind != Kind::cannotConnect &&
           kind != Kind::secureConnectionFailed && kind != Kind::serverTrustEvaluationFailed &&
           kind != Kind::cancelled;
}

SessionError error(Kind kind, const URLRequest& request) {
    return {kind, "The request to " + hostOf(request) + " fails in this test.", std::nullopt, std::nullopt,
            isCommonlySent(kind)};
}

}  // namespace

struct SessionDouble::Rule::State {
    bool fits(const URLRequest& request) const {
        const std::string asked = request.url->path();
        return request.httpMethod == method && (asked.empty() ? "/" : asked) == path &&
               (!part || (request.httpBody && request.httpBody->raw().find(*part) != std::string::npos));
    }
    Step next() { return steps.empty() ? Step() : steps[std::min(used++, steps.size() - 1)]; }

    std::string method, path;
    std::optional<std::string> part;
    std::vector<Step> steps;
    std::size_t used = 0;
};

SessionDouble::Rule& SessionDouble::Rule::withBody(std::string part) {
    m_state->part = std::move(part);
    return *this;
}

SessionDouble::Rule& SessionDouble::Rule::answer(int status, std::string body, std::string contentType) {
    m_state->steps.push_back([=](const URLRequest& request) {
        return TransferResult{head(request, status, "Content-Type", contentType), body, std::nullopt};
    });
    return *this;
}

SessionDouble::Rule& SessionDouble::Rule::redirect(std::string location, int status) {
    m_state->steps.push_back([=](const URLRequest& request) {
        return TransferResult{head(request, status, "Location", location), "", std::nullopt};
    });
    return *this;
}

SessionDouble::Rule& SessionDouble::Rule::fail(SessionError::Kind kind) {
    m_state->steps.push_back([=](const URLRequest& request) {
        return TransferResult{std::nullopt, "", error(kind, request)};
    });
    return *this;
}

SessionDouble::Rule& SessionDouble::Rule::timeOut(SessionError::Phase phase) {
    m_state->steps.push_back([=](const URLRequest& request) {
        SessionError late = error(Kind::timedOut, request);
        late.phase = phase;
        late.maybeSent = phase >= SessionError::Phase::sending;
        return TransferResult{std::nullopt, "", std::move(late)};
    });
    return *this;
}

SessionDouble::Rule& SessionDouble::Rule::refuseTrust(TrustFailure::Reason reason) {
    m_state->steps.push_back([=](const URLRequest& request) {
        SessionError refused = error(Kind::serverTrustEvaluationFailed, request);
        refused.trust = TrustFailure{reason, hostOf(request), refused.localizedDescription};
        return TransferResult{std::nullopt, "", std::move(refused)};
    });
    return *this;
}

SessionDouble::Rule& SessionDouble::Rule::breakOff(int status) {
    m_state->steps.push_back([=](const URLRequest& request) {
        return TransferResult{head(request, status, "", ""), "", error(Kind::connectionLost, request)};
    });
    return *this;
}

SessionDouble::Rule& SessionDouble::Rule::hang() {
    m_state->steps.push_back([](const URLRequest&) { return std::nullopt; });
    return *this;
}

class SessionDouble::Backend final : public URLProtocol {
  public:
    std::shared_ptr<Rule::State> add(std::string method, std::string path) {
        const std::lock_guard lock(m_mutex);
        m_rules.push_back(std::make_shared<Rule::State>());
        m_rules.back()->method = std::move(method);
        m_rules.back()->path = std::move(path);
        return m_rules.back();
    }

    void load(const URLRequest& request, Done done) override {
        std::optional<TransferResult> result;
        {
            const std::lock_guard lock(m_mutex);
            m_requests.push_back(request);
            const Step step = stepFor(request);
            if (!step)
                result =
                    TransferResult{head(request, 501, "", ""), "No rule of the test fits.", std::nullopt};
            else if (!(result = step(request)))
                m_hanging.emplace_back(request, std::move(done));
        }
        if (result) done(std::move(*result));
    }

    void loseConnections() {
        std::vector<std::pair<URLRequest, Done>> hanging;
        {
            const std::lock_guard lock(m_mutex);
            hanging.swap(m_hanging);
        }
        for (const auto& [request, done] : hanging)
            done({std::nullopt, "", error(Kind::connectionLost, request)});
    }

    std::vector<URLRequest> requests() const {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

  private:
    Step stepFor(const URLRequest& request) const {
        const auto rule = std::find_if(m_rules.rbegin(), m_rules.rend(),
                                       [&](const auto& candidate) { return candidate->fits(request); });
        return rule == m_rules.rend() ? Step() : (*rule)->next();
    }

    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<Rule::State>> m_rules;
    std::vector<URLRequest> m_requests;
    std::vector<std::pair<URLRequest, Done>> m_hanging;
};

SessionDouble::SessionDouble() : m_backend(std::make_shared<Backend>()) {
    URLSessionConfiguration configuration = URLSessionConfiguration::defaults();
    configuration.protocol = m_backend;
    m_session = std::make_shared<Session>(std::move(configuration));
}

SessionDouble::~SessionDouble() { m_backend->loseConnections(); }

SessionDouble::Rule SessionDouble::on(std::string method, std::string path) {
    return Rule(m_backend->add(std::move(method), std::move(path)));
}

void SessionDouble::install() const { TorvelLibrary::sharedInstance()->setManager(m_session); }

std::vector<URLRequest> SessionDouble::requests() const { return m_backend->requests(); }

}  // namespace torvel::testing
