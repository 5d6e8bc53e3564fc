#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/uikit/FontFile.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"
#include "gallery/panes/Panes.h"

#include <algorithm>
#include <filesystem>

namespace torvel::gallery {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> fontFiles() {
    std::vector<fs::path> files;
    std::error_code failed;
    for (const auto& entry : fs::directory_iterator(Bundle::main().directory(), failed))
        if (entry.path().extension() == ".ttf") files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

// The name of the face in a file; empty for what is no font.
std::string faceOf(const fs::path& file) {
    const auto bytes = readFile(file);
    const auto name = bytes ? postScriptName(bytes.value()) : FontFileError::noFont;
    return name ? name.value() : "";
}

void addState(Gallery& gallery, QHBoxLayout& line, const fs::path& file, const std::string& face) {
    if (face.empty()) {
        line.addWidget(new Badge(text("font_none"), &ColorDAO::circleRejectColor));
    } else if (fontWithName(face, 17)) {
        line.addWidget(new Badge(text("font_registered"), &ColorDAO::circleAcceptColor));
    } else {
        line.addWidget(new Badge(text("font_unregistered"), &ColorDAO::circlePendingStatusColor));
        line.addWidget(new Pill(text("font_register"), Pill::Look::tonal, [&gallery, file] {
            registerFont(file.string());
            gallery.refreshPane();
        }));
    }
}

QWidget* fontRow(Gallery& gallery, const fs::path& file) {
    auto* const made = new QWidget;
    made->setMinimumHeight(36);
    QHBoxLayout* const line = row();
    made->setLayout(line);
    const std::string face = faceOf(file);
    QLabel* const name = label(toQt(file.filename().string()), type::label());
    name->setFixedWidth(176);
    line->addWidget(name);
    line->addWidget(label(toQt(face), type::caption(), &ColorDAO::secondaryTextColor), 1);
    if (const auto font = face.empty() ? std::nullopt : fontWithName(face, 17))
        line->addWidget(label(face.starts_with("Cairo") ? "أبجد" : "Abc", toQFont(*font)));
    addState(gallery, *line, file, face);
    return made;
}

}  // namespace

QWidget* makeFontsPane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    lines->addWidget(wrapped(label(text("fonts_about"), type::body(), &ColorDAO::secondaryTextColor)));
    auto* const other = new Card;
    auto* const field = new Field(text("font_file"), gallery.drafts.fontFile, [] {});
    QHBoxLayout* const line = row();
    line->addWidget(field->configured("font_file", 400), 1);
    line->addWidget(new Pill(text("font_look"), Pill::Look::tonal, [&gallery] { gallery.refreshPane(); }), 0,
                    Qt::AlignBottom);
    other->content->addLayout(line);
    if (!gallery.drafts.fontFile.empty())
        other->content->addWidget(fontRow(gallery, gallery.drafts.fontFile));
    lines->addWidget(other);
    auto* const card = new Card;
    card->content->setSpacing(0);
    for (const fs::path& file : fontFiles()) card->content->addWidget(fontRow(gallery, file));
    lines->addWidget(card);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
