#pragma once

#include <atomic>
#include <functional>

#include "Platform/PermissionService.h"

namespace tessara {

/// What the user of the simulated desktop has granted; everything, at first. Any thread.
///
/// Without Accessibility no tap that may change events can be made, none stays enabled, and what is
/// posted goes nowhere. Without Input Monitoring no listen-only tap can be made.
class SimulatedPermissions final : public PermissionService {
  public:
    /// `onAccessibilityRevoked` is called by the thread that revokes, after the change.
    explicit SimulatedPermissions(std::function<void()> onAccessibilityRevoked = {});

    /// Taps can be made and enabled again; those that were disabled stay so.
    void grantAccessibility();
    /// The system disables the taps that may change events, and their callbacks are told so.
    void revokeAccessibility();
    // Neither touches a tap that is there.
    void grantInputMonitoring();
    void revokeInputMonitoring();

    [[nodiscard]] bool isProcessTrusted() const override;
    [[nodiscard]] bool preflightListenEventAccess() const override;

  private:
    const std::function<void()> onAccessibilityRevoked_;
    std::atomic<bool> hasAccessibility_{true};
    std::atomic<bool> hasInputMonitoring_{true};
};

}  // namespace tessara
