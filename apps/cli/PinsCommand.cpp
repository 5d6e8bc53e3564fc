#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/DateFormatter.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/http/Session.h"
#include "TorvelPlatform/security/Digest.h"
#include "cli/Command.h"
#include "cli/HostFiles.h"
#include "cli/Output.h"

#include <algorithm>
#include <chrono>
#include <fstream>

// What to pin of a server.
namespace torvel::cli {
namespace {

constexpr Option options[] = {
    {"--from", "HOST:PORT|FILE", "a server, or its certificates in PEM or DER", Occurs::once},
    {"--save", "FILE", "writes the server's own certificate, DER, to be put into the bundle"},
};

using Chain = std::vector<SecCertificate>;

// What a server showed, the server's own certificate first.
struct Shown {
    Chain chain;
    std::optional<std::string> fault;  // why this machine would not trust it
};

// Keeps what the server shows and refuses it, so that no byte of a request is sent.
class Collector final : public ServerTrustEvaluating {
  public:
    std::optional<TrustFailure> evaluate(SecTrust& trust, std::string_view forHost) const override {
        Shown shown;
        for (const SecCertificate& certificate : trust.certificateChain()) {
            if (std::ranges::count(shown.chain, certificate) == 0) shown.chain.push_back(certificate);
        }
        if (const auto failure = DefaultTrustEvaluator().evaluate(trust, forHost))
            shown.fault = failure->description;
        m_shown.store(std::move(shown));
        return TrustFailure{TrustFailure::Reason::certificatePinningFailed, std::string(forHost),
                            "only looked at"};
    }
    Shown shown() const { return m_shown.load(); }

  private:
    mutable Guarded<Shown> m_shown;
};

Outcome<Shown, std::string> shownBy(const URL& server) {
    const auto collector = std::make_shared<Collector>();
    const auto trust = std::make_shared<ServerTrustManager>(
        true, ServerTrustManager::Evaluators{{server.host().value_or(""), collector}});
    Session session(URLSessionConfiguration::defaults(), "torvel.pins", trust);
    URLRequest request(server);
    request.timeoutInterval = 10;
    std::optional<DataResponse> ended;
    session.request(std::move(request)).responseData(DispatchQueue::main(), [&](DataResponse response) {
        ended = std::move(response);
    });
    while (!ended) DispatchQueue::main().runUntil([&] { return ended.has_value(); }, std::chrono::minutes(1));
    Shown shown = collector->shown();
    if (!shown.chain.empty()) return shown;
    return ended->error ? ended->error->localizedDescription : "the server shows no certificate";
}

Outcome<Shown, std::string> shownIn(const Data& bytes, const std::string& file) {
    Shown shown{SecCertificate::createWithPEM(bytes), std::nullopt};
    if (auto der = SecCertificate::createWithData(bytes)) shown.chain.push_back(std::move(*der));
    if (shown.chain.empty()) return file + " holds no certificate, neither PEM nor DER";
    return shown;
}

Outcome<Shown, std::string> look(const std::string& from) {
    if (std::filesystem::exists(from)) {
        const auto bytes = readFile(from);
        return bytes ? shownIn(bytes.value(), from)
                     : Outcome<Shown, std::string>(bytes.error().localizedDescription);
    }
    const auto server = URL::parse("https://" + from + "/");
    if (!server || !server->host()) return "--from: '" + from + "' is neither a file nor HOST:PORT";
    return shownBy(*server);
}

// As openssl writes a fingerprint: "AB:CD:...".
std::string colonHex(const Data& bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes.bytes()) {
        if (!text.empty()) text += ':';
        text.append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
    }
    return text;
}

std::string expiry(const SecCertificate& certificate) {
    using namespace std::chrono;
    const auto end = certificate.notAfter();
    if (!end) return "never said";
    const auto left = floor<days>(*end - system_clock::now()).count();
    const std::string date = DateFormatter("yyyy-MM-dd", Locale("en_US")).string(*end);
    return date + (left < 0 ? ", expired" : ", in " + std::to_string(left) + " days");
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text.append(text.empty() ? "" : ", ").append(name);
    return text.empty() ? "none" : text;
}

std::string description(const SecCertificate& certificate) {
    const auto key = certificate.copyKey();
    const std::pair<std::string_view, std::string> rows[] = {
        {"names", joined(certificate.subjectAlternativeNames())},
        {"expires", expiry(certificate)},
        {"certificate", "sha256 " + colonHex(sha256(certificate.data()))},
        {"key", key ? key->description() : "of an unknown kind"},
        {"", key ? "sha256/" + Base64::encode(sha256(key->subjectPublicKeyInfo()).bytes()) : ""},
    };
    std::string text;
    for (const auto& [label, value] : rows) {
        std::string column(label);
        column.resize(13, ' ');
        if (!value.empty()) text.append("  ").append(column).append(printable(value)).append("\n");
    }
    return text;
}

// The PEM text as adjacent C++ literals.
std::string literals(const std::string& pem) {
    std::string text;
    for (std::size_t begin = 0; begin < pem.size();) {
        const std::size_t end = std::min(pem.find('\n', begin), pem.size());
        text.append("\n        \"").append(pem, begin, end - begin).append("\\n\"");
        begin = end + 1;
    }
    return text;
}

std::string codeToPaste(const SecCertificate& server, const std::string& name) {
    std::string text =
        "Pin the certificate, which ends when it is renewed:\n\n    "
        ".setSSlType(SSlPinningType::certificate({\"" +
        name + "\"}))  // Resources/" + name + ".der\n";
    if (const auto key = server.copyKey())
        text +=
            "\nor its key, which may outlive many certificates:\n\n    "
            ".setSSlType(SSlPinningType::publicKey({" +
            literals(key->pem()) + "}))\n";
    return text;
}

constexpr char backup[] =
    "\nAdd a backup before you ship: with one pin alone, a lost or replaced key cuts every installed host "
    "off.\n"
    "Make a second key now, keep it offline, and name its pin behind the first one:\n\n"
    "    openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out backup.key\n"
    "    openssl pkey -in backup.key -pubout\n";

std::string page(const Shown& shown, const std::string& name) {
    std::string text;
    for (std::size_t i = 0; i < shown.chain.size(); ++i) {
        text += (i == 0 ? "Server: " : "\nIssuer " + std::to_string(i) + ": ") +
                printable(shown.chain[i].subjectSummary()) + "\n";
        text += description(shown.chain[i]);
    }
    if (shown.fault)
        text += "\nNot trusted by this machine: " + *shown.fault +
                "\nPins are checked after that, never instead of it.\n";
    return text + "\n" + codeToPaste(shown.chain.front(), name) + backup;
}

int pins(const Arguments& arguments) {
    const auto shown = look(arguments.text("--from", ""));
    if (!shown) return arguments.failed(shown.error());
    const std::filesystem::path saved = arguments.text("--save", "");
    if (!saved.empty()) {
        std::ofstream file(saved, std::ios::binary);
        file << shown.value().chain.front().data().raw();
        if (!file.flush()) return arguments.failed("--save: " + saved.string() + " cannot be written");
    }
    return deliver(page(shown.value(), saved.empty() ? "server" : saved.stem().string()));
}

}  // namespace

const Command pinsCommand = {
    "pins",
    "show what to pin of a server, and the line of code that pins it",
    "Nothing is sent to the server but the beginning of a TLS connection. What it shows is only as good as\n"
    "the network that you look through: compare it with what the server's owner says. For instance:\n\n"
    "  torvel pins --from api.example.com:443 --save Resources/server.der",
    options,
    pins,
};

}  // namespace torvel::cli
