#include "sandbox/HttpExchange.h"

#include <limits>

#include <httplib.h>
#include <nlohmann/json.hpp>
#include <strings.h>

namespace torvel::sandbox {

namespace {

class ConnectionStream final : public httplib::Stream {
  public:
    explicit ConnectionStream(Connection& connection) : m_connection(connection) {}

    bool is_readable() const override { return !m_connection.ended(); }
    bool is_writable() const override { return !m_connection.ended(); }
    ssize_t read(char* buffer, std::size_t size) override { return m_connection.read(buffer, size); }
    ssize_t write(const char* bytes, std::size_t size) override {
        return m_connection.write({bytes, size}) ? static_cast<ssize_t>(size) : -1;
    }
    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    socket_t socket() const override { return 0; }  // asked only whether select() could take it

  private:
    Connection& m_connection;
};

void splitHead(const std::string& head, Call& call) {
    std::size_t from = head.find("\r\n");
    call.requestLine = head.substr(0, from);
    while (from < head.size()) {
        const std::size_t start = from + 2;
        from = std::min(head.find("\r\n", start), head.size());
        const std::string line = head.substr(start, from - start);
        const std::size_t colon = std::min(line.find(':'), line.size());
        const std::size_t value = std::min(line.find_first_not_of(" \t", colon + 1), line.size());
        call.fields.emplace_back(line.substr(0, colon), line.substr(value));
    }
}

Call makeCall(const httplib::Request& request, const Connection::Record& record) {
    Call call;
    const std::size_t headEnd = record.bytes.find("\r\n\r\n");
    splitHead(record.bytes.substr(0, headEnd), call);
    if (headEnd != std::string::npos) {
        call.body = record.bytes.substr(headEnd + 4);
        call.bodyBytes = record.count - headEnd - 4;
    }
    call.method = request.method;
    call.path = request.path;
    call.queries = {request.params.begin(), request.params.end()};
    call.content = request.body;
    for (const auto& [name, part] : request.files)
        call.parts.push_back({name, part.filename, part.content_type, part.content});
    return call;
}

void fill(httplib::Response& response, Reply reply) {
    response.status = reply.status;
    response.body = std::move(reply.body);
    if (!reply.type.empty()) response.set_header("Content-Type", reply.type);
    for (const auto& [name, value] : reply.fields) response.set_header(name, value);
}

// httplib reads, routes and writes; the connection is ours. Its handlers are not told which connection they
// serve, so every connection has a parser of its own.
class Parser final : public httplib::Server {
  public:
    Parser(Connection& connection, const CallHandler& handler) : m_connection(connection) {
        const auto serve = [&](const httplib::Request& request, httplib::Response& response) {
            fill(response, handler(makeCall(request, connection.record()), connection));
        };
        for (auto method : {&Server::Get, &Server::Options}) (this->*method)(".*", serve);
        Post(".*", serve).Put(".*", serve).Patch(".*", serve).Delete(".*", serve);
        set_keep_alive_max_count(std::numeric_limits<std::size_t>::max());
    }

    void run() {
        ConnectionStream stream(m_connection);
        // Codings are for the handlers to choose, never for httplib.
        const auto withoutCodings = [](httplib::Request& request) {
            request.headers.erase("Accept-Encoding");
        };
        bool last = false;
        do m_connection.restartRecord();
        while (process_request(stream, false, last, withoutCodings) && !last && !m_connection.ended());
    }

  private:
    Connection& m_connection;
};

}  // namespace

std::optional<std::string> Call::field(std::string_view name) const {
    for (const auto& [key, value] : fields)
        if (key.size() == name.size() && strncasecmp(key.data(), name.data(), name.size()) == 0) return value;
    return std::nullopt;
}

std::optional<std::string> Call::query(const std::string& name) const {
    const auto found = queries.find(name);
    return found == queries.end() ? std::nullopt : std::optional(found->second);
}

Reply errorReply(int status, const std::string& message, const std::string& code) {
    return {status, nlohmann::json{{"message", message}, {"errorCode", code}}.dump()};
}

void serveRequests(Connection& connection, const CallHandler& handler) { Parser(connection, handler).run(); }

}  // namespace torvel::sandbox
