#pragma once

#include "TorvelPlatform/http/Session.h"

#include <memory>
#include <string>
#include <vector>

namespace torvel::testing {

// A session that answers by rule instead of by servers, without a socket or a thread, and keeps what was
// sent. All else is the real session's: validation, redirects, cancellation, and that the callback comes on
// the main queue, where the test lets it run (see MainQueue). Any thread.
//
//     SessionDouble backend;
//     backend.on("POST", "/login").answer(200, R"({"token":"t"})");
//     backend.on("GET", "/balance").timeOut().answer(200, R"({"balance":"5.00"})");  // the second time
//     backend.install();
class SessionDouble {
  public:
    // How the requests that fit are answered: each by the next of its answers, the last one again and again.
    class Rule {
      public:
        // Fits only bodies that contain the text.
        Rule& withBody(std::string part);

        // An answer, of any status.
        Rule& answer(int status, std::string body = {}, std::string contentType = "application/json");
        // A redirect, which the session follows by its own rules.
        Rule& redirect(std::string location, int status = 307);
        // The failure, with `maybeSent` as this kind of it commonly has.
        Rule& fail(SessionError::Kind kind);
        // A time-out; the request was maybe sent from the phase `sending` on.
        Rule& timeOut(SessionError::Phase phase = SessionError::Phase::waiting);
        // The server is not trusted.
        Rule& refuseTrust(TrustFailure::Reason reason);
        // The connection is lost within an answer of this status.
        Rule& breakOff(int status);
        // No answer ever, until the request is cancelled or the double ends.
        Rule& hang();

      private:
        friend class SessionDouble;
        struct State;
        explicit Rule(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        std::shared_ptr<State> m_state;
    };

    SessionDouble();
    // Requests that still hang are told that their connection is lost.
    ~SessionDouble();
    SessionDouble(const SessionDouble&) = delete;
    SessionDouble& operator=(const SessionDouble&) = delete;

    // A rule for this method and path, percent-decoded and without its query. Of several that fit the latest
    // decides; a request that none fits is answered with status 501.
    Rule on(std::string method, std::string path);

    // For code that takes a session.
    const std::shared_ptr<Session>& session() const { return m_session; }
    // Makes it the session of the installed TorvelLibrary, until the next build().
    void install() const;

    // Every hop as it would have left: after the interceptors, with the session's fields, sealed if it was
    // sealed.
    std::vector<URLRequest> requests() const;

  private:
    class Backend;
    std::shared_ptr<Backend> m_backend;
    std::shared_ptr<Session> m_session;
};

}  // namespace torvel::testing
