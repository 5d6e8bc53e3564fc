#pragma once  // internal

#include <utility>

#include <unistd.h>

namespace torvel {

// An open file, closed with its owner.
class Descriptor {
  public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() {
        if (m_number >= 0) ::close(m_number);
    }

    explicit operator bool() const { return m_number >= 0; }
    int get() const { return m_number; }

  private:
    int m_number;
};

}  // namespace torvel
