#pragma once  // internal

#include "TorvelPlatform/http/MultipartFormData.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace torvel {

// A form's encoded body, read from its parts piece by piece: a large one is neither copied as a whole nor
// written to a file, where it would outlive the request. One thread.
class FormStream {
  public:
    explicit FormStream(MultipartFormData form);

    std::size_t size() const { return m_size; }
    // Copies what stands from `offset` on; returns how much, less than asked for only at the body's end.
    std::size_t read(std::size_t offset, std::span<char> buffer) const;

  private:
    std::string_view piece(std::size_t index) const;

    MultipartFormData m_form;
    std::vector<std::string> m_frame;  // a head for each part, and the tail
    std::size_t m_size;
};

}  // namespace torvel
