#include "TorvelPlatform/uikit/FontFile.h"

#include <memory>
#include <type_traits>

#include <ft2build.h>
#include FT_FREETYPE_H

namespace torvel {
namespace {

template <auto release>
struct Releaser {
    template <class T>
    void operator()(T* handle) const {
        release(handle);
    }
};

using Library = std::unique_ptr<std::remove_pointer_t<FT_Library>, Releaser<FT_Done_FreeType>>;
using Face = std::unique_ptr<std::remove_pointer_t<FT_Face>, Releaser<FT_Done_Face>>;

}  // namespace

Outcome<std::string, FontFileError> postScriptName(const Data& fontFile) {
    FT_Library library = nullptr;  // one a call: it is not safe from several threads
    if (FT_Init_FreeType(&library) != 0) return FontFileError::noProvider;
    const Library owner(library);

    FT_Face face = nullptr;
    const std::span<const std::uint8_t> bytes = fontFile.bytes();
    if (FT_New_Memory_Face(library, bytes.data(), static_cast<FT_Long>(bytes.size()), 0, &face) != 0)
        return FontFileError::noFont;
    const Face faceOwner(face);

    const char* const name = FT_Get_Postscript_Name(face);
    if (name == nullptr || *name == '\0') return FontFileError::noName;
    return std::string(name);
}

}  // namespace torvel
