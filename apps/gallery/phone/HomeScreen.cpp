#include "TorvelLibrary/Utils/Strings.h"
#include "gallery/phone/Screen.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace torvel::gallery {
namespace {

constexpr std::size_t shownEntries = 3;

// The user's initials in a circle.
class Avatar final : public QWidget {
  public:
    explicit Avatar(const std::string& name) : m_initials(toQt(getFirstCharacters(name))) {
        setFixedSize(44, 44);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(&ColorDAO::secondaryBackgroundColor));
        painter.drawEllipse(rect());
        painter.setPen(color(&ColorDAO::primaryColor));
        painter.setFont(type::strong());
        painter.drawText(rect(), Qt::AlignCenter, m_initials);
    }

  private:
    QString m_initials;
};

// The balance on the application's gradient. White stands on it in both themes.
class BalanceCard final : public QWidget {
  public:
    explicit BalanceCard(const std::string& balance) {
        auto* const lines = column(this, 4);
        lines->setContentsMargins(3 * grid, 3 * grid, 3 * grid, 3 * grid);
        lines->addWidget(white(label(text("balance_title"), type::label())));
        lines->addWidget(white(label(balance.empty() ? "…" : money(balance), type::display())));
        lines->addSpacing(2 * grid);
        lines->addWidget(white(label(text("balance_account", toQt(sandbox::walletNumber)), type::caption())));
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (layoutDirection() == Qt::RightToLeft) {
            painter.translate(width(), 0);
            painter.scale(-1, 1);
        }
        QLinearGradient gradient(0, 0, width(), height());
        gradient.setColorAt(0, color(&ColorDAO::circleTopGradientColor));
        gradient.setColorAt(1, color(&ColorDAO::circleBottomGradientColor));
        painter.setPen(Qt::NoPen);
        painter.setBrush(gradient);
        painter.drawRoundedRect(rect(), 3 * grid, 3 * grid);
        QPainterPath shape;
        shape.addRoundedRect(rect(), 3 * grid, 3 * grid);
        painter.setClipPath(shape);
        painter.setBrush(QColor(255, 255, 255, 18));
        painter.drawEllipse(QPointF(width() - 40, height() - 10), 70, 70);
        painter.drawEllipse(QPointF(width() - 120, height() + 30), 70, 70);
    }

  private:
    static QLabel* white(QLabel* label) {
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, Qt::white);
        label->setPalette(palette);
        return label;
    }
};

// A large button for what is done most.
class QuickAction final : public QAbstractButton {
  public:
    QuickAction(Icon icon, const QString& name, const std::function<void()>& clicked) {
        setCursor(Qt::PointingHandCursor);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setFixedHeight(96);
        auto* const lines = column(this, grid);
        lines->setContentsMargins(grid, 1.5 * grid, grid, grid);
        lines->addWidget(
            new IconTile(icon, &ColorDAO::circlePrimaryColor, &ColorDAO::circleSecondaryBackgroundColor), 0,
            Qt::AlignHCenter);
        lines->addWidget(label(name, type::label()), 0, Qt::AlignHCenter);
        connect(this, &QAbstractButton::clicked, this, clicked);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(&ColorDAO::surfaceColor));
        painter.drawRoundedRect(rect(), 2 * grid, 2 * grid);
    }
};

class HomeScreen final : public Screen {
  public:
    using Screen::Screen;

  protected:
    void fill(QVBoxLayout& column) override {
        const Wallet& wallet = m_gallery.wallet;
        column.addLayout(
            screenTitle(text("balance_greeting", toQt(wallet.name())), new Avatar(wallet.name())));
        column.addWidget(new BalanceCard(wallet.balance()));
        column.addLayout(actions());
        Card* const latest = titledCard(text("home_latest"));
        if (wallet.entries().empty()) latest->content->addWidget(emptyState(Icon::inbox, text("home_empty")));
        for (std::size_t i = 0; i < std::min(shownEntries, wallet.entries().size()); ++i)
            latest->content->addWidget(entryRow(wallet.entries()[i]));
        column.addWidget(latest);
    }

  private:
    QHBoxLayout* actions() {
        QHBoxLayout* const line = row(1.5 * grid);
        const auto add = [&](Icon icon, const char* name, Tab tab) {
            line->addWidget(new QuickAction(icon, text(name), [this, tab] { m_gallery.open(tab); }), 1);
        };
        add(Icon::send, "tab_send", Tab::send);
        add(Icon::card, "tab_card", Tab::card);
        add(Icon::list, "tab_statement", Tab::statement);
        return line;
    }
};

}  // namespace

std::shared_ptr<Screen> makeHomeScreen(Gallery& gallery) { return std::make_shared<HomeScreen>(gallery); }

}  // namespace torvel::gallery
