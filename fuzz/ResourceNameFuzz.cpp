#include "Fuzz.h"
#include "TorvelLibrary/Utils/Views.h"
#include "TorvelPlatform/uikit/qt/UIImage.h"

#include <QWidget>
#include <fstream>

using namespace torvel;

// A folder beside which files lie that no name may reach.
Bundle makeBundle() {
    const auto folder = std::filesystem::temp_directory_path() / "torvel-fuzz-names";
    std::filesystem::create_directories(folder / "inner");
    std::ofstream(folder / "secret.ui") << R"(<ui version="4.0"><widget class="QWidget"/></ui>)";
    std::ofstream(folder / "secret.png") << UIImage({1, 1, {0}}).pngData()->raw();
    return *Bundle::at(folder / "inner");
}

// The name of an interface file or an image.
void fuzz(std::string_view bytes) {
    static const Bundle bundle = makeBundle();
    mustHold(nibNamed(bytes, bundle).instantiate() == nullptr);
    mustHold(!UIImage::named(bytes, bundle));
}
