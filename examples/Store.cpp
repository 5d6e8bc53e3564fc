// Values that outlive the process, encrypted on disk: this counts how often it was started, and remembers a
// name.
//   example-Store [NAME]
#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"

#include <iostream>

using namespace torvel;

int main(int, char** arguments) {
    // Damage and a lost key are told here and nowhere else: readers then give nothing.
    SecureDefaults::setDamageHandler([](const StoreFault& fault) { std::cerr << fault.description << "\n"; });
    UserStorageHelper::initialSetup("example");  // the suite of every call that names none

    const auto starts = UserStorageHelper::integer("starts");
    if (!starts) return 1;  // the store cannot be opened
    UserStorageHelper::save(*starts + 1, "starts");
    if (arguments[1] != nullptr) UserStorageHelper::save(arguments[1], "name");

    std::cout << "start " << *starts + 1 << " of " << UserStorageHelper::string("name").value_or("somebody")
              << "\n";
}
