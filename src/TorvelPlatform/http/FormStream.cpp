#include "TorvelPlatform/http/FormStream.h"

namespace torvel {

FormStream::FormStream(MultipartFormData form) : m_form(std::move(form)), m_size(m_form.contentLength()) {
    for (std::size_t part = 0; part < m_form.parts().size(); ++part) m_frame.push_back(m_form.head(part));
    m_frame.push_back(m_form.tail());
}

// Heads and contents in turn, the tail last.
std::string_view FormStream::piece(std::size_t index) const {
    return index % 2 == 0 ? std::string_view(m_frame[index / 2]) : m_form.parts()[index / 2].content.raw();
}

std::size_t FormStream::read(std::size_t offset, std::span<char> buffer) const {
    std::size_t copied = 0;
    for (std::size_t index = 0; index < m_frame.size() * 2 - 1 && copied < buffer.size(); ++index) {
        const std::string_view text = piece(index);
        if (offset < text.size()) {
            copied += text.copy(buffer.data() + copied, buffer.size() - copied, offset);
            offset = 0;
        } else {
            offset -= text.size();
        }
    }
    return copied;
}

}  // namespace torvel
