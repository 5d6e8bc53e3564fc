#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/RequestLog.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "TorvelLibrary/validation/CardUtils.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/PropertyList.h"
#include "TorvelTesting/Certificates.h"
#include "TorvelTesting/ScriptedServer.h"
#include "sandbox/Envelope.h"
#include "sandbox/Sandbox.h"
#include "support/StoreTest.h"

#include <sstream>

#include <gmock/gmock.h>

namespace torvel {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// Stands in every secret: the PIN in bodies, the token in header fields and locations, keys and passwords.
const std::string secret = "S3CRET";
const std::string key = secret + "0123456789", otherKey = "9876543210" + secret;

// What the log says deliberately, for those who follow their own traffic: requests and answers as they pass
// the interceptors, and the key that opens an answer.
bool isDeliberate(std::string_view line) {
    for (const std::string_view said :
         {"DEBUG[DecryptResponse]", "-> TARGET IS ", "-> Request URL - ", "-> Request Body Initial - ",
          "-> Request Body After Each Interceptors - ", "-> Response As received - ",
          "-> Response After Interceptors - "})
        if (line.find(said) != line.npos) return true;
    return false;
}

struct Authorizing final : RequestWrapper {
    explicit Authorizing(std::string field) : text(std::move(field)) {}
    URLRequest wrapRequest(URLRequest& request) override {
        request.headers.set("Authorization", text);
        return request;
    }
    std::string text;
};

// The error texts of a payment that fails.
std::string paid(const std::string& url, const std::string& field = "Bearer " + secret) {
    std::string told;
    const auto onError = [&](const Decodable& failure) {
        const auto& error = dynamic_cast<const APITimeError&>(failure);
        told = error.errorCodeInResponse() + error.localizedDescription() +
               error.failure()->localizedDescription;
    };
    TorvelNetworkClient().postRequest(
        url, Data(R"({"pin":")" + secret + "\"}"), "application/json", {std::make_shared<Authorizing>(field)},
        {}, [&](Data) { told = "paid after all"; }, onError);
    DispatchQueue::main().runUntil([&] { return !told.empty(); }, std::chrono::seconds(20));
    return told;
}

std::string paidTo(std::string answer) {
    const testing::ScriptedServer server(testing::ScriptedServer::answering(std::move(answer)));
    return paid(server.url("/pay?token=" + secret));
}

std::string opened(const std::string& answer) {
    return DecryptResponseInterceptor(key).parseResponse(Data(answer)) == Data(answer) ? "" : "opened";
}

std::string sealed(const std::string& body, const std::string& keyText) {
    URLRequest request(*URL::parse("https://a.example/"));
    request.httpBody = Data(body);
    EncryptRequestInterceptor(keyText).wrapRequest(request);
    return "sealed";
}

template <class Outcome>
std::string described(const Outcome& outcome) {
    return outcome ? "" : outcome.error().description;
}

class Secrets : public testing::StoreTest {};

TEST_F(Secrets, StandInNoErrorTextAndInNoLogLineButTheDeliberateOnes) {
    const testing::Identity identity = testing::issue({.rsaBits = 2048});
    addResource("server.der", identity.der.raw());
    TorvelLibraryBuilder().setServerURL("").setEncryptionCertName("server").build();
    TorvelLibrary::sharedInstance()->eventMonitors.push_back(std::make_shared<RequestLog>());
    const auto untrusted = sandbox::Sandbox::start().value();
    const testing::ScriptedServer plain([](auto& peer) { peer.send("no TLS either"); });
    const testing::ScriptedServer resetting([](auto& peer) { peer.receive(), peer.reset(); });
    const std::string behind = "/pay?token=" + secret, iv = R"(","ResponseIv":"AAAAAAAAAAAAAAAAAAAAAA=="})";
    const std::string data = R"({"ResponseData":)", user = "u:" + secret + "@";
    const std::string redirect = "HTTP/1.1 307 Moved\r\nContent-Length: 0\r\nLocation: ";
    const std::string head = "HTTP/1.1 200 OK\r\n";
    struct Row {
        std::string name;
        std::function<std::string()> failing;  // gives what the caller is told
    };
    const auto checked = [](bool isValid) { return std::to_string(isValid); };
    std::vector<Row> rows = {
        {"a body that is no text", [] { return sealed(secret + "\xFF", key); }},
        {"a short key", [] { return sealed("body", secret); }},
        {"a line break in a field", [&] { return paid(plain.url(behind), secret + "\r\n"); }},
        {"a card number",
         [&] { return checked(CardUtils::sharedInstance().validateCardNumber("4" + secret)); }},
        {"a pattern that is none", [&] { return checked(ValidationHelper::validateData(secret, "[0-9")); }},
        {"a pattern without end",
         [&] {
             return checked(ValidationHelper::validateData(secret + std::string(40, 'a') + "!", ".*(a+)+$"));
         }},
        {"a store with another password",
         [] {
             UserStorageHelper::save(secret, "pin");
             return std::string(describe(SecureDefaults::shared().setPassword(secret)));
         }},
        {"a store that is damaged",
         [this] {
             for (const auto& file : files())
                 if (std::filesystem::is_regular_file(file)) std::ofstream(file) << secret;
             reopen();
             UserStorageHelper::save(secret, "pin");
             return testing::readText(SecureDefaults::shared(), "pin");
         }},
    };
    // Answers of a server to the interceptor: under another key, damaged, no base64, no text, no object, no
    // JSON.
    for (const std::string& answer :
         {*sandbox::sealResponse(secret, otherKey, sandbox::EnvelopeForm::plain),
          data + "\"" + std::string(64, 'A') + iv, data + "\"*" + secret + iv, data + "[\"" + secret + "\"]}",
          "[\"" + secret + "\"]", R"({"pin":")" + secret})
        rows.push_back({answer, [answer] { return opened(answer); }});
    for (const std::string& text : {R"({"pin":")" + secret + "\",}", "{\"pin\":1" + secret + "}"})
        rows.push_back({text, [text] { return described(JSON::parse(text)); }});
    const JSON record = JSON::parse(R"({"message":")" + secret + "\"}").value();
    rows.push_back({"a record", [&record] { return described(APITimeError::decode(record)); }});
    for (const std::string& text :
         {"<plist><integer>" + secret + "</integer></plist>", "{pin = \"" + secret + "\" x}"})
        rows.push_back({text, [text] { return described(PropertyList::parse(Data(text))); }});
    for (const std::string& url : {"%" + secret + " %", "httpx://" + user + "a" + behind, "http://" + behind,
                                   "http://" + user + "127.0.0.1:1" + behind, resetting.url(behind),
                                   untrusted->url() + behind, "https" + plain.url(behind).substr(4)})
        rows.push_back({url, [url] { return paid(url); }});
    for (const std::string& answer :
         {secret + "\r\n\r\n", head + "Content-Length: " + secret + "\r\n\r\n", head + secret + "\r\n\r\n",
          head + "Content-Encoding: gzip\r\nContent-Length: 6\r\n\r\n" + secret,
          head + "Transfer-Encoding: chunked\r\n\r\n" + secret + "\r\n",
          testing::response("500 Error", "{\"pin\":" + secret), testing::response("401 No", secret),
          redirect + behind + "\r\n\r\n", redirect + "ftp://" + user + "b" + behind + "\r\n\r\n",
          redirect + "http://" + user + "localhost:1" + behind + "\r\n\r\n"})
        rows.push_back({answer, [answer] { return paidTo(answer); }});
    setFatalErrorHandler([](std::string_view message) { throw std::string(message); });
    for (const Row& row : rows) {
        std::string told;
        std::istringstream log(logOf([&] {
            try {
                told = row.failing();
            } catch (const std::string& stop) {
                told = stop;
            }
        }));
        for (std::string line; std::getline(log, line);)
            if (!isDeliberate(line)) told += line;
        EXPECT_NE(told, "") << row.name;
        EXPECT_THAT(told, Not(HasSubstr(secret))) << row.name;
    }
}

}  // namespace
}  // namespace torvel
