#pragma once

#include <QObject>
#include <functional>

class QSocketNotifier;

namespace tessara {

/// Turns the first SIGTERM or SIGINT into a call from Qt's event loop, so that the program can end
/// in good order. From then on both do again what they do to any program: a second one ends it at
/// once, however long the good order takes.
///
/// One at a time, on the thread of the `QCoreApplication`. Children are born with the signals as
/// they were.
class StopSignals : public QObject {
  public:
    explicit StopSignals(std::function<void()> onStop);
    ~StopSignals() override;

  private:
    const std::function<void()> onStop_;
    QSocketNotifier* const notifier_;
};

}  // namespace tessara
