#pragma once

#include "TorvelPlatform/foundation/Data.h"

#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// A multipart/form-data body (RFC 7578). Quotes and line breaks in names are escaped as browsers do
// (%22, %0D, %0A). A value; threads may share one that none changes.
class MultipartFormData {
  public:
    // One file of a form.
    struct Part {
        Data content;          // as it is sent
        std::string name;      // of the form's field
        std::string fileName;  // what the server may call it
        std::string mimeType;  // the part's own content type
    };

    MultipartFormData();  // with a random boundary

    // Adds a part at the end.
    void append(Data content, std::string_view withName, std::string_view fileName,
                std::string_view mimeType);

    // The text between the parts, without dashes.
    const std::string& boundary() const { return m_boundary; }
    // "multipart/form-data; boundary=..."
    std::string contentType() const;
    // The parts in the order of adding.
    const std::vector<Part>& parts() const { return m_parts; }
    // What stands before a part's content (the boundary and the part's header fields), and after the last.
    std::string head(std::size_t part) const;
    std::string tail() const;
    // The size of the whole encoded body in bytes.
    std::size_t contentLength() const;

  private:
    std::string m_boundary;
    std::vector<Part> m_parts;
};

}  // namespace torvel
