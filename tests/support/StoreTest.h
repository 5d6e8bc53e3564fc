#pragma once

#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelTesting/HostFixture.h"

#include <functional>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace torvel {

inline void PrintTo(StoreStatus status, std::ostream* out) { *out << describe(status); }

}  // namespace torvel

namespace torvel::testing {

// Runs `work` in a child; true when it returned true.
inline bool inChild(const std::function<bool()>& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work() ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The folders that a host has of its own.
struct StoreTest : HostFixture {
    std::filesystem::path data() const { return directory() / "data"; }
    std::filesystem::path state() const { return directory() / "state"; }

    // A fork closes this process's connections: the next use opens the stores anew.
    static void reopen() {
        inChild([] { return true; });
    }

    std::vector<std::filesystem::path> files() const {
        std::vector<std::filesystem::path> all;
        for (const auto& root : {data(), state()}) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
                all.push_back(entry);
        }
        return all;
    }
};

inline std::string numbered(std::string_view name, int number) {
    return std::string(name).append(std::to_string(number));
}

inline SecureDefaults storeWithKey(std::string_view suite = {}) {
    const SecureDefaults store = suite.empty() ? SecureDefaults::shared() : *SecureDefaults::suite(suite);
    if (store.isKeyCreated()) return store;
    EXPECT_EQ(store.setPassword("2c1f6d4e-52b5-4b0a-9f53-6f1f4c1f8a57"), StoreStatus::ok);
    return store;
}

// What a read gave: the value as a text, "-" when there is none, or what is wrong.
inline std::string readText(const SecureDefaults& store, std::string_view key) {
    const auto outcome = store.read(key);
    if (!outcome) return std::string(describe(outcome.error()));
    return outcome.value() ? outcome.value()->stringValue().value_or("another kind") : "-";
}

}  // namespace torvel::testing
