#pragma once

#include <QAccessible>
#include <QPoint>
#include <QQuickWindow>
#include <QString>
#include <vector>

namespace tessara {

/// Works a window the way a user without a mouse does: finds controls by what a screen reader calls
/// them, does what it can do to them, and presses keys. A control that cannot be found fails the
/// test.
class WindowDriver {
  public:
    /// Shows the window.
    explicit WindowDriver(QQuickWindow& window);

    /// Whether something with this name can be seen; of any role when none is given.
    [[nodiscard]] bool shows(const QString& name,
                             QAccessible::Role role = QAccessible::NoRole) const;

    /// Does the action of that name of `QAccessibleActionInterface`, as a screen reader does.
    void act(const QString& name, QAccessible::Role role, const QString& action);
    void press(const QString& name) {
        act(name, QAccessible::Button, QAccessibleActionInterface::pressAction());
    }
    /// Sets the value of a slider, as a screen reader does.
    void setValue(const QString& name, double value);

    [[nodiscard]] double value(const QString& name, QAccessible::Role role) const;
    [[nodiscard]] bool isChecked(const QString& name) const;

    /// Gives the control the keyboard's focus and presses a key there.
    void key(const QString& name, QAccessible::Role role, Qt::Key key);
    /// Presses a key where the focus is.
    void key(Qt::Key key);

    /// Presses the pointer's left button on the middle of the control, goes that way, and lets go.
    void drag(const QString& name, QAccessible::Role role, QPoint way);
    /// Turns the pointer's wheel over the control, up above zero.
    void turnWheel(const QString& name, QAccessible::Role role, int clicks);

    /// What has the focus: its role and its name.
    struct Control {
        QAccessible::Role role;
        QString name;
        bool operator==(const Control&) const = default;
    };
    [[nodiscard]] Control focused() const;

    /// Every control that can be seen and worked.
    [[nodiscard]] std::vector<Control> controls() const;
    /// All that a screen reader would read out of what can be seen.
    [[nodiscard]] QStringList texts() const;

  private:
    [[nodiscard]] QAccessibleInterface* find(const QString& name, QAccessible::Role role) const;
    /// Null, and the test has failed, when there is none.
    [[nodiscard]] QQuickItem* itemOf(const QString& name, QAccessible::Role role) const;
    template <typename Visit>
    void visit(QAccessibleInterface* node, const Visit& visitor) const;

    QQuickWindow& window_;
};

}  // namespace tessara
