#include "Fuzz.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"

#include <iostream>

using namespace torvel;

void fuzz(std::string_view bytes) {
    std::cout.setstate(std::ios::failbit);  // the console lines of refused texts
    for (const WrapperConfig flavour : {WrapperConfig::VelmMoney, WrapperConfig::QuentaMerchantApp}) {
        TorvelLibraryBuilder().setEncryptionCertName("server").setWrapperConfig(flavour).build();
        DecryptResponseInterceptor("0123456789abcdef").parseResponse(Data(bytes));
    }
}
