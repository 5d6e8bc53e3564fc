#include "TorvelTesting/Certificates.h"
#include "TorvelTesting/SandboxHost.h"

#include <iostream>

int main() {
    const torvel::testing::SandboxHost host;
    std::cout << torvel::testing::issue({}).certificatePem.substr(0, 27) << "\n";
}
