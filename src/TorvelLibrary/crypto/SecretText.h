#pragma once

#include <string>

#include <string.h>

namespace torvel {

// A key text that is wiped with its owner. A value; threads may share one that none changes.
class SecretText {
  public:
    // Takes the text over; a copy of the caller's own is the caller's to wipe.
    explicit SecretText(std::string text) : m_text(std::move(text)) {}
    SecretText(const SecretText&) = default;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText() { explicit_bzero(m_text.data(), m_text.size()); }

    // Valid as long as the object lives.
    const std::string& text() const { return m_text; }

  private:
    std::string m_text;
};

}  // namespace torvel
