#pragma once

#include <utility>
#include <variant>

namespace torvel {

// Either a value or the error that took its place. Ask `ok()` (or the Boolean conversion) before reading
// either side; reading the side that is not there is a programming error (std::bad_variant_access). A value;
// threads may share one that none changes.
template <class T, class E>
class [[nodiscard]] Outcome {
  public:
    // A success, or a failure.
    Outcome(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    Outcome(E error) : m_state(std::in_place_index<1>, std::move(error)) {}

    // Whether there is a value.
    bool ok() const { return m_state.index() == 0; }
    explicit operator bool() const { return ok(); }

    // The value of a success.
    const T& value() const& { return std::get<0>(m_state); }
    T& value() & { return std::get<0>(m_state); }
    T&& value() && { return std::get<0>(std::move(m_state)); }
    // The error of a failure.
    const E& error() const { return std::get<1>(m_state); }

  private:
    std::variant<T, E> m_state;
};

}  // namespace torvel
