#include "WindowDriver.h"

#include <QCoreApplication>
#include <QQuickItem>
#include <QTest>
#include <QWheelEvent>
#include <algorithm>
#include <array>
#include <cmath>

#include <gtest/gtest.h>

namespace tessara {
namespace {

constexpr auto workable = std::to_array(
    {QAccessible::Button, QAccessible::CheckBox, QAccessible::ComboBox, QAccessible::List,
     QAccessible::PageTab, QAccessible::Slider, QAccessible::SpinBox});

}  // namespace

WindowDriver::WindowDriver(QQuickWindow& window) : window_(window) {
    QAccessible::setActive(true);
    window.show();
    window.requestActivate();
    QCoreApplication::processEvents();
}

template <typename Visit>
void WindowDriver::visit(QAccessibleInterface* node, const Visit& visitor) const {
    for (int i = 0; node && i < node->childCount(); ++i) {
        QAccessibleInterface* child = node->child(i);
        if (!child || child->state().invisible) continue;
        visitor(child);
        visit(child, visitor);
    }
}

QAccessibleInterface* WindowDriver::find(const QString& name, QAccessible::Role role) const {
    QAccessibleInterface* found = nullptr;
    visit(QAccessible::queryAccessibleInterface(&window_), [&](QAccessibleInterface* node) {
        if (!found && node->text(QAccessible::Name) == name &&
            (role == QAccessible::NoRole || node->role() == role)) {
            found = node;
        }
    });
    return found;
}

bool WindowDriver::shows(const QString& name, QAccessible::Role role) const {
    return find(name, role) != nullptr;
}

void WindowDriver::act(const QString& name, QAccessible::Role role, const QString& action) {
    QAccessibleInterface* node = find(name, role);
    ASSERT_TRUE(node) << "there is no " << name.toStdString();
    QAccessibleActionInterface* actions = node->actionInterface();
    ASSERT_TRUE(actions && actions->actionNames().contains(action)) << name.toStdString();
    actions->doAction(action);
    QCoreApplication::processEvents();
}

void WindowDriver::setValue(const QString& name, double value) {
    QAccessibleInterface* node = find(name, QAccessible::Slider);
    ASSERT_TRUE(node && node->valueInterface()) << "there is no slider " << name.toStdString();
    node->valueInterface()->setCurrentValue(value);
    QCoreApplication::processEvents();
}

double WindowDriver::value(const QString& name, QAccessible::Role role) const {
    QAccessibleInterface* node = find(name, role);
    return node && node->valueInterface() ? node->valueInterface()->currentValue().toDouble() : NAN;
}

bool WindowDriver::isChecked(const QString& name) const {
    const QAccessibleInterface* node = find(name, QAccessible::CheckBox);
    EXPECT_TRUE(node) << "there is no " << name.toStdString();
    return node && node->state().checked;
}

QQuickItem* WindowDriver::itemOf(const QString& name, QAccessible::Role role) const {
    QAccessibleInterface* node = find(name, role);
    auto* item = node ? qobject_cast<QQuickItem*>(node->object()) : nullptr;
    EXPECT_TRUE(item) << "there is no " << name.toStdString();
    return item;
}

void WindowDriver::key(const QString& name, QAccessible::Role role, Qt::Key key) {
    QQuickItem* item = itemOf(name, role);
    if (!item) return;
    item->forceActiveFocus(Qt::TabFocusReason);
    this->key(key);
}

void WindowDriver::drag(const QString& name, QAccessible::Role role, QPoint way) {
    QQuickItem* item = itemOf(name, role);
    if (!item) return;
    const QPoint middle = item->mapToScene(item->boundingRect().center()).toPoint();
    QTest::mousePress(&window_, Qt::LeftButton, {}, middle);
    if (!way.isNull()) QTest::mouseMove(&window_, middle + way);
    QTest::mouseRelease(&window_, Qt::LeftButton, {}, middle + way);
    QCoreApplication::processEvents();
}

void WindowDriver::turnWheel(const QString& name, QAccessible::Role role, int clicks) {
    QQuickItem* item = itemOf(name, role);
    if (!item) return;
    const QPointF middle = item->mapToScene(item->boundingRect().center());
    QWheelEvent event(middle, window_.mapToGlobal(middle), {},
                      {0, clicks * QWheelEvent::DefaultDeltasPerStep}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window_, &event);
    QCoreApplication::processEvents();
}

void WindowDriver::key(Qt::Key key) {
    QTest::keyClick(&window_, key);
    QCoreApplication::processEvents();
}

WindowDriver::Control WindowDriver::focused() const {
    QAccessibleInterface* node = QAccessible::queryAccessibleInterface(window_.activeFocusItem());
    if (!node) return {.role = QAccessible::NoRole, .name = {}};
    return {.role = node->role(), .name = node->text(QAccessible::Name)};
}

std::vector<WindowDriver::Control> WindowDriver::controls() const {
    std::vector<Control> controls;
    visit(QAccessible::queryAccessibleInterface(&window_), [&](QAccessibleInterface* node) {
        const bool isControl = std::ranges::find(workable, node->role()) != workable.end();
        if (isControl && !node->state().disabled)
            controls.push_back({.role = node->role(), .name = node->text(QAccessible::Name)});
    });
    return controls;
}

QStringList WindowDriver::texts() const {
    QStringList texts{window_.title()};
    visit(QAccessible::queryAccessibleInterface(&window_), [&](QAccessibleInterface* node) {
        texts << node->text(QAccessible::Name) << node->text(QAccessible::Description)
              << node->text(QAccessible::Value);
    });
    texts.removeAll(QString());
    return texts;
}

}  // namespace tessara
