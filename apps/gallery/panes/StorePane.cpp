#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "gallery/panes/Panes.h"

namespace torvel::gallery {
namespace {

QString shown(const PropertyValue& value) {
    if (const auto* const flag = value.as<bool>()) return *flag ? "true" : "false";
    if (const auto text = value.stringValue()) return toQt(*text);
    if (const auto* const list = value.as<PropertyValue::Array>()) {
        QStringList parts;
        for (const PropertyValue& part : *list) parts += shown(part);
        return "[" + parts.join(", ") + "]";
    }
    if (const auto* const data = value.as<Data>()) return QString("%1 B").arg(data->size());
    return "…";
}

QWidget* entryRow(Gallery& gallery, const std::string& key) {
    auto* const made = new QWidget;
    QHBoxLayout* const line = row(1.5 * grid);
    made->setLayout(line);
    line->addWidget(new IconTile(Icon::lock, &ColorDAO::circlePrimaryColor,
                                 &ColorDAO::circleSecondaryBackgroundColor, 32));
    QLabel* const name = label(toQt(key), type::label());
    name->setFixedWidth(208);
    line->addWidget(name);
    const auto value = UserStorageHelper::object(key);
    line->addWidget(code(value ? shown(*value) : "—"), 1);
    line->addWidget(new Pill(text("store_remove"), Pill::Look::plain, [&gallery, key] {
        UserStorageHelper::remove(key);
        gallery.refreshPane();
    }));
    return made;
}

QWidget* stateCard() {
    const StoreReport report = SecureDefaults::shared().verify();
    const bool isSound = report.status == StoreStatus::ok;
    auto* const card = new Card(&ColorDAO::secondaryBackgroundColor);
    QHBoxLayout* const line = row(1.5 * grid);
    line->addWidget(new IconTile(Icon::store, &ColorDAO::primaryColor, &ColorDAO::surfaceColor));
    line->addWidget(label(text("store_entries", QString::number(report.readable)), type::strong()), 1);
    line->addWidget(new Badge(text(isSound ? "store_sound" : "store_damaged"),
                              isSound ? &ColorDAO::circleAcceptColor : &ColorDAO::circleRejectColor));
    card->content->addLayout(line);
    return card;
}

QWidget* addCard(Gallery& gallery) {
    auto* const card = new Card;
    QHBoxLayout* const line = row(1.5 * grid);
    auto* const key = new Field(text("store_key"), gallery.drafts.storeKey, [] {});
    auto* const value = new Field(text("store_value"), gallery.drafts.storeValue, [] {});
    line->addWidget(key->configured("store_key", 80), 1);
    line->addWidget(value->configured("store_value", 200), 1);
    auto* const save = new Pill(text("store_save"), Pill::Look::tonal, [&gallery] {
        if (gallery.drafts.storeKey.empty()) return;
        UserStorageHelper::save(gallery.drafts.storeValue, gallery.drafts.storeKey);
        gallery.refreshPane();
    });
    line->addWidget(save, 0, Qt::AlignBottom);
    card->content->addLayout(line);
    return card;
}

}  // namespace

QWidget* makeStorePane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    lines->addWidget(wrapped(label(text("store_about"), type::body(), &ColorDAO::secondaryTextColor)));
    lines->addWidget(stateCard());
    lines->addWidget(addCard(gallery));
    auto* const card = new Card;
    const auto keys = SecureDefaults::shared().keys();
    if (keys.empty()) card->content->addWidget(emptyState(Icon::store, text("statement_empty")));
    for (const std::string& key : keys) card->content->addWidget(entryRow(gallery, key));
    lines->addWidget(card);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
