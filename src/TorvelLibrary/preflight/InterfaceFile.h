#pragma once  // internal

#include "TorvelLibrary/preflight/Findings.h"

#include <string>
#include <string_view>
#include <vector>

namespace torvel::preflight {

// What an interface file (".ui") asks a bundle for.
struct InterfaceFile {
    struct Item {
        std::string text;
        int line;
    };
    std::string name;  // from the bundle's folder
    bool isOne = false;
    std::vector<Item> texts;   // those not marked notr="true"
    std::vector<Item> images;  // but for those compiled into the program (":/...")

    // Looks at the few elements that name resources and leaves the rest of the file alone.
    static InterfaceFile parse(std::string name, std::string_view content);
};

// Those in the bundle's root and in the folders of its languages. One that cannot be read is left out.
std::vector<InterfaceFile> interfaceFiles(const Host& host);

}  // namespace torvel::preflight
