#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "cli/Command.h"
#include "cli/DemoHost.h"
#include "cli/DemoReport.h"
#include "cli/Output.h"
#include "sample/TokenInterceptor.h"

#include <algorithm>

namespace torvel::cli {
namespace {

constexpr char json[] = "application/json";
constexpr double timeout = 10;  // seconds

// The text of a member, empty when there is none.
std::string member(const std::string& document, std::string_view name) {
    const auto root = JSON::parse(document);
    const auto value = root ? root.value().member(name) : std::nullopt;
    return std::string(value ? value->string().value_or("") : "");
}

class Demo {
  public:
    explicit Demo(const DemoHost& host) : m_host(host) {}

    bool run() {
        introduce();
        logIn();
        askBalance();
        transferSealed("Transfer, encrypted end to end: even whoever looks inside the TLS reads nothing.",
                       WrapperConfig::VelmMoney, "12.50");
        transferSealed("The other form of envelope: a merchant application names its members differently.",
                       WrapperConfig::QuentaMerchantApp, "7.50");
        upload();
        overdraw();
        useOldToken();
        meetStranger();
        meetSilence();
        return m_report.finish();
    }

  private:
    std::shared_ptr<RequestWrapper> token() const { return std::make_shared<TokenInterceptor>(m_token); }

    void introduce() const {
        m_report.heading("A host application configures Torvel once, then sends requests through it.");
        m_report.fact("backend", m_host.backend().url() + ", its certificates made a moment ago");
        m_report.fact("bundle", "EndpointsConfig.plist (names for paths), server.der (the certificate)");
        m_report.fact("witness", "the backend opens and seals by OpenSSL alone, not by Torvel's cipher");
    }

    // What every answered request shows: its line, and the status behind it.
    void request(const Seen& seen) const {
        const std::string& line = seen.exchange ? seen.exchange->requestLine : "";
        m_report.fact("request",
                      seen.exchange ? line.substr(0, line.rfind(' ')) : "none reached the backend");
    }
    // On one line where it fits.
    void answer(const Seen& seen) const {
        if (!seen.exchange) return;
        const std::string status = std::to_string(seen.exchange->status);
        const std::string line = status + " " + seen.exchange->answer;
        constexpr std::size_t fitting = 84;
        m_report.fact("answer", line.size() <= fitting ? line : status);
        if (line.size() > fitting) m_report.members("", seen.exchange->answer);
    }

    void logIn() {
        m_report.beginStep(
            "Log in over pinned TLS: of all servers with valid certificates, one alone is trusted.");
        m_host.configure(WrapperConfig::VelmMoney, "server", timeout);
        const std::string body = R"({"msisdn":"0700000001","pin":"4321"})";
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("login");
            TorvelNetworkClient().postRequest(target, Data(body), json, {}, {}, onSuccess, onError);
        });
        m_token = member(seen.body, "token");
        request(seen);
        m_report.fact("body", body);
        answer(seen);
        m_report.expect(seen.exchange && seen.exchange->body == body, "the backend receives the body");
        m_report.expect(!m_token.empty(), "a token comes back");
        m_report.endStep(seen);
    }

    void askBalance() {
        m_report.beginStep(
            "Ask for the balance: an interceptor of the host's own adds the token to a request.");
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("balance");
            TorvelNetworkClient().getRequest(target, json, {token()}, {}, onSuccess, onError);
        });
        request(seen);
        m_report.fact("added", "Authorization: Bearer " + m_token);
        answer(seen);
        m_report.expect(member(seen.body, "balance") == sandbox::walletBalance, "the balance comes back");
        m_report.endStep(seen);
    }

    void transferSealed(std::string_view title, WrapperConfig flavour, const std::string& amount) {
        m_report.beginStep(title);
        m_host.configure(flavour, "server", timeout);
        const std::string key = AES256CBC::generatePassword();
        const std::string body = R"({"to":"0700000002","amount":")" + amount + "\"}";
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("transfer");
            TorvelNetworkClient().postRequest(
                target, Data(body), json, {token(), std::make_shared<EncryptRequestInterceptor>(key)},
                {std::make_shared<DecryptResponseInterceptor>(key)}, onSuccess, onError);
        });
        request(seen);
        m_report.fact("body", body);
        const sandbox::Exchange exchange = seen.exchange.value_or(sandbox::Exchange());
        showEnvelopes(exchange);
        m_report.fact("received", seen.body);
        const bool merchant = flavour == WrapperConfig::QuentaMerchantApp;
        m_report.expect(!member(exchange.body, merchant ? "payloadText" : "RequestData").empty(),
                        "the request travels as an envelope of this form");
        m_report.expect(exchange.keyText == key && exchange.plainText == body, "OpenSSL opens it");
        m_report.expect(!member(exchange.answer, merchant ? "payloadText" : "ResponseData").empty(),
                        "the answer travels as an envelope too");
        m_report.expect(member(seen.body, "amount") == amount && seen.body == exchange.plainAnswer,
                        "the library opens the answer");
        m_report.endStep(seen);
    }

    void showEnvelopes(const sandbox::Exchange& exchange) const {
        m_report.members("envelope", exchange.body);
        m_report.fact("opened", "by OpenSSL: " + exchange.plainText + ", key " + exchange.keyText);
        m_report.fact("answer", std::to_string(exchange.status) + ", sealed with the same key:");
        m_report.members("", exchange.answer);
    }

    void upload() {
        m_report.beginStep("Upload a document: a multipart form, with the progress that a screen shows.");
        const Data document("%PDF" + std::string(24'000'000, 'x'));  // more than is encoded in memory
        const auto fractions = std::make_shared<std::vector<double>>();
        const auto bar = std::make_shared<Progress>("   progress  ");
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("documents");
            const auto onProgress = [fractions, bar](double sent) {
                fractions->push_back(sent);
                bar->show(sent);
            };
            TorvelNetworkClient().multipartRequest(target, "POST", document, json, "contract.pdf", {token()},
                                                   {}, onSuccess, onError, onProgress);
        });
        bar->clear();
        const double last = fractions->empty() ? 0 : fractions->back();
        request(seen);
        m_report.fact("progress",
                      progressBar(last) + " in " + std::to_string(fractions->size()) + " reports");
        m_report.members("answer", seen.body);
        m_report.expect(std::ranges::is_sorted(*fractions) && last == 1.0, "the progress rises to 1");
        m_report.expect(seen.body.find("\"bytes\":" + std::to_string(document.size())) != std::string::npos,
                        "every byte arrives");
        m_report.endStep(seen);
    }

    void overdraw() {
        m_report.beginStep(
            "A declined transfer: the server's own JSON error goes to onSuccess, where hosts decode it.");
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("transfer");
            const Data body(R"({"to":"0700000002","amount":"5000.00"})");
            TorvelNetworkClient().postRequest(target, body, json, {token()}, {}, onSuccess, onError);
        });
        request(seen);
        answer(seen);
        m_report.expect(seen.exchange && seen.exchange->status == 422, "the backend declines");
        m_report.expect(member(seen.body, "errorCode") == "INSUFFICIENT_FUNDS",
                        "its error reaches onSuccess");
        m_report.endStep(seen);
    }

    void useOldToken() {
        m_report.beginStep(
            "A session that has ended: an error of status 401 goes to onError, even if it is JSON.");
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("balance");
            const auto oldToken = std::make_shared<TokenInterceptor>("of-yesterday");
            TorvelNetworkClient().getRequest(target, json, {oldToken}, {}, onSuccess, onError);
        });
        request(seen);
        m_report.fact("added", "Authorization: Bearer of-yesterday");
        answer(seen);
        m_report.fact("error", seen.errorCode + " " + seen.message);
        m_report.expect(seen.exchange && seen.exchange->status == 401, "the backend refuses the token");
        m_report.expect(seen.callback == "onError" && seen.errorCode == "401", "onError tells the status");
        m_report.endStep(seen);
    }

    void meetStranger() {
        m_report.beginStep(
            "A wrong pin: the server is refused in the handshake and never receives the request.");
        m_host.configure(WrapperConfig::VelmMoney, "stranger", timeout);
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("balance");
            TorvelNetworkClient().getRequest(target, json, {token()}, {}, onSuccess, onError);
        });
        m_report.fact("pinned", "stranger.der, another server's certificate");
        request(seen);
        m_report.fact("error", seen.errorCode + " " + seen.message);
        m_report.expect(!seen.exchange, "no request reaches the backend");
        m_report.expect(seen.callback == "onError" && seen.errorCode == "-1", "onError is called");
        m_report.endStep(seen);
    }

    void meetSilence() {
        m_report.beginStep(
            "A server that hangs: the request ends by itself after 1 s in which no byte moved.");
        m_host.configure(WrapperConfig::VelmMoney, "server", 1.0);
        const Seen seen = m_host.run([&](OnSuccess onSuccess, OnError onError) {
            const std::string target = EndpointsHelper::getEndPoint<std::string>("hang");
            TorvelNetworkClient().getRequest(target, json, {token()}, {}, onSuccess, onError);
        });
        request(seen);
        m_report.fact("error", seen.errorCode + " " + seen.message);
        m_report.expect(seen.exchange && seen.exchange->status == 0, "the backend stays silent");
        m_report.expect(seen.callback == "onError" && seen.errorCode == "-1", "onError is called");
        m_report.expect(seen.milliseconds >= 999, "it waits for a second");
        m_report.endStep(seen);
    }

    const DemoHost& m_host;
    DemoReport m_report;
    std::string m_token;
};

int demo(const Arguments& arguments) {
    const auto host = DemoHost::start();
    if (!host) return arguments.failed(host.error());
    return Demo(*host.value()).run() ? exitOk : exitFailed;
}

}  // namespace

const Command demoCommand = {
    "demo",
    "a walk through the library, against a backend of its own",
    "Starts the demonstration backend on a free port of 127.0.0.1, sends real requests to it and shows what\n"
    "went over the wire. Every step is checked against what the backend saw; exits with 1 if one fails.",
    {},
    demo,
};

}  // namespace torvel::cli
