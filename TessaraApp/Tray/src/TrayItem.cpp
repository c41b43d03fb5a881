#include "TessaraApp/Tray/TrayItem.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QSystemTrayIcon>
#include <utility>

#include "TessaraApp/ViewModels/MenuBarContent.h"
#include "TrayHostWatch.h"

namespace tessara {
namespace {

using Command = MenuBarContent::Command;

void show(const MenuBarContent::Item& item, QAction& action) {
    // A tray shows '&' as the mark of a shortcut.
    QString text = item.text;
    action.setText(text.replace(QLatin1Char('&'), QLatin1String("&&")));
    action.setEnabled(item.command != Command::none);
    action.setCheckable(item.isChecked.has_value());
    action.setChecked(item.isChecked.value_or(false));
    action.setShortcut(QKeySequence(item.shortcut, QKeySequence::PortableText));
}

}  // namespace

TrayItem::TrayItem(MenuBarContent& content, IconOfSymbol iconOfSymbol)
    : content_(content),
      iconOfSymbol_(std::move(iconOfSymbol)),
      hosts_(std::make_unique<TrayHostWatch>()) {
    connect(&content_, &MenuBarContent::changed, this, &TrayItem::refresh);
    connect(hosts_.get(), &TrayHostWatch::hasTrayChanged, this,
            [this] { setAvailable(hosts_->hasTray()); });
    setAvailable(hosts_->hasTray());
}

TrayItem::~TrayItem() = default;

void TrayItem::setAvailable(bool isAvailable) {
    if (isAvailable == isAvailable_) return;
    isAvailable_ = isAvailable;
    if (isAvailable && !icon_) {
        menu_ = std::make_unique<QMenu>();
        icon_ = std::make_unique<QSystemTrayIcon>();
        icon_->setContextMenu(menu_.get());
        connect(icon_.get(), &QSystemTrayIcon::activated, this,
                [this](QSystemTrayIcon::ActivationReason reason) {
                    if (reason == QSystemTrayIcon::Trigger) content_.run(Command::openSettings);
                });
        refresh();
        icon_->show();
    }
    Q_EMIT isAvailableChanged();
}

void TrayItem::refresh() {
    if (!icon_) return;
    icon_->setIcon(iconOfSymbol_(content_.symbol()));
    icon_->setToolTip(content_.label());
    // Lines are changed in place as long as they stay the same lines: a menu that is rebuilt under
    // the user's pointer closes.
    const auto& items = content_.items();
    const QList<QAction*> actions = menu_->actions();
    bool isSameMenu = actions.size() == static_cast<qsizetype>(items.size());
    for (std::size_t i = 0; isSameMenu && i < items.size(); ++i) {
        const QAction& action = *actions.at(static_cast<qsizetype>(i));
        isSameMenu = action.isSeparator() == items[i].isSeparator() &&
                     action.data().toInt() == static_cast<int>(items[i].command);
    }
    if (!isSameMenu) {
        rebuildMenu();
        return;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (!items[i].isSeparator()) show(items[i], *actions.at(static_cast<qsizetype>(i)));
    }
}

void TrayItem::rebuildMenu() {
    menu_->clear();
    for (const MenuBarContent::Item& item : content_.items()) {
        if (item.isSeparator()) {
            menu_->addSeparator();
            continue;
        }
        QAction& action = *menu_->addAction(QString());
        action.setData(static_cast<int>(item.command));
        show(item, action);
        connect(&action, &QAction::triggered, this, [this, &action, command = item.command] {
            // A mark follows what it stands for, not the click.
            if (action.isCheckable()) action.setChecked(!action.isChecked());
            content_.run(command);
        });
    }
}

}  // namespace tessara
