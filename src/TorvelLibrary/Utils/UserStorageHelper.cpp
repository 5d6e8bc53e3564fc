#include "TorvelLibrary/Utils/UserStorageHelper.h"

#include "TorvelLibrary/Utils/SharedStore.h"
#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/foundation/UUID.h"

namespace torvel {
namespace {

std::string& defaultSuite() {
    static auto* const name = new std::string;
    return *name;
}

std::optional<SecureDefaults> chosenStore(const UserStorageHelper::Suite& inSuite) {
    if (inSuite && !inSuite->empty()) return SecureDefaults::suite(*inSuite);
    if (!defaultSuite().empty()) return SecureDefaults::suite(defaultSuite());
    return SecureDefaults::shared();
}

// The store once it has a key: one that lacks it gets its first from a random identifier.
std::optional<SecureDefaults> withKey(std::optional<SecureDefaults> store) {
    const bool lacksKey = store && !store->isKeyCreated();
    if (lacksKey && store->setPassword(randomUUIDString()) != StoreStatus::ok) return std::nullopt;
    return store;
}

std::optional<SecureDefaults> storeReference(const UserStorageHelper::Suite& inSuite) {
    return withKey(chosenStore(inSuite));
}

// The value of a kind as it was stored.
template <class T>
std::optional<T> stored(std::string_view key, const UserStorageHelper::Suite& inSuite) {
    const auto value = UserStorageHelper::object(key, inSuite);
    const T* const content = value ? value->as<T>() : nullptr;
    return content != nullptr ? std::optional(*content) : std::nullopt;
}

template <class T>
std::optional<T> number(std::string_view key, const UserStorageHelper::Suite& inSuite,
                        T (PropertyValue::*convert)() const) {
    const std::optional<SecureDefaults> store = storeReference(inSuite);
    if (!store) return std::nullopt;
    const auto outcome = store->read(key);
    if (!outcome) return std::nullopt;
    const std::optional<PropertyValue>& value = outcome.value();
    return value ? ((*value).*convert)() : T{};
}

}  // namespace

std::optional<SecureDefaults> sharedStore() { return withKey(SecureDefaults::shared()); }

void UserStorageHelper::initialSetup(const Suite& suiteName) {
    expectMainThread("UserStorageHelper::initialSetup()");
    defaultSuite() = suiteName.value_or("");
    storeReference({});
}

void UserStorageHelper::remove(std::string_view forKey, const Suite& inSuite) {
    if (const auto store = storeReference(inSuite)) store->remove(forKey);
}

void UserStorageHelper::clearAll(std::string_view forDomain) {
    SecureDefaults::removePersistentDomain(forDomain);
}

void UserStorageHelper::save(const std::optional<PropertyValue>& value, std::string_view forKey,
                             const Suite& inSuite) {
    if (!value) return remove(forKey, inSuite);
    if (const auto store = storeReference(inSuite)) store->set(forKey, *value);
}

std::optional<PropertyValue> UserStorageHelper::object(std::string_view forKey, const Suite& inSuite) {
    const auto store = storeReference(inSuite);
    return store ? store->object(forKey) : std::nullopt;
}

std::optional<std::string> UserStorageHelper::string(std::string_view forKey, const Suite& inSuite) {
    const auto value = object(forKey, inSuite);
    return value ? value->stringValue() : std::nullopt;
}

std::optional<std::vector<std::string>> UserStorageHelper::stringArray(std::string_view forKey,
                                                                       const Suite& inSuite) {
    const auto value = object(forKey, inSuite);
    return value ? value->stringArrayValue() : std::nullopt;
}

std::optional<PropertyValue::Array> UserStorageHelper::array(std::string_view forKey, const Suite& inSuite) {
    return stored<PropertyValue::Array>(forKey, inSuite);
}

std::optional<PropertyValue::Dictionary> UserStorageHelper::dictionary(std::string_view forKey,
                                                                       const Suite& inSuite) {
    return stored<PropertyValue::Dictionary>(forKey, inSuite);
}

std::optional<Data> UserStorageHelper::data(std::string_view forKey, const Suite& inSuite) {
    return stored<Data>(forKey, inSuite);
}

std::optional<URL> UserStorageHelper::url(std::string_view forKey, const Suite& inSuite) {
    const auto value = object(forKey, inSuite);
    return value ? value->urlValue() : std::nullopt;
}

std::optional<std::int64_t> UserStorageHelper::integer(std::string_view forKey, const Suite& inSuite) {
    return number(forKey, inSuite, &PropertyValue::integerValue);
}

std::optional<float> UserStorageHelper::floatValue(std::string_view forKey, const Suite& inSuite) {
    return number(forKey, inSuite, &PropertyValue::floatValue);
}

std::optional<double> UserStorageHelper::doubleValue(std::string_view forKey, const Suite& inSuite) {
    return number(forKey, inSuite, &PropertyValue::doubleValue);
}

std::optional<bool> UserStorageHelper::boolValue(std::string_view forKey, const Suite& inSuite) {
    return number(forKey, inSuite, &PropertyValue::boolValue);
}

}  // namespace torvel
