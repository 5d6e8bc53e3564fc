#include "gallery/panes/Panes.h"

#include <QPainter>

namespace torvel::gallery {
namespace {

// The dot of a step on the line that joins them.
class Node final : public QWidget {
  public:
    Node(Role ink, bool first, bool last) : m_ink(ink), m_first(first), m_last(last) { setFixedWidth(16); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double middle = height() / 2.0;
        painter.setPen(QPen(color(&ColorDAO::secondaryBackgroundColor), 2));
        if (!m_first) painter.drawLine(QPointF(8, 0), QPointF(8, middle));
        if (!m_last) painter.drawLine(QPointF(8, middle), QPointF(8, height()));
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(m_ink));
        painter.drawEllipse(QPointF(8, middle), 4, 4);
    }

  private:
    Role m_ink;
    bool m_first, m_last;
};

QWidget* stepRow(const Trace::Step& step, Role ink, bool first, bool last) {
    auto* const made = new QWidget;
    made->setFixedHeight(24);
    QHBoxLayout* const line = row();
    made->setLayout(line);
    line->addWidget(new Node(ink, first, last));
    QLabel* const name = label(ltr(toQt(step.name)), type::label());
    name->setFixedWidth(200);
    line->addWidget(name);
    line->addWidget(label(ltr(toQt(step.detail)), type::caption(), &ColorDAO::secondaryTextColor), 1);
    const QString time = QString::number(step.milliseconds, 'f', 1) + " ms";
    line->addWidget(label(ltr(time), type::caption(), &ColorDAO::secondaryTextColor));
    return made;
}

QWidget* traceCard(const Trace& trace) {
    auto* const card = new Card;
    card->content->setSpacing(0);
    QHBoxLayout* const head = row();
    head->addWidget(label(ltr(toQt(trace.title)), type::strong()), 1);
    const Role ink = !trace.isEnded ? &ColorDAO::circlePendingStatusColor
                     : trace.isOk   ? &ColorDAO::circleAcceptColor
                                    : &ColorDAO::circleRejectColor;
    const char* const word = !trace.isEnded ? "network_running"
                             : trace.isOk   ? "network_ok"
                                            : "network_failed";
    head->addWidget(new Badge(text(word), ink));
    card->content->addLayout(head);
    card->content->addSpacing(grid);
    for (std::size_t i = 0; i < trace.steps.size(); ++i)
        card->content->addWidget(stepRow(trace.steps[i], ink, i == 0, i + 1 == trace.steps.size()));
    return card;
}

}  // namespace

QWidget* makeNetworkPane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    lines->addWidget(wrapped(label(text("network_about"), type::body(), &ColorDAO::secondaryTextColor)));
    const auto& traces = gallery.wallet.traces();
    if (traces.empty()) {
        auto* const card = new Card;
        card->content->addWidget(emptyState(Icon::network, text("network_empty")));
        lines->addWidget(card);
    }
    for (const auto& trace : traces) lines->addWidget(traceCard(*trace));
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
