#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QString>
#include <optional>
#include <vector>

namespace tessara {

/// What a screen reader knows of the programs of a session, by the AT-SPI protocol: things with
/// names, roles and states, some of which can be acted upon.
class AccessibleTree {
  public:
    /// A thing in some program. It is named by address: it may be gone.
    struct Thing {
        QString service;
        QDBusObjectPath path;
    };

    /// Connects to the session's accessibility bus, which is started if need be.
    AccessibleTree();

    /// The first thing of that name that shows, in whatever program; nothing when there is none.
    [[nodiscard]] std::optional<Thing> find(const QString& name) const;
    [[nodiscard]] bool shows(const QString& name) const { return find(name).has_value(); }
    [[nodiscard]] bool isChecked(const Thing& thing) const;
    /// Does the thing's first action: presses it, or turns it over.
    [[nodiscard]] bool act(const Thing& thing) const;

    /// The roles of all that shows and can have the keyboard's focus, but has no name.
    [[nodiscard]] QStringList namelessControls() const;

  private:
    [[nodiscard]] std::vector<Thing> childrenOf(const Thing& thing) const;
    [[nodiscard]] QString nameOf(const Thing& thing) const;
    [[nodiscard]] bool hasState(const Thing& thing, unsigned state) const;
    [[nodiscard]] QVariantList call(const Thing& thing, const char* interface, const char* method,
                                    const QVariantList& arguments = {}) const;
    template <typename Visit>
    bool visit(const Thing& thing, Visit visitor) const;

    QDBusConnection bus_;
};

}  // namespace tessara

Q_DECLARE_METATYPE(tessara::AccessibleTree::Thing)
