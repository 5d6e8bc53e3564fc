#include "TorvelPlatform/defaults/SecretService.h"

#include <memory>
#include <optional>

#include <dlfcn.h>
#include <sodium.h>

namespace torvel::secretService {
namespace {

// What is used of libsecret 0.20, as its stable interface declares it.
struct Attribute {
    const char* name;
    int type;  // 0: text
};
struct Schema {
    const char* name;
    int flags;
    Attribute attributes[32];
    int reserved;
    void* moreReserved[7];
};
struct Error;
using Lookup = char* (*)(const Schema*, void* cancellable, Error**, ...);
using Store = int (*)(const Schema*, const char* collection, const char* label, const char* password,
                      void* cancellable, Error**, ...);
using Clear = int (*)(const Schema*, void* cancellable, Error**, ...);
struct List;  // of items, a locked one among them
using Search = List* (*)(const Schema*, int flags, void* cancellable, Error**, ...);
using Unref = void (*)(void* object);
using FreeList = void (*)(List*, Unref);
using Free = void (*)(char* password);
using FreeError = void (*)(Error*);

constexpr Schema schema{"torvel.store.key", 0, {{"store", 0}}, 0, {}};

struct Library {
    Lookup lookup;
    Store store;
    Search search;
    Clear clear;
    FreeList freeList;
    Unref unref;
    Free free;
    FreeError freeError;
};

template <class Function>
bool find(void* handle, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(handle, name));
    return function != nullptr;
}

const Library* library() {
    static const std::optional<Library> loaded = []() -> std::optional<Library> {
        void* const handle = ::dlopen("libsecret-1.so.0", RTLD_NOW | RTLD_LOCAL);  // stays loaded
        Library functions{};
        if (handle == nullptr || !find(handle, "secret_password_lookup_sync", functions.lookup) ||
            !find(handle, "secret_password_store_sync", functions.store) ||
            !find(handle, "secret_password_search_sync", functions.search) ||
            !find(handle, "secret_password_clear_sync", functions.clear) ||
            !find(handle, "g_list_free_full", functions.freeList) ||
            !find(handle, "g_object_unref", functions.unref) ||
            !find(handle, "secret_password_free", functions.free) ||
            !find(handle, "g_error_free", functions.freeError))
            return std::nullopt;
        return functions;
    }();
    return loaded ? &*loaded : nullptr;
}

// Frees the error, if there was one; whether there was.
bool failed(Error* error) {
    if (error != nullptr) library()->freeError(error);
    return error != nullptr;
}

// Whether there is a key all the same: looking it up finds nothing as well when the user does not unlock it.
bool isLocked(const Library& secret, const std::string& name) {
    constexpr int all = 2;
    Error* error = nullptr;
    List* const items = secret.search(&schema, all, nullptr, &error, "store", name.c_str(), nullptr);
    const bool isThere = items != nullptr;
    secret.freeList(items, secret.unref);
    return failed(error) || isThere;
}

using KeyText = SecretBytes<2 * sizeof(RootKey) + 1>;

}  // namespace

Outcome<RootKey, StoreStatus> load(const std::string& name) {
    const Library* const secret = library();
    if (secret == nullptr) return StoreStatus::keyServiceFailed;
    Error* error = nullptr;
    const std::unique_ptr<char, Free> text(
        secret->lookup(&schema, nullptr, &error, "store", name.c_str(), nullptr), secret->free);
    if (failed(error)) return StoreStatus::keyServiceFailed;
    if (!text) return isLocked(*secret, name) ? StoreStatus::keyServiceFailed : StoreStatus::noKey;
    RootKey key;
    std::size_t size = 0;
    const char* end = nullptr;
    const std::string_view digits(text.get());
    const bool isKey =
        sodium_hex2bin(key.data(), key.size(), digits.data(), digits.size(), nullptr, &size, &end) == 0 &&
        size == key.size() && end == digits.data() + digits.size();
    return isKey ? Outcome<RootKey, StoreStatus>(key) : StoreStatus::keyDamaged;
}

StoreStatus save(const std::string& name, const RootKey& key) {
    const Library* const secret = library();
    if (secret == nullptr) return StoreStatus::keyServiceFailed;
    KeyText text;
    sodium_bin2hex(reinterpret_cast<char*>(text.data()), text.size(), key.data(), key.size());
    Error* error = nullptr;
    const bool isKept = secret->store(&schema, nullptr, "Key of an encrypted store",
                                      reinterpret_cast<const char*>(text.data()), nullptr, &error, "store",
                                      name.c_str(), nullptr) != 0;
    return failed(error) || !isKept ? StoreStatus::keyServiceFailed : StoreStatus::ok;
}

StoreStatus rename(const std::string& name, const std::string& newName) {
    const auto key = load(name);
    if (!key) return key.error() == StoreStatus::noKey ? StoreStatus::ok : key.error();
    if (const StoreStatus saved = save(newName, key.value()); saved != StoreStatus::ok) return saved;
    Error* error = nullptr;
    library()->clear(&schema, nullptr, &error, "store", name.c_str(), nullptr);
    return failed(error) ? StoreStatus::keyServiceFailed : StoreStatus::ok;
}

}  // namespace torvel::secretService
