#pragma once  // internal

#include "TorvelPlatform/http/URLRequest.h"

#include <string>
#include <vector>

#include <curl/curl.h>

namespace torvel {

// A request's header fields as the client takes them, in two blocks of memory: it reads such a list and owns
// nothing of it.
class FieldList {
  public:
    explicit FieldList(const HTTPHeaders& headers);
    FieldList(const FieldList&) = delete;
    FieldList& operator=(const FieldList&) = delete;

    // Valid as long as this object is.
    curl_slist* first() { return m_nodes.data(); }

  private:
    void add(std::string_view name, std::string_view separator, std::string_view value);

    std::string m_text;  // the lines, each with its NUL
    std::vector<curl_slist> m_nodes;
};

}  // namespace torvel
