// Interceptors of the host's own: one adds the session's token to every request, one makes of the answer the
// text that a screen shows.
//   example-OwnInterceptors https://api.example.com/
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelPlatform/foundation/JSON.h"

#include <iostream>

using namespace torvel;

namespace {

std::string member(const Data& body, std::string_view name) {
    const auto json = JSON::parse(body.raw());
    const auto value = json ? json.value().member(name) : std::nullopt;
    return std::string(value && value->string() ? *value->string() : "");
}

struct TokenInterceptor final : RequestWrapper {
    explicit TokenInterceptor(std::string text) : token(std::move(text)) {}
    URLRequest wrapRequest(URLRequest& request) override {
        request.headers.set("Authorization", "Bearer " + token);
        return request;
    }
    std::string token;
};

struct BalanceParser final : ResponseParser {
    Data parseResponse(Data body) override {
        return Data(member(body, "balance") + " " + member(body, "currency"));
    }
};

void finish(const std::string& line) {
    std::cout << line << "\n";
    DispatchQueue::main().stop();
}

}  // namespace

int main(int, char** arguments) {
    TorvelLibraryBuilder().setServerURL(arguments[1] != nullptr ? arguments[1] : "").build();
    const auto failed = [](const Decodable&) { finish("failed"); };
    const auto showBalance = [=](const Data& login) {
        TorvelNetworkClient().getRequest(
            "api/v1/balance", "application/json",
            {std::make_shared<TokenInterceptor>(member(login, "token"))}, {std::make_shared<BalanceParser>()},
            [](const Data& text) { finish(text.raw()); }, failed);
    };
    TorvelNetworkClient().postRequest("api/v1/login", Data(R"({"msisdn":"0700000001","pin":"4321"})"),
                                      "application/json", {}, {}, showBalance, failed);
    DispatchQueue::main().run();
}
