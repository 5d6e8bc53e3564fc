#include "TorvelTesting/ScriptedServer.h"
#include "support/Fetching.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using testing::Answer;
using testing::fetch;
using testing::requestTo;
using testing::response;
using testing::ScriptedServer;
using Kind = SessionError::Kind;
using Peer = ScriptedServer::Peer;
using std::string_literals::operator""s;

constexpr int noError = -1;

int kindOf(const Answer& answer) {
    return answer.response.error ? static_cast<int>(answer.response.error->kind) : noError;
}

// What `gzip`, `brotli` and zlib's own tool make of "hello, hello, hello\n".
const std::string gzipped =
    "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\xff\xcb\x48\xcd\xc9\xc9\xd7\x51\xc8\x40\xa2\xb8\x00\xe7\x42\x6e\x52\x14\x00\x00\x00"s;
const std::string zlibbed = "\x78\x9c\xcb\x48\xcd\xc9\xc9\xd7\x51\xc8\x40\xa2\xb8\x00\x4b\x07\x06\xdf"s;
const std::string deflated = "\xcb\x48\xcd\xc9\xc9\xd7\x51\xc8\x40\xa2\xb8\x00"s;
const std::string brotlied =
    "\x21\x4c\x00\x04\x68\x65\x6c\x6c\x6f\x2c\x20\x68\x65\x6c\x6c\x6f\x2c\x20\x68\x65\x6c\x6c\x6f\x0a\x03"s;
const std::string brotliOfGzip =
    "\x8f\x0e\x80\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03\xcb\x48\xcd\xc9\xc9\xd7\x51\xc8\x40\xa2\xb8\x00\xe7\x42\x6e\x52\x14\x00\x00\x00\x03"s;
const std::string plain = "hello, hello, hello\n";

std::string encoded(std::string_view encoding, std::string_view body) {
    return response("200 OK", body, "Content-Encoding: " + std::string(encoding) + "\r\n");
}

// A gzip file of 100,000 zero bytes.
std::string bomb() {
    std::string bytes =
        "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\xff\xed\xc1\x31\x01\x00\x00\x00\xc2\xa0\xf5\x4f\x6d\x0d\x0f\xa0"s;
    bytes.append(97, '\0');
    return bytes + "\x80\x57\x03\x7d\x95\x11\xd4\xa0\x86\x01\x00"s;
}

struct Row {
    const char* name;
    ScriptedServer::Script script;
    int kind = noError;
    int status = 0;
    std::string data = "(absent)";
    const char* method = "GET";
};

void expectRow(const Row& row) {
    SCOPED_TRACE(row.name);
    ScriptedServer server(row.script);
    URLSessionConfiguration configuration;
    configuration.maximumResponseBytes = 50'000;
    std::optional<Session> session(std::in_place, configuration);
    const Answer answer = fetch(*session, requestTo(server.url(), row.method));
    session.reset();
    DispatchQueue::main().drain();
    EXPECT_EQ(answer.completions, 1);
    EXPECT_EQ(kindOf(answer), row.kind) << answer.outcome();
    EXPECT_EQ(answer.status(), row.status);
    EXPECT_EQ(answer.data(), row.data);
    EXPECT_EQ(server.requests().size(), 1U) << "sent once";
}

Row answers(const char* name, std::string bytes, int kind, int status, std::string data,
            const char* method = "GET") {
    return {
        name,  [bytes = std::move(bytes)](Peer& peer) { peer.answer(bytes); }, kind, status, std::move(data),
        method};
}

int kind(Kind kind) { return static_cast<int>(kind); }

TEST(Faults, OfTheConnection) {
    const Row rows[] = {
        answers("fixed length cut short", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabcde",
                kind(Kind::connectionLost), 200, "(absent)"),
        answers("last chunk missing", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabcde\r\n",
                kind(Kind::connectionLost), 200, "(absent)"),
        answers("closed without an answer", "", kind(Kind::connectionLost), 0, "(absent)"),
        answers("closed inside the head", "HTTP/1.1 200 OK\r\nContent-Le", kind(Kind::connectionLost), 0,
                "(absent)"),
        {"reset before the head",
         [](Peer& peer) {
             peer.receive();
             peer.reset();
         },
         kind(Kind::connectionLost)},
        {"reset inside the body",
         [](Peer& peer) {
             peer.answer("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n");
             peer.reset();
         },
         kind(Kind::connectionLost), 200},
        answers("delimited by the close", "HTTP/1.1 200 OK\r\n\r\nabcde", noError, 200, "abcde"),
        answers("a POST to a server that closes", "", kind(Kind::connectionLost), 0, "(absent)", "POST"),
    };
    for (const Row& row : rows) expectRow(row);
}

TEST(Faults, OfTheAnswer) {
    const int bad = kind(Kind::badServerResponse);
    const int empty = kind(Kind::emptyResponse);
    const Row rows[] = {
        answers("no HTTP", "SSH-2.0-OpenSSH_9.2\r\n\r\n", bad, 0, "(absent)"),
        answers("chunk size is no number",
                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nabc\r\n", bad, 200, "(absent)"),
        answers("two content lengths",
                "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 6\r\n\r\nabcde", bad, 200,
                "(absent)"),
        answers("the same content length twice",
                "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 5\r\n\r\nabcde", noError, 200,
                "abcde"),
        answers("negative content length", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nabcde", bad, 0,
                "(absent)"),
        answers("chunk size beyond any number",
                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfffffffffffffffff\r\nabc\r\n", bad, 200,
                "(absent)"),
        answers("a chunk longer than its size",
                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nabcde\r\n0\r\n\r\n", bad, 200,
                "(absent)"),
        answers("more than was announced", response("200 OK", "abcde") + "fghij", noError, 200, "abcde"),
        answers(
            "interim answers without end",
            [] {
                std::string flood;
                for (int i = 0; i < 20'000; ++i) flood += "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n";
                return flood;
            }(),
            bad, 0, "(absent)"),
        answers("unknown transfer encoding",
                "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n", bad, 200, "(absent)"),
        answers("one header field too large",
                "HTTP/1.1 200 OK\r\nX: " + std::string(400'000, 'x') + "\r\n\r\nabcde", bad, 0, "(absent)"),
        answers(
            "many header fields too large",
            [] {
                std::string head = "HTTP/1.1 200 OK\r\n";
                for (int i = 0; i < 400; ++i) head += "X: " + std::string(1000, 'x') + "\r\n";
                return head + "\r\nabcde";
            }(),
            bad, 0, "(absent)"),
        answers("interim answers are passed over",
                "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n" + response("200 OK", "abcde"), noError, 200,
                "abcde"),
        answers("announced too large", "HTTP/1.1 200 OK\r\nContent-Length: 2000000000\r\n\r\n", bad, 200,
                "(absent)"),
        answers("too large without being announced", "HTTP/1.1 200 OK\r\n\r\n" + std::string(60'000, 'x'),
                bad, 200, "(absent)"),
        answers("no bytes", response("200 OK", ""), empty, 200, "(absent)"),
        answers("an empty 404 is no better", response("404 Not Found", ""), empty, 404, "(absent)"),
        answers("204", "HTTP/1.1 204 No Content\r\nContent-Encoding: gzip\r\n\r\n", noError, 204, ""),
        answers("205", response("205 Reset Content", ""), noError, 205, ""),
        answers("HEAD", "HTTP/1.1 200 OK\r\nContent-Length: 2000000000\r\nContent-Encoding: x\r\n\r\n",
                noError, 200, "", "HEAD"),
    };
    for (const Row& row : rows) expectRow(row);
}

TEST(Faults, OfTheContentEncoding) {
    const int bad = kind(Kind::badServerResponse);
    std::string damaged = gzipped;
    damaged[24] = 'x';  // in the checksum
    const Row rows[] = {
        answers("gzip", encoded("gzip", gzipped), noError, 200, plain),
        answers("gzip in upper case", encoded("X-GZIP", gzipped), noError, 200, plain),
        answers("two gzip members", encoded("gzip", gzipped + gzipped), noError, 200, plain + plain),
        answers("deflate", encoded("deflate", zlibbed), noError, 200, plain),
        answers("raw deflate", encoded("deflate", deflated), noError, 200, plain),
        answers("br", encoded("br", brotlied), noError, 200, plain),
        answers("gzip, then br", encoded("gzip, br", brotliOfGzip), noError, 200, plain),
        answers("identity", encoded("identity", plain), noError, 200, plain),
        answers("no bytes at all", encoded("gzip", ""), kind(Kind::emptyResponse), 200, "(absent)"),
        answers("not gzip", encoded("gzip", plain), bad, 200, "(absent)"),
        answers("damaged gzip", encoded("gzip", damaged), bad, 200, "(absent)"),
        answers("truncated gzip", encoded("gzip", gzipped.substr(0, 20)), bad, 200, "(absent)"),
        answers("gzip without its last byte", encoded("gzip", gzipped.substr(0, gzipped.size() - 1)), bad,
                200, "(absent)"),
        answers("truncated br", encoded("br", brotlied.substr(0, 10)), bad, 200, "(absent)"),
        answers("one byte of deflate", encoded("deflate", "x"), bad, 200, "(absent)"),
        answers("garbage after gzip", encoded("gzip", gzipped + "garbage"), bad, 200, "(absent)"),
        answers("garbage after br", encoded("br", brotlied + "garbage"), bad, 200, "(absent)"),
        answers("bomb", encoded("gzip", bomb()), bad, 200, "(absent)"),
        answers("unknown encoding", encoded("compress", plain), bad, 200, "(absent)"),
        answers("too many layers", encoded("gzip, gzip, gzip, gzip", gzipped), bad, 200, "(absent)"),
    };
    for (const Row& row : rows) expectRow(row);
}

}  // namespace
}  // namespace torvel
