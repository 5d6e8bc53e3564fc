#pragma once

#include <mutex>
#include <utility>

namespace torvel {

// A value that any thread may read (as a copy) and replace.
template <class T>
class Guarded {
  public:
    constexpr Guarded() = default;
    // Holds a value from the start.
    explicit Guarded(T value) : m_value(std::move(value)) {}

    // A copy of the value.
    T load() const {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }

    // What `read` gives for the value, which stays locked meanwhile: cheaper than a copy of what is shared.
    template <class Read>
    auto read(Read read) const {
        const std::lock_guard lock(m_mutex);
        return read(m_value);
    }

    // The old value is destroyed after the lock is released.
    void store(T value) {
        const std::lock_guard lock(m_mutex);
        std::swap(m_value, value);
    }

    // The value, made by `make` first if there is none (the value is false). `make` runs at most once at a
    // time.
    template <class Make>
    T loadOr(Make make) {
        const std::lock_guard lock(m_mutex);
        if (!m_value) m_value = make();
        return m_value;
    }

  private:
    mutable std::mutex m_mutex;
    T m_value{};
};

}  // namespace torvel
