#pragma once

#include "TorvelLibrary/navigation/RouteHandler.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace torvel {

// The host's navigation targets by path. A target that needs an authenticated user and is asked for while
// there is none waits, as the only one, until the host reports that there is.
//
//   AppRouter::Builder("/pay", [](const auto& payload) { showPayment(payload->get<std::string>("id"));
//   }).build(); AppRouter::sharedInstance()->route("app://host/pay?id=7");
//   AppRouter::sharedInstance()->setAuthenticated(true);  // shows the payment
//
// Not locked: one thread, the main one. Callbacks run on the caller's thread, before the call returns, and
// may use the router themselves.
class AppRouter {
  public:
    class Builder;

    // The process-wide router, made at its first use; the host may put another in its place, which everything
    // uses from then on. nullptr makes way for a new one.
    static std::shared_ptr<AppRouter> sharedInstance();
    static void setSharedInstance(std::shared_ptr<AppRouter> router);

    // Whether the host reported an authenticated user; not at first.
    bool isAuthenticated() const { return m_isAuthenticated; }
    // Writing true runs the waiting target, then forgets whatever waits: deliberately also a target that
    // began to wait while the callback ran. Writing false leaves it waiting.
    void setAuthenticated(bool isAuthenticated);

    // Goes to the handler of the path of a URL; "/pay", "/pay/" and "pay" are three paths, a text that is no
    // URL has the empty one. An unknown path is ignored. Without a payload the handler gets the query
    // parameters.
    void route(std::string_view urlPath, const std::optional<PayloadDictionary>& payload = {});

  private:
    struct TargetRoute {
        RouteHandler router;
        PayloadDictionary payload;
    };

    std::optional<TargetRoute> m_targetRoute;
    std::unordered_map<std::string, RouteHandler> m_routerMap;
    bool m_isAuthenticated = false;
};

// Collects one registration.
class AppRouter::Builder {
  public:
    // A route is protected unless the host says otherwise, deliberately.
    Builder(std::string_view path, RouteCallback route)
        : m_routeHandler{std::string(path), std::move(route), true} {}

    // Whether the route waits for an authenticated user.
    Builder& isAuthRequired(bool isRequired) {
        m_routeHandler.isAuthRequired = isRequired;
        return *this;
    }
    // Registers a copy with the shared router, in the place of an earlier handler of the path. May be
    // repeated.
    void build() const;

  private:
    RouteHandler m_routeHandler;
};

}  // namespace torvel
