#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/http/Session.h"
#include "TorvelTesting/HostFixture.h"
#include "TorvelTesting/TLSServer.h"

#include <chrono>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace torvel {
namespace {

using testing::CertificateRequest;
using testing::Identity;
using testing::issue;
using testing::TLSServer;
using Reason = TrustFailure::Reason;
using Evaluator = std::shared_ptr<const ServerTrustEvaluating>;

// A public key infrastructure of the test's own, whose root is the only one that this process trusts.
class Trust : public testing::HostFixture {
  protected:
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

    // The outcome of one GET; fails the test when it is not delivered exactly once.
    static DataResponse get(Session& session, const std::string& url) {
        std::vector<DataResponse> responses;
        session.request(URLRequest(*URL::parse(url)))
            .validate()
            .responseData(DispatchQueue::main(),
                          [&](DataResponse response) { responses.push_back(std::move(response)); });
        DispatchQueue::main().runUntil([&] { return !responses.empty(); }, std::chrono::seconds(20));
        EXPECT_EQ(responses.size(), 1U) << url;
        return responses.empty() ? DataResponse{} : std::move(responses.front());
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
    const Identity renewed = leaf({.keyOf = &m_leaf}, m_intermediate);
    const Identity otherLeaf = leaf({}, m_root);
    const auto defaults = std::make_shared<DefaultTrustEvaluator>();
    const auto disabled = std::make_shared<DisabledEvaluator>();
    const std::vector<Identity> chain{m_intermediate};

    struct Row {
        const char* name;
        Identity served;
        std::vector<Identity> others;
        Evaluator evaluator;
        std::optional<Reason> refused;
        const char* host = "localhost";
    };
    const Row rows[] = {
        {"default", m_leaf, chain, defaults, {}},
        {"default, by address", m_leaf, chain, defaults, {}, "127.0.0.1"},
        {"host in upper case", m_leaf, chain, defaults, {}, "LOCALHOST"},
        {"pin on the leaf", m_leaf, chain, pinned({m_leaf}), {}},
        {"pin on the intermediate", m_leaf, chain, pinned({m_intermediate}), {}},
        {"pin on the root, which is not sent", m_leaf, chain, pinned({m_root}), {}},
        {"backup pin second", m_leaf, chain, pinned({otherLeaf, m_leaf}), {}},
        {"wrong pin", m_leaf, chain, pinned({otherLeaf}), Reason::certificatePinningFailed},
        {"no pin", m_leaf, chain, pinned({}), Reason::noCertificatesFound},
        {"pinned certificates sent behind another chain",
         otherLeaf,
         {m_leaf, m_intermediate},
         pinned({m_leaf}),
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
    for (const Row& row : rows) {
        TLSServer server(row.served, row.others);
        const auto session = sessionWith({{row.host, row.evaluator}});
        const DataResponse response = get(*session, server.url(row.host));
        EXPECT_EQ(refusal(response), row.refused)
            << row.name << ": " << (response.error ? response.error->localizedDescription : "accepted");
        if (row.refused)
            EXPECT_EQ(server.requestBytes(), 0U) << row.name;
        else
            EXPECT_EQ(server.requests(), 1U) << row.name;
    }
}

TEST_F(Trust, AHostWithoutAnEvaluatorIsRefusedBeforeAnyConnection) {
    TLSServer server(m_leaf, {m_intermediate});
    const auto session = sessionWith({{"elsewhere.example", std::make_shared<DisabledEvaluator>()}});
    EXPECT_EQ(refusal(get(*session, server.url("localhost"))), Reason::noRequiredEvaluator);
    EXPECT_EQ(server.connections(), 0U);
}

TEST_F(Trust, TheDefaultSessionUsesTheTrustStore) {
    TLSServer good(m_leaf, {m_intermediate});
    EXPECT_EQ(refusal(get(*Session::defaultSession(), good.url("localhost"))), std::nullopt);
    TLSServer bad(leaf({}, m_foreignRoot));
    EXPECT_EQ(refusal(get(*Session::defaultSession(), bad.url("localhost"))), Reason::chainValidationFailed);
}

TEST_F(Trust, ARedirectAsksTheNewHostsEvaluator) {
    struct Row {
        const char* name;
        Evaluator evaluator;  // of the second host; nullptr: none
        std::optional<Reason> refused;
    };
    const Row rows[] = {
        {"trusted", std::make_shared<DefaultTrustEvaluator>(), {}},
        {"wrong pin", pinned({m_foreignRoot}), Reason::certificatePinningFailed},
        {"no evaluator", nullptr, Reason::noRequiredEvaluator},
    };
    for (const Row& row : rows) {
        TLSServer target(m_leaf, {m_intermediate});
        TLSServer first(
            m_leaf, {m_intermediate},
            "HTTP/1.1 302 Found\r\nLocation: " + target.url("127.0.0.1") + "\r\nContent-Length: 0\r\n\r\n");
        ServerTrustManager::Evaluators evaluators{{"localhost", std::make_shared<DefaultTrustEvaluator>()}};
        if (row.evaluator) evaluators["127.0.0.1"] = row.evaluator;
        EXPECT_EQ(refusal(get(*sessionWith(std::move(evaluators)), first.url("localhost"))), row.refused)
            << row.name;
        EXPECT_EQ(first.requests(), 1U);
        EXPECT_EQ(target.requestBytes() > 0, !row.refused) << row.name;
    }
}

TEST_F(Trust, EveryNewConnectionIsJudgedAgain) {
    // The server closes after each answer and offers resumption; what it serves changes in between.
    TLSServer server(m_leaf, {m_intermediate},
                     "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 2\r\n\r\nok");
    const auto session = sessionWith({{"localhost", pinned({m_leaf})}});
    EXPECT_EQ(refusal(get(*session, server.url("localhost"))), std::nullopt);
    server.serve(leaf({}, m_intermediate), {m_intermediate});
    EXPECT_EQ(refusal(get(*session, server.url("localhost"))), Reason::certificatePinningFailed);
    EXPECT_EQ(server.requests(), 1U);
}

TEST_F(Trust, AnotherSessionNeverInheritsATrustedConnection) {
    TLSServer server(m_leaf, {m_intermediate});
    const auto trusting = sessionWith({{"localhost", std::make_shared<DisabledEvaluator>()}});
    EXPECT_EQ(refusal(get(*trusting, server.url("localhost"))), std::nullopt);
    const auto pinning = sessionWith({{"localhost", pinned({m_foreignRoot})}});
    EXPECT_EQ(refusal(get(*pinning, server.url("localhost"))), Reason::certificatePinningFailed);
    EXPECT_EQ(server.requests(), 1U);
}

TEST_F(Trust, WithoutAReadableStoreNobodyIsTrusted) {
    ::setenv("SSL_CERT_FILE", (directory() / "absent.pem").c_str(), 1);
    TLSServer server(m_leaf, {m_intermediate});
    const auto session = sessionWith({{"localhost", std::make_shared<DefaultTrustEvaluator>()}});
    EXPECT_EQ(refusal(get(*session, server.url("localhost"))), Reason::chainValidationFailed);
    EXPECT_EQ(server.requestBytes(), 0U);
}

// The client loses or waits in vain for HTTP/2 answers that come before it has sent the whole body.
TEST_F(Trust, BodiesAreOfferedToHTTP1Alone) {
    TLSServer server(m_leaf, {m_intermediate});
    server.claimHTTP2();
    const auto session = sessionWith({{"localhost", std::make_shared<DefaultTrustEvaluator>()}});
    EXPECT_TRUE(get(*session, server.url("localhost")).error) << "HTTP/2 is offered without a body";
    std::vector<DataResponse> responses;
    URLRequest request(*URL::parse(server.url("localhost")));
    request.httpMethod = "POST";
    request.httpBody = Data("pin=1234\r\n\r\n");  // as the server knows a request's end
    session->request(request).responseData(
        DispatchQueue::main(), [&](DataResponse response) { responses.push_back(std::move(response)); });
    DispatchQueue::main().runUntil([&] { return !responses.empty(); }, std::chrono::seconds(20));
    ASSERT_EQ(responses.size(), 1U);
    EXPECT_EQ(responses.front().data, Data("ok"));
}

}  // namespace
}  // namespace torvel
