#include "TorvelPlatform/foundation/File.h"
#include "TorvelTesting/TLSPeers.h"
#include "sandbox/Envelope.h"
#include "support/SandboxTest.h"

#include <fstream>

#include <nlohmann/json.hpp>

// Runs the built tool as a script would, against a sandbox of this process.
namespace torvel::sandbox {
namespace {

using namespace ::testing;
using namespace torvel::testing;

constexpr char key[] = "0123456789abcdef";

struct CLITest : SandboxTest {
    CLITest() {
        std::filesystem::create_directories(m_directory);
        setenv("DIR", m_directory.c_str(), 1);
        setenv("TORVEL", TORVEL_CLI, 1);
        setenv("KEY", key, 1);
        setenv("no_proxy", "localhost,127.0.0.1", 1);
    }

    void start(SandboxOptions options = {}) {
        SandboxTest::start(std::move(options));
        setenv("SSL_CERT_FILE", (m_directory / "ca.pem").c_str(), 1);
    }

    void write(const char* name, const std::string& bytes) const {
        std::ofstream(m_directory / name, std::ios::binary) << bytes;
    }

    std::string contentOf(const char* name) const { return readFile(m_directory / name).value().raw(); }

    // What stands on standard output or, after a failure, on standard error: one of the two is empty then.
    Ran torvel(const std::string& arguments) const {
        Ran ran = shell("\"$TORVEL\" " + arguments + " 2>\"$DIR/stderr\"");
        if (ran.exit == 0) return ran;
        EXPECT_EQ(ran.out, "");
        return {ran.exit, contentOf("stderr")};
    }
};

TEST_F(CLITest, DemonstratesEveryStep) {
    std::filesystem::create_directories(m_directory / "tmp");
    const Ran ran = shell("TMPDIR=\"$DIR/tmp\" SSL_CERT_FILE=/dev/null \"$TORVEL\" demo");
    EXPECT_EQ(ran.exit, 0);
    EXPECT_THAT(ran.out, EndsWith("\ndemo: 9 of 9 steps ok\n"));
    EXPECT_THAT(ran.out, Not(HasSubstr("\033")));
    EXPECT_TRUE(std::filesystem::is_empty(m_directory / "tmp"));
    for (const char* name : {"RequestData ", "ResponseIv ", "payloadToken ", "100%", "INSUFFICIENT_FUNDS"})
        EXPECT_THAT(ran.out, HasSubstr(name));
}

TEST_F(CLITest, ServesUntilItIsTold) {
    const Ran ran = shell(R"(
        mkfifo "$DIR/address"
        "$TORVEL" serve --dir "$DIR/served" --flavour QuentaMerchantApp >"$DIR/address" & pid=$!
        read -r line <"$DIR/address"
        cd "$DIR/served" && ls && stat -c %a server.key
        curl -s --cacert ca.pem "${line#listening on }/echo"; echo
        "$TORVEL" serve --dir . --port "${line##*:}" 2>&1; echo "second $?"
        kill -TERM $pid; wait $pid; echo "first $?")");
    EXPECT_THAT(ran.out, StartsWith("ca.pem\nserver.der\nserver.key\nserver.pem\n600\n"));
    EXPECT_THAT(ran.out, HasSubstr(R"("method":"GET","target":"/echo")"));
    EXPECT_THAT(ran.out, ContainsRegex("torvel serve: [^\n]+\nsecond 1\nfirst 0\n$"));
}

TEST_F(CLITest, CallGivesWhatTheLibraryGives) {
    start();
    logIn();
    write("EndpointsConfig.plist", "{ mirror = \"echo?named=1\"; }");
    write("body.json", R"({"from":"a file"})");
    shell("cd \"$DIR\" && openssl x509 -in server.pem -noout -pubkey >pin.pem");
    setenv("AS", ("Authorization: Bearer " + std::string(getenv("TOKEN"))).c_str(), 1);
    const std::vector<Row> rows = {
        {"pinned by certificate", R"("$URL/echo" --bundle "$DIR" --pin-cert server)", 0, R"("method":"GET")"},
        {"pinned by key", R"("$URL/echo" --pin-key "$DIR/pin.pem")", 0, R"("method":"GET")"},
        {"by the authority alone", R"("$URL/echo")", 0, R"("body":"".*"method":"GET")"},
        {"path below the server", R"(echo --server="$URL")", 0, R"("target":"/echo")"},
        {"name in the endpoint table", R"(mirror --server "$URL" --bundle "$DIR")", 0, "/echo.named=1"},
        {"text as body", R"("$URL/echo" --data hello --type text/plain)", 0,
         R"("body":"hello".*"Content-Type","text/plain".*"method":"POST")"},
        {"file as body", R"("$URL/echo" -X PUT --data "@$DIR/body.json" --type text/x)", 0,
         R"(a file.*"Content-Type","text/x".*"method":"PUT")"},
        {"input as body", R"("$URL/echo" -X DELETE --data - --type a/b <"$DIR/body.json")", 0,
         R"(a file.*"a/b".*"DELETE")"},
        {"method of no operation", R"("$URL/echo" -X PATCH --data x)", 0, R"("body":"x".*"method":"PATCH")"},
        {"fields", R"("$URL/echo" --header "X-One: 1" --header X-Two:2)", 0, R"("X-One","1".*"X-Two","2")"},
        {"upload", R"("$URL/api/v1/documents" --upload "$DIR/ca.pem" --header "$AS")", 0,
         R"("field":"file","fileName":"ca.pem")"},
        {"JSON error", R"("$URL/api/v1/transfer" --data '{"to":"1","amount":"9999"}' --header "$AS")", 0,
         "^.\"errorCode\":\"INSUFFICIENT_FUNDS\""},
        {"log on standard error", R"("$URL/misbehave/unsealed" --log)", 0, R"(^..status":"ok".$)"},
        {"401", R"("$URL/api/v1/balance")", 1,
         R"(^."message":"[^"]+401[^"]*","errorCode":"401","body":".*SESSION_ENDED)"},
        {"time-out", R"("$URL/misbehave/hang" --timeout 0.05)", 1, R"(timed out.*"errorCode":"-1"..$)"},
        {"no URL", "'http://[::1'", 1, R"("errorCode":"-1"..$)"},
        {"sealed answer that is an array",
         R"("$URL/misbehave/garbage?kind=array" --bundle "$DIR" --encrypt --cert server --key "$KEY")", 1,
         "^torvel: the library stopped: [^\n]+\n$"},
    };
    expectRows(rows, [this](const std::string& arguments) { return torvel("call " + arguments); });
}

TEST_F(CLITest, RecordsWhatBrowsersImportButNoSecret) {
    start();
    const Ran ran = torvel(
        R"(call "$URL/misbehave/redirect?to=/echo&pin=4711" --har "$DIR/call.har" --bundle "$DIR" --encrypt )"
        R"(--cert server --key "$KEY" --data '{"pin":"4711"}' --header "Authorization: Bearer 4711" --log)");
    EXPECT_THAT(ran.out, HasSubstr("4711"));  // the echo, opened
    const std::string archive = contentOf("call.har");
    EXPECT_THAT(archive, Not(HasSubstr("4711")));
    for (const char* part : {"RequestData", "ResponseData", "\"name\": \"Authorization\"", "\"status\": 307",
                             "\"status\": 200", "/misbehave/redirect\"", "\"name\": \"pin\""})
        EXPECT_THAT(archive, HasSubstr(part));
    EXPECT_THAT(
        contentOf("stderr"),
        ContainsRegex("POST https://127.0.0.1:[0-9]+/misbehave/redirect -> 307: .*; then POST .* -> 200: "));

    for (const char* open : {R"({"RequestData":"x","pin":"4711"})", R"({"RequestData":{"pin":"4711"}})"}) {
        const std::string arguments = std::string("call \"$URL/echo\" --data '") + open + "' --har ";
        EXPECT_EQ(torvel(arguments + R"("$DIR/open.har")").exit, 0);
        EXPECT_THAT(contentOf("open.har"), Not(HasSubstr("4711")));
    }
    EXPECT_THAT(shell(R"("$TORVEL" call "$URL/echo" --har /nowhere/x 2>&1)").out,
                HasSubstr("--har: /nowhere/x"));
}

TEST_F(CLITest, CallSendsNothingToWhomItDoesNotTrust) {
    start();
    write("stranger.der", SandboxIdentity::make().serverDer);
    write("stranger.pem", SandboxIdentity::make().caPem);
    const auto call = [this](const std::string& arguments) { return torvel("call " + arguments); };
    expectRows(
        {{"another certificate", R"("$URL/echo" --bundle "$DIR" --pin-cert stranger)", 1, "not trusted"}},
        call);
    setenv("SSL_CERT_FILE", (m_directory / "stranger.pem").c_str(), 1);
    expectRows(
        {{"another authority", R"("$URL/echo")", 1, R"("errorCode":"-1")"},
         {"another authority, pinned", R"("$URL/echo" --bundle "$DIR" --pin-cert server)", 1, "not trusted"}},
        call);
    EXPECT_TRUE(m_sandbox->exchanges().empty());
    EXPECT_THAT(call(R"("$URL/echo" --bypass)").out, HasSubstr("GET"));
}

TEST_F(CLITest, SealsWhatTheBackendOpens) {
    const SandboxIdentity identity = SandboxIdentity::make();
    ASSERT_EQ(identity.write(m_directory), std::nullopt);
    const std::string text(100000, 'x'), key24 = "\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E901234567";
    setenv("KEY", key24.c_str(), 1);
    write("plain", text);
    const Ran sealed =
        torvel(R"(seal --cert "$DIR/server.der" --key "$KEY" --flavour QuentaMerchantApp <"$DIR/plain")");
    const auto opened = openRequestEnvelope(sealed.out, identity.serverKeyPem);
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(opened.value().form, EnvelopeForm::payload);
    EXPECT_EQ(opened.value().keyText, key24);
    EXPECT_EQ(opened.value().plainText, text);

    write("answer", *sealResponse(text, key24, EnvelopeForm::payload));
    const Ran back = torvel(R"(open --key "$KEY" --flavour QuentaMerchantApp <"$DIR/answer")");
    EXPECT_EQ(back.exit, 0);
    EXPECT_EQ(back.out, text);
}

TEST_F(CLITest, OpenSaysWhyNot) {
    const std::string iv = R"("ResponseIv":"MDEyMzQ1Njc4OWFiY2RlZg==")";
    const std::pair<std::string, const char*> rows[] = {
        {"[]", "no object"},
        {R"({"RequestData":"AA=="})", "no member ResponseData"},
        {R"({"ResponseData":"AA=="})", "no member ResponseIv"},
        {R"({"ResponseData":"?",)" + iv + "}", "ResponseData is not base64"},
        {R"({"ResponseData":"",)" + iv + "}", "ResponseData is 0 bytes"},
        {R"({"ResponseData":"AAAA",)" + iv + "}", "ResponseData is 3 bytes"},
        {R"({"ResponseData":"MDEyMzQ1Njc4OWFiY2RlZg==",)" + iv + "}", "is 0 bytes"},  // that of the IV
        {R"({"ResponseData":"AA==","ResponseIv":"MDEyMzQ1Njc4OWFiY2RlZ==="})", "16 bytes"},
        {*sealResponse("text", key, EnvelopeForm::payload), "no member ResponseData"},
        // Longer than the padding that a wrong key may make of it, which would leave nothing.
        {*sealResponse(std::string(300, 't'), "another key 0123", EnvelopeForm::plain), "this key"},
        {*sealResponse("\xe9", key, EnvelopeForm::plain), "UTF-8"},
    };
    for (const auto& [envelope, reason] : rows) {
        SCOPED_TRACE(envelope);
        write("answer", envelope);
        const Ran ran = torvel(R"(open --key "$KEY" <"$DIR/answer")");
        EXPECT_EQ(ran.exit, 1);
        EXPECT_THAT(ran.out, AllOf(HasSubstr("torvel open: "), HasSubstr(reason)));
    }
}

TEST_F(CLITest, SaysWhatIsWrongInOneLine) {
    ASSERT_EQ(SandboxIdentity::make().write(m_directory), std::nullopt);
    write("empty", "");
    write("latin1", "\xe9");
    write("text.der", "no certificate");
    shell("cd \"$DIR\" && openssl x509 -in ca.pem -outform DER -out curve.der");
    const struct {
        const char* arguments;
        int exit;
        const char* output;
    } rows[] = {
        {"", 2, "which command"},
        {"sned", 2, "no command 'sned'"},
        {"demo --quick", 2, "no option '--quick'"},
        {"demo now", 2, "'now' is one argument too many"},
        {"serve", 2, "--dir is missing"},
        {"call x --data", 2, "--data needs a value"},
        {"call x --log=yes", 2, "--log takes no value"},
        {"serve --dir a --dir b", 2, "--dir is given twice"},
        {"serve --dir a --port 65536", 2, "--port: '65536' is not a port"},
        {"call x --timeout nan", 2, "--timeout: 'nan' is not a number of seconds"},
        {"open --key \"$KEY\" --flavour velm", 2, "'velm' is not a flavour"},
        {"open --key 0123", 2, "--key: '0123' is not 16 characters"},
        {"open --key é123456789abcdef", 2, "is 17 bytes"},
        {"call x -X 'GET /'", 2, "-X: 'GET /' is not an HTTP method"},
        {"call x --header X", 2, "--header: 'X' is not NAME:VALUE"},
        {"call x --header \"X: 1$(printf '\\r\\nY: 2')\"", 2, "is not NAME:VALUE"},
        {"call x --server 127.0.0.1:1", 2, "--server: .* is not an http"},
        {"call x", 2, "--server is needed"},
        {"call http://x --encrypt --key \"$KEY\"", 2, "--encrypt needs --cert"},
        {"call http://x --bypass --pin-cert a", 2, "exclude each other"},
        {"call http://x --bundle \"$DIR/none\"", 1, "there is no directory .*none"},
        {"call http://x --bundle \"$DIR\" --pin-cert none", 1, "there is no none.der in"},
        {"call http://x --bundle \"$DIR\" --pin-cert text", 1, "not one certificate"},
        {"call http://x --pin-key \"$DIR/ca.pem\"", 1, "not a public key"},
        {"call http://x --data \"@$DIR/none\"", 1, "--data: .*none.* could not be read"},
        {"call http://x --upload \"$DIR\"", 1, "--upload: .* could not be read"},
        {"call http://x --data '' --bundle \"$DIR\" --encrypt --key \"$KEY\" --cert server", 1,
         "not empty can be encrypted"},
        {"call http://x --bundle \"$DIR\" --encrypt --key \"$KEY\" --cert curve", 1, "no RSA key"},
        {"seal --key \"$KEY\" --cert \"$DIR/ca.pem\"", 2, "end in .der"},
        {"seal --key \"$KEY\" --cert \"$DIR/server.der\" <\"$DIR/empty\"", 1, "no text to seal"},
        {"seal --key \"$KEY\" --cert \"$DIR/server.der\" <\"$DIR/latin1\"", 1, "not UTF-8"},
        {"serve --dir /dev/null/x", 1, "/dev/null/x"},
        {"--version >/dev/full", 1, "cannot be written"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Ran ran = torvel(row.arguments);
        EXPECT_EQ(ran.exit, row.exit);
        EXPECT_THAT(ran.out, AllOf(MatchesRegex("torvel[^\n]*: [^\n]*\n"), ContainsRegex(row.output)));
    }
}

TEST_F(CLITest, ChecksTypedTextsByTheConfiguration) {
    setenv("LC_ALL", "en_US.UTF-8", 1);
    std::filesystem::create_directory(m_directory / "en.lproj");
    write("en.lproj/Configurations.strings",
          "torvel_mobileno_regex = \"[0-9]+\"; torvel_username_regex = \"[a-z\";"
          "torvel_currency_symbol = \"$\"; torvel_currency_prefix = true;");
    const std::vector<Row> rows = {
        {"card", "card 4111111111111111 --expiry 08/2099 --name Ada", 1, "or its date is not in the conf"},
        {"card and its scheme", "card 4111111111111111 --name Ada", 0, "^Visa\n$"},
        {"check digit and name", "card 4111111111111112 --name 1", 1,
         "^torvel card: the check digit is wrong; the name is not in the configured form\n$"},
        {"no month", "card 4111111111111111 --expiry 13/30", 1, "the expiry date is no month and year\n$"},
        {"unknown scheme", "card 0", 1, "^torvel card: no scheme has such a number\n$"},
        {"not digits", "card 4111-1111", 2, "NUMBER: '4111-1111' is not made of the digits"},
        {"amount", "amount 1234.567 --decimals", 0, "^1\\.234,56 \u20AC\n$"},
        {"amount and currency", "amount 1234 --currency '$' --decimals", 0, "^1,234\\.00 [$]\n$"},
        {"amount of a bundle", "amount 5 --bundle \"$DIR\"", 0, "^[$] 5\n$"},
        {"amount mirrored", "amount 5 --bundle \"$DIR\" --direction rtl", 0, "^5 [$]\n$"},
        {"no amount", "amount 1,5", 1, "'1,5' is no amount"},
        {"no direction", "amount 5 --direction up", 2, "is neither ltr nor rtl"},
        {"valid", "validate mobile 12 --bundle \"$DIR\"", 0, "^valid\n$"},
        {"not valid", "validate mobile 12x --bundle \"$DIR\"", 1, "^torvel validate: not valid as mobile\n$"},
        {"invalid pattern", "validate user ada --bundle \"$DIR\"", 1,
         "ERROR.*Invalid regular expression .*a-z"},
        {"no kind", "validate pin 1234", 2, "'pin' is no kind"},
        {"no configuration", "validate mobile 12 --bundle \"$DIR/en.lproj\"", 1, "there is no en.lproj/Conf"},
    };
    expectRows(rows, [this](const std::string& arguments) { return torvel(arguments); });
}

TEST_F(CLITest, HelpsEverywhere) {
    EXPECT_THAT(torvel("--version").out, MatchesRegex("torvel [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    const std::string help = torvel("--help").out;
    for (const std::string command :
         {"demo", "serve", "call", "seal", "open", "card", "amount", "validate", "doctor", "pins"}) {
        EXPECT_THAT(help, HasSubstr("\n  " + command + " "));
        EXPECT_THAT(torvel(command + " --help").out, StartsWith("Usage: torvel " + command));
    }
    EXPECT_THAT(torvel("call --help").out, ContainsRegex("\n  --timeout S +seconds"));
}

TEST_F(CLITest, DoctorSaysWhatItFinds) {
    write("EndpointsConfig.plist", "{ a = \"http://a.example/\\\"\"; }");
    setenv("SAMPLE", (std::filesystem::path(TORVEL_CLI).parent_path() / "../share/torvel-sample").c_str(), 1);
    const std::vector<Row> rows = {
        {"clean", "doctor \"$SAMPLE\" --strict --server https://a.example/ --flavour Dunmere", 0,
         "^Endpoints +6 endpoints +ok\n.*\n\nNothing to mend\\.\n$"},
        {"missing pin", "doctor \"$SAMPLE\" --pin-cert b --pin-cert c >/dev/null", 1, ""},
        {"no folder", "doctor \"$DIR/none\"", 2, "there is no folder"},
        {"both pins", "doctor \"$DIR\" --pin-cert a --pin-key b", 2, "exclude each other"},
        {"no key file", "doctor \"$DIR\" --pin-key \"$DIR/none\"", 2, "--pin-key: "},
        {"no flavour", "doctor \"$DIR\" --flavour none", 2, "is not a flavour"},
    };
    expectRows(rows, [this](const std::string& arguments) { return torvel(arguments); });

    const Ran found = shell("\"$TORVEL\" doctor \"$DIR\"");
    EXPECT_EQ(found.exit, 1);
    EXPECT_THAT(found.out,
                HasSubstr("\n  error     EndpointsConfig.plist:1  a\n            \"http://a.example/\"\""));
    const auto json = nlohmann::json::parse(shell("\"$TORVEL\" doctor \"$DIR\" --json").out);
    EXPECT_EQ(json["version"], 1);
    EXPECT_EQ(json["subjects"].size(), 7);
    const auto& finding = json["subjects"][0]["findings"][0];
    EXPECT_EQ(finding["rule"], "endpoints.without-tls");
    EXPECT_EQ(finding["line"], 1);
    EXPECT_EQ(finding["what"], "\"http://a.example/\"\" is without TLS");
    EXPECT_GE(json["errors"], 1);
    EXPECT_EQ(shell("\"$TORVEL\" doctor \"$DIR\" --strict >/dev/full").exit, 2);
}

TEST_F(CLITest, LooksIntoStores) {
    setenv("XDG_DATA_HOME", (m_directory / "data").c_str(), 1);
    setenv("XDG_STATE_HOME", (m_directory / "state").c_str(), 1);
    EXPECT_EQ(torvel("store list").out, "");
    EXPECT_EQ(torvel("store set b 'a text' --suite s").exit, 0);
    EXPECT_EQ(torvel("store set a 1 --suite s").exit, 0);
    EXPECT_EQ(torvel("store list --suite s").out, "a\ttext\nb\ttext\n");
    EXPECT_EQ(torvel("store get b --suite s --show").out, "b\ttext\ta text\n");
    EXPECT_EQ(torvel("store get b --suite s --host other").out, "torvel store: there is no entry b\n");
    EXPECT_EQ(torvel("store remove b --suite s").exit, 0);
    EXPECT_EQ(torvel("store verify --suite s").out, "1 entries can be read\n");
    EXPECT_EQ(torvel("store clear --suite s").exit, 0);
    EXPECT_EQ(torvel("store list --suite s").out, "");
    std::filesystem::remove_all(m_directory / "state");
    for (const char* action : {"list", "get a", "set a b", "clear"})
        EXPECT_EQ(torvel(std::string("store ").append(action).append(" --suite s")).exit, 1) << action;
    for (const char* misuse : {"", "wash", "get", "list a", "set a", "list --suite torvel"})
        EXPECT_EQ(torvel(std::string("store ").append(misuse)).exit, 2) << misuse;
}

// Against OpenSSL's own server and digests.
TEST_F(CLITest, PinsAreWhatOpenSSLSays) {
    const auto run = [](const std::string& arguments) {
        return shell("\"$TORVEL\" " + arguments + " 2>&1").out;
    };
    const Identity server = issue({.alternativeNames = "DNS:localhost,IP:127.0.0.1", .rsaBits = 2048});
    OpenSSLServer peer(m_directory, server);
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
    const std::string digest = shell(x509 +
                                     "-noout -pubkey | openssl pkey -pubin -outform der | "
                                     "openssl dgst -sha256 -binary | openssl base64")
                                   .out;
    EXPECT_THAT(pins, HasSubstr("sha256/" + line(digest, 0)));
    // The pasted literals are the key's PEM text.
    const std::string pem =
        shell("\"$TORVEL\" pins --from \"$DIR/leaf.pem\" | sed -n 's/^ *\"\\(.*\\)\\\\n\"[})]*$/\\1/p'").out;
    EXPECT_EQ(pem, server.publicKeyPem);
    EXPECT_THAT(run("pins --from \"$DIR/leaf.key\""), HasSubstr("holds no certificate"));
    EXPECT_THAT(run("pins --from 127.0.0.1:1"), HasSubstr("cannot be reached"));
}

}  // namespace
}  // namespace torvel::sandbox
