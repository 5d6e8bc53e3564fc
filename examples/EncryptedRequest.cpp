// A request that only the pinned server can read, and an answer that only this host can. The certificate
// server.der and EndpointsConfig.plist stand in the host's bundle (TORVEL_MAIN_BUNDLE, or Resources beside
// the program).
//   example-EncryptedRequest https://api.example.com/
#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/crypto/AES256CBC.h"

#include <iostream>

using namespace torvel;

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: example-EncryptedRequest SERVER-URL\n";
        return 2;
    }
    TorvelLibraryBuilder()
        .setServerURL(arguments[1])
        .setSSlType(SSlPinningType::certificate({"server"}))
        .setEncryptionCertName("server")
        .build();

    const std::string key = AES256CBC::generatePassword();  // a fresh one for each request
    const std::string target = EndpointsHelper::getEndPoint<std::string>("login");
    int exitCode = 0;
    TorvelNetworkClient().postRequest(
        target, Data(R"({"msisdn":"0700000001","pin":"4321"})"), "application/json",
        {std::make_shared<EncryptRequestInterceptor>(key)},
        {std::make_shared<DecryptResponseInterceptor>(key)},
        [](Data answer) {
            std::cout << answer.raw() << "\n";
            DispatchQueue::main().stop();
        },
        [&exitCode](const Decodable& error) {
            std::cerr << dynamic_cast<const APITimeError&>(error).localizedDescription() << "\n";
            exitCode = 1;
            DispatchQueue::main().stop();
        });
    DispatchQueue::main().run();
    return exitCode;
}
