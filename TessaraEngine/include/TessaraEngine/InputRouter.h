#pragma once

#include <cstdint>
#include <memory>

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/Mutex.h"
#include "TessaraCore/DeviceID.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/MonotonicClock.h"
#include "TessaraEngine/PointerCursorMoving.h"
#include "TessaraEngine/ScrollPipeline.h"
#include "TessaraEngine/TapVerdict.h"

namespace tessara {

class Clock;
class DeviceScope;
class PointerPipeline;

/// Stands between the system's event stream and the pipelines: decides for every event of the tap
/// whether it is the program's own, whether it came from the mouse that the program is for, and
/// which pipeline takes it.
///
/// It knows nothing of scrolling, buttons or acceleration; it reads the event's fields and hands
/// them over. Whatever it cannot place passes unchanged, so that no failure of a lookup ever stands
/// in the way of the user's input.
///
/// In the order of its questions: own output passes, by its tag and before anything else looks at
/// it, so that the program cannot be fed by what it posted itself; what is not the mouse's passes;
/// buttons, motion and the wheel go to their pipelines; every other type passes. Only buttons and
/// the wheel are ever suppressed. Motion travels on, rewritten, so that applications see a location
/// and a delta that agree.
class InputRouter {
  public:
    /// What happened since the start or the last `resetMetrics`.
    struct Metrics {
        /// Events carrying the tag; they are in no other counter.
        std::int64_t selfEmittedSeen = 0;
        /// Events of the mouse that the program is for.
        std::int64_t fromTargetDevice = 0;
        /// Events of devices that are known to be others.
        std::int64_t fromForeignDevice = 0;
        /// Events whose device could not be established.
        std::int64_t unidentified = 0;
        /// Wheel events given to the scroll pipeline.
        std::int64_t scrollHandled = 0;
        /// Button events given to the button pipeline.
        std::int64_t buttonsHandled = 0;
        /// Motion events rewritten. They pass, but do not count as passed through.
        std::int64_t pointerHandled = 0;
        /// Motion of the mouse while its curve is off. It counts as passed through, too.
        std::int64_t pointerSkippedDisabled = 0;
        /// Events passed as they came, own output excepted.
        std::int64_t passedThrough = 0;
        /// Events suppressed, own output excepted.
        std::int64_t suppressed = 0;
        /// The largest distance of a wheel event's time from the clock's, in milliseconds: how far
        /// the times that glides are computed from stray from the clock that paces them.
        double maxClockSkewMillis = 0;

        bool operator==(const Metrics&) const = default;
    };

    /// The references must outlive the router. With a `pointerCursor` motion is read as the sensor
    /// counted it, and the cursor moved by it. Without one motion is read as the system accelerated
    /// it, and moved by rewriting the event alone.
    InputRouter(DeviceScope& scope, ScrollPipeline& scroll, ButtonPipeline& buttons,
                PointerPipeline& pointer, std::unique_ptr<PointerCursorMoving> pointerCursor,
                const Clock& clock);

    InputRouter(const InputRouter&) = delete;
    InputRouter& operator=(const InputRouter&) = delete;

    /// Whether own output is kept from the applications when it comes back. Set it before the tap
    /// starts; false at first.
    void setSwallowsOwnOutput(bool swallows) noexcept { swallowsOwnOutput_ = swallows; }

    /// Decides what becomes of the event. A motion event may be rewritten in place: its deltas, and
    /// its location where the cursor is moved. When the cursor will not move the event passes as it
    /// came and the fractions of pixels are dropped. It has no error.
    ///
    /// `type` is what the tap calls the event. Tap thread; a motion event, a foreign one and own
    /// output cost no allocation.
    [[nodiscard]] TapVerdict route(CGEventType type, CGEvent& event);

    /// Counts a pipeline's answer and turns it into the tap's. Tap thread.
    [[nodiscard]] TapVerdict verdict(ScrollDisposition disposition);
    [[nodiscard]] TapVerdict verdict(ButtonDisposition disposition);

    /// Ends everything under way: held buttons and keys, glides, fractions of motion, in that
    /// order. Main executor or tap thread.
    void resetAll();

    /// All counters of one moment. Any thread.
    [[nodiscard]] Metrics snapshotMetrics() const;
    /// Begins to count from 0. Any thread.
    void resetMetrics();

  private:
    TapVerdict routeButton(const CGEvent& event);
    TapVerdict routeMotion(CGEvent& event, DeviceID deviceID);
    TapVerdict routeWheel(const CGEvent& event, DeviceID deviceID);
    TapVerdict countedVerdict(bool passes);

    /// Adds 1 to each of the counters, in one hold of the lock.
    template <typename... Counter>
    void count(Counter... counters);

    // Constant after construction; each takes care of its own state.
    DeviceScope& scope_;
    ScrollPipeline& scroll_;
    ButtonPipeline& buttons_;
    PointerPipeline& pointer_;
    const std::unique_ptr<PointerCursorMoving> pointerCursor_;
    const MonotonicClock clock_;

    bool swallowsOwnOutput_ = false;  // constant once the tap has started

    mutable Mutex mutex_;
    Metrics metrics_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
