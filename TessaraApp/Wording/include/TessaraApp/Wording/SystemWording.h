#pragma once

#include <QTranslator>

namespace tessara {

/// The program's words, fitted to the system that it runs on, for as long as this lives. The texts
/// in the sources name the system that they were written for; where that would be untrue, this puts
/// others in their place, and leaves all else alone.
///
/// Made after the application object and ahead of whatever has texts. Main thread.
class SystemWording {
  public:
    SystemWording();
    ~SystemWording();
    SystemWording(const SystemWording&) = delete;
    SystemWording& operator=(const SystemWording&) = delete;

  private:
    QTranslator texts_;
};

}  // namespace tessara
