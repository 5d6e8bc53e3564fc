#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/IdempotencyKeyInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/Utils/DecryptResponse.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelTesting/Certificates.h"
#include "TorvelTesting/HostFixture.h"
#include "sandbox/Envelope.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

using ::testing::HasSubstr;

const std::string key = "0123456789abcdef";

URLRequest requestWith(std::optional<std::string> body) {
    URLRequest request(*URL::parse("https://a.example/"));
    if (body) request.httpBody = Data(*body);
    return request;
}

// A host whose server certificate is in its bundle. The sandbox's envelope code, which is OpenSSL's alone,
// stands for the server.
struct Interceptors : testing::HostFixture {
    Interceptors() { addResource("server.der", m_server.der.raw()); }

    static void useFlavour(WrapperConfig flavour) {
        TorvelLibraryBuilder().setEncryptionCertName("server").setWrapperConfig(flavour).build();
    }
    static Data decrypted(const std::string& answer) {
        return DecryptResponseInterceptor(key).parseResponse(Data(answer));
    }

    const testing::Identity m_server = testing::issue({.rsaBits = 2048});
};

TEST_F(Interceptors, TheServerOpensTheEnvelopeOfEveryFlavour) {
    const std::string bodies[] = {R"({"a":1})", "x", std::string(100'000, 'y'), "Grüße €"};
    for (const WrapperConfig flavour :
         {WrapperConfig::VelmMoney, WrapperConfig::QuentaMerchantApp, WrapperConfig::Pellox}) {
        useFlavour(flavour);
        const bool payload = flavour == WrapperConfig::QuentaMerchantApp;
        for (const std::string& body : bodies) {
            URLRequest request = requestWith(body);
            request.headers.set("Content-Type", "text/x");
            const URLRequest sent = EncryptRequestInterceptor(key).wrapRequest(request);
            const auto opened = sandbox::openRequestEnvelope(sent.httpBody->raw(), m_server.privateKeyPem);
            ASSERT_TRUE(opened.ok()) << opened.error().message;
            EXPECT_EQ(opened.value().plainText, body);
            EXPECT_EQ(request.httpBody, Data(body)) << "the caller's own request stays";
            EXPECT_EQ(opened.value().keyText, key);
            EXPECT_EQ(opened.value().form == sandbox::EnvelopeForm::payload, payload);
            EXPECT_EQ(sent.headers.value("Content-Type"), "text/x");
            EXPECT_FALSE(sent.headers.value("RequestKey").has_value());
            EXPECT_THAT(sent.httpBody->raw(), HasSubstr("\" : \""));
        }
    }
}

TEST_F(Interceptors, ARequestWithoutABodyGetsTheHeaderInEveryFlavour) {
    useFlavour(WrapperConfig::QuentaMerchantApp);
    URLRequest request = requestWith(std::nullopt);
    const URLRequest sent = EncryptRequestInterceptor(key).wrapRequest(request);
    EXPECT_FALSE(sent.httpBody.has_value());
    const auto opened = sandbox::openKey(*sent.headers.value("requestkey"), m_server.privateKeyPem);
    ASSERT_TRUE(opened.ok()) << opened.error().message;
    EXPECT_EQ(opened.value().keyText, key);

    URLRequest again = requestWith(std::nullopt);
    again.headers.set("RequestKey", "first");
    EXPECT_THAT(*EncryptRequestInterceptor(key).wrapRequest(again).headers.value("RequestKey"),
                ::testing::StartsWith("first,"));
}

TEST(IdempotencyKey, IsNotTheHostsOwn) {
    URLRequest request(*URL::parse("http://a/"));
    IdempotencyKeyInterceptor fresh, other, kept("X-Request-Id", "kept");
    EXPECT_THAT(fresh.key(), ::testing::MatchesRegex("[0-9A-F-]{36}"));
    EXPECT_NE(fresh.key(), other.key());
    EXPECT_EQ(kept.wrapRequest(request).headers.value("X-Request-Id"), "kept");
    request.headers.set("idempotency-key", "the host's");
    EXPECT_EQ(fresh.wrapRequest(request).headers.value("Idempotency-Key"), "the host's");
}

TEST_F(Interceptors, WhatIsNoEnvelopePassesUnchanged) {
    useFlavour(WrapperConfig::VelmMoney);
    const std::string otherKey =
        *sandbox::sealResponse("{}", "fedcba9876543210", sandbox::EnvelopeForm::plain);
    const std::string otherForm = *sandbox::sealResponse("{}", key, sandbox::EnvelopeForm::payload);
    for (const std::string& answer :
         {std::string(R"({"status":"ok"})"), std::string("not json"), std::string(), otherForm,
          std::string(
              R"({"ResponseData":"AAAA","ResponseIv":"AAAAAAAAAAAAAAAAAAAAAA=="})")})  // no whole block
        EXPECT_EQ(decrypted(answer).raw(), answer) << answer;
    EXPECT_NE(decrypted(otherKey).raw(), "{}");
}

TEST_F(Interceptors, WithoutACertificateEverythingPassesAndIsLogged) {
    URLRequest request = requestWith("body");
    TorvelLibraryBuilder().setEncryptionCertName("absent").build();
    EXPECT_EQ(EncryptRequestInterceptor(key).wrapRequest(request).httpBody, Data("body"));
    TorvelLibraryBuilder().build();
    const std::string log = logOf([&] {
        EXPECT_EQ(EncryptRequestInterceptor(key).wrapRequest(request).httpBody, Data("body"));
        EXPECT_EQ(decrypted("[]"), Data("[]"));
    });
    EXPECT_THAT(log, HasSubstr("ERROR[GenericRequestHeaderInterceptor]:"));
    EXPECT_THAT(log, HasSubstr("ERROR[GenericResponseInterceptor]:"));
    EXPECT_THAT(log, HasSubstr("-> Encryption Cert Not setup\n"));
}

TEST_F(Interceptors, TheKeyIsWrittenToTheDebugLog) {
    EXPECT_THAT(
        logOf([] { DecryptResponse(key).decryptResponse(std::string(64, 'A'), std::string(24, 'A')); }),
        HasSubstr("DEBUG[DecryptResponse]:"));
}

TEST_F(Interceptors, WhatCannotBeSealedOrOpenedStopsTheProcess) {
    useFlavour(WrapperConfig::VelmMoney);
    const auto seal = [](const std::string& body, const std::string& keyText) {
        URLRequest request = requestWith(body);
        EncryptRequestInterceptor(keyText).wrapRequest(request);
    };
    EXPECT_DEATH(seal("\xFF", key), "UTF-8");
    EXPECT_DEATH(seal("", key), "empty");
    EXPECT_DEATH(seal("body", "fifteen letters"), "16 characters");
    EXPECT_DEATH(DecryptResponse(), "init\\(\\)");

    const std::string iv = R"(,"ResponseIv":"AAAAAAAAAAAAAAAAAAAAAA=="})", data = R"({"ResponseData":)";
    for (const std::string& answer :
         {std::string("[]"), std::string("null"), data + R"("AAAAAAAAAAAAAAAAAAAAAA=="})", data + "null" + iv,
          data + R"("AAAAAAAAAAAAAAAAAAAAAA==","ResponseIv":1})", data + "\"*\"" + iv, data + "\"\"" + iv})
        EXPECT_DEATH(decrypted(answer), "Fatal error") << answer;
}

}  // namespace
}  // namespace torvel
