#include "DemoReport.h"

#include <cstdint>
#include <cstdlib>
#include <optional>

#include <fmt/format.h>

#include "Platform/MouseEvents.h"
#include "Platform/ScrollDeltas.h"
#include "TessaraEngine/EngineStatus.h"

namespace tessara {
namespace {

/// Sums up the scroll events and lists the rest.
class Digest {
  public:
    void add(const CGEvent& event) {
        if (const auto change = mouseButtonChange(event)) {
            list(fmt::format("button {} {}", change->button, change->isDown ? "down" : "up"));
            return;
        }
        switch (event.type) {
            case CGEventType::scrollWheel:
                addScroll(event);
                return;
            case CGEventType::keyDown:
            case CGEventType::keyUp:
                list(fmt::format("key {} {}",
                                 event.integerValue(CGEventField::keyboardEventKeycode),
                                 event.type == CGEventType::keyDown ? "down" : "up"));
                return;
            case CGEventType::flagsChanged:
                list(fmt::format("modifiers {:#x}", event.flags));
                return;
            default:
                ++motions_;
                dx_ += event.integerValue(CGEventField::mouseEventDeltaX);
                dy_ += event.integerValue(CGEventField::mouseEventDeltaY);
        }
    }

    [[nodiscard]] std::string text() const {
        std::string text;
        if (steps_ > 0) {
            text += fmt::format("    {} glide(s) of {} steps and {} pixels in all, {} ended\n",
                                gestures_, steps_, pixels_, ended_);
        }
        if (lines_ != 0) text += fmt::format("    {} wheel line(s), untouched\n", lines_);
        if (motions_ > 0) {
            text +=
                fmt::format("    {} motion(s), {} to the right and {} down\n", motions_, dx_, dy_);
        }
        if (!listed_.empty()) text += fmt::format("    {}\n", listed_);
        return text.empty() ? "    nothing\n" : text;
    }

  private:
    void addScroll(const CGEvent& event) {
        if (event.integerValue(CGEventField::scrollWheelEventIsContinuous) == 0) {
            lines_ += std::abs(event.integerValue(CGEventField::scrollWheelEventDeltaAxis1)) +
                      std::abs(event.integerValue(CGEventField::scrollWheelEventDeltaAxis2));
            return;
        }
        const std::int64_t phase = event.integerValue(CGEventField::scrollWheelEventScrollPhase);
        gestures_ += phase == scrollPhaseBegan ? 1 : 0;
        ended_ += phase == scrollPhaseEnded ? 1 : 0;
        steps_ += phase == scrollPhaseEnded ? 0 : 1;
        pixels_ += event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis1) +
                   event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis2);
    }

    void list(const std::string& item) {
        if (!listed_.empty()) listed_ += ", ";
        listed_ += item;
    }

    std::int64_t gestures_ = 0;
    std::int64_t ended_ = 0;
    std::int64_t steps_ = 0;
    std::int64_t pixels_ = 0;
    std::int64_t lines_ = 0;
    std::int64_t motions_ = 0;
    std::int64_t dx_ = 0;
    std::int64_t dy_ = 0;
    std::string listed_;
};

}  // namespace

std::string receivedText(std::string_view application, std::span<const CGEvent> events) {
    Digest digest;
    for (const CGEvent& event : events)
        digest.add(event);
    return fmt::format("  {} received\n{}", application, digest.text());
}

std::string statusText(const EngineStatus& status) {
    constexpr double nanosPerMicro = 1000;
    return fmt::format(
        "  running {}, tap enabled {}, profile \"{}\", mouse attached {}, last error {}\n"
        "  tap: {} events, {:.1f} us on average, {:.1f} us at most, {} over the budget of 2 ms, "
        "{} times put back in place\n"
        "  devices: {} events of the mouse, {} of others, {} of nobody known\n"
        "  scroll: {} clicks turned into glides, {} steps, {} pixels\n"
        "  buttons: {} events, {} of them taken; motion: {} samples, {} counts in, {} pixels out\n",
        status.isRunning, status.isTapEnabled, status.activeProfileName,
        status.targetDeviceAttached, status.lastError.value_or("none"), status.tap.events,
        status.tap.meanCallbackMicros(), status.tap.maxCallbackNanos / nanosPerMicro,
        status.tap.budgetOverruns, status.tap.reEnables, status.scope.target, status.scope.foreign,
        status.scope.total() - status.scope.target - status.scope.foreign,
        status.scroll.inputsTransformed, status.scroll.stepsPosted, status.scroll.pixelsPosted,
        status.buttons.eventsSeen, status.buttons.suppressed, status.pointer.samplesSeen,
        status.pointer.pixelsIn, status.pointer.pixelsOut);
}

}  // namespace tessara
