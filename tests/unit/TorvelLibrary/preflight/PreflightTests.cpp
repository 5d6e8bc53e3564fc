#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/preflight/Preflight.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/Text.h"
#include "TorvelTesting/Certificates.h"
#include "TorvelTesting/HostFixture.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

using namespace testing;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

// A copy of the sample host to spoil.
struct PreflightTest : HostFixture {
    PreflightTest() {
        copySample();
        settings.serverURL = "https://api.example/v1/";
        Bundle::setLibrary(directory() / "library");
    }

    void copySample() const {
        fs::remove_all(directory());
        fs::copy(TORVEL_SAMPLE_RESOURCES, directory(), fs::copy_options::recursive);
        addResource("library/noImage.png", "");
    }

    // Puts `to` in the place of `from` in a file, or of the whole file; nothing (nullptr) removes it.
    void spoil(const std::string& name, std::string_view from, const char* to) const {
        if (to == nullptr) return fs::remove_all(directory() / name), void();
        std::string content = to;
        if (!from.empty()) {
            content = readFile(directory() / name).value().raw();
            ASSERT_NE(content.find(from), content.npos) << from;
            content.replace(content.find(from), from.size(), to);
        }
        addResource(name, content);
    }

    // "<rule> <file>:<line> <key>" of every finding but the notes, each on a line.
    std::string findings() const {
        std::string lines;
        for (const PreflightSubject& subject : Preflight::examine(*Bundle::at(directory()), settings)) {
            for (const PreflightFinding& finding : subject.findings) {
                if (finding.severity == PreflightSeverity::note) continue;
                EXPECT_FALSE(finding.what.empty() || finding.effect.empty() || finding.remedy.empty());
                lines += finding.rule + " " + finding.file + ":" + std::to_string(finding.line) + " " +
                         finding.key + "\n";
            }
        }
        return lines;
    }

    PreflightSettings settings;
};

TEST_F(PreflightTest, TheSampleHostPasses) { EXPECT_EQ(findings(), ""); }

// One fault each. "@" is the file itself.
TEST_F(PreflightTest, FindsEveryFaultOfTheBrokenSample) {
    const std::string endpoints = "EndpointsConfig.plist", theme = "ColorTheme.plist", ui = "Login.ui",
                      values = "en.lproj/Configurations.strings", french = "fr.lproj/Localizable.strings";
    const struct {
        std::string file;
        std::string_view from;
        const char* to;
        std::string expected;
    } rows[] = {
        {endpoints, "", nullptr, "endpoints.missing @:0 "},
        {endpoints, "<key>balance</key>", "<key>balance<key>", "endpoints.unparsed @:7 "},
        {endpoints, "", "(login)", "endpoints.root @:0 "},
        {endpoints, "<string>api/v1/login</string>", "<true/>", "endpoints.not-a-text @:5 login"},
        {endpoints, "<key>balance", "<key>login", "endpoints.duplicate-key @:7 login"},
        {endpoints, "api/v1/login", "http://api.example/login", "endpoints.without-tls @:5 login"},
        {endpoints, "api/v1/login", "api/log in", "endpoints.not-a-url @:5 login"},
        {endpoints, "api/v1/login", "/login", "endpoints.double-slash @:5 login"},
        {endpoints, "api/v1/login", "httpLogin", "endpoints.reads-as-url @:5 login"},
        {values, "", nullptr, "configurations.missing @:0 "},
        {values, "= \"Alias\";", "= \"Alias", "configurations.unparsed @:32 "},
        {values, "torvel_pin_regex", "torvel_pin_regexp",
         "configurations.unknown-key @:32 torvel_pin_regexp\n"
         "configurations.missing-key @:0 torvel_pin_regex"},
        {values, "torvel_otp_length", "torvel_pin_length",
         "configurations.duplicate-key @:34 torvel_pin_length\n"
         "configurations.missing-key @:0 torvel_otp_length"},
        {values, "^[0-9]{4}$", "^[0-9{4}$", "configurations.invalid-pattern @:32 torvel_pin_regex"},
        {values, "^[0-9]{4}$", "^07([0-9]+)+$", "configurations.endless-pattern @:32 torvel_pin_regex"},
        {values, "_pin_length\" = \"4", "_pin_length\" = \"4 ",
         "configurations.not-a-number @:33 torvel_pin_length"},
        {values, "_pin_length\" = \"4", "_pin_length\" = \"-3",
         "configurations.no-length @:33 torvel_pin_length"},
        {values, "_prefix\" = \"false", "_prefix\" = \"True",
         "configurations.not-a-flag @:44 torvel_currency_prefix"},
        {values, "€", "Zorkmid", "configurations.unknown-currency @:42 torvel_currency_symbol"},
        {values, "€", "£", "configurations.currency-digits @:42 torvel_currency_symbol"},
        {"fr.lproj/Configurations.strings", "", "/**/", "configurations.never-read @:0 "},
        {theme, "", nullptr, "colours.missing @:0 "},
        {theme, "<dict>", "<dict", "colours.unparsed @:4 "},
        {theme, "", "( a )", "colours.root @:0 "},
        {theme, "<string>4338CA</string>", "<true/>", "colours.not-a-text @:5 PrimaryColor"},
        {theme, "4338CA", "338CA", "colours.not-six-digits @:5 PrimaryColor"},
        {theme, "CirlceDisabled", "CircleDisabled", "colours.misspelt-key @:35 CircleDisabledColor"},
        {theme, "CirlceDisabled", "Greyish", "colours.unknown-key @:35 GreyishColor"},
        // The greys next to the bound on white: 4.54 and 4.48.
        {theme, "4338CA", "767676", ""},
        {theme, "4338CA", "777777", "colours.contrast @:7 OnPrimaryColor"},
        {"fr_light.ttf", "", nullptr, "fonts.missing-face @:0 "},
        {"ar_bold.ttf", "", "no font", "fonts.missing-face @:0 "},
        {"Poppins-Bold.ttf", "", nullptr, "fonts.missing-face @:0 "},
        {french, "\"offline\"", "\"outline\"",
         "localisation.missing-key ar.lproj/Localizable.strings:0 outline\n"
         "localisation.missing-key en.lproj/Localizable.strings:0 outline\n"
         "localisation.missing-key @:0 offline"},
        {french, "%@", "%d", "localisation.placeholders @:8 balance_greeting"},
        {french, "%@", "%1$@ à 5 % de 100%%", ""},
        {french, ";", "", "localisation.unparsed @:3 "},
        {french, "", nullptr, "localisation.missing-table @:0 "},
        {"fr-CA.lproj/empty", "", "",
         "localisation.region-folder fr-CA.lproj:0 \n"
         "localisation.missing-table fr-CA.lproj/Localizable.strings:0 "},
        {"en.lproj", "", nullptr,
         "configurations.missing @/Configurations.strings:0 \n"
         "localisation.no-default-folder @:0 "},
        {"ColorThemeDim.plist/a", "", "", "colours.unreadable ColorThemeDim.plist:0 "},
        {"de_regular.ttf", "", "no font", "localisation.no-folder de.lproj:0 "},
        {ui, "",
         "<ui><!-- <string>Gone</string> -->\n<string>Log  in</string><string notr=\"true\">ok</string></ui>",
         "localisation.interface-key @:2 Log  in"},
        {ui, "",
         "<ui>\n<pixmap>logo</pixmap><pixmap>:/in</pixmap><iconset>\n<normaloff>en_bold.ttf</normaloff></"
         "iconset></ui>",
         "images.missing-image @:2 logo"},
        {ui, "", "<html/>", "images.not-an-interface @:0 "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file + ": " + row.expected);
        copySample();
        spoil(row.file, row.from, row.to);
        const std::string expected = replacingOccurrences(row.expected, "@", row.file);
        EXPECT_EQ(findings(), expected.empty() ? "" : expected + "\n");
    }

    copySample();
    fs::copy_file(directory() / "Poppins-Medium.ttf", directory() / "Poppins-Bold.ttf",
                  fs::copy_options::overwrite_existing);
    spoil(ui, "", "<ui/>");
    fs::remove(directory() / "library/noImage.png");
    EXPECT_EQ(findings(), "fonts.poppins-name Poppins-Bold.ttf:0 \nimages.no-placeholder :0 noImage\n");
}

TEST_F(PreflightTest, ChecksCertificatesAndPinsAgainstTheSettings) {
    const Identity server = issue({.lastDay = 90, .rsaBits = 2048}), elliptic = issue({.lastDay = 90});
    addResource("backup.der", elliptic.der.raw());
    const auto certificates = [](std::vector<std::string> names) {
        return SSlPinningType::certificate(names);
    };
    const SSlPinningType both = certificates({"server", "backup"}), none = SSlPinningType::none();
    const struct {
        std::string der;  // of server.der
        SSlPinningType pins;
        const char* encryption;
        std::string expected;
    } rows[] = {
        {server.der.raw(), both, "server", ""},
        {server.certificatePem, both, "server", "certificates.not-der server.der:0 "},
        {issue({.firstDay = -9, .lastDay = -2}).der.raw(), none, nullptr,
         "certificates.expired server.der:0 "},
        {issue({.lastDay = 59}).der.raw(), none, nullptr, "certificates.expiring server.der:0 "},
        {issue({.lastDay = 61}).der.raw(), none, nullptr, ""},
        {issue({.lastDay = 90, .rsaBits = 1024}).der.raw(), none, nullptr,
         "certificates.weak-key server.der:0 "},
        {issue({.lastDay = 90}).der.raw(), none, "server",
         "certificates.envelope-key server.der:0 encryptionCertName"},
        {server.der.raw(), none, "other", "certificates.encryption-off other.der:0 encryptionCertName"},
        {server.der.raw(), none, "", "certificates.encryption-off :0 encryptionCertName"},
        {server.der.raw(), certificates({"server", "backup", "other"}), nullptr,
         "certificates.pin-missing other.der:0 other"},
        {server.der.raw(), certificates({"server", "server"}), nullptr,
         "certificates.no-backup-pin :0 sslType"},
        {server.der.raw(), certificates({}), nullptr, "certificates.no-pin :0 sslType"},
        {server.der.raw(), SSlPinningType::publicKey({server.publicKeyPem, issue({}).publicKeyPem}), nullptr,
         "certificates.pin-unborne :0 pin 2"},
        {server.der.raw(), SSlPinningType::publicKey({server.publicKeyPem, "a key"}), nullptr,
         "certificates.pin-invalid :0 pin 2"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.expected);
        addResource("server.der", row.der);
        settings.sslType = row.pins;
        settings.encryptionCertName.reset();
        if (row.encryption) settings.encryptionCertName = row.encryption;
        EXPECT_EQ(findings(), row.expected.empty() ? "" : row.expected + "\n");
    }
}

TEST_F(PreflightTest, ChecksTheServerAndTheHostsBesideIt) {
    spoil("EndpointsConfig.plist", "", "{ a = \"a\"; b = \"https://other.example/b\"; }");
    const std::string unpinned = "endpoints.unpinned-host EndpointsConfig.plist:1 b\n";
    const struct {
        const char* server;
        bool isPinned, isBypassed;
        std::string expected;
    } rows[] = {
        {"https://api.example/", false, false, ""},
        {"https://other.example/", true, false, ""},
        {"https://api.example/", true, false, unpinned},
        {"https://api.example/", false, true, "certificates.bypass :0 isHttpsByPassRequired\n"},
        {"https://api.example", false, false, "endpoints.no-slash EndpointsConfig.plist:1 a\n"},
        {"http://api.example/", false, false, "endpoints.server :0 serverURL\n"},
        {"api.example/", false, false, "endpoints.server :0 serverURL\n"},
    };
    const Identity one = issue({.lastDay = 90}), other = issue({.lastDay = 90});
    addResource("one.der", one.der.raw()), addResource("other.der", other.der.raw());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.server);
        settings.serverURL = row.server;
        settings.isHttpsByPassRequired = row.isBypassed;
        settings.sslType =
            row.isPinned ? SSlPinningType::certificate({"one", "other"}) : SSlPinningType::none();
        EXPECT_EQ(findings(), row.expected);
    }
}

TEST_F(PreflightTest, RefusesToStartWhatWouldBeUnprotected) {
    addResource("server.der", issue({.lastDay = 90, .rsaBits = 2048}).der.raw());
    spoil("fr.lproj/Localizable.strings", "%@", "%d");
    TorvelLibraryBuilder builder;
    builder.setServerURL("https://api.example/v1/").setEncryptionCertName("server");
    builder.build();
    EXPECT_THAT(logOf(Preflight::check), HasSubstr("] ERROR[Preflight]:"));
    EXPECT_THAT(logOf(Preflight::check), HasSubstr("fr.lproj/Localizable.strings:8 balance_greeting: "));

    builder.setEncryptionCertName("other").build();
    EXPECT_DEATH(Preflight::check(),
                 "refuses to start: other.der encryptionCertName: the bundle has no such file");
    TorvelLibraryBuilder().build();
    EXPECT_DEATH(Preflight::check(), "no encryption certificate is named");
    builder.setEncryptionCertName("server").setSSlType(SSlPinningType::certificate({"server"})).build();
    spoil("EndpointsConfig.plist", "api/v1/login", "https://other.example/login");
    EXPECT_DEATH(Preflight::check(),
                 "EndpointsConfig.plist:5 login: \"other.example\" is another host than \"api.example\"");
}

}  // namespace
}  // namespace torvel
