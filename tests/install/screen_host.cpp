#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/FontCache.h"

#include <iostream>

int main() {
    torvel::TorvelLibraryBuilder().build();
    std::cout << torvel::FontCache::getRegularFontCustomSize(12.5).pointSize() << "\n";
}
