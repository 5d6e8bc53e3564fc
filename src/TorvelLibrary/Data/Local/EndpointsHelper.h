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

    // Looks an identifier up, which must match a key exactly. The type that is asked for decides what an
    // unknown one gives:
    //   getEndPoint<std::optional<std::string>>("login")  absent
    //   getEndPoint<std::string>("login")                 the identifier itself
    template <class Text>
    static Text getEndPoint(std::string_view endpointId) = delete;

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

template <>
std::optional<std::string> EndpointsHelper::getEndPoint(std::string_view endpointId);
template <>
std::string EndpointsHelper::getEndPoint(std::string_view endpointId);

}  // namespace torvel
