#include "sandbox/Sandbox.h"
#include "support/SandboxTest.h"

#include <algorithm>

#include <arpa/inet.h>
#include <sys/socket.h>

namespace torvel::sandbox {
namespace {

using namespace testing;

TEST_F(SandboxTest, WalletStory) {
    start();
    logIn();
    const std::vector<Row> rows = {
        {"balance", R"("$URL/api/v1/balance")", 0, R"("balance":"1000.00","currency":"XTS".*200$)"},
        {"transfer", R"("$URL/api/v1/transfer" -d '{"to":"0711","amount":"250.5","note":"rent"}')", 0,
         R"("amount":"250.50","balance":"749.50","reference":"TX1","to":"0711".*200$)"},
        {"declined", R"("$URL/api/v1/transfer" -d '{"to":"0711","amount":"749.51"}')", 0,
         R"("errorCode":"INSUFFICIENT_FUNDS","message":"Insufficient funds: the balance is 749.50".*422$)"},
        {"all of it", R"("$URL/api/v1/transfer" -d '{"to":"0711","amount":"749.50"}')", 0,
         R"("balance":"0.00".*200$)"},
        {"statement", R"("$URL/api/v1/statement")", 0,
         R"(TX1.*"balance":"0.00","note":"","reference":"TX2".*200$)"},
        {"three places", R"("$URL/api/v1/transfer" -d '{"to":"0711","amount":"1.005"}')", 0,
         "BAD_AMOUNT.*400$"},
        {"negative", R"("$URL/api/v1/transfer" -d '{"to":"0711","amount":"-1"}')", 0, "BAD_AMOUNT.*400$"},
        {"a number", R"("$URL/api/v1/transfer" -d '{"to":"0711","amount":1}')", 0, "BAD_AMOUNT.*400$"},
        {"no recipient", R"("$URL/api/v1/transfer" -d '{"amount":"1"}')", 0, "BAD_RECIPIENT.*400$"},
        {"plain-text error", R"("$URL/api/v1/rates")", 0, "^The rates service is down.*500$"},
        {"wrong PIN", R"("$URL/api/v1/login" -d '{"msisdn":"0700000001","pin":"0000"}')", 0,
         "LOGIN_REFUSED.*401$"},
        {"no such path", R"("$URL/api/v1/nothing")", 0, "NOT_FOUND.*404$"},
        {"wrong method", R"("$URL/api/v1/balance" -X PUT -d x)", 0, "WRONG_METHOD.*405$"},
        {"a path of 8000 characters", R"sh("$URL/$(printf %08000d 0)")sh", 0, "NOT_FOUND.*404$"},
    };
    expectRows(rows, curl);
    logIn();
    EXPECT_THAT(curl(R"("$URL/api/v1/balance")").out, HasSubstr("200"));
    setenv("TOKEN", "0123456789abcdef0123456789abcdef", 1);
    EXPECT_THAT(curl(R"(-i "$URL/api/v1/balance")").out,
                ContainsRegex("WWW-Authenticate: Bearer.*\n(.*\n)*401$"));
}

TEST_F(SandboxTest, DocumentsAreHashedAsTheyArrive) {
    start();
    logIn();
    const Ran ran = shell(R"(
        head -c 12000000 /dev/urandom >"$DIR/scan" && sha256sum "$DIR/scan" | cut -d' ' -f1
        curl -s --cacert "$CA" -H "Authorization: Bearer $TOKEN" "$URL/api/v1/documents" \
            -F "file=@$DIR/scan;type=image/png;filename=front page.png")");
    EXPECT_THAT(
        ran.out,
        ContainsRegex(
            R"("bytes":12000000,"contentType":"image/png","field":"file","fileName":"front page.png")"));
    EXPECT_THAT(ran.out, HasSubstr("\"sha256\":\"" + ran.out.substr(0, 64) + "\""));
    const Exchange last = m_sandbox->exchanges().back();
    EXPECT_THAT(last.body.size(), AllOf(Gt(1000000U), Le(1U << 20)));
    EXPECT_GT(last.bodyBytes, 12000000U);
}

TEST_F(SandboxTest, OnlyTheIdentityProvesIt) {
    start();
    const std::vector<Row> rows = {
        {"by address", R"(curl -s --cacert "$CA" "$URL/echo")", 0, "GET"},
        {"by name", R"(curl -s --cacert "$CA" "https://localhost:$PORT/echo")", 0, "GET"},
        {"without the authority", R"(curl -s "$URL/echo")", 60, "^$"},
        {"under another name",
         R"(curl -s --cacert "$CA" --resolve "other.test:$PORT:127.0.0.1" "https://other.test:$PORT/")", 60,
         "^$"},
        {"chain, purpose, strictly",
         R"(openssl verify -x509_strict -purpose sslserver -CAfile "$CA" "$DIR/server.pem")", 0,
         "server.pem: OK"},
        {"DER and PEM agree", R"(openssl x509 -inform DER -in "$DIR/server.der" | diff - "$DIR/server.pem")",
         0, "^$"},
        {"the key is the certificate's, 2048 bits",
         R"sh(openssl rsa -in "$DIR/server.key" -noout -modulus | cut -d= -f2 | tr -d '\n' | wc -c;
            test "$(openssl rsa -in "$DIR/server.key" -pubout 2>/dev/null)" = "$(openssl x509 -in "$DIR/server.pem" -noout -pubkey)")sh",
         0, "^512\n"},
        {"the key is the owner's alone", R"(stat -c %a "$DIR/server.key")", 0, "^600\n"},
        {"still valid in 88 days", R"(openssl x509 -in "$DIR/server.pem" -noout -checkend 7603200)", 0,
         "not expire"},
    };
    expectRows(rows, shell);
    auto other = Sandbox::start({.identity = SandboxIdentity::make(SandboxIdentity::Kind::selfSigned)});
    ASSERT_TRUE(other);
    setenv("URL", other.value()->url().c_str(), 1);
    EXPECT_EQ(shell(R"(curl -s --cacert "$CA" "$URL/echo")").exit, 60) << "another identity's authority";
    ASSERT_EQ(other.value()->identity().write(m_directory), std::nullopt);
    EXPECT_EQ(shell(R"(curl -s --cacert "$CA" "$URL/echo")").exit, 0);
}

TEST_F(SandboxTest, Misbehaves) {
    start();
    const std::vector<Row> rows = {
        {"status", R"(-i "$URL/misbehave/status?code=503&body=busy&type=text/plain&field=Retry-After:7")", 0,
         "Retry-After: 7\r\n(.*\n)*busy\n503$"},
        {"drip", R"("$URL/misbehave/drip?bytes=5&ms=1")", 0, "^\\.\\.\\.\\.\\.\n200$"},
        {"short length", R"("$URL/misbehave/truncate")", 18, "ok\",\n200$"},
        {"short chunk", R"("$URL/misbehave/truncate?framing=chunked")", 18, "ok\",\n200$"},
        {"closed, as said", R"("$URL/misbehave/truncate?framing=close")", 0, "ok\",\n200$"},
        {"reset in the body", R"("$URL/misbehave/truncate?end=reset")", 56, "200$"},
        {"wrong type", R"(-i "$URL/misbehave/wrong-type")", 0, "Content-Type: text/html\r"},
        {"redirect",
         R"(-L -w '%{num_redirects} %{url_effective}' "$URL/misbehave/redirect?to=https://localhost:$PORT/echo")",
         0, "1 https://localhost:[0-9]+/echo$"},
        {"loop", R"(-L --max-redirs 3 "$URL/misbehave/loop")", 47, "302$"},
        {"gzip cut in its data",
         R"("$URL/misbehave/encoded?coding=gzip&cut=20" | head -n -1 | gzip -dc 2>&1)", 1,
         "unexpected end of file"},
        {"large", R"(-o /dev/null -w '%{size_download}' "$URL/misbehave/large?bytes=9000000")", 0,
         "^9000000$"},
        {"number too large", R"("$URL/misbehave/large?bytes=99999999999")", 0, "BAD_QUERY.*400$"},
        {"unknown", R"("$URL/misbehave/nonsense")", 0, "NOT_FOUND.*404$"},
    };
    expectRows(rows, curl);
    // curl takes either end of an unframed body for whole; s_client tells them apart.
    const auto endOfBody = [](const std::string& end) {
        return shell("printf 'GET /misbehave/truncate?framing=close&end=" + end +
                     R"( HTTP/1.1\r\n\r\n' | openssl s_client -quiet -connect "127.0.0.1:$PORT" 2>&1)");
    };
    EXPECT_THAT(endOfBody("cut").out, HasSubstr("unexpected eof while reading"));
    EXPECT_THAT(endOfBody("orderly").out, Not(HasSubstr("unexpected eof")));
}

TEST_F(SandboxTest, RecordsWhatArrived) {
    start();
    const Ran chunked =
        curl(R"("$URL/echo?a=1%20b" -H 'x-Odd:  spaced' -H 'Transfer-Encoding: chunked' -d hello)");
    EXPECT_THAT(chunked.out, HasSubstr(R"("target":"/echo?a=1%20b")"));
    EXPECT_THAT(chunked.out, HasSubstr(R"(["x-Odd","spaced"])"));
    curl(R"("$URL/echo" -X DELETE -d hello)");
    const auto exchanges = m_sandbox->exchanges();
    ASSERT_EQ(exchanges.size(), 2U);
    EXPECT_EQ(exchanges[0].requestLine, "POST /echo?a=1%20b HTTP/1.1");
    EXPECT_EQ(exchanges[0].body, "5\r\nhello\r\n0\r\n\r\n") << "as it was framed";
    EXPECT_EQ(exchanges[0].plainText, "hello");
    EXPECT_EQ(exchanges[0].status, 200);
    EXPECT_EQ(exchanges[1].requestLine, "DELETE /echo HTTP/1.1");
    EXPECT_EQ(exchanges[1].body, "hello");
}

TEST_F(SandboxTest, KeepsConnectionsAndTheLatestExchanges) {
    start();
    const Ran ran = curl(R"("$URL/echo?[1-70]" -o /dev/null -w '%{num_connects}')");
    EXPECT_EQ(std::count(ran.out.begin(), ran.out.end(), '1'), 1) << ran.out;
    const auto exchanges = m_sandbox->exchanges();
    ASSERT_EQ(exchanges.size(), 64U);
    EXPECT_EQ(exchanges.front().requestLine, "GET /echo?7 HTTP/1.1");
    EXPECT_EQ(exchanges.back().requestLine, "GET /echo?70 HTTP/1.1");
}

int connectTo(std::uint16_t port, const std::string& text) {
    const sockaddr_in address{
        .sin_family = AF_INET, .sin_port = htons(port), .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero{}};
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(send(socket, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return socket;
}

TEST_F(SandboxTest, StopsWhateverItsPeersDo) {
    start({.tls = false});
    std::vector<int> peers;
    for (const char* text : {"", "GET /ec", "GET /misbehave/hang HTTP/1.1\r\n\r\n",
                             "POST /echo HTTP/1.1\r\nContent-Length: 9\r\n\r\nhalf",
                             "GET /misbehave/drip?bytes=99&ms=60000 HTTP/1.1\r\n\r\n",
                             "GET /misbehave/large?bytes=9000000 HTTP/1.1\r\n\r\n"})
        for (int i = 0; i < 20; ++i) peers.push_back(connectTo(m_sandbox->port(), text));
    m_sandbox.reset();  // or the test hangs
    for (const int peer : peers) close(peer);
}

TEST_F(SandboxTest, RefusesWhatItCannotServe) {
    start();
    const auto taken = Sandbox::start({.port = m_sandbox->port(), .identity = m_sandbox->identity()});
    ASSERT_FALSE(taken);
    EXPECT_THAT(taken.error(), ContainsRegex("^cannot listen on 127.0.0.1:[0-9]+: Address already in use$"));
    SandboxIdentity mixed = m_sandbox->identity();
    mixed.serverKeyPem = SandboxIdentity::make().serverKeyPem;
    EXPECT_FALSE(Sandbox::start({.identity = mixed}));
    EXPECT_THAT(m_sandbox->identity().write("/proc/nowhere").value_or(""),
                HasSubstr("cannot make /proc/nowhere"));
}

}  // namespace
}  // namespace torvel::sandbox
