#pragma once  // internal

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace torvel {

// Entries as they were read, sealed, with their tags: good for as long as nothing is written to the store.
class EntryCache {
  public:
    struct Entry {
        std::string tag, sealed;
    };

    // What was kept under the sequence number that stands now, or nullptr.
    const Entry* find(std::uint64_t sequence, std::string_view key) const {
        const auto found = sequence == m_sequence ? m_entries.find(key) : m_entries.end();
        return found != m_entries.end() ? &found->second : nullptr;
    }

    void keep(std::uint64_t sequence, std::string_view key, Entry entry) {
        if (entry.sealed.size() > largest) return;
        if (sequence != m_sequence || m_entries.size() == most) m_entries.clear();
        m_sequence = sequence;
        m_entries.insert_or_assign(std::string(key), std::move(entry));
    }

  private:
    static constexpr std::size_t most = 4096, largest = 1024;  // some MB at the most

    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    std::uint64_t m_sequence = 0;
    std::unordered_map<std::string, Entry, Hash, std::equal_to<>> m_entries;
};

}  // namespace torvel
