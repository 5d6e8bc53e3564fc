#pragma once

#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/foundation/Text.h"
#include "TorvelPlatform/foundation/URL.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// The host's table from endpoint identifiers to paths or absolute URLs: the property list "EndpointsConfig"
// of the main bundle, loaded on the first look-up. Any thread.
class EndpointsHelper {
  public:
    // Paths or absolute URLs by identifier.
    using Dictionary = ByText<std::string>;

    // What a look-up found, in the form that the caller asks for:
    //   std::optional<std::string> path = EndpointsHelper::getEndPoint("login");  // absent when unknown
    //   std::string target = EndpointsHelper::getEndPoint("login");  // the identifier when unknown
    // Initialise with "=", as here: an optional that is assigned to, or initialised with braces, takes the
    // second form.
    class EndPoint {
      public:
        // What the identifier stands for, absent when it is unknown.
        EndPoint(std::string_view id, std::optional<std::string> value)
            : m_id(id), m_value(std::move(value)) {}
        // The answer in either form.
        operator std::optional<std::string>() && { return std::move(m_value); }
        operator std::string() && { return m_value ? std::move(*m_value) : std::string(m_id); }

      private:
        std::string_view m_id;
        std::optional<std::string> m_value;
    };

    // The identifier must match a key exactly.
    static EndPoint getEndPoint(std::string_view endpointId);

    // The helper behind the look-ups; nullptr before the first one.
    static std::shared_ptr<EndpointsHelper> instance();

    // Finds and loads the main bundle's file. Without one the error "EndpointsConfig plist Not Found In
    // App" is logged and the table stays; it is not looked for again.
    void loadAppEndPoints();
    // Loads the property list at `url` in place of the table. What cannot be read or parsed is logged and
    // leaves the table; a list that is not a dictionary of texts removes it, deliberately without a word.
    void setEndPointsPlist(const URL& url);

    // nullptr until a file has been loaded.
    std::shared_ptr<const Dictionary> endpointsDict() const { return m_endpointsDict.load(); }

  private:
    Guarded<std::shared_ptr<const Dictionary>> m_endpointsDict;
};

}  // namespace torvel
