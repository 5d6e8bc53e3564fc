// A headless host from its start to a configured library, or with a URL as its argument to the first answer.
#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelPlatform/dispatch/DispatchQueue.h"

#include <unistd.h>

using namespace torvel;

int main(int count, char** arguments) {
    TorvelLibraryBuilder().setServerURL("https://api.example.com/v1/").build();
    if (count > 1) {
        TorvelNetworkClient().getRequest(
            arguments[1], "application/json", {}, {}, [](const Data&) { _exit(0); },
            [](const Decodable&) { _exit(1); });
        DispatchQueue::main().run();
    }
    LocaleHelper::doTheSwizzling();
    const std::string endpoint = EndpointsHelper::getEndPoint<std::string>("login");
    const std::string text = getLocalisedValue("greeting", Bundle::main(), "Localizable");
    const bool good = endpoint == "v1/login" && text == "Hello" && TorvelConfigurations::pinLength() == 5;
    _exit(good ? 0 : 1);
}
