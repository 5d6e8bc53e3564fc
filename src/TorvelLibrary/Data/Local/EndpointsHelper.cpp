#include "TorvelLibrary/Data/Local/EndpointsHelper.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/PropertyList.h"

namespace torvel {
namespace {

constexpr std::string_view source = "Data/Local/EndpointsHelper";

Guarded<std::shared_ptr<EndpointsHelper>>& slot() {
    static auto* const instance = new Guarded<std::shared_ptr<EndpointsHelper>>;
    return *instance;
}

// nullptr when the root is not a dictionary or a value is not a text.
std::shared_ptr<const EndpointsHelper::Dictionary> dictionaryOfTexts(const PropertyList& root) {
    if (root.dictionary() == nullptr) return nullptr;
    auto texts = std::make_shared<EndpointsHelper::Dictionary>();
    for (const auto& [key, value] : *root.dictionary()) {
        if (value.string() == nullptr) return nullptr;
        texts->emplace(key, *value.string());
    }
    return texts;
}

}  // namespace

template <>
std::optional<std::string> EndpointsHelper::getEndPoint(std::string_view endpointId) {
    static const EndpointsHelper& helper = *slot().loadOr([] {
        auto created = std::make_shared<EndpointsHelper>();
        created->loadAppEndPoints();
        return created;
    });
    return helper.m_endpointsDict.read([endpointId](const auto& table) -> std::optional<std::string> {
        if (!table) return std::nullopt;
        const auto found = table->find(endpointId);
        return found == table->end() ? std::nullopt : std::optional(found->second);
    });
}

template <>
std::string EndpointsHelper::getEndPoint(std::string_view endpointId) {
    auto known = getEndPoint<std::optional<std::string>>(endpointId);
    return known ? *std::move(known) : std::string(endpointId);
}

std::shared_ptr<EndpointsHelper> EndpointsHelper::instance() { return slot().load(); }

void EndpointsHelper::loadAppEndPoints() {
    if (const auto url =
            getPathURLFromBundle(Constants::endpointTable, Constants::propertyListType, Bundle::main()))
        return setEndPointsPlist(*url);
    LogUtils::e("EndpointsConfig plist Not Found In App", {source, "loadAppEndPoints()"});
}

void EndpointsHelper::setEndPointsPlist(const URL& url) {
    constexpr std::string_view function = "setEndPointsPlist(_:)";
    const auto bytes = readFile(url.path());
    if (!bytes) return LogUtils::e(bytes.error().localizedDescription, {source, function});
    const auto list = PropertyList::parse(bytes.value());
    if (!list) return LogUtils::e(list.error().description, {source, function});
    m_endpointsDict.store(dictionaryOfTexts(list.value()));
}

}  // namespace torvel
