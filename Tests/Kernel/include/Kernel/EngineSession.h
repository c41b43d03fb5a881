#pragma once

#include <functional>
#include <memory>

#include "TessaraCore/Config.h"

namespace tessara {
class TessaraEngine;
}

namespace tessara::testing {

/// The engine on the kernel's devices, as a program runs it, from its start to its stop in good
/// order. It connects to the mouse by itself. What has nothing to do with devices, such as the
/// application in front, is the simulated desktop's.
class EngineSession {
  public:
    explicit EngineSession(Config config);
    ~EngineSession();

    EngineSession(const EngineSession&) = delete;
    EngineSession& operator=(const EngineSession&) = delete;

    /// Runs `block` on the engine's executor and returns when it has run.
    void run(const std::function<void(TessaraEngine&)>& block);

  private:
    struct Parts;
    const std::unique_ptr<Parts> parts_;
};

}  // namespace tessara::testing
