#pragma once

#include "TorvelLibrary/WrapperConfig.h"

#include <string_view>

namespace torvel {

// What a flavour calls the members of its envelopes.
struct EnvelopeNames {
    std::string_view requestKey;
    std::string_view requestData;
    std::string_view requestIv;
    std::string_view responseData;
    std::string_view responseIv;
};

constexpr EnvelopeNames envelopeNames(WrapperConfig flavour) {
    if (flavour == WrapperConfig::QuentaMerchantApp)
        return {"payloadToken", "payloadText", "payloadVariable", "payloadText", "payloadVariable"};
    return {"RequestKey", "RequestData", "RequestIv", "ResponseData", "ResponseIv"};
}

}  // namespace torvel
