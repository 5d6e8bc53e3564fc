#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

namespace torvel {

// Memory that ends where none follows, or starts where none comes before: who leaves it, crashes.
class GuardedBuffer {
  public:
    enum class Guard { before, behind };
    explicit GuardedBuffer(std::size_t size, Guard guard = Guard::behind) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t room = (size + page - 1) / page * page;
        m_size = room + 2 * page;
        m_map = static_cast<char*>(mmap(nullptr, m_size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(m_map + page, room, PROT_READ | PROT_WRITE);
        m_start = m_map + page + (guard == Guard::behind ? room - size : 0);
    }
    GuardedBuffer(std::string_view content, Guard guard) : GuardedBuffer(content.size(), guard) {
        std::memcpy(m_start, content.data(), content.size());
    }
    ~GuardedBuffer() { munmap(m_map, m_size); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    char* text() { return m_start; }
    std::uint8_t* bytes() { return reinterpret_cast<std::uint8_t*>(m_start); }

  private:
    std::size_t m_size;
    char *m_map, *m_start;
};

}  // namespace torvel
