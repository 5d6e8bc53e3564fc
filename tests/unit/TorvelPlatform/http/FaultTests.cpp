#include "support/Fetching.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace testing;
using std::string_literals::operator""s;

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

// A gzip file of 100,000 zero bytes.
std::string bomb() {
    std::string bytes =
        "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\xff\xed\xc1\x31\x01\x00\x00\x00\xc2\xa0\xf5\x4f\x6d\x0d\x0f\xa0"s;
    bytes.append(97, '\0');
    return bytes + "\x80\x57\x03\x7d\x95\x11\xd4\xa0\x86\x01\x00"s;
}

struct Row {
    const char* name;
    std::string answer;  // and then the server closes
    std::optional<Kind> failure;
    int status = 0;
    std::string data = "(absent)";
    const char* method = "GET";
    ScriptedServer::Script script = [answer = answer](Peer& peer) { peer.answer(answer); };
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
    EXPECT_EQ(answer.failure(), row.failure) << answer.outcome();
    EXPECT_EQ(answer.status(), row.status);
    EXPECT_EQ(answer.data(), row.data);
    EXPECT_EQ(answer.outcome().find("memory"), std::string::npos) << answer.outcome();
    EXPECT_EQ(answer.response.error && !answer.response.error->maybeSent, false);
    EXPECT_EQ(server.requests().size(), 1U) << "sent once";
}

const std::string ok = "HTTP/1.1 200 OK\r\n";
const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";

TEST(Faults, OfTheConnection) {
    const auto resetAfter = [](std::string bytes) {
        return [bytes](Peer& peer) {
            peer.answer(bytes);
            peer.reset();
        };
    };
    const std::string cut = ok + "Content-Length: 100\r\n\r\n";
    const Row rows[] = {
        {"fixed length cut short", cut + "abcde", Kind::connectionLost, 200},
        {"last chunk missing", chunked + "5\r\nabcde\r\n", Kind::connectionLost, 200},
        {"closed without an answer", "", Kind::connectionLost},
        {"closed inside the head", ok + "Content-Le", Kind::connectionLost},
        {"reset before the head", "", Kind::connectionLost, 0, "(absent)", "GET", resetAfter("")},
        {"reset inside the body", "", Kind::connectionLost, 200, "(absent)", "GET", resetAfter(cut)},
        {"delimited by the close", ok + "\r\nabcde", {}, 200, "abcde"},
        {"a POST to a server that closes", "", Kind::connectionLost, 0, "(absent)", "POST"},
    };
    for (const Row& row : rows) expectRow(row);
}

TEST(Faults, OfTheAnswer) {
    const auto repeated = [](int times, const std::string& text) {
        std::string result;
        for (int i = 0; i < times; ++i) result += text;
        return result;
    };
    const Kind bad = Kind::badServerResponse, empty = Kind::emptyResponse;
    const std::string hint = "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n";
    const std::string five = "Content-Length: 5\r\n", body = "\r\nabcde";
    const Row rows[] = {
        {"no HTTP", "SSH-2.0-OpenSSH_9.2\r\n\r\n", bad},
        {"chunk size is no number", chunked + "zz\r\nabc\r\n", bad, 200},
        {"chunk size beyond any number", chunked + "fffffffffffffffff\r\nabc\r\n", bad, 200},
        {"a chunk longer than its size", chunked + "2\r\nabcde\r\n0\r\n\r\n", bad, 200},
        {"two content lengths", ok + five + "Content-Length: 6\r\n" + body, bad, 200},
        {"the same content length twice", ok + five + five + body, {}, 200, "abcde"},
        {"negative content length", ok + "Content-Length: -5\r\n" + body, bad},
        {"more than was announced", ok + five + body + "fghij", {}, 200, "abcde"},
        {"unknown transfer encoding", ok + "Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n", bad, 200},
        {"one header field too large", ok + "X: " + std::string(400'000, 'x') + "\r\n" + body, bad},
        {"many too large", ok + repeated(400, "X: " + std::string(1000, 'x') + "\r\n") + body, bad},
        {"interim answers are passed over", hint + ok + body, {}, 200, "abcde"},
        {"interim answers without end", repeated(20'000, hint), bad},
        {"announced too large", ok + "Content-Length: 2000000000\r\n\r\n", bad, 200},
        {"too large without being announced", ok + "\r\n" + std::string(60'000, 'x'), bad, 200},
        {"no bytes", response("200 OK", ""), empty, 200},
        {"an empty 404 is no better", response("404 Not Found", ""), empty, 404},
        {"204", "HTTP/1.1 204 No Content\r\nContent-Encoding: gzip\r\n\r\n", {}, 204, ""},
        {"205", response("205 Reset Content", ""), {}, 205, ""},
        {"HEAD", ok + "Content-Length: 2000000000\r\nContent-Encoding: x\r\n\r\n", {}, 200, "", "HEAD"},
    };
    for (const Row& row : rows) expectRow(row);
}

TEST(Faults, OfTheContentEncoding) {
    std::string damaged = gzipped;
    damaged[24] = 'x';  // in the checksum
    struct Coded {
        const char* name;
        std::string coding, body;
        std::optional<std::string> data;
    };
    const Coded rows[] = {
        {"gzip in upper case", "X-GZIP", gzipped, plain},
        {"two gzip members", "gzip", gzipped + gzipped, plain + plain},
        {"deflate", "deflate", zlibbed, plain},
        {"raw deflate", "deflate", deflated, plain},
        {"br", "br", brotlied, plain},
        {"gzip, then br", "gzip, br", brotliOfGzip, plain},
        {"identity", "identity", plain, plain},
        {"not gzip", "gzip", plain, {}},
        {"damaged gzip", "gzip", damaged, {}},
        {"truncated gzip", "gzip", gzipped.substr(0, 20), {}},
        {"gzip without its last byte", "gzip", gzipped.substr(0, gzipped.size() - 1), {}},
        {"truncated br", "br", brotlied.substr(0, 10), {}},
        {"one byte of deflate", "deflate", "x", {}},
        {"garbage after gzip", "gzip", gzipped + "garbage", {}},
        {"garbage after br", "br", brotlied + "garbage", {}},
        {"bomb", "gzip", bomb(), {}},
        {"unknown encoding", "compress", plain, {}},
        {"too many layers", "gzip, gzip, gzip, gzip", gzipped, {}},
    };
    const auto encoded = [](const std::string& coding, const std::string& body) {
        return response("200 OK", body, "Content-Encoding: " + coding + "\r\n");
    };
    expectRow({"no bytes at all", encoded("gzip", ""), Kind::emptyResponse, 200});
    for (const Coded& row : rows) {
        const std::optional<Kind> failure = row.data ? std::nullopt : std::optional(Kind::badServerResponse);
        expectRow({row.name, encoded(row.coding, row.body), failure, 200, row.data.value_or("(absent)")});
    }
}

}  // namespace
}  // namespace torvel
