// Mixed requests against a sandbox that misbehaves at random, for as long as asked: every request ends in
// exactly one callback, the right one, and neither memory nor descriptors grow. Misbehaviour that stops the
// process by design is left out.
#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelTesting/TemporaryHost.h"
#include "sandbox/Sandbox.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include <malloc.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace torvel {
namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

struct Kind {
    const char *method, *target;
    bool succeeds;
    unsigned weight;
    bool sealed = false;
};

const Kind kinds[] = {
    {"POST", "echo", true, 30},
    {"POST", "echo", true, 30, true},
    {"GET", "echo", true, 30},
    {"GET", "echo", true, 10, true},
    {"PUT", "echo", true, 10, true},
    {"DELETE", "echo", true, 10},
    {"UPLOAD", "echo", true, 10},
    {"GET", "misbehave/status?code=422&body=%7B%7D", true, 5},
    {"GET", "misbehave/status?code=401&body=%7B%7D", false, 5},
    {"POST", "misbehave/status?code=503&body=%7B%7D", true, 5},
    {"GET", "misbehave/delay?ms=5", true, 5},
    {"GET", "misbehave/hang", false, 1},
    {"GET", "misbehave/drip?bytes=16&ms=1", true, 5},
    {"GET", "misbehave/truncate?framing=length&end=cut", false, 3},
    {"GET", "misbehave/truncate?framing=chunked&end=orderly", false, 3},
    {"POST", "misbehave/truncate?framing=length&end=reset", false, 3},
    {"GET", "misbehave/truncate?framing=close&end=cut", false, 3},
    {"GET", "misbehave/reset", false, 3},
    {"POST", "misbehave/reset", false, 3},
    {"GET", "misbehave/redirect?to=/echo&status=307", true, 5},
    {"POST", "misbehave/redirect?to=/echo&status=308", true, 5},
    {"GET", "misbehave/loop", false, 1},
    {"GET", "misbehave/encoded?coding=gzip", true, 5},
    {"GET", "misbehave/encoded?coding=br", true, 5},
    {"GET", "misbehave/encoded?coding=deflate&cut=3", false, 3},
    {"GET", "misbehave/large?bytes=300000", true, 5},
};

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "soak: %s\n", what.c_str());
    std::exit(1);
}

// The sandbox in a process of its own, so that its memory does not count. It ends with its parent.
class Backend {
  public:
    explicit Backend(const fs::path& folder) {
        int ready[2];
        if (::pipe(ready) != 0 || (m_process = ::fork()) < 0) fail("no process for the sandbox");
        if (m_process == 0) serve(folder, ready[1]);
        ::close(ready[1]);
        if (::read(ready[0], &m_port, sizeof m_port) != sizeof m_port) fail("the sandbox does not start");
        ::close(ready[0]);
    }
    std::string url() const { return "https://127.0.0.1:" + std::to_string(m_port) + "/"; }

  private:
    [[noreturn]] static void serve(const fs::path& folder, int ready) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const auto sandbox = sandbox::Sandbox::start();
        if (!sandbox || sandbox.value()->identity().write(folder)) ::_exit(1);
        const std::uint16_t port = sandbox.value()->port();
        if (::write(ready, &port, sizeof port) == sizeof port)
            for (;;) ::pause();
        ::_exit(1);
    }

    pid_t m_process = -1;
    std::uint16_t m_port = 0;
};

struct Usage {
    long kilobytes, descriptors;

    static Usage now() {
        ::malloc_trim(0);
        long pages = 0;
        std::ifstream("/proc/self/statm") >> pages >> pages;
        const auto open = std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
        return {pages * (::sysconf(_SC_PAGESIZE) / 1024), open};
    }
};

class Soak {
  public:
    Soak(std::size_t requests, std::chrono::seconds time) : m_limit(requests), m_end(Clock::now() + time) {
        std::vector<unsigned> weights;
        for (const Kind& kind : kinds) weights.push_back(kind.weight);
        m_draw = std::discrete_distribution<std::size_t>(weights.begin(), weights.end());
    }

    void run() {
        constexpr std::size_t inFlight = 64, warmUp = 1000;
        for (std::size_t i = 0; i < inFlight; ++i) send();
        await(warmUp);
        const Usage before = Usage::now();
        await(m_limit);
        while (m_completed < m_started) await(m_completed + 1);
        const Usage after = Usage::now();
        std::printf("%zu requests, each with its one callback; %ld to %ld kB, %ld to %ld descriptors\n",
                    m_completed, before.kilobytes, after.kilobytes, before.descriptors, after.descriptors);
        constexpr long slack = 8 * 1024;  // what the heap's fragments may differ by
        if (after.kilobytes > before.kilobytes + slack) fail("memory grows");
        if (after.descriptors > before.descriptors + 8) fail("descriptors leak");
    }

  private:
    bool isOver() const { return m_started >= m_limit || Clock::now() >= m_end; }

    // Until so many requests are complete, or all that will ever be.
    void await(std::size_t count) {
        while (m_completed < count && !(isOver() && m_completed == m_started)) {
            const std::size_t before = m_completed;
            DispatchQueue::main().runUntil([&] { return m_completed != before; }, std::chrono::seconds(30));
            if (m_completed == before) fail("stalled after " + std::to_string(before) + " requests");
        }
    }

    void send() {
        const std::size_t id = m_started++;
        m_calls.push_back(0);
        const Kind& kind = kinds[m_draw(m_random)];
        const std::string body(1 + m_random() % 3000, static_cast<char>('a' + m_random() % 26));
        const OnSuccess onSuccess = [this, id, &kind, body](const Data& answer) {
            if (kind.target == std::string_view("echo") && kind.method != std::string_view("GET") &&
                kind.method != std::string_view("UPLOAD") && answer.raw().find(body) == std::string::npos)
                fail("an echo without its body: " + answer.raw().substr(0, 200));
            complete(id, kind, true);
        };
        const OnError onError = [this, id, &kind](const Decodable& error) {
            complete(id, kind, false, dynamic_cast<const APITimeError&>(error).localizedDescription());
        };
        request(kind, body, onSuccess, onError);
    }

    static void request(const Kind& kind, const std::string& body, const OnSuccess& onSuccess,
                        const OnError& onError) {
        const std::string key = AES256CBC::generatePassword();
        RequestInterceptors out;
        ResponseInterceptors in;
        if (kind.sealed) {
            out = {std::make_shared<EncryptRequestInterceptor>(key)};
            in = {std::make_shared<DecryptResponseInterceptor>(key)};
        }
        const TorvelNetworkClient client;
        constexpr char type[] = "text/plain";
        const std::string_view method = kind.method;
        if (method == "GET") client.getRequest(kind.target, type, out, in, onSuccess, onError);
        if (method == "POST") client.postRequest(kind.target, Data(body), type, out, in, onSuccess, onError);
        if (method == "PUT") client.putRequest(kind.target, Data(body), type, out, in, onSuccess, onError);
        if (method == "DELETE")
            client.deleteRequest(kind.target, Data(body), type, out, in, onSuccess, onError);
        if (method == "UPLOAD")
            client.multipartRequest(kind.target, "POST", Data(body), type, "file.txt", out, in, onSuccess,
                                    onError, [](double) {});
    }

    void complete(std::size_t id, const Kind& kind, bool success, const std::string& error = "") {
        if (++m_calls[id] != 1) fail("a second callback");
        if (success != kind.succeeds)
            fail(std::string(kind.method) + " " + kind.target +
                 (success ? " succeeded" : " failed: " + error));
        ++m_completed;
        if (!isOver()) send();
    }

    std::size_t m_limit;
    Clock::time_point m_end;
    std::mt19937 m_random{std::random_device{}()};
    std::discrete_distribution<std::size_t> m_draw;
    std::vector<std::uint8_t> m_calls;  // a request's callbacks so far
    std::size_t m_started = 0, m_completed = 0;
};

}  // namespace
}  // namespace torvel

int main(int count, char** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "Usage: soak REQUESTS MINUTES\n");
        return 2;
    }
    using namespace torvel;
    const testing::TemporaryHost host;
    const Backend backend(host.directory());
    ::setenv("SSL_CERT_FILE", (host.directory() / "ca.pem").c_str(), 1);
    TorvelLibraryBuilder()
        .setServerURL(backend.url())
        .setSSlType(SSlPinningType::certificate({"server"}))
        .setEncryptionCertName("server")
        .setRequestTimeoutInterval(2)
        .build();
    Soak(std::stoul(arguments[1]), std::chrono::seconds(60 * std::stol(arguments[2]))).run();
    return 0;
}
