#include "gallery/Trace.h"

namespace torvel::gallery {

void Trace::add(std::string name, std::string detail) {
    const auto since = std::chrono::steady_clock::now() - m_start;
    steps.push_back(
        {std::move(name), std::move(detail), std::chrono::duration<double, std::milli>(since).count()});
}

URLRequest RequestProbe::wrapRequest(URLRequest& request) {
    const std::size_t bytes = request.httpBody ? request.httpBody->size() : 0;
    std::string detail = std::to_string(bytes) + " B";
    for (const auto& [name, value] : request.headers.fields()) detail += " · " + name;
    m_trace->add(m_interceptor, detail);
    return request;
}

Data ResponseProbe::parseResponse(Data data) {
    m_trace->add(m_interceptor, std::to_string(data.size()) + " B");
    return data;
}

}  // namespace torvel::gallery
