#pragma once

#include "TorvelPlatform/defaults/PropertyValue.h"
#include "TorvelPlatform/defaults/StoreStatus.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

class StoreEngine;

// What a walk through a whole store found.
struct StoreReport {
    StoreStatus status = StoreStatus::ok;  // why it could not be opened; damaged when anything is wrong in it
    std::size_t readable = 0;              // entries
    std::size_t damaged = 0;               // entries
    std::vector<std::string> findings;     // a line for everything that is wrong
};

// The user defaults, encrypted: values by name in stores ("suites") on disk, shared by the processes of one
// user and host. An object is a handle; making one costs some nanoseconds once its store is open. Safe from
// any thread and after a fork.
//
// A write is on disk when the call returns, and other processes see it at their next read. Readers of one
// process never see half of a write.
//
// Files. One SQLite database a suite in the host's data folder (<data>/store/<hash of the suite's name>), the
// key in the host's state folder (<state>/keys): a backup or a copy of the data does not take the key along.
// All are the user's alone (0600 in 0700). Opening a store costs the same whatever it holds; a 256th of the
// entries is checked whole when a process first reads or writes one of them, all are by `verify` and `keys`.
//
// What it guards. Names are hidden by a keyed hash, values sealed by XChaCha20-Poly1305, each bound to the
// format's version, its suite, its name and its kind: one that was changed, swapped, moved to another name or
// suite or given another kind is never returned. Sealed sums of all entries and a sequence number kept beside
// the key tell, when a store is opened, where it is read and in `verify`, that an entry was deleted, that an
// older one or an older file was put back, and that bytes which a write had acknowledged are gone. What it
// does not: who can read the user's files reads the key; changes under a store that is open are found where
// they break an entry, else at the next opening; the file with the sequence number is taken for what it says
// as long as it stays in its place; somebody who puts back older data together with the matching key folder
// is not noticed, nor is an older entry put back beside one that was broken. The number of entries, their
// sizes and the times of writes can be seen. Removed entries stay in the files, sealed, until their space is
// used again.
//
// Older data is refused (rolledBack) also where a backup was put back on purpose, until acceptRestored().
class SecureDefaults {
  public:
    // Where keys are kept: in a file of the user's, or in the desktop's Secret Service, where the user's own
    // password guards them. A host chooses before its first use of a store, and never anew for stores that
    // have a key: that of the other place is not looked for (keyMissing). Calls that open a store then wait
    // for the service; in a process that was forked from one that used the service they may not return.
    enum class KeyPlace { file, secretService };
    static void setKeyPlace(KeyPlace place);

    // The host's own store; its domain is the identifier of the main bundle. That and the folders are read
    // once, when the process first uses a store.
    static SecureDefaults shared();
    // The store of a suite. Absent for the empty name and the host's own identifier, as on the platform.
    static std::optional<SecureDefaults> suite(std::string_view name);

    // Whether a key has been created, be it usable or not.
    bool isKeyCreated() const;
    // Creates the key, once, from a password that must be random (a UUID): the derivation is a fast one. The
    // password is not kept. Where the data's key file was lost, the data's own password brings it back and
    // any other is refused (keyMissing); so is another password than that of a key that is there
    // (keyMismatch).
    StoreStatus setPassword(std::string_view password) const;
    // Opens the store if need be: ok, damaged (what can be read is read), or why it cannot be opened. A
    // damage of single entries shows in `read` and `verify`.
    StoreStatus status() const;

    // The value under a name; absent when there is none. Where the value or its absence cannot be relied on,
    // the reason.
    Outcome<std::optional<PropertyValue>, StoreStatus> read(std::string_view key) const;
    // The same without the reason.
    std::optional<PropertyValue> object(std::string_view key) const;
    // Whether there is a value that can be read; quicker than reading it.
    bool contains(std::string_view key) const;
    // noKey before setPassword. Writing over a broken entry, or removing it, ends that damage.
    StoreStatus set(std::string_view key, const PropertyValue& value) const;
    StoreStatus remove(std::string_view key) const;
    // Removes every entry of a domain at once, or none: a suite's name, or the host's identifier for the
    // shared store. Its key stays. This also ends its being damaged, as far as its file can be written.
    static StoreStatus removePersistentDomain(std::string_view name);

    // What any write to the store changes, whichever process writes: a value that was read after a mark was
    // taken is the stored one as long as the mark stays the same. Absent while the store is not open, is
    // being written to or was moved aside: read. Costs a few nanoseconds.
    struct ChangeMark {
        const void* place;       // which opening of the store
        std::uint64_t sequence;  // of the last write
        bool operator==(const ChangeMark&) const = default;
    };
    // The mark in force now.
    std::optional<ChangeMark> changeMark() const;

    // The names of all entries that can be read, sorted.
    std::vector<std::string> keys() const;
    // Walks the whole store.
    StoreReport verify() const;
    // Moves the files of the store aside, data and key, under names that end in ".aside-1" and so on, and
    // leaves nothing in their place. Nothing is lost; setPassword starts over.
    StoreStatus reset() const;
    // Takes older data, or none, for what was last written: after a backup was put back on purpose. Stays
    // rolledBack where parts are older than others.
    StoreStatus acceptRestored() const;

    // Called for every operation that failed and for damage found while opening, on the thread concerned,
    // after the diagnostics got the fault's description as a line. An empty handler is none.
    using DamageHandler = std::function<void(const StoreFault& fault)>;
    static void setDamageHandler(DamageHandler handler);

  private:
    explicit SecureDefaults(StoreEngine& engine) : m_engine(&engine) {}
    StoreEngine* m_engine;  // lives as long as the process
};

}  // namespace torvel
