#include "TorvelLibrary/navigation/AppRouter.h"

#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelPlatform/foundation/MainThread.h"

namespace torvel {
namespace {

std::shared_ptr<AppRouter>& slot() {
    static auto* const instance = new std::shared_ptr<AppRouter>;
    return *instance;
}

}  // namespace

std::shared_ptr<AppRouter> AppRouter::sharedInstance() {
    expectMainThread("AppRouter");
    if (!slot()) slot() = std::make_shared<AppRouter>();
    return slot();
}

void AppRouter::setSharedInstance(std::shared_ptr<AppRouter> router) { slot() = std::move(router); }

void AppRouter::setAuthenticated(bool isAuthenticated) {
    m_isAuthenticated = isAuthenticated;
    if (!isAuthenticated || !m_targetRoute) return;
    const TargetRoute target = *m_targetRoute;  // the callback may change what waits
    target.router.routeHandler(target.payload);
    m_targetRoute.reset();
}

void AppRouter::route(std::string_view urlPath, const std::optional<PayloadDictionary>& payload) {
    const auto found = m_routerMap.find(path(urlPath));
    if (found == m_routerMap.end()) return;
    TargetRoute target{found->second, payload ? *payload : queryParameters(urlPath)};
    if (target.router.isAuthRequired && !m_isAuthenticated)
        m_targetRoute = std::move(target);
    else
        target.router.routeHandler(target.payload);
}

void AppRouter::Builder::build() const {
    sharedInstance()->m_routerMap.insert_or_assign(m_routeHandler.path, m_routeHandler);
}

}  // namespace torvel
