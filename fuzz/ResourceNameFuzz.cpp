#include "Fuzz.h"
#include "TorvelLibrary/Utils/Views.h"
#include "TorvelPlatform/uikit/qt/UIImage.h"

#include <QWidget>
#include <fstream>

using namespace torvel;

// The library's resources, but in a folder beside which files lie that no name may reach.
const Bundle& bundle() {
    static const Bundle inner = [] {
        const auto folder = std::filesystem::temp_directory_path() / "torvel-fuzz-names";
        std::filesystem::create_directories(folder / "inner");
        std::ofstream(folder / "secret.ui") << R"(<ui version="4.0"><widget class="QWidget"/></ui>)";
        std::filesystem::copy_file(Bundle::library().directory() / "noImage.png", folder / "secret.png",
                                   std::filesystem::copy_options::overwrite_existing);
        return *Bundle::at(folder / "inner");
    }();
    return inner;
}

// The name of an interface file or an image.
void fuzz(std::string_view bytes) {
    mustHold(nibNamed(bytes, bundle()).instantiate() == nullptr);
    mustHold(!UIImage::named(bytes, bundle()));
}
