#include "gallery/panes/Panes.h"

#include <QRegularExpression>
#include <algorithm>
#include <deque>

namespace torvel::gallery {
namespace {

constexpr std::size_t shownRecords = 24;
constexpr qsizetype shownText = 240;  // of a message

// What one call logged: "date time [sign] LEVEL[file]:line column function -> message".
struct Record {
    QString time, level, place, message;
};

Record parsed(const std::string& line) {
    static const QRegularExpression form(R"(^\S+ (\S+) \[.*?\] (\w+)\[(.*?)\]:(\d+) \d+ .*? -> (.*)$)");
    const auto match = form.match(toQt(line));
    if (!match.hasMatch()) return {{}, {}, {}, toQt(line)};
    return {match.captured(1), match.captured(2), match.captured(3) + ":" + match.captured(4),
            match.captured(5)};
}

// The latest first. A message may take several lines, of which the first has the place.
std::vector<Record> recordsOf(const std::deque<std::string>& lines) {
    std::vector<Record> records;
    for (const std::string& line : lines) {
        Record record = parsed(line);
        if (record.level.isEmpty() && !records.empty())
            records.back().message += " " + record.message.simplified();
        else
            records.push_back(std::move(record));
    }
    std::ranges::reverse(records);
    if (records.size() > shownRecords) records.resize(shownRecords);
    return records;
}

Role inkOf(const QString& level) {
    if (level == "ERROR" || level == "SEVERE") return &ColorDAO::circleRejectColor;
    if (level == "WARNING") return &ColorDAO::circlePendingStatusColor;
    return level == "INFO" ? &ColorDAO::circleAcceptColor : &ColorDAO::circlePrimaryColor;
}

QWidget* recordRow(const Record& record) {
    auto* const made = new QWidget;
    made->setLayoutDirection(Qt::LeftToRight);
    QVBoxLayout* const lines = column(made, 2);
    QHBoxLayout* const head = row();
    head->addWidget(new Badge(record.level, inkOf(record.level)));
    QLabel* const place = label(ltr(record.place), type::label());
    place->setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
    head->addWidget(place, 1);
    head->addWidget(label(ltr(record.time), type::caption(), &ColorDAO::secondaryTextColor));
    lines->addLayout(head);
    const bool isLong = record.message.size() > shownText;
    lines->addWidget(code(isLong ? record.message.left(shownText) + "…" : record.message));
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
    card->content->setSpacing(1.5 * grid);
    for (const Record& record : recordsOf(all)) card->content->addWidget(recordRow(record));
    lines->addWidget(card);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
