#pragma once  // internal

#include "TorvelPlatform/defaults/StoreKey.h"

#include <string>

// Root keys in the desktop's Secret Service (the freedesktop.org specification of that name), through
// libsecret. The library is loaded at the first call: a host that keeps its keys in files never has GLib in
// its process. Calls wait for the service, which may ask the user to unlock it. Any failure but the absence
// of a key is keyServiceFailed.
namespace torvel::secretService {

Outcome<RootKey, StoreStatus> load(const std::string& name);  // noKey when there is none
StoreStatus save(const std::string& name, const RootKey& key);
// Keeps the key under another name; ok as well when there is none.
StoreStatus rename(const std::string& name, const std::string& newName);

}  // namespace torvel::secretService
