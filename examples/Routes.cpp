// Navigation by paths: a deep link into a protected screen waits until the user has logged in.
//   example-Routes
#include "TorvelLibrary/navigation/AppRouter.h"

#include <iostream>

using namespace torvel;

namespace {

void show(const std::string& screen, const std::optional<PayloadDictionary>& payload) {
    std::cout << screen << " " << payload->get<std::string>("id").value_or("-") << "\n";
}

}  // namespace

int main() {
    // Routes are protected unless they say otherwise.
    AppRouter::Builder("/pay", [](const auto& payload) { show("payment", payload); }).build();
    AppRouter::Builder("/help", [](const auto& payload) { show("help", payload); })
        .isAuthRequired(false)
        .build();

    const auto router = AppRouter::sharedInstance();
    router->route("wallet://host/pay?id=7");   // nobody is logged in: waits
    router->route("wallet://host/help?id=3");  // shown at once
    router->route("wallet://host/unknown");    // ignored
    router->setAuthenticated(true);            // shows the payment

    PayloadDictionary payload;
    payload.set("id", "8");
    router->route("/pay", payload);  // a payload of the host's own, in the place of the query
}
