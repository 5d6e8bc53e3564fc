#include "Fuzz.h"
#include "TorvelPlatform/http/MultipartFormData.h"

#include <algorithm>

using namespace torvel;

// Field name and file name, a line each, then the content; read back as RFC 2046, 5.1.1 has it.
void fuzz(std::string_view bytes) {
    const std::string_view name = bytes.substr(0, bytes.find('\n'));
    const std::string_view rest = bytes.substr(std::min(name.size() + 1, bytes.size()));
    const std::string_view fileName = rest.substr(0, rest.find('\n'));
    const std::string_view content = rest.substr(std::min(fileName.size() + 1, rest.size()));
    MultipartFormData form;
    form.append(Data(content), name, fileName, "text/plain");
    const std::string body = form.head(0) + std::string(content) + form.tail();
    mustHold(body.size() == form.contentLength());

    const std::string delimiter = "\r\n--" + form.boundary();
    const std::size_t start = body.find("\r\n\r\n");
    mustHold(body.starts_with(delimiter.substr(2) + "\r\n") && start != body.npos);
    const std::string fields = body.substr(0, start);
    mustHold(std::count(fields.begin(), fields.end(), '\n') == 2 &&
             std::count(fields.begin(), fields.end(), '\r') == 2);
    const std::size_t end = body.find(delimiter, start + 4);
    mustHold(body.substr(start + 4, end - start - 4) == content && body.substr(end) == delimiter + "--\r\n");
}
