#pragma once

#include "TorvelLibrary/Data/Remote/Networking/NetworkDispatcher.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "gallery/Trace.h"
#include "sandbox/Sandbox.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace torvel::gallery {

// The wallet's session with its backend and all that the screens show of it. Its requests end on the main
// queue, so it must live as long as that is drained.
class Wallet {
  public:
    struct Entry {
        std::string reference, to, amount, note;
    };

    // A transfer that went through: how it travelled and what the backend read.
    struct Sealed {
        std::string reference, envelope, plainText;
    };

    enum class Fault { none, refused, declined, offline };

    Wallet(const sandbox::Sandbox& backend, std::function<void()> changed)
        : m_backend(backend), m_changed(std::move(changed)) {}

    void logIn(const std::string& number, const std::string& pin);
    void logOut();
    // Asks for the balance, then for the statement.
    void refresh();
    // The body is sealed from end to end.
    void transfer(const std::string& to, const std::string& amount, const std::string& note);

    bool isLoggedIn() const { return !m_token.empty(); }
    bool isBusy() const { return m_running > 0; }
    Fault fault() const { return m_fault; }
    void forgetFault() { m_fault = Fault::none; }
    const std::string& name() const { return m_name; }
    const std::string& balance() const { return m_balance; }
    const std::vector<Entry>& entries() const { return m_entries; }  // the latest first
    const std::optional<Sealed>& lastTransfer() const { return m_lastTransfer; }
    void forgetTransfer() { m_lastTransfer.reset(); }
    const std::deque<std::shared_ptr<Trace>>& traces() const { return m_traces; }  // the latest first

  private:
    struct Call;
    using Answer = std::function<void(const JSON& answer)>;

    void send(Call call);
    void end(const std::shared_ptr<Trace>& trace, Fault fault);
    void takeStatement(const JSON& answer);
    void takeTransfer(const JSON& answer);

    const sandbox::Sandbox& m_backend;
    std::function<void()> m_changed;
    std::string m_token, m_name, m_balance;
    std::vector<Entry> m_entries;
    std::optional<Sealed> m_lastTransfer;
    std::deque<std::shared_ptr<Trace>> m_traces;
    Fault m_fault = Fault::none;
    int m_running = 0;
};

}  // namespace torvel::gallery
