// The font files that the font cache will ask for.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/preflight/Findings.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/uikit/FontFile.h"

#include <set>

namespace torvel::preflight {
namespace {

#define TORVEL_SUFFIX(WEIGHT, SUFFIX) SUFFIX,
constexpr std::string_view suffixes[] = {TORVEL_FONT_WEIGHTS(TORVEL_SUFFIX)};
#undef TORVEL_SUFFIX

struct Poppins {
    std::string_view file, suffix;
};
#define TORVEL_POPPINS(WEIGHT, FILE, SUFFIX) {FILE, SUFFIX},
constexpr Poppins poppins[] = {TORVEL_POPPINS_WEIGHTS(TORVEL_POPPINS)};
#undef TORVEL_POPPINS

class Fonts {
  public:
    explicit Fonts(const Host& host) : m_host(host) {}

    PreflightSubject examine() {
        if (!m_host.hasScreen()) return std::move(m_findings).finish("nothing for a screen in the bundle");
        std::set<std::string> languages{m_default};
        for (const std::string& language : m_host.languages())
            languages.insert(language.substr(0, language.find('-')));  // the region counts for nothing
        for (const std::string& language : languages) {
            for (const std::string_view suffix : suffixes) weight(language, suffix);
        }
        for (const Poppins& each : poppins) family(each);
        return std::move(m_findings)
            .finish(counted(m_faces, "face") + " for " + counted(languages.size(), "language"));
    }

  private:
    std::string nameOf(std::string_view file) const {
        return std::string(file) + "." + std::string(Constants::fontType);
    }

    // The PostScript name in a font file, as the font cache reads it; why there is none is in `fault`.
    std::optional<std::string> faceIn(std::string_view file, std::string* fault = nullptr) const {
        const auto found = m_host.bundle.path(file, Constants::fontType);
        const auto bytes = found ? readFile(*found) : FileError{"the bundle has no such file"};
        const auto name = bytes ? postScriptName(bytes.value()) : FontFileError::noFont;
        if (name) return name.value();
        if (fault != nullptr)
            *fault = bytes ? "the file is no font with a name" : bytes.error().localizedDescription;
        return std::nullopt;
    }

    // What a weight becomes without the file that is asked for first.
    std::string fallback(std::string_view file, std::string_view suffix) const {
        const std::string second = m_default + std::string(suffix);
        const std::string logged = "an error is logged and ";
        if (second != file && faceIn(second)) return logged + "the face of " + nameOf(second) + " is used";
        if (second == file) return logged + "the system's font is used";
        return logged + "the system's font is used, for " + nameOf(second) + " gives none either";
    }

    void ask(std::string_view file, std::string_view suffix, std::string_view remedy) {
        std::string fault;
        if (faceIn(file, &fault)) {
            ++m_faces;
            return;
        }
        m_findings.warning("missing-face", {nameOf(file)},
                           {fault, fallback(file, suffix), std::string(remedy)});
    }

    void weight(const std::string& language, std::string_view suffix) {
        ask(language + std::string(suffix), suffix, "add a face with the letters of this language");
    }

    void family(const Poppins& each) {
        ask(each.file, each.suffix, "add the face, if a screen asks for Poppins");
        const auto name = faceIn(each.file);
        if (!name || *name == each.file) return;
        m_findings.error("poppins-name", {nameOf(each.file)},
                         {"the face calls itself " + inQuotes(*name),
                          "screens that ask for " + std::string(each.file) + " show that other face",
                          "put the face " + inQuotes(each.file) + " into the file"});
    }

    const Host& m_host;
    const std::string m_default = LocaleHelper::getDefaultAppLanguage();
    std::size_t m_faces = 0;
    Findings m_findings{"fonts"};
};

}  // namespace

PreflightSubject examineFonts(const Host& host) { return Fonts(host).examine(); }

}  // namespace torvel::preflight
