#pragma once

#include <cstdint>
#include <string>

namespace tessara {

/// What a button can set off beyond input: the mouse's resolution, applications and shortcuts.
///
/// Nothing is reported back; what cannot be done is left undone in silence. The macro executor
/// calls the operations on its queue, without a lock held. Each must return at once, since keys and
/// buttons wait behind it.
class MacroSideEffects {
  public:
    virtual ~MacroSideEffects() = default;

    MacroSideEffects(const MacroSideEffects&) = delete;
    MacroSideEffects& operator=(const MacroSideEffects&) = delete;

    /// Asks for a resolution of the mouse, in DPI.
    virtual void requestDPI(std::int64_t dpi) = 0;

    /// Starts the application of that identifier, or brings it to the front. One that is not
    /// installed is no fault.
    virtual void launchApp(const std::string& bundleID) = 0;

    /// Runs the user's shortcut of that name, and does not wait for its end.
    virtual void runShortcut(const std::string& name) = 0;

  protected:
    MacroSideEffects() = default;
};

}  // namespace tessara
