#pragma once

#include <QIcon>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace tessara {

class MenuBarContent;
class TrayHostWatch;

/// Shows the menu of the program in the desktop's tray, by the StatusNotifierItem protocol of
/// freedesktop.org where the desktop speaks it. The item appears when a tray does, at the start or
/// later, and comes back with it.
///
/// Main thread, in a program with a `QApplication`.
class TrayItem : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isAvailable READ isAvailable NOTIFY isAvailableChanged)

  public:
    /// The icon for the name of a symbol.
    using IconOfSymbol = std::function<QIcon(const QString& symbol)>;

    /// The content outlives this.
    TrayItem(MenuBarContent& content, IconOfSymbol iconOfSymbol);
    ~TrayItem() override;

    /// Whether there is a tray that shows the item. Without one, a window must hold the ways back
    /// and out.
    [[nodiscard]] bool isAvailable() const { return isAvailable_; }

  Q_SIGNALS:
    void isAvailableChanged();

  private:
    void setAvailable(bool isAvailable);
    void refresh();
    void rebuildMenu();

    MenuBarContent& content_;
    const IconOfSymbol iconOfSymbol_;
    std::unique_ptr<TrayHostWatch> hosts_;
    /// Made when a tray is there for the first time: what is made before never shows.
    std::unique_ptr<QMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    bool isAvailable_ = false;
};

}  // namespace tessara
