#include "TorvelLibrary/Data/Remote/Interceptors/Utils/DecryptResponse.h"

#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelPlatform/foundation/FatalError.h"

namespace torvel {

DecryptResponse::DecryptResponse() : m_aesKey({}) {
    fatalError("Use of unimplemented initializer 'init()' for class 'TorvelLibrary.DecryptResponse'");
}

std::optional<std::string> DecryptResponse::decryptResponse(std::string_view responseData,
                                                            std::string_view responseIV) const {
    LogUtils::d(m_aesKey.text(), {"Data/Remote/Interceptors/Utils/DecryptResponse",
                                  "decryptResponse(responseData:responseIV:)"});
    std::string joined;
    joined.reserve(responseIV.size() + responseData.size());
    return AES256CBC::decryptString(joined.append(responseIV).append(responseData), m_aesKey.text());
}

}  // namespace torvel
