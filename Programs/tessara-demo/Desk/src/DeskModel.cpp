#include "Desk/DeskModel.h"

#include <QWheelEvent>
#include <chrono>
#include <utility>

#include "AppWiring/SimulatedAppHost.h"

namespace tessara {
namespace {

constexpr std::chrono::milliseconds readingInterval{50};
constexpr int countsOfAKey = 12;

bool isDigit(int key) {
    return key >= Qt::Key_0 && key <= Qt::Key_9;
}

QString nameOf(const SimulatedApplication& application) {
    return QString::fromStdString(application.description().displayName);
}

}  // namespace

DeskModel::DeskModel(SimulatedAppHost& host) : host_(host) {
    SimulatedWorkspace& workspace = host_.desktop.workspace();
    applications_ = {&workspace.install("org.example.editor", "Editor"),
                     &workspace.install("com.figma.Desktop", "Canvas"),
                     &workspace.install("org.example.browser", "Browser")};
    bringToFront(0);
    host_.plugInMouse();
    const DispatchQueue& queue = *host_.mainQueue;
    reading_ = host_.mainQueue->startTimer(queue.clock().now() + readingInterval, readingInterval,
                                           readingInterval, [this] { readReceived(); });
}

DeskModel::~DeskModel() = default;

QStringList DeskModel::applications() const {
    QStringList names;
    for (const SimulatedApplication* application : applications_)
        names.append(nameOf(*application));
    return names;
}

void DeskModel::bringToFront(int index) {
    if (index == frontmost_ || index < 0 || index >= static_cast<int>(applications_.size())) return;
    frontmost_ = index;
    host_.desktop.workspace().bringToFront(*applications_[static_cast<std::size_t>(index)]);
    Q_EMIT frontmostChanged();
}

bool DeskModel::isPluggedIn() const {
    return host_.mouse != nullptr;
}

void DeskModel::setPluggedIn(bool isPluggedIn) {
    if (isPluggedIn == this->isPluggedIn()) return;
    if (isPluggedIn) {
        host_.plugInMouse();
    } else {
        held_.clear();
        host_.unplugMouse();
    }
    Q_EMIT isPluggedInChanged();
}

bool DeskModel::hasAccessibility() const {
    return host_.desktop.permissions().isProcessTrusted();
}

void DeskModel::setAccessibility(bool isGranted) {
    if (isGranted == hasAccessibility()) return;
    SimulatedPermissions& permissions = host_.desktop.permissions();
    isGranted ? permissions.grantAccessibility() : permissions.revokeAccessibility();
    Q_EMIT permissionsChanged();
}

bool DeskModel::hasInputMonitoring() const {
    return host_.desktop.permissions().preflightListenEventAccess();
}

void DeskModel::setInputMonitoring(bool isGranted) {
    if (isGranted == hasInputMonitoring()) return;
    SimulatedPermissions& permissions = host_.desktop.permissions();
    isGranted ? permissions.grantInputMonitoring() : permissions.revokeInputMonitoring();
    Q_EMIT permissionsChanged();
}

void DeskModel::spin(int lines) {
    if (host_.mouse) host_.mouse->spin(lines);
}

void DeskModel::spinSideways(int lines) {
    if (host_.mouse) host_.mouse->spinSideways(lines);
}

void DeskModel::move(int xCounts, int yCounts) {
    if (host_.mouse) host_.mouse->move(xCounts, yCounts);
}

void DeskModel::press(int button) {
    if (host_.mouse && held_.insert(button).second) host_.mouse->press(button);
}

void DeskModel::release(int button) {
    if (held_.erase(button) > 0 && host_.mouse) host_.mouse->release(button);
}

void DeskModel::click(int button) {
    press(button);
    release(button);
}

void DeskModel::releaseAll() {
    for (const int button : std::exchange(held_, {})) {
        if (host_.mouse) host_.mouse->release(button);
    }
}

void DeskModel::drag(QPointF from, QPointF to) {
    const QPoint way = (to - from).toPoint();
    if (!way.isNull()) move(way.x(), way.y());
}

void DeskModel::turn(QPoint angleDelta) {
    turned_ += angleDelta;
    const QPoint lines = turned_ / QWheelEvent::DefaultDeltasPerStep;
    turned_ -= lines * QWheelEvent::DefaultDeltasPerStep;
    if (lines.y() != 0) spin(lines.y());
    if (lines.x() != 0) spinSideways(lines.x());
}

bool DeskModel::pressKey(int key, bool isRepeat) {
    switch (key) {
        case Qt::Key_Up:
            spin(1);
            return true;
        case Qt::Key_Down:
            spin(-1);
            return true;
        case Qt::Key_Left:
            spinSideways(1);
            return true;
        case Qt::Key_Right:
            spinSideways(-1);
            return true;
        case Qt::Key_W:
            move(0, -countsOfAKey);
            return true;
        case Qt::Key_A:
            move(-countsOfAKey, 0);
            return true;
        case Qt::Key_S:
            move(0, countsOfAKey);
            return true;
        case Qt::Key_D:
            move(countsOfAKey, 0);
            return true;
        default:
            break;
    }
    if (!isDigit(key)) return false;
    if (!isRepeat) press(key - Qt::Key_0);
    return true;
}

bool DeskModel::releaseKey(int key, bool isRepeat) {
    if (!isDigit(key)) return false;
    if (!isRepeat) release(key - Qt::Key_0);
    return true;
}

QString DeskModel::mouseHelp() const {
    return tr(
        "Press its buttons, turn your wheel over it, drag its body. With the keyboard: up and "
        "down turn the wheel, left and right tilt it, W, A, S and D move it, a digit holds "
        "that button.");
}

void DeskModel::interruptTap() {
    host_.desktop.disableTapsByTimeout();
}

void DeskModel::readReceived() {
    for (SimulatedApplication* application : applications_) {
        for (const CGEvent& event : application->takeReceived())
            log_.append(nameOf(*application), event);
    }
    host_.desktop.events().takeJournal();  // or it would grow for as long as the Desk is open
}

}  // namespace tessara
