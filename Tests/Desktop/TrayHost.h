#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace tessara {

/// A tray: the watcher of the StatusNotifierItem protocol of freedesktop.org, and a hand that opens
/// the items' menus (`com.canonical.dbusmenu`) and clicks in them.
class TrayHost : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

  public:
    /// One line of a menu as it is shown: "-" for a separator, "[x] " or "[ ] " ahead of what can
    /// be marked.
    struct Line {
        int id = 0;
        QString text;
    };

    /// The watcher comes to the desktop, and goes with this.
    TrayHost();
    ~TrayHost() override;

    /// And something that shows the items.
    void open();

    [[nodiscard]] bool isHostRegistered() const { return isOpen_; }
    [[nodiscard]] int protocolVersion() const { return 0; }
    [[nodiscard]] QStringList items() const { return items_; }

    /// What the item tells under the pointer.
    [[nodiscard]] QString title() const;
    /// The menu of the one item; empty while there is none.
    [[nodiscard]] QStringList menu() const;
    /// Clicks on the line with that text, without regard to its mark.
    [[nodiscard]] bool click(const QString& text) const;

  public Q_SLOTS:
    // The names are the protocol's.
    void RegisterStatusNotifierItem(const QString& service);
    void RegisterStatusNotifierHost(const QString& service);

  Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& service);
    void StatusNotifierHostRegistered();

  private:
    [[nodiscard]] QVariant itemProperty(const QString& name) const;
    [[nodiscard]] std::vector<Line> lines() const;

    QDBusConnection bus_;
    QStringList items_;
    bool isOpen_ = false;
};

}  // namespace tessara
