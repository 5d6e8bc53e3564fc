#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/foundation/Bundle.h"

#include <iostream>

using namespace torvel;

// Opens a text that openssl sealed, and says where the library found its own resources.
int main() {
    TorvelLibraryBuilder().setServerURL("https://127.0.0.1:1/").build();
    const char* sealed = "MTIzNDU2Nzg5MDEyMzQ1Ng==ukO0gRFuEF+umNM324QGiw==";
    if (AES256CBC::decryptString(sealed, "0123456789abcdef") != "12.50") return 1;
    DispatchQueue::main().async([] { DispatchQueue::main().stop(); });
    DispatchQueue::main().run();
    std::cout << Bundle::library().path("ColorTheme", "plist").value_or("no theme") << "\n";
}
