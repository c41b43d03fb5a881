#pragma once

#include <QObject>
#include <functional>

class QSocketNotifier;

namespace tessara {

/// Turns the first SIGTERM, SIGINT or SIGHUP into a call from Qt's event loop, so that the program
/// can end in good order. From then on they do again what they do to any program: a second one ends
/// it at once, however long the good order takes. A program that was started with SIGHUP ignored
/// outlives its terminal.
///
/// One at a time, on the thread of the `QCoreApplication`, and made when there is something to be
/// ended in good order; until then, as afterwards, the signals end the program at once. So does
/// SIGKILL, which nobody can hear of: the kernel gives the mouse back then. Children are born with
/// the signals as they were.
class StopSignals : public QObject {
  public:
    /// `onStop` is called once at most. Throws `std::system_error` where the system has no pipe
    /// left.
    explicit StopSignals(std::function<void()> onStop);
    ~StopSignals() override;

  private:
    const std::function<void()> onStop_;
    QSocketNotifier* const notifier_;
};

}  // namespace tessara
