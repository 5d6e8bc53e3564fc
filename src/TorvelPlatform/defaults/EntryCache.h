#pragma once  // internal

#include "TorvelPlatform/defaults/SecureDefaults.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace torvel {

// Entries as they were read or written, sealed, with their tags: good for as long as nobody else writes to
// the store.
class EntryCache {
  public:
    struct Entry {
        std::string tag, sealed;
    };

    // What was kept under the mark that stands now, or nullptr.
    const Entry* find(const SecureDefaults::ChangeMark& mark, std::string_view key) const {
        const auto found = mark == m_mark ? m_entries.find(key) : m_entries.end();
        return found != m_entries.end() ? &found->second : nullptr;
    }

    void keep(const SecureDefaults::ChangeMark& mark, std::string_view key, Entry entry) {
        if (entry.sealed.size() > largest) return;
        if (mark != m_mark || m_entries.size() == most) m_entries.clear();
        m_mark = mark;
        m_entries.insert_or_assign(std::string(key), std::move(entry));
    }

    // From one mark to that of a write which put or erased this entry alone: the others are good still.
    void moveOn(const SecureDefaults::ChangeMark& from, const SecureDefaults::ChangeMark& to,
                std::string_view key, std::string tag, std::optional<std::string> sealed) {
        if (from == m_mark) m_mark = to;
        if (const auto found = m_entries.find(key); found != m_entries.end()) m_entries.erase(found);
        if (sealed) keep(to, key, {std::move(tag), *std::move(sealed)});
    }

  private:
    static constexpr std::size_t most = 4096, largest = 1024;  // some MB at the most

    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    SecureDefaults::ChangeMark m_mark{nullptr, 0};
    std::unordered_map<std::string, Entry, Hash, std::equal_to<>> m_entries;
};

}  // namespace torvel
