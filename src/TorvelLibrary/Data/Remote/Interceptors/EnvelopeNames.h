#pragma once

#include "TorvelLibrary/WrapperConfig.h"

#include <string_view>

namespace torvel {

// What a flavour calls the members of its envelopes. Any thread.
struct EnvelopeNames {
    std::string_view requestKey;    // the sealed symmetric key; also the header of a request without a body
    std::string_view requestData;   // the cipher text without its IV
    std::string_view requestIv;     // the IV
    std::string_view responseData;  // the cipher text without its IV
    std::string_view responseIv;    // the IV in base64
};

// The names of a flavour.
constexpr EnvelopeNames envelopeNames(WrapperConfig flavour) {
    if (flavour == WrapperConfig::QuentaMerchantApp)
        return {"payloadToken", "payloadText", "payloadVariable", "payloadText", "payloadVariable"};
    return {"RequestKey", "RequestData", "RequestIv", "ResponseData", "ResponseIv"};
}

}  // namespace torvel
