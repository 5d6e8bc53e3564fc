// The first request of a host: configure the library, send, meet the answer on the main queue.
//   example-FirstRequest https://api.example.com/v1/
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"

#include <iostream>

using namespace torvel;

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: example-FirstRequest SERVER-URL\n";
        return 2;
    }
    TorvelLibraryBuilder().setServerURL(arguments[1]).setRequestTimeoutInterval(10).build();

    int exitCode = 0;
    TorvelNetworkClient().postRequest(
        "echo", Data(R"({"amount":"12.50"})"), "application/json", {}, {},
        [](Data answer) {
            std::cout << answer.raw() << "\n";
            DispatchQueue::main().stop();
        },
        [&exitCode](const Decodable& error) {
            const auto& record = dynamic_cast<const APITimeError&>(error);
            std::cerr << record.errorCodeInResponse() << ": " << record.localizedDescription() << "\n";
            exitCode = 1;
            DispatchQueue::main().stop();
        });
    DispatchQueue::main().run();
    return exitCode;
}
