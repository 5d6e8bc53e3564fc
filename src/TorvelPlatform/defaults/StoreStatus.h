#pragma once

#include <string>
#include <string_view>

namespace torvel {

// How an operation of the encrypted store went, or why it could not be done. Any thread.
enum class StoreStatus {
    ok,
    noKey,             // nothing has been set up yet: there is neither a key nor data
    keyMissing,        // there is data, but its key is gone
    keyUnsafe,         // the key file is a link, another user's, or open to others
    keyServiceFailed,  // the desktop's Secret Service is absent, locked or refuses; the key file is not asked
                       // instead
    keyDamaged,        // the key file is none
    keyMismatch,       // the key, or the password given, is not that of the data
    damaged,           // bytes were changed: an entry or the whole store cannot be read, or entries are gone
    rolledBack,        // the data is older than what was written last, or gone altogether
    newerFormat,       // written by a newer version of the library
    networkFileSystem,  // the place of the files is another machine's, where locks cannot be relied on
    readOnly,           // the place of the files cannot be written to
    diskFull,           // so is the quota, or the limit of a file's size
    busy,               // other processes kept the store locked for seconds
    invalidValue,       // nested too deep or too large to be stored
    unavailable,        // any other failure of the system
};

// A sentence's end: "the key file is missing, though there is data".
std::string_view describe(StoreStatus status);

// One failed operation, or what opening a store found out about it.
struct StoreFault {
    StoreStatus status;       // how it went
    std::string domain;       // the suite's name, or the host's identifier
    std::string key;          // the entry's name; empty when the whole store is meant
    std::string description;  // a line for a log, without the key
};

}  // namespace torvel
