#include "sandbox/Envelope.h"
#include "support/SandboxTest.h"

namespace torvel::sandbox {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

// Commands after this find $envelope, $sealedKey, $data and $iv, made by the openssl command line, and
// openAnswer.
constexpr char makeEnvelope[] = ". '" TORVEL_TEST_SUPPORT "/envelope.sh'\n";

void useForm(bool payload) {
    setenv("K", payload ? "payloadToken" : "RequestKey", 1);
    setenv("D", payload ? "payloadText" : "RequestData", 1);
    setenv("V", payload ? "payloadVariable" : "RequestIv", 1);
    setenv("RD", payload ? "payloadText" : "ResponseData", 1);
    setenv("RV", payload ? "payloadVariable" : "ResponseIv", 1);
}

void useKey(const char* key, const char* bits) {
    setenv("KEY", key, 1);
    setenv("BITS", bits, 1);
    setenv("IV", "aB3dE6gH9jK2mN5p", 1);
}

TEST_F(SandboxTest, EnvelopesOfTheOpensslTool) {
    start();
    logIn();
    setenv("PLAIN", R"({"to":"0711","amount":"10"})", 1);
    struct KeyRow {
        const char *name, *key, *bits;
        bool payload;
    };
    for (const KeyRow& row : {KeyRow{"AES-128", "k3yk3yk3yk3yk3y!", "128", false},
                              KeyRow{"AES-192", "k3yk3yk3yk3yk3y!k3yk3yk3", "192", false},
                              KeyRow{"AES-256", "k3yk3yk3yk3yk3y!k3yk3yk3yk3yk3y!", "256", true},
                              KeyRow{"AES-128, payload names", "k3yk3yk3yk3yk3y!", "128", true}}) {
        SCOPED_TRACE(row.name);
        useForm(row.payload);
        useKey(row.key, row.bits);
        const Ran ran =
            shell(std::string(makeEnvelope) + R"(post "$URL/api/v1/transfer" -d "$envelope" | openAnswer)");
        EXPECT_THAT(ran.out, HasSubstr(R"("amount":"10.00")"));
        const Exchange last = m_sandbox->exchanges().back();
        EXPECT_EQ(last.plainText, R"({"to":"0711","amount":"10"})");
        EXPECT_EQ(last.keyText, row.key);
        EXPECT_EQ(last.plainAnswer, ran.out);
        EXPECT_THAT(last.answer, HasSubstr(row.payload ? "payloadVariable" : "ResponseIv"));
    }
}

TEST_F(SandboxTest, TheHeaderFormIsAnsweredInTheFlavoursForm) {
    for (const bool payload : {false, true}) {
        start({.flavour = payload ? "QuentaMerchantApp" : "VelmMoney"});
        logIn();
        useForm(payload);
        useKey("k3yk3yk3yk3yk3y!", "128");
        const std::string get =
            std::string(makeEnvelope) + R"(post "$URL/api/v1/balance" -H "RequestKey: $sealedKey" )";
        EXPECT_THAT(shell(get + "| openAnswer").out, HasSubstr(R"("balance":"1000.00")"));
        setenv("TOKEN", "stale", 1);
        EXPECT_THAT(shell(get).out, HasSubstr("SESSION_ENDED")) << "a 401 is never sealed";
    }
}

TEST_F(SandboxTest, FaultyEnvelopesAreNamed) {
    start();
    useForm(false);
    useKey("k3yk3yk3yk3yk3y!", "128");
    setenv("PLAIN", "{}", 1);
    const std::vector<Row> rows = {
        {"no IV", R"({\"RequestKey\":\"$sealedKey\",\"RequestData\":\"$data\"})", 0, "RequestIv is missing"},
        {"IV of 15 bytes",
         R"({\"RequestKey\":\"$sealedKey\",\"RequestData\":\"$data\",\"RequestIv\":\"YUIzZEU2Z0g5aksybU41\"})",
         0, "RequestIv is not 24 characters of base64 of 16 bytes"},
        {"IV a number", R"({\"RequestKey\":\"$sealedKey\",\"RequestData\":\"$data\",\"RequestIv\":1})", 0,
         "RequestIv is not a string"},
        {"data not base64", R"({\"RequestKey\":\"$sealedKey\",\"RequestData\":\"?\",\"RequestIv\":\"$iv\"})",
         0, "RequestData is not base64"},
        {"data no blocks",
         R"({\"RequestKey\":\"$sealedKey\",\"RequestData\":\"AAAA\",\"RequestIv\":\"$iv\"})", 0,
         "RequestData is not a whole number of 16-byte blocks"},
        {"data of another key",
         R"({\"RequestKey\":\"$sealedKey\",\"RequestData\":\"AAAAAAAAAAAAAAAAAAAAAA==\",\"RequestIv\":\"$iv\"})",
         0, "RequestData does not open: wrong key or padding"},
        {"key text empty", R"({\"RequestKey\":\"\",\"RequestData\":\"$data\",\"RequestIv\":\"$iv\"})", 0,
         "RequestKey is not base64 of an encrypted key"},
        {"key text damaged", R"({\"RequestKey\":\"AAAA\",\"RequestData\":\"$data\",\"RequestIv\":\"$iv\"})",
         0, "RequestKey does not open with the server's private key"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Ran ran = shell(std::string(makeEnvelope) + R"(post -w '\n%{http_code}' "$URL/echo" -d ")" +
                              row.arguments + '"');
        EXPECT_THAT(ran.out, ContainsRegex(std::string("BAD_ENVELOPE.*") + row.output + ".*\n400$"));
    }
    useKey("only 15 letters", "128");
    EXPECT_THAT(shell("exec 2>/dev/null\n" + std::string(makeEnvelope) +
                      R"(post "$URL/echo" -H "RequestKey: $sealedKey")")
                    .out,
                HasSubstr("holds a key of 15 bytes, not 16, 24 or 32"));
}

TEST_F(SandboxTest, LongKeysComeInSeveralBlocks) {
    start();
    useForm(false);
    useKey("k3yk3yk3yk3yk3y!", "128");
    setenv("PLAIN", "{}", 1);
    const Ran ran = shell(std::string(makeEnvelope) + R"(
        sealedKey=$({ printf k3yk3yk3 | toServer; printf 'yk3yk3y!' | toServer; } | toBase64)
        printf %s "{\"$K\":\"$sealedKey\",\"$D\":\"$data\",\"$V\":\"$iv\"}")");
    const auto opened = openRequestEnvelope(ran.out, m_sandbox->identity().serverKeyPem);
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(opened.value().keyText, "k3yk3yk3yk3yk3y!");
    EXPECT_EQ(opened.value().plainText, "{}");
}

TEST_F(SandboxTest, GarbageEnvelopes) {
    start();
    useForm(false);
    useKey("k3yk3yk3yk3yk3y!", "128");
    const std::vector<Row> rows = {
        {"data-not-base64", "", 0, R"("ResponseData":"\*not base64\*","ResponseIv":".{22}==")"},
        {"iv-not-base64", "", 0, R"("ResponseIv":"\*not base64, 24 octets!\*")"},
        {"no-iv", "", 0, R"(^\{"ResponseData":"[^"]*"\}$)"},
        {"iv-not-text", "", 0, R"("ResponseIv":1\})"},
        {"not-blocks", "", 0, R"("ResponseData":"[^"]{20}")"},
        {"bad-padding", "| openAnswer 2>&1", 1, "bad decrypt"},
        {"array", "", 0, R"(^\[1\]$)"},
        {"not-json", "", 0, R"(^\{"ResponseData":$)"},
        {"sound", "", 0, "there is no garbage of kind sound"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Ran ran = shell(std::string(makeEnvelope) +
                              R"(post -H "RequestKey: $sealedKey" "$URL/misbehave/garbage?kind=)" + row.name +
                              "\" " + row.arguments);
        EXPECT_EQ(ran.exit, row.exit);
        EXPECT_THAT(ran.out, ContainsRegex(row.output));
    }
}

}  // namespace
}  // namespace torvel::sandbox
