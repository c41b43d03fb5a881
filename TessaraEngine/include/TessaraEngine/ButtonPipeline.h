#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "TessaraCore/ButtonRouter.h"

namespace tessara {

class MacroExecutor;

/// What is to become of the event of a mouse button.
enum class ButtonDisposition : std::uint8_t {
    /// It goes on as it came.
    passThrough,
    /// It is swallowed; what the button is bound to takes its place, or nothing does.
    suppress
};

/// Says at once whether a button's event is swallowed, and has what the button is bound to carried
/// out by the macro executor. The bookkeeping is the router's; nothing is posted here.
///
/// A reset may come between any two of its steps, on another thread: what was decided before it is
/// not carried out after it, so that nothing is pressed that nobody would release.
///
/// All operations may be called from any thread, and none waits.
class ButtonPipeline {
  public:
    /// What happened since the start or the last `resetMetrics`.
    struct Metrics {
        /// Presses and releases taken.
        std::int64_t eventsSeen = 0;
        /// Those of them that go on as they came.
        std::int64_t passedThrough = 0;
        /// Those of them that are swallowed.
        std::int64_t suppressed = 0;
        /// Intents that the router gave, those that are the event itself and those of its resets
        /// included.
        std::int64_t intentsProduced = 0;
        /// Resets of the router.
        std::int64_t resets = 0;

        bool operator==(const Metrics&) const = default;
    };

    /// Begins with the router as it is. `executor` carries out what events ask for.
    ButtonPipeline(ButtonRouter router, std::shared_ptr<MacroExecutor> executor);

    ButtonPipeline(const ButtonPipeline&) = delete;
    ButtonPipeline& operator=(const ButtonPipeline&) = delete;

    /// Takes one press or release. On the tap thread: it decides and enqueues. The event passes
    /// when all that is asked for is the event itself, as with a button that is not bound. A
    /// release whose work was done at the press, and the repeated press of a button already down,
    /// are swallowed. The time in the event is in milliseconds. It allocates a short list.
    [[nodiscard]] ButtonDisposition handle(const ButtonEvent& event);

    /// Lets go of every button, key, repeat and shift of resolution, here and in the executor, and
    /// abandons what is being played. The releases are posted on the executor's queue, and not yet
    /// when this returns. A button that is really still down is released by an event that passes.
    void reset();

    /// What the buttons do, in the order in which they were given.
    [[nodiscard]] std::vector<ButtonBinding> bindings() const;
    /// Takes effect at the next press. What is held ends as it began.
    void setBindings(std::vector<ButtonBinding> bindings);

    /// The resolution while no shift is active, in DPI.
    [[nodiscard]] std::int64_t baseDPI() const;
    /// Takes effect at the next change of a shift; nothing is asked of the mouse.
    void setBaseDPI(std::int64_t baseDPI);

    /// The buttons that are down as far as their events tell, bound or not.
    [[nodiscard]] std::set<std::int64_t> heldButtons() const;
    /// The resolution in force, in DPI: that of the newest shift, or the base.
    [[nodiscard]] std::int64_t currentDPI() const;
    /// The action that a press of `button` would choose with these modifiers held. Nothing is
    /// changed by asking.
    [[nodiscard]] Action action(std::int64_t button, ModifierFlags modifiers) const;

    /// All counters of one moment.
    [[nodiscard]] Metrics snapshotMetrics() const;
    /// Begins to count from 0.
    void resetMetrics();

  private:
    const std::shared_ptr<MacroExecutor> executor_;
    mutable Mutex mutex_;
    ButtonRouter router_ TESSARA_GUARDED_BY(mutex_);
    Metrics metrics_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
