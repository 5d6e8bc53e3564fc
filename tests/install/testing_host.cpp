#include "TorvelTesting/Certificates.h"

#include <iostream>

int main() { std::cout << torvel::testing::issue({}).certificatePem.substr(0, 27) << "\n"; }
