#include "TorvelTesting/HostFixture.h"
#include "TorvelTesting/TLSPeers.h"
#include "support/SandboxTest.h"

// The tool's "pins" against OpenSSL's own server and digests.
namespace torvel {
namespace {

using namespace torvel::testing;
using sandbox::Ran;
using sandbox::shell;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

struct Pins : HostFixture {
    Pins() {
        setenv("DIR", directory().c_str(), 1);
        setenv("TORVEL", TORVEL_CLI, 1);
        setenv("no_proxy", "localhost,127.0.0.1", 1);
    }

    static std::string run(const std::string& arguments) {
        return shell("\"$TORVEL\" " + arguments + " 2>&1").out;
    }
};

TEST_F(Pins, AreWhatOpenSSLSays) {
    const Identity server = issue({.alternativeNames = "DNS:localhost,IP:127.0.0.1", .rsaBits = 2048});
    OpenSSLServer peer(directory(), server);
    setenv("FROM", peer.url("localhost", "").substr(8).c_str(), 1);
    const std::string pins = run("pins --from \"$FROM\" --save \"$DIR/mine.der\"");
    EXPECT_THAT(peer.transcript(), Not(HasSubstr("HTTP/1.")));
    EXPECT_THAT(pins, ContainsRegex("names +localhost, 127.0.0.1\n  expires .*, in (29|30) days\n"));
    EXPECT_THAT(pins, HasSubstr("(SSlPinningType::certificate({\"mine\"}))"));
    EXPECT_THAT(pins, HasSubstr("backup"));
    const std::string x509 = "cd \"$DIR\" && openssl x509 -inform der -in mine.der ";
    const auto line = [](const std::string& text, std::size_t from) {
        return text.substr(from, text.size() - from - 1);
    };
    const std::string fingerprint = shell(x509 + "-noout -fingerprint -sha256").out;
    EXPECT_THAT(pins, HasSubstr("sha256 " + line(fingerprint, fingerprint.find('=') + 1)));
    const std::string key = shell(x509 +
                                  "-noout -pubkey | openssl pkey -pubin -outform der | "
                                  "openssl dgst -sha256 -binary | openssl base64")
                                .out;
    EXPECT_THAT(pins, HasSubstr("sha256/" + line(key, 0)));
    // The pasted literals are the key's PEM text.
    const std::string pem =
        shell("\"$TORVEL\" pins --from \"$DIR/leaf.pem\" | sed -n 's/^ *\"\\(.*\\)\\\\n\"[})]*$/\\1/p'").out;
    EXPECT_EQ(pem, server.publicKeyPem);
    EXPECT_THAT(run("pins --from \"$DIR/leaf.key\""), HasSubstr("holds no certificate"));
    EXPECT_THAT(run("pins --from 127.0.0.1:1"), HasSubstr("cannot be reached"));
}

}  // namespace
}  // namespace torvel
