#include "cli/DemoHost.h"

#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "sample/SampleResources.h"

#include <chrono>
#include <cstdlib>
#include <fstream>

namespace torvel::cli {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

bool writeFile(const fs::path& file, const std::string& bytes) {
    return static_cast<bool>(std::ofstream(file, std::ios::binary).write(bytes.data(), std::ssize(bytes)));
}

}  // namespace

Outcome<std::unique_ptr<DemoHost>, std::string> DemoHost::start() {
    auto backend = sandbox::Sandbox::start();
    if (!backend) return backend.error();
    std::unique_ptr<DemoHost> host(new DemoHost(std::move(backend).value()));
    if (const auto fault = host->makeBundle()) return *fault;
    return host;
}

DemoHost::~DemoHost() {
    std::error_code failed;
    fs::remove_all(m_bundle, failed);
}

std::optional<std::string> DemoHost::makeBundle() {
    std::error_code failed;
    std::string name = (fs::temp_directory_path(failed) / "torvel-demo-XXXXXX").string();
    if (failed || ::mkdtemp(name.data()) == nullptr)
        return "no temporary folder can be made (see TMPDIR): " + name;
    m_bundle = name;

    const fs::path table = sampleResources() / "EndpointsConfig.plist";
    fs::copy_file(table, m_bundle / table.filename(), failed);
    if (failed) return "the sample host's endpoint table cannot be copied: " + table.string();
    const auto& identity = m_backend->identity();
    if (!writeFile(m_bundle / "server.der", identity.serverDer) ||
        !writeFile(m_bundle / "stranger.der", sandbox::SandboxIdentity::make().serverDer) ||
        !writeFile(m_bundle / "ca.pem", identity.caPem))
        return "the temporary folder cannot be written: " + m_bundle.string();

    Bundle::setMain(m_bundle, "torvel-demo");
    // A host's authorities are the system's; this backend made its own a moment ago.
    ::setenv("SSL_CERT_FILE", (m_bundle / "ca.pem").c_str(), 1);
    ::setenv("no_proxy", "127.0.0.1", 1);
    return std::nullopt;
}

void DemoHost::configure(WrapperConfig flavour, const std::string& pinnedCertificate, double timeout) const {
    TorvelLibraryBuilder()
        .setServerURL(m_backend->url() + "/")
        .setSSlType(SSlPinningType::certificate({pinnedCertificate}))
        .setEncryptionCertName("server")
        .setWrapperConfig(flavour)
        .setRequestTimeoutInterval(timeout)
        .build();
}

Seen DemoHost::run(const Operation& operation) const {
    constexpr std::chrono::seconds patience{60};  // the library's own time-out comes long before
    const auto seen = std::make_shared<Seen>();
    const std::size_t before = m_backend->exchanges().size();
    const Clock::time_point start = Clock::now();
    operation(
        [seen](Data body) {
            seen->callback = "onSuccess";
            seen->body = std::move(body).raw();
        },
        [seen](const Decodable& error) {
            const auto& record = dynamic_cast<const APITimeError&>(error);
            seen->callback = "onError";
            seen->message = record.localizedDescription();
            seen->errorCode = record.errorCodeInResponse();
        });
    DispatchQueue::main().runUntil([&] { return !seen->callback.empty(); }, patience);
    seen->milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    if (auto exchanges = m_backend->exchanges(); exchanges.size() > before)
        seen->exchange = std::move(exchanges.back());
    return *seen;
}

}  // namespace torvel::cli
