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
    passThrough,  ///< it goes on as it came
    suppress      ///< it is swallowed
};

/// Says at once whether a button's event is swallowed, and has what the button is bound to carried
/// out by the macro executor. The bookkeeping is the router's; nothing is posted here.
///
/// All operations may be called from any thread, and none waits.
class ButtonPipeline {
  public:
    /// What happened since the start or the last `resetMetrics`.
    struct Metrics {
        std::int64_t eventsSeen = 0;
        std::int64_t passedThrough = 0;
        std::int64_t suppressed = 0;
        std::int64_t intentsProduced = 0;  ///< intents of the router, those of its resets too
        std::int64_t resets = 0;

        bool operator==(const Metrics&) const = default;
    };

    ButtonPipeline(ButtonRouter router, std::shared_ptr<MacroExecutor> executor);

    ButtonPipeline(const ButtonPipeline&) = delete;
    ButtonPipeline& operator=(const ButtonPipeline&) = delete;

    /// Takes one press or release. On the tap thread: it decides and enqueues. The event passes
    /// when all that is asked for is the event itself, as with a button that is not bound. A
    /// release whose work was done at the press, and the repeated press of a button already down,
    /// are swallowed.
    [[nodiscard]] ButtonDisposition handle(const ButtonEvent& event);

    /// Lets go of every button, key, repeat and shift of resolution, here and in the executor.
    void reset();

    [[nodiscard]] std::vector<ButtonBinding> bindings() const;
    /// Takes effect at the next press. What is held ends as it began.
    void setBindings(std::vector<ButtonBinding> bindings);

    /// The resolution while no shift is active.
    [[nodiscard]] std::int64_t baseDPI() const;
    void setBaseDPI(std::int64_t baseDPI);

    [[nodiscard]] std::set<std::int64_t> heldButtons() const;
    /// The resolution in force: that of the newest shift, or the base.
    [[nodiscard]] std::int64_t currentDPI() const;
    /// The action that a press of `button` would choose.
    [[nodiscard]] Action action(std::int64_t button, ModifierFlags modifiers) const;

    [[nodiscard]] Metrics snapshotMetrics() const;
    void resetMetrics();

  private:
    const std::shared_ptr<MacroExecutor> executor_;
    mutable Mutex mutex_;
    ButtonRouter router_ TESSARA_GUARDED_BY(mutex_);
    Metrics metrics_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
