#include "TorvelPlatform/defaults/SecureDefaults.h"

#include "TorvelPlatform/defaults/StoreEngine.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/Guarded.h"

#include <map>
#include <memory>
#include <mutex>

#include <pthread.h>
#include <sodium.h>

namespace torvel {
namespace {

Guarded<std::shared_ptr<const SecureDefaults::DamageHandler>>& damageHandler() {
    static auto* const handler = new Guarded<std::shared_ptr<const SecureDefaults::DamageHandler>>;
    return *handler;
}

// The engines of the process by the names of their domains. They are never destroyed: whoever still writes
// while the process ends finds them.
class StoreRegistry {
  public:
    static StoreRegistry& instance() {
        static auto* const registry = new StoreRegistry;
        return *registry;
    }

    const std::string& host() const { return m_host; }
    StoreEngine& shared() { return m_shared; }
    StoreEngine& engine(std::string_view domain);

  private:
    StoreRegistry();
    // SQLite's connections must not be carried into a child: they are closed before, and opened again by
    // whichever side needs them.
    static void beforeFork();
    static void afterFork();

    const bool m_hasSodium = sodium_init() >= 0;  // before anything is hashed
    const std::string m_host = Bundle::main().identifier();
    std::mutex m_mutex;
    std::map<std::string, StoreEngine, std::less<>> m_engines;
    StoreEngine& m_shared;
};

StoreRegistry::StoreRegistry() : m_shared(engine(m_host)) {
    if (!m_hasSodium) fatalError("SecureDefaults: the system gives no entropy");
    pthread_atfork(beforeFork, afterFork, afterFork);
}

StoreEngine& StoreRegistry::engine(std::string_view domain) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_engines.find(domain);
    if (found != m_engines.end()) return found->second;
    return m_engines.try_emplace(std::string(domain), domain).first->second;
}

void StoreRegistry::beforeFork() {
    instance().m_mutex.lock();
    for (auto& [domain, engine] : instance().m_engines) engine.suspend();
}

void StoreRegistry::afterFork() {
    for (auto& [domain, engine] : instance().m_engines) engine.resume();
    instance().m_mutex.unlock();
}

}  // namespace

void reportFault(const StoreFault& fault) {
    reportDiagnostic(fault.description);
    if (const auto handler = damageHandler().load(); handler && *handler) (*handler)(fault);
}

void SecureDefaults::setDamageHandler(DamageHandler handler) {
    damageHandler().store(std::make_shared<const DamageHandler>(std::move(handler)));
}

void SecureDefaults::setKeyPlace(KeyPlace place) { torvel::setKeyPlace(place); }

SecureDefaults SecureDefaults::shared() { return SecureDefaults(StoreRegistry::instance().shared()); }

std::optional<SecureDefaults> SecureDefaults::suite(std::string_view name) {
    StoreRegistry& registry = StoreRegistry::instance();
    if (name.empty() || name == registry.host()) return std::nullopt;
    return SecureDefaults(registry.engine(name));
}

StoreStatus SecureDefaults::removePersistentDomain(std::string_view name) {
    return StoreRegistry::instance().engine(name).removeAll();
}

bool SecureDefaults::isKeyCreated() const { return m_engine->isKeyCreated(); }

StoreStatus SecureDefaults::setPassword(std::string_view password) const {
    return m_engine->setPassword(password);
}

StoreStatus SecureDefaults::status() const { return m_engine->status(); }

Outcome<std::optional<PropertyValue>, StoreStatus> SecureDefaults::read(std::string_view key) const {
    return m_engine->read(key);
}

std::optional<PropertyValue> SecureDefaults::object(std::string_view key) const {
    auto outcome = m_engine->read(key);
    return outcome ? std::move(outcome).value() : std::nullopt;
}

bool SecureDefaults::contains(std::string_view key) const { return m_engine->contains(key); }

StoreStatus SecureDefaults::set(std::string_view key, const PropertyValue& value) const {
    return m_engine->write(key, value);
}

StoreStatus SecureDefaults::remove(std::string_view key) const { return m_engine->remove(key); }

std::vector<std::string> SecureDefaults::keys() const { return m_engine->keys(); }

StoreReport SecureDefaults::verify() const { return m_engine->verify(); }

StoreStatus SecureDefaults::reset() const { return m_engine->reset(); }

StoreStatus SecureDefaults::acceptRestored() const { return m_engine->acceptRestored(); }

std::optional<SecureDefaults::ChangeMark> SecureDefaults::changeMark() const {
    return m_engine->changeMark();
}

}  // namespace torvel
