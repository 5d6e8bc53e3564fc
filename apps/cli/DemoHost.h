#pragma once

#include "TorvelLibrary/Data/Remote/Networking/NetworkDispatcher.h"
#include "TorvelLibrary/SSlPinningType.h"
#include "TorvelLibrary/WrapperConfig.h"
#include "TorvelPlatform/foundation/Outcome.h"
#include "sandbox/Sandbox.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace torvel::cli {

// How one request ended: what the library called, and what the backend saw of it.
struct Seen {
    std::string callback;   // "onSuccess", "onError"; empty when neither came
    std::string body;       // what onSuccess received
    std::string message;    // the error record's sentence
    std::string errorCode;  // and its code
    double milliseconds = 0;
    std::optional<sandbox::Exchange> exchange;  // absent: no request reached the backend
};

// A host application in small, with a backend of its own: a bundle in a temporary folder (removed at the
// end) with the sample host's endpoint table, the backend's certificate server.der and a stranger's,
// stranger.der; the backend's authority is the only one that this process trusts.
class DemoHost {
  public:
    // The error is one line.
    static Outcome<std::unique_ptr<DemoHost>, std::string> start();
    ~DemoHost();

    // Configures the library anew, as a host does at its start; requests from then on use a new session.
    void configure(WrapperConfig flavour, const std::string& pinnedCertificate, double timeout) const;

    // Calls `operation`, which sends one request with the callbacks that it is given, and waits for its end.
    using Operation = std::function<void(OnSuccess, OnError)>;
    Seen run(const Operation& operation) const;

    const sandbox::Sandbox& backend() const { return *m_backend; }

  private:
    explicit DemoHost(std::unique_ptr<sandbox::Sandbox> backend) : m_backend(std::move(backend)) {}
    std::optional<std::string> makeBundle();

    std::unique_ptr<sandbox::Sandbox> m_backend;
    std::filesystem::path m_bundle;
};

}  // namespace torvel::cli
