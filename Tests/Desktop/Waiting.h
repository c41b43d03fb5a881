#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <chrono>

namespace tessara {

/// Runs the event loop until the condition holds; false when it does not within half a minute,
/// which is for machines under load.
template <typename Condition>
[[nodiscard]] bool waitUntil(Condition condition) {
    const QDeadlineTimer deadline(std::chrono::seconds(30));
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}

}  // namespace tessara
