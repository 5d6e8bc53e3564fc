#include "TorvelPlatform/uikit/qt/Fonts.h"

#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/foundation/Text.h"

#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>
#include <memory>

#include <fontconfig/fontconfig.h>

namespace torvel {
namespace {

template <auto release>
struct Releaser {
    template <class T>
    void operator()(T* handle) const {
        release(handle);
    }
};

using Pattern = std::unique_ptr<FcPattern, Releaser<FcPatternDestroy>>;
using Properties = std::unique_ptr<FcObjectSet, Releaser<FcObjectSetDestroy>>;
using Faces = std::unique_ptr<FcFontSet, Releaser<FcFontSetDestroy>>;

// A face as the toolkit names it.
struct Face {
    QString family;
    QString style;
};

std::string textOf(FcPattern* face, const char* property) {
    FcChar8* text = nullptr;
    if (FcPatternGetString(face, property, 0, &text) != FcResultMatch) return {};
    return reinterpret_cast<const char*>(text);
}

// Asks the list of faces, never for a match: that answers another face where there is none of the name. The
// list's comparison ignores case, PostScript names do not.
std::optional<Face> lookUp(const std::string& name) {
    const Pattern wanted(FcPatternBuild(nullptr, FC_POSTSCRIPT_NAME, FcTypeString, name.c_str(), nullptr));
    const Properties asked(FcObjectSetBuild(FC_POSTSCRIPT_NAME, FC_FAMILY, FC_STYLE, nullptr));
    const Faces faces(FcFontList(nullptr, wanted.get(), asked.get()));
    for (int i = 0; faces && i < faces->nfont; ++i) {
        FcPattern* const face = faces->fonts[i];
        if (textOf(face, FC_POSTSCRIPT_NAME) == name)
            return Face{QString::fromStdString(textOf(face, FC_FAMILY)),
                        QString::fromStdString(textOf(face, FC_STYLE))};
    }
    return std::nullopt;
}

// The faces found so far. What is missing is looked for again: a host may register it later.
const Face* registeredFace(std::string_view fontName) {
    static auto& known = *new ByText<Face>;
    if (const auto found = known.find(fontName); found != known.end()) return &found->second;
    const std::string name(fontName);
    std::optional<Face> face = lookUp(name);
    return face ? &known.emplace(name, *std::move(face)).first->second : nullptr;
}

double pointsOfPixel() {
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? 72 / screen->logicalDotsPerInchY() : 1;
}

// The face behind the toolkit's choice, which may be a generic name.
std::string systemFontName() {
    const std::string family = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family().toStdString();
    const Pattern wanted(FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, family.c_str(), nullptr));
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result;
    const Pattern match(FcFontMatch(nullptr, wanted.get(), &result));
    return match ? textOf(match.get(), FC_POSTSCRIPT_NAME) : "";
}

}  // namespace

bool registerFont(const std::string& path) {
    expectMainThread("registerFont()");
    return QFontDatabase::addApplicationFont(QString::fromStdString(path)) >= 0;
}

std::optional<UIFont> fontWithName(std::string_view fontName, double size) {
    expectMainThread("fontWithName()");
    if (registeredFace(fontName) == nullptr) return std::nullopt;
    return UIFont(std::string(fontName), size);
}

UIFont systemFontOfSize(double size) {
    expectMainThread("systemFontOfSize()");
    static const auto& name = *new std::string(systemFontName());
    return {name, size};
}

QFont toQFont(const UIFont& font) {
    expectMainThread("toQFont()");
    const Face* const face = registeredFace(font.fontName());
    QFont result = face ? QFontDatabase::font(face->family, face->style, 12) : QFont();
    result.setHintingPreference(QFont::PreferNoHinting);
    if (font.pointSize() > 0) result.setPointSizeF(font.pointSize() * pointsOfPixel());
    return result;
}

}  // namespace torvel
