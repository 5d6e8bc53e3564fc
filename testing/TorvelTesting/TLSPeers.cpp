#include "TorvelTesting/TLSPeers.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <stdexcept>

#include <arpa/inet.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace torvel::testing {
namespace {

constexpr std::chrono::seconds patience(20);  // a server that says nothing for so long fails the test

std::string chainOf(const Identity& leaf, const std::vector<Identity>& others) {
    std::string chain = leaf.certificatePem;
    for (const Identity& other : others) chain += other.certificatePem;
    return chain;
}

// A listener on a free port, which nginx inherits: the port cannot be taken in between.
int listener(std::uint16_t& port) {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 64) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no loopback listener");
    port = ntohs(address.sin_port);
    return listener;
}

}  // namespace

std::filesystem::path ServerProcess::write(const std::string& name, const std::string& content) const {
    // Renamed into place: the server never reads half a file.
    const std::filesystem::path path = m_directory / name;
    std::ofstream(path.string() + ".new", std::ios::binary) << content;
    std::filesystem::rename(path.string() + ".new", path);
    return path;
}

void ServerProcess::start(const std::vector<std::string>& arguments, int inheritedSocket) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (::pipe2(input.data(), O_CLOEXEC) != 0 || ::pipe2(output.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipes");
    m_process = ::fork();
    if (m_process == 0) {
        ::dup2(input[0], 0);
        ::dup2(output[1], 1);
        ::dup2(output[1], 2);
        if (inheritedSocket >= 0) {
            ::fcntl(inheritedSocket, F_SETFD, 0);  // it may be 3 already
            ::dup2(inheritedSocket, 3);
        }
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(input[0]);
    ::close(output[1]);
    m_input = input[1];
    m_output = output[0];
}

ServerProcess::~ServerProcess() {
    end(SIGTERM);
    if (m_input >= 0) ::close(m_input);
    if (m_output >= 0) ::close(m_output);
}

void ServerProcess::end(int signal) {
    if (m_process <= 0) return;
    ::kill(m_process, signal);
    ::waitpid(m_process, nullptr, 0);
    m_process = -1;
}

OpenSSLServer::OpenSSLServer(std::filesystem::path directory, const Identity& leaf,
                             const std::vector<Identity>& others, const std::vector<std::string>& options,
                             std::string answer)
    : ServerProcess(std::move(directory)), m_answer(std::move(answer)) {
    ::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> arguments{"openssl", "s_server", "-accept", "127.0.0.1:0", "-tlsextdebug",
                                       "-no-CAfile", "-no-CApath", "-no-CAstore", "-cert",
                                       write("leaf.pem", leaf.certificatePem), "-key",
                                       write("leaf.key", leaf.privateKeyPem),
                                       // Weak certificates are the client's to refuse.
                                       "-cipher", "DEFAULT:@SECLEVEL=0"};
    if (!others.empty())
        arguments.insert(
            arguments.end(),
            {"-cert_chain", write("chain.pem", chainOf(others.front(), {others.begin() + 1, others.end()}))});
    arguments.insert(arguments.end(), options.begin(), options.end());
    start(arguments);
    const std::string ready = "\nACCEPT 127.0.0.1:";
    m_pump = std::thread([this] { pump(); });
    const std::string output = printed({"\nACCEPT"});
    m_port = static_cast<std::uint16_t>(std::stoi(output.substr(output.find(ready) + ready.size())));
}

OpenSSLServer::~OpenSSLServer() {
    if (m_pump.joinable()) transcript();
}

void OpenSSLServer::pump() {
    bool answered = false;
    char buffer[4096];
    for (ssize_t count; (count = ::read(m_output, buffer, sizeof buffer)) > 0; m_changed.notify_all()) {
        const std::lock_guard lock(m_mutex);
        m_printed.append(buffer, static_cast<std::size_t>(count));
        if (answered || m_printed.find("\r\n\r\n") == std::string::npos) continue;
        answered = ::write(m_input, m_answer.data(), m_answer.size()) > 0;
    }
}

std::string OpenSSLServer::printed(std::initializer_list<const char*> endings) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, patience, [&] {
        return std::any_of(endings.begin(), endings.end(),
                           [&](const char* ending) { return m_printed.find(ending) != std::string::npos; });
    });
    return m_printed;
}

std::string OpenSSLServer::transcript(const char* awaited) {
    if (awaited != nullptr)
        printed({awaited});
    else
        printed({"\r\n\r\n", "ERROR\n", "CONNECTION CLOSED\n"});
    end(SIGTERM);
    if (m_pump.joinable()) m_pump.join();
    return m_printed;
}

NginxServer::NginxServer(std::filesystem::path directory, const Identity& leaf,
                         const std::vector<Identity>& others)
    : ServerProcess(std::move(directory)) {
    serve(leaf, others);
    const int socket = listener(m_port);
    const std::string port = std::to_string(m_port);
    // Certificate names with a variable in them are read anew for each connection.
    write("nginx.conf", R"(daemon off; user root; pid nginx.pid; error_log stderr;
events {}
http {
  log_format line "$request $host $ssl_session_reused";
  access_log requests.log line;
  client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi;
  scgi_temp_path scgi;
  map $ssl_server_name $served { default served; }
  server {
    listen 127.0.0.1:)" + port +
                            R"( ssl http2;
    ssl_certificate $served.pem; ssl_certificate_key $served.key;
    keepalive_requests 20;
    ssl_session_cache shared:all:1m; ssl_session_tickets on;
    location / { return 200 ok; }
    location /slow { limit_rate 1; return 200 slow; }
    location /once { keepalive_timeout 0; return 200 ok; }
    location ~ ^/away/(.*)$ { return 302 https://$1:)" +
                            port + R"(/; }
  }
}
)");
    ::setenv("NGINX", "3;", 1);
    start({"nginx", "-p", m_directory, "-c", "nginx.conf"}, socket);
    ::unsetenv("NGINX");
    ::close(socket);
}

void NginxServer::serve(const Identity& leaf, const std::vector<Identity>& others) const {
    write("served.key", leaf.privateKeyPem);
    write("served.pem", chainOf(leaf, others));
}

std::vector<std::string> NginxServer::requests() {
    end(SIGTERM);
    std::ifstream log(m_directory / "requests.log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(log, line);) lines.push_back(line);
    return lines;
}

}  // namespace torvel::testing
