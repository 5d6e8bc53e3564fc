#include "TorvelPlatform/http/Session.h"
#include "TorvelTesting/HostFixture.h"
#include "TorvelTesting/TLSPeers.h"
#include "support/Fetching.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace torvel {
namespace {

using namespace testing;
using Reason = TrustFailure::Reason;
using Evaluator = std::shared_ptr<const ServerTrustEvaluating>;

// A public key infrastructure of the test's own, whose root is the only one that this process trusts.
struct Trust : HostFixture {
    Trust() {
        addResource("ca.pem", m_root.certificatePem);
        std::filesystem::create_directory(directory() / "none");
        ::setenv("SSL_CERT_FILE", (directory() / "ca.pem").c_str(), 1);
        ::setenv("SSL_CERT_DIR", (directory() / "none").c_str(), 1);
    }

    Identity leaf(CertificateRequest request, const Identity& issuer) const {
        if (request.alternativeNames.empty()) request.alternativeNames = names;
        return issue(request, &issuer);
    }

    static SecCertificate certificate(const Identity& identity) {
        return *SecCertificate::createWithData(identity.der);
    }
    static Evaluator pinned(const std::vector<Identity>& identities) {
        std::vector<SecCertificate> certificates;
        for (const Identity& identity : identities) certificates.push_back(certificate(identity));
        return std::make_shared<PinnedCertificatesTrustEvaluator>(certificates);
    }
    static Evaluator keyPinned(const Identity& identity) {
        return std::make_shared<PublicKeysTrustEvaluator>(
            std::vector{*SecKey::createWithData(Data(identity.publicKeyPem))});
    }
    static std::shared_ptr<Session> sessionWith(ServerTrustManager::Evaluators evaluators) {
        return std::make_shared<Session>(URLSessionConfiguration::defaults(), "test.root",
                                         std::make_shared<ServerTrustManager>(true, std::move(evaluators)));
    }

    // The outcome of one GET, or of one POST with a body.
    static DataResponse get(Session& session, const std::string& url, std::optional<std::string> body = {}) {
        URLRequest request = requestTo(url, body ? "POST" : "GET");
        request.timeoutInterval = 2;
        if (body) request.httpBody = Data(*body);
        const Answer answer = fetchValidated(session, request);
        EXPECT_EQ(answer.completions, 1) << url;
        return answer.response;
    }

    static bool contains(const std::string& text, const char* part) {
        return text.find(part) != std::string::npos;
    }

    static std::optional<Reason> refusal(const DataResponse& response) {
        if (!response.error) return std::nullopt;
        EXPECT_EQ(response.error->kind, SessionError::Kind::serverTrustEvaluationFailed)
            << response.error->localizedDescription;
        EXPECT_FALSE(response.response || response.data);
        return response.error->trust ? std::optional(response.error->trust->reason) : std::nullopt;
    }

    static constexpr char names[] = "DNS:localhost,IP:127.0.0.1";
    const Identity m_root = issue({.commonName = "root", .isAuthority = true});
    const Identity m_intermediate = issue({.commonName = "intermediate", .isAuthority = true}, &m_root);
    const Identity m_leaf = leaf({}, m_intermediate);
    const Identity m_foreignRoot = issue({.commonName = "foreign", .isAuthority = true});
};

TEST_F(Trust, Matrix) {
    const Identity expired = leaf({.firstDay = -9, .lastDay = -2}, m_intermediate);
    const Identity future = leaf({.firstDay = 2, .lastDay = 9}, m_intermediate);
    const Identity elsewhere = leaf({.alternativeNames = "DNS:elsewhere.example"}, m_intermediate);
    const Identity nameOnly = issue({.commonName = "localhost"}, &m_intermediate);
    const Identity addressAsName = leaf({.alternativeNames = "DNS:127.0.0.1"}, m_intermediate);
    const Identity selfSigned = issue({.alternativeNames = names});
    const Identity foreign = leaf({}, m_foreignRoot);
    const Identity client = leaf({.extendedKeyUsage = "clientAuth"}, m_intermediate);
    const Identity weakKey = leaf({.rsaBits = 1024}, m_intermediate);
    const Identity weakSignature = leaf({.digest = "SHA1"}, m_intermediate);
    const Identity byLeaf = leaf({}, m_leaf);
    const Identity authority = leaf({.isAuthority = true}, m_root);
    const Identity lapsed =
        issue({.commonName = "lapsed", .firstDay = -9, .lastDay = -1, .isAuthority = true}, &m_root);
    const Identity byLapsed = leaf({}, lapsed);
    const Identity wildcard = leaf({.alternativeNames = "DNS:*.shop.localhost"}, m_intermediate);
    const Identity partial = leaf({.alternativeNames = "DNS:p*.shop.localhost"}, m_intermediate);
    const Identity renewed = leaf({.keyOf = &m_leaf}, m_intermediate);
    const Identity otherLeaf = leaf({}, m_root);
    const auto defaults = std::make_shared<DefaultTrustEvaluator>();
    const auto disabled = std::make_shared<DisabledEvaluator>();
    const std::vector<Identity> chain{m_intermediate}, pinnedChain{m_leaf, m_intermediate};

    const struct {
        const char* name;
        Identity served;
        std::vector<Identity> others;
        Evaluator evaluator;
        std::optional<Reason> refused;
        const char* host = "localhost";
        std::vector<std::string> options = {};  // of the server
    } rows[] = {
        {"default", m_leaf, chain, defaults, {}},
        {"TLS 1.2", m_leaf, chain, defaults, {}, "localhost", {"-tls1_2"}},
        {"wildcard", wildcard, chain, defaults, {}, "pay.shop.localhost"},
        {"wildcard, two labels", wildcard, chain, defaults, Reason::hostValidationFailed,
         "a.pay.shop.localhost"},
        {"wildcard, no label", wildcard, chain, defaults, Reason::hostValidationFailed, "shop.localhost"},
        {"part of a label as a wildcard", partial, chain, defaults, Reason::hostValidationFailed,
         "pay.shop.localhost"},
        {"an authority as the server", authority, {}, defaults, Reason::chainValidationFailed},
        {"expired intermediate", byLapsed, {lapsed}, defaults, Reason::chainValidationFailed},
        {"default, by address", m_leaf, chain, defaults, {}, "127.0.0.1"},
        {"host in upper case", m_leaf, chain, defaults, {}, "LOCALHOST"},
        {"pin on the leaf", m_leaf, chain, pinned({m_leaf}), {}},
        {"pin on the intermediate", m_leaf, chain, pinned({m_intermediate}), {}},
        {"pin on the root, which is not sent", m_leaf, chain, pinned({m_root}), {}},
        {"backup pin second", m_leaf, chain, pinned({otherLeaf, m_leaf}), {}},
        {"wrong pin", m_leaf, chain, pinned({otherLeaf}), Reason::certificatePinningFailed},
        {"no pin", m_leaf, chain, pinned({}), Reason::noCertificatesFound},
        {"pinned certificates sent behind another chain", otherLeaf, pinnedChain, pinned({m_leaf}),
         Reason::certificatePinningFailed},
        {"renewed certificate, certificate pin", renewed, chain, pinned({m_leaf}),
         Reason::certificatePinningFailed},
        {"renewed certificate, key pin", renewed, chain, keyPinned(m_leaf), {}},
        {"key pin on the intermediate", m_leaf, chain, keyPinned(m_intermediate), {}},
        {"wrong key pin", m_leaf, chain, keyPinned(otherLeaf), Reason::publicKeyPinningFailed},
        {"no key pin", m_leaf, chain, std::make_shared<PublicKeysTrustEvaluator>(std::vector<SecKey>{}),
         Reason::noPublicKeysFound},
        {"expired, though pinned", expired, chain, pinned({expired}), Reason::chainValidationFailed},
        {"not yet valid", future, chain, defaults, Reason::chainValidationFailed},
        {"another name", elsewhere, chain, pinned({elsewhere}), Reason::hostValidationFailed},
        {"name in the common name alone", nameOnly, chain, defaults, Reason::hostValidationFailed},
        {"address written as a name", addressAsName, chain, defaults, Reason::hostValidationFailed,
         "127.0.0.1"},
        {"self-signed, though pinned", selfSigned, {}, pinned({selfSigned}), Reason::chainValidationFailed},
        {"unknown root", foreign, {m_foreignRoot}, defaults, Reason::chainValidationFailed},
        {"missing intermediate", m_leaf, {}, defaults, Reason::chainValidationFailed},
        {"issued by a leaf", byLeaf, {m_leaf, m_intermediate}, defaults, Reason::chainValidationFailed},
        {"client certificate", client, chain, defaults, Reason::chainValidationFailed},
        {"1024-bit key", weakKey, chain, defaults, Reason::chainValidationFailed},
        {"SHA-1 signature", weakSignature, chain, defaults, Reason::chainValidationFailed},
        {"disabled, self-signed", selfSigned, {}, disabled, {}},
        {"disabled, expired", expired, chain, disabled, {}},
        {"disabled, another name", elsewhere, chain, disabled, {}},
    };
    for (const auto& row : rows) {
        OpenSSLServer server(directory(), row.served, row.others, row.options);
        const DataResponse response = get(*sessionWith({{row.host, row.evaluator}}), server.url(row.host));
        EXPECT_EQ(refusal(response), row.refused)
            << row.name << ": " << (response.error ? response.error->localizedDescription : "accepted");
        // A refused server sees no byte of the request; names are announced to it, addresses never.
        const std::string seen = server.transcript();
        EXPECT_NE(contains(seen, "HTTP/1."), row.refused.has_value()) << row.name << seen;
        EXPECT_FALSE(row.refused && response.error->maybeSent) << row.name;
        EXPECT_NE(contains(seen, "\"server name\""), row.host == std::string("127.0.0.1")) << row.name;
    }
}

TEST_F(Trust, AProtocolBelowTLS12IsRefused) {
    OpenSSLServer server(directory(), m_leaf, {m_intermediate}, {"-tls1_1"});
    const DataResponse response =
        get(*sessionWith({{"localhost", std::make_shared<DisabledEvaluator>()}}), server.url("localhost"));
    EXPECT_EQ(response.error.value().kind, SessionError::Kind::secureConnectionFailed);
    EXPECT_FALSE(contains(server.transcript(), "HTTP/1."));
}

TEST_F(Trust, RenegotiationIsRefused) {
    // After the request the server's operator types R: it asks for a new handshake.
    OpenSSLServer server(directory(), m_leaf, {m_intermediate}, {"-tls1_2"}, "R\n");
    const DataResponse response =
        get(*sessionWith({{"localhost", pinned({m_leaf})}}), server.url("localhost"));
    EXPECT_EQ(response.error.value().kind, SessionError::Kind::connectionLost);
    EXPECT_TRUE(contains(server.transcript("no renegotiation"), "no renegotiation"));
}

TEST_F(Trust, TheDefaultSessionUsesTheTrustStore) {
    OpenSSLServer good(directory(), m_leaf, {m_intermediate});
    EXPECT_EQ(refusal(get(*Session::defaultSession(), good.url("localhost"))), std::nullopt);
    OpenSSLServer bad(directory(), leaf({}, m_foreignRoot));
    EXPECT_EQ(refusal(get(*Session::defaultSession(), bad.url("localhost"))), Reason::chainValidationFailed);
}

TEST_F(Trust, WithoutAReadableStoreNobodyIsTrusted) {
    ::setenv("SSL_CERT_FILE", (directory() / "absent.pem").c_str(), 1);
    OpenSSLServer server(directory(), m_leaf, {m_intermediate});
    const auto session = sessionWith({{"localhost", std::make_shared<DefaultTrustEvaluator>()}});
    EXPECT_EQ(refusal(get(*session, server.url("localhost"))), Reason::chainValidationFailed);
    EXPECT_FALSE(contains(server.transcript(), "HTTP/1."));
}

// A frame of HTTP/2 (RFC 9113, 4.1).
std::string frame(char type, char flags, char stream, std::string_view payload) {
    std::string head(9, '\0');
    for (int i = 0; i < 3; ++i) head[i] = static_cast<char>(payload.size() >> (16 - 8 * i));
    head[3] = type, head[4] = flags, head[8] = stream;
    return head.append(payload);
}

TEST_F(Trust, FaultsOfHTTP2EndInOneError) {
    constexpr char data = 0, headers = 1, reset = 3, settings = 4, goAway = 7, endStream = 1, endHeaders = 4,
                   ack = 1;
    const std::string head = frame(headers, endHeaders, 1, "\x88");  // ":status: 200", RFC 7541, appendix A
    const struct {
        const char* name;
        std::string frames;
        std::optional<Kind> error;
    } rows[] = {
        {"whole", head + frame(data, endStream, 1, "ok"), {}},
        {"stream reset", frame(reset, 0, 1, std::string("\0\0\0\2", 4)), Kind::connectionLost},
        {"stream reset in the body",
         head + frame(data, 0, 1, "o") + frame(reset, 0, 1, std::string("\0\0\0\2", 4)),
         Kind::connectionLost},
        {"the server goes away", frame(goAway, 0, 0, std::string(8, '\0')), Kind::connectionLost},
        {"stalled", head + frame(data, 0, 1, "o"), Kind::timedOut},
        {"a header block that is none", frame(headers, endHeaders, 1, "\xFF\xFF\xFF\xFF\xFF"),
         Kind::connectionLost},
        {"a frame larger than agreed", frame(data, 0, 1, std::string(20'000, 'x')), Kind::connectionLost},
        {"data before the head", frame(data, endStream, 1, "ok"), Kind::connectionLost},
        {"not HTTP/2", "HTTP/1.1 200 OK\r\n\r\nok", Kind::connectionLost},
    };
    for (const auto& row : rows) {
        OpenSSLServer server(directory(), m_leaf, {m_intermediate}, {"-alpn", "h2"},
                             frame(settings, 0, 0, "") + frame(settings, ack, 0, "") + row.frames);
        const DataResponse response =
            get(*sessionWith({{"localhost", pinned({m_leaf})}}), server.url("localhost"));
        EXPECT_EQ(response.error ? std::optional(response.error->kind) : std::nullopt, row.error)
            << row.name << ": " << (response.error ? response.error->localizedDescription : "ok");
    }
}

// nginx keeps connections open, offers session tickets and speaks HTTP/2.

TEST_F(Trust, ARedirectAsksTheNewHostsEvaluator) {
    const struct {
        const char* name;
        Evaluator evaluator;  // of the second host; nullptr: none
        std::optional<Reason> refused;
    } rows[] = {
        {"trusted", std::make_shared<DefaultTrustEvaluator>(), {}},
        {"wrong pin", pinned({m_foreignRoot}), Reason::certificatePinningFailed},
        {"no evaluator", nullptr, Reason::noRequiredEvaluator},
    };
    for (const auto& [from, to] : {std::pair("localhost", "127.0.0.1"), std::pair("127.0.0.1", "localhost")})
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.name) + " from " + from);
            std::filesystem::remove(directory() / "requests.log");
            NginxServer server(directory(), m_leaf, {m_intermediate});
            ServerTrustManager::Evaluators evaluators{{from, std::make_shared<DefaultTrustEvaluator>()}};
            if (row.evaluator) evaluators[to] = row.evaluator;
            const std::string away = std::string("/away/") + to;
            EXPECT_EQ(refusal(get(*sessionWith(std::move(evaluators)), server.url(from, away))), row.refused);
            std::vector<std::string> requests{"GET " + away + " HTTP/2.0 " + from + " ."};
            if (!row.refused) requests.push_back(std::string("GET / HTTP/2.0 ") + to + " .");
            EXPECT_EQ(server.requests(), requests);
        }
}

TEST_F(Trust, EveryNewConnectionIsJudgedAgainAndNoneIsResumed) {
    NginxServer server(directory(), m_leaf, {m_intermediate});
    const auto session = sessionWith({{"localhost", pinned({m_leaf})}});
    const std::string once = server.url("localhost", "/once");
    EXPECT_EQ(refusal(get(*session, once, "x")), std::nullopt);
    EXPECT_EQ(refusal(get(*session, once, "x")), std::nullopt);
    server.serve(leaf({}, m_intermediate), {m_intermediate});
    EXPECT_EQ(refusal(get(*session, once, "x")), Reason::certificatePinningFailed);
    const std::string request = "POST /once HTTP/1.1 localhost .";
    EXPECT_EQ(server.requests(), (std::vector{request, request}));
}

TEST_F(Trust, AnotherSessionNeverInheritsATrustedConnection) {
    NginxServer server(directory(), m_leaf, {m_intermediate});
    const auto trusting = sessionWith({{"localhost", std::make_shared<DisabledEvaluator>()}});
    EXPECT_EQ(refusal(get(*trusting, server.url("localhost"))), std::nullopt);
    const auto pinning = sessionWith({{"localhost", pinned({m_foreignRoot})}});
    EXPECT_EQ(refusal(get(*pinning, server.url("localhost"))), Reason::certificatePinningFailed);
    EXPECT_EQ(server.requests().size(), 1U);
}

// The client loses or waits in vain for HTTP/2 answers that come before it has sent the whole body.
TEST_F(Trust, BodiesAreOfferedToHTTP1Alone) {
    NginxServer server(directory(), m_leaf, {m_intermediate});
    const auto session = sessionWith({{"localhost", std::make_shared<DefaultTrustEvaluator>()}});
    EXPECT_EQ(refusal(get(*session, server.url("localhost"))), std::nullopt);
    EXPECT_EQ(refusal(get(*session, server.url("localhost"), "pin=1234")), std::nullopt);
    // Those without still share one connection, and none of the host's few.
    int slow = 0;
    for (int i = 0; i < 6; ++i)
        session->request(requestTo(server.url("localhost", "/slow")))
            .responseData(DispatchQueue::main(), [&](auto&&) { ++slow; });
    EXPECT_EQ(refusal(get(*session, server.url("localhost"))), std::nullopt);
    EXPECT_EQ(slow, 0);
    Session::cancelAllRequests();
    DispatchQueue::main().runUntil([&] { return slow == 6; }, std::chrono::seconds(60));
    auto requests = server.requests();
    requests.resize(2);
    EXPECT_EQ(requests,
              (std::vector<std::string>{"GET / HTTP/2.0 localhost .", "POST / HTTP/1.1 localhost ."}));
}

// The client takes the idle connection that is none of HTTP/2.
TEST_F(Trust, AHandleThatWasUsedAnswersOverHTTP2Alone) {
    NginxServer server(directory(), m_leaf, {m_intermediate});
    const auto session = sessionWith({{"localhost", std::make_shared<DefaultTrustEvaluator>()}});
    std::vector<std::string> expected(22, "GET / HTTP/2.0 localhost .");
    expected[1] = "POST / HTTP/1.1 localhost .";
    for (const std::string& line : expected)  // the server ends the other connection before the last
        EXPECT_EQ(refusal(get(*session, server.url("localhost"),
                              line.starts_with("POST") ? std::optional("x") : std::nullopt)),
                  std::nullopt);
    EXPECT_EQ(server.requests(), expected);
}

}  // namespace
}  // namespace torvel
