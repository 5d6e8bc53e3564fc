#include "gallery/panes/Panes.h"

#include <ranges>

namespace torvel::gallery {
namespace {

constexpr std::size_t shownLines = 40;

Role inkOf(const std::string& line) {
    if (line.find("ERROR") != std::string::npos) return &ColorDAO::circleRejectColor;
    if (line.find("WARNING") != std::string::npos) return &ColorDAO::circlePendingStatusColor;
    return &ColorDAO::regularTextColor;
}

// A line is "time [sign] LEVEL[file]:line column function -> message".
QWidget* lineRow(const std::string& line) {
    auto* const made = new QWidget;
    QVBoxLayout* const words = column(made, 0);
    made->setLayoutDirection(Qt::LeftToRight);
    const std::size_t arrow = line.find(" -> ");
    const bool isSplit = arrow != std::string::npos;
    words->addWidget(
        wrapped(label(toQt(isSplit ? line.substr(arrow + 4) : line), type::body(), inkOf(line))));
    if (isSplit) words->addWidget(code(toQt(line.substr(0, arrow))));
    return made;
}

}  // namespace

QWidget* makeLogPane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    QHBoxLayout* const head = row();
    head->addWidget(wrapped(label(text("log_about"), type::body(), &ColorDAO::secondaryTextColor)), 1);
    head->addWidget(new Pill(
        text("log_clear"), Pill::Look::tonal,
        [&gallery] {
            gallery.log.clear();
            gallery.refreshPane();
        },
        Icon::trash));
    lines->addLayout(head);
    auto* const card = new Card;
    const auto& all = gallery.log.lines();
    if (all.empty()) card->content->addWidget(emptyState(Icon::log, text("log_empty")));
    for (const std::string& line : all | std::views::reverse | std::views::take(shownLines))
        card->content->addWidget(lineRow(line));
    lines->addWidget(card);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
