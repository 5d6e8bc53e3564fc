#pragma once

#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelTesting/TemporaryHost.h"
#include "sandbox/Sandbox.h"

#include <memory>
#include <string>

#include <stdlib.h>

namespace torvel::testing {

// A temporary host whose library talks to a sandbox backend of its own on the loopback interface: over TLS,
// pinned to its certificate, with that certificate for sealing. Needs Torvel::Sandbox beside this kit.
class SandboxHost : public TemporaryHost {
  public:
    explicit SandboxHost(WrapperConfig flavour = WrapperConfig::VelmMoney)
        : m_sandbox(sandbox::Sandbox::start({.flavour = std::string(rawValue(flavour))}).value()) {
        const auto authority = addResource("ca.pem", m_sandbox->identity().caPem);
        addResource("server.der", m_sandbox->identity().serverDer);
        ::setenv("SSL_CERT_FILE", authority.c_str(), 1);
        TorvelLibraryBuilder()
            .setServerURL(m_sandbox->url())
            .setWrapperConfig(flavour)
            .setEncryptionCertName("server")
            .setSSlType(SSlPinningType::certificate({"server"}))
            .build();
    }

    // The backend, for what it saw.
    const sandbox::Sandbox& backend() const { return *m_sandbox; }

  private:
    std::unique_ptr<sandbox::Sandbox> m_sandbox;
};

}  // namespace torvel::testing
