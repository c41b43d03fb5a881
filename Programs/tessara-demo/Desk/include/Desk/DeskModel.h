#pragma once

#include <QObject>
#include <QPoint>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <memory>
#include <set>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desk/DeskLog.h"

namespace tessara {

class DispatchTimer;
class SimulatedApplication;
class SimulatedAppHost;

/// The simulated computer under the hands of a person: a mouse to be worked, applications to bring
/// to the front, and the things that can be taken from the program and given back. What the
/// application in front receives is logged.
///
/// Main thread. A property that stays equal tells nobody.
class DeskModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(QStringList applications READ applications CONSTANT)
    Q_PROPERTY(int frontmost READ frontmost WRITE bringToFront NOTIFY frontmostChanged)
    Q_PROPERTY(bool isPluggedIn READ isPluggedIn WRITE setPluggedIn NOTIFY isPluggedInChanged)
    Q_PROPERTY(bool hasAccessibility READ hasAccessibility WRITE setAccessibility NOTIFY
                   permissionsChanged)
    Q_PROPERTY(bool hasInputMonitoring READ hasInputMonitoring WRITE setInputMonitoring NOTIFY
                   permissionsChanged)
    Q_PROPERTY(tessara::DeskLog* log READ log CONSTANT)
    Q_PROPERTY(QString windowTitle READ windowTitle CONSTANT)
    Q_PROPERTY(QString mouseTitle READ mouseTitle CONSTANT)
    Q_PROPERTY(QString mouseHelp READ mouseHelp CONSTANT)
    Q_PROPERTY(QString plugTitle READ plugTitle CONSTANT)
    Q_PROPERTY(QString inputMonitoringTitle READ inputMonitoringTitle CONSTANT)
    Q_PROPERTY(QString accessibilityTitle READ accessibilityTitle CONSTANT)
    Q_PROPERTY(QString interruptTitle READ interruptTitle CONSTANT)
    Q_PROPERTY(QString frontmostTitle READ frontmostTitle CONSTANT)
    Q_PROPERTY(QString logTitle READ logTitle CONSTANT)
    Q_PROPERTY(QString clearTitle READ clearTitle CONSTANT)

  public:
    /// Installs the desk's applications in the host, plugs the mouse in, and watches what the
    /// applications receive. The host outlives this.
    explicit DeskModel(SimulatedAppHost& host);
    ~DeskModel() override;

    [[nodiscard]] QStringList applications() const;
    /// The index of the application in front. Bringing forward one that is not there is ignored.
    [[nodiscard]] int frontmost() const { return frontmost_; }
    void bringToFront(int index);

    [[nodiscard]] bool isPluggedIn() const;
    void setPluggedIn(bool isPluggedIn);
    [[nodiscard]] bool hasAccessibility() const;
    void setAccessibility(bool isGranted);
    [[nodiscard]] bool hasInputMonitoring() const;
    void setInputMonitoring(bool isGranted);

    [[nodiscard]] DeskLog* log() { return &log_; }

    // The words of the window.

    [[nodiscard]] QString windowTitle() const { return tr("The Desk"); }
    [[nodiscard]] QString mouseTitle() const { return tr("Mouse"); }
    [[nodiscard]] QString mouseHelp() const;
    [[nodiscard]] QString plugTitle() const { return tr("Mouse plugged in"); }
    [[nodiscard]] QString inputMonitoringTitle() const { return tr("Input Monitoring granted"); }
    [[nodiscard]] QString accessibilityTitle() const { return tr("Accessibility granted"); }
    [[nodiscard]] QString interruptTitle() const { return tr("Interrupt the Event Tap"); }
    [[nodiscard]] QString frontmostTitle() const { return tr("In front"); }
    [[nodiscard]] QString logTitle() const { return tr("What it received"); }
    [[nodiscard]] QString clearTitle() const { return tr("Clear"); }
    /// What a screen reader calls a button of the mouse.
    Q_INVOKABLE QString buttonTitle(int button) const { return tr("Button %1").arg(button); }

    // The mouse in the hand. Nothing happens while it is unplugged. Lines are up or left above
    // zero, counts right and down.

    Q_INVOKABLE void spin(int lines);
    Q_INVOKABLE void spinSideways(int lines);
    Q_INVOKABLE void move(int xCounts, int yCounts);
    Q_INVOKABLE void press(int button);
    Q_INVOKABLE void release(int button);
    Q_INVOKABLE void click(int button);
    /// Lets go of every button.
    Q_INVOKABLE void releaseAll();

    /// The same by way of the pointer: from one place to another, and by the user's own wheel, in
    /// eighths of a degree.
    Q_INVOKABLE void drag(QPointF from, QPointF to);
    Q_INVOKABLE void turn(QPoint angleDelta);

    /// The same by way of the keyboard; false for a key that means nothing here. Up and down turn
    /// the wheel, left and right tilt it, W, A, S and D move, a digit holds a button.
    Q_INVOKABLE bool pressKey(int key, bool isRepeat);
    Q_INVOKABLE bool releaseKey(int key, bool isRepeat);

    /// The system takes the program out of the input stream, as one that answers too late.
    Q_INVOKABLE void interruptTap();

  Q_SIGNALS:
    void frontmostChanged();
    void isPluggedInChanged();
    void permissionsChanged();

  private:
    void readReceived();

    SimulatedAppHost& host_;
    std::vector<SimulatedApplication*> applications_;
    int frontmost_ = -1;
    std::set<int> held_;  // buttons of the mouse
    QPoint turned_;       // what is left of the user's wheel, short of a whole line
    DeskLog log_;
    std::unique_ptr<DispatchTimer> reading_;
};

}  // namespace tessara
