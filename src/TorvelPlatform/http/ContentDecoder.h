#pragma once  // internal

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// Undoes one content coding (RFC 9110, 8.4.1) piece by piece.
class ContentCoding {
  public:
    enum class Status { ok, malformed, tooLarge };

    virtual ~ContentCoding() = default;
    // Appends what `input` decodes to. `limit` bounds how many bytes this coding may ever produce.
    virtual Status decode(std::string_view input, std::string& output, std::size_t limit) = 0;
    // Whether the coding's own end has been reached.
    virtual bool ended() const = 0;
};

// Undoes the codings of a Content-Encoding field, in reverse of the order in which they were applied. A body
// that stops before the codings' own end, or goes on after it, is malformed; a body without a byte is whole.
class ContentDecoder {
  public:
    using Status = ContentCoding::Status;

    // "" and "identity" decode nothing.
    explicit ContentDecoder(std::string_view contentEncoding);

    // False when a coding is unknown, or when there are more than three: nobody stacks them in earnest.
    bool supported() const { return m_supported; }
    bool isIdentity() const { return m_codings.empty(); }

    // Appends to `output` what `input` decodes to.
    Status decode(std::string_view input, std::string& output, std::size_t limit);
    // Whether the body may end here.
    bool ended() const;

  private:
    bool m_supported = true;
    bool m_fed = false;
    std::vector<std::unique_ptr<ContentCoding>> m_codings;  // in the order of decoding
};

}  // namespace torvel
