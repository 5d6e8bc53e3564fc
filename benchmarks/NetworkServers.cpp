#include "NetworkServers.h"

#include "Bench.h"
#include "TorvelTesting/Certificates.h"

#include <charconv>
#include <map>
#include <string_view>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace torvel::bench {
namespace {

struct Listener {
    int fd;
    int port;
};

// On a port that the system chooses.
Listener listenAnywhere() {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(fd, 4096) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        giveUp("no port to listen on");
    return {fd, ntohs(address.sin_port)};
}

// nginx takes no "any port": one that was free a moment ago.
int freePort() {
    const Listener listener = listenAnywhere();
    ::close(listener.fd);
    return listener.port;
}

// Runs `work` in a child on the first processor, which ends with its parent at the latest.
template <class Work>
pid_t startChild(Work work) {
    const pid_t parent = ::getpid(), pid = ::fork();
    if (pid < 0) giveUp("no process to be had");
    if (pid > 0) return pid;
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(1);
    runOnProcessor(0);
    work();
    ::_exit(1);
}

void waitForPort(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    for (int i = 0; i < 2000; ++i) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool open = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        ::close(fd);
        if (open) return;
        ::usleep(5000);
    }
    giveUp("nginx does not listen");
}

std::string configuration(const std::string& folder, const int (&ports)[3]) {
    const std::string answer =
        "{ default_type application/json; return 200 "
        "'{\"status\":\"ok\",\"balance\":\"1200.50\",\"currency\":"
        "\"XAF\",\"entries\":[\"rent\",\"airtime\",\"market\",\"transfer\",\"school\",\"water\",\"bus\"]}'; "
        "}";
    std::string text =
        "daemon off; master_process off; worker_processes 1; pid " + folder + "/nginx.pid;\nerror_log " +
        folder +
        "/nginx.log;\nevents { worker_connections 8192; }\nhttp { access_log off; keepalive_timeout 600;"
        " keepalive_requests 1000000000; client_max_body_size 64k;\n";
    for (const char* const kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
        text.append(kind).append("_temp_path ").append(folder).append("/").append(kind).append(";\n");
    const char* const kinds[] = {"", " ssl", " ssl http2"};
    for (int i = 0; i < 3; ++i)
        text += "server { listen 127.0.0.1:" + std::to_string(ports[i]) + kinds[i] + "; ssl_certificate " +
                folder + "/server.pem; ssl_certificate_key " + folder + "/server.key; location / " + answer +
                " }\n";
    return text + "}\n";
}

// What a connection of the sink has sent of its current request.
struct Incoming {
    std::string head;
    std::size_t bodyLeft = 0;
    bool inBody = false;
};

std::size_t contentLength(std::string_view head) {
    constexpr std::string_view name = "Content-Length: ";
    const std::size_t at = head.find(name);
    std::size_t length = 0;
    if (at != std::string_view::npos) {
        const std::string_view text = head.substr(at + name.size());
        std::from_chars(text.data(), text.data() + text.size(), length);
    }
    return length;
}

// Takes bytes in; whether a request is complete with them.
bool take(Incoming& incoming, std::string_view bytes) {
    if (!incoming.inBody) {
        incoming.head += bytes;
        const std::size_t end = incoming.head.find("\r\n\r\n");
        if (end == std::string::npos) return false;
        incoming.inBody = true;
        incoming.bodyLeft = contentLength(incoming.head);
        bytes = std::string_view(incoming.head).substr(end + 4);
    }
    incoming.bodyLeft -= bytes.size();
    return incoming.bodyLeft == 0;
}

}  // namespace

void runOnProcessor(unsigned processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    ::sched_setaffinity(0, sizeof set, &set);
}

Child::~Child() {
    ::kill(m_pid, SIGTERM);
    ::waitpid(m_pid, nullptr, 0);
}

double Child::seconds() const {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(m_pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
        giveUp("a server has no clock");
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

Nginx::Nginx(const Folder& folder)
    : m_ports{freePort(), freePort(), freePort()}, m_process(startChild([&] {
          using torvel::testing::issue;
          const auto authority = issue({.commonName = "bench authority", .isAuthority = true});
          const auto server = issue(
              {.commonName = "127.0.0.1", .alternativeNames = "IP:127.0.0.1", .rsaBits = 2048}, &authority);
          folder.write("ca.pem", authority.certificatePem);
          folder.write("server.pem", server.certificatePem);
          folder.write("server.key", server.privateKeyPem);
          folder.write("server.der", server.der.raw());
          folder.write("nginx.conf", configuration(folder.path(), m_ports));
          ::execlp("nginx", "nginx", "-c", (folder / "nginx.conf").c_str(), "-p", folder.path().c_str(),
                   nullptr);
          ::execl("/usr/sbin/nginx", "nginx", "-c", (folder / "nginx.conf").c_str(), "-p",
                  folder.path().c_str(), nullptr);
      })) {
    waitForPort(m_ports[2]);
}

SinkServer::SinkServer()
    : m_shared(static_cast<std::atomic<int>*>(::mmap(
          nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))),
      m_port(0),
      m_process([this] {
          const Listener listener = listenAnywhere();
          m_port = listener.port;
          const pid_t pid = startChild([&] { serve(listener.fd); });
          ::close(listener.fd);
          return pid;
      }()) {}

void SinkServer::serve(int listener) {
    const int poll = ::epoll_create1(0);
    const auto watch = [&](int fd) {
        epoll_event event{.events = EPOLLIN, .data = {.fd = fd}};
        ::epoll_ctl(poll, EPOLL_CTL_ADD, fd, &event);
    };
    watch(listener);
    std::map<int, Incoming> connections;
    static char buffer[256 * 1024];
    for (epoll_event event; ::epoll_wait(poll, &event, 1, -1) == 1;) {
        if (event.data.fd == listener) {
            watch(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
            continue;
        }
        const ssize_t size = ::recv(event.data.fd, buffer, sizeof buffer, 0);
        if (size <= 0) {
            connections.erase(event.data.fd);
            ::close(event.data.fd);
            continue;
        }
        Incoming& incoming = connections[event.data.fd];
        if (!take(incoming, {buffer, static_cast<std::size_t>(size)})) continue;
        if (incoming.head.starts_with("GET /hang")) {
            ++*m_shared;
        } else {
            constexpr std::string_view answer =
                "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 4\r\n\r\ntrue";
            static_cast<void>(!::send(event.data.fd, answer.data(), answer.size(), MSG_NOSIGNAL));
        }
        incoming = {};
    }
}

}  // namespace torvel::bench
