#pragma once  // internal

#include "sandbox/Connection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace torvel::sandbox {

using HeaderFields = std::vector<std::pair<std::string, std::string>>;

struct FormPart {
    std::string name, fileName, contentType, content;
};

// A request, read to its end.
struct Call {
    std::string requestLine, method;
    std::string path;                                 // percent-decoded, without the query
    std::multimap<std::string, std::string> queries;  // percent-decoded
    HeaderFields fields;                              // in the order and spelling in which they arrived
    std::string body;             // as it arrived; head and body are cut at Connection::recordLimit
    std::size_t bodyBytes = 0;    // all of it
    std::string content;          // the body's meaning: de-chunked; empty for multipart
    std::vector<FormPart> parts;  // multipart/form-data

    // The first field or query of that name; field names compare without regard to case.
    std::optional<std::string> field(std::string_view name) const;
    std::optional<std::string> query(const std::string& name) const;
};

struct Reply {
    int status = 200;
    std::string body;
    std::string type = "application/json";  // none when empty
    HeaderFields fields = {};
};

// {"message": ..., "errorCode": ...}: the short names under which hosts decode an error record.
Reply errorReply(int status, const std::string& message, const std::string& code);

using CallHandler = std::function<Reply(const Call&, Connection&)>;

// Serves the requests of one connection, one after another, until the peer or the handler ends it. A handler
// that writes to the connection itself must also end it; its reply is then dropped.
void serveRequests(Connection& connection, const CallHandler& handler);

}  // namespace torvel::sandbox
