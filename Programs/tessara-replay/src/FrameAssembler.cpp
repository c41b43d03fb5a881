#include "TessaraReplay/FrameAssembler.h"

#include <array>
#include <cstddef>
#include <optional>

#include "TessaraReplay/Recording.h"

namespace tessara {
namespace {

// The kernel's names for what a device reports (linux/input-event-codes.h).
namespace evdev {
constexpr std::uint16_t synchronization = 0x00;
constexpr std::uint16_t key = 0x01;
constexpr std::uint16_t relative = 0x02;

constexpr std::uint16_t report = 0x00;

constexpr std::uint16_t x = 0x00;
constexpr std::uint16_t y = 0x01;
constexpr std::uint16_t horizontalWheel = 0x06;
constexpr std::uint16_t wheel = 0x08;

constexpr std::uint16_t firstButton = 0x110;
constexpr std::uint16_t lastButton = 0x11f;

constexpr std::int32_t released = 0;
constexpr std::int32_t pressed = 1;
}  // namespace evdev

/// A modifier key: the kernel's code, the virtual key code, and what it holds.
struct RecordedModifierKey {
    std::uint16_t code;
    std::uint16_t virtualCode;
    ModifierFlags modifier;
};

constexpr auto recordedModifierKeys = std::to_array<RecordedModifierKey>({
    {.code = 0x2a, .virtualCode = 56, .modifier = ModifierFlags::shift},
    {.code = 0x36, .virtualCode = 60, .modifier = ModifierFlags::shift},
    {.code = 0x1d, .virtualCode = 59, .modifier = ModifierFlags::control},
    {.code = 0x61, .virtualCode = 62, .modifier = ModifierFlags::control},
    {.code = 0x38, .virtualCode = 58, .modifier = ModifierFlags::option},
    {.code = 0x64, .virtualCode = 61, .modifier = ModifierFlags::option},
    {.code = 0x7d, .virtualCode = 55, .modifier = ModifierFlags::command},
    {.code = 0x7e, .virtualCode = 54, .modifier = ModifierFlags::command},
});

/// Which modifier keys are down. A modifier is held as long as either of its two keys is.
class ModifierState {
  public:
    /// The key that changed; nothing when it is no modifier key, or was so before.
    std::optional<std::uint16_t> keyChanged(std::uint16_t code, bool isDown) {
        for (std::size_t i = 0; i < recordedModifierKeys.size(); ++i) {
            if (recordedModifierKeys[i].code != code || down_[i] == isDown) continue;
            down_[i] = isDown;
            return recordedModifierKeys[i].virtualCode;
        }
        return std::nullopt;
    }

    [[nodiscard]] ModifierFlags held() const {
        ModifierFlags held;
        for (std::size_t i = 0; i < recordedModifierKeys.size(); ++i) {
            if (down_[i]) held.insert(recordedModifierKeys[i].modifier);
        }
        return held;
    }

  private:
    std::array<bool, recordedModifierKeys.size()> down_{};
};

class FrameAssembler {
  public:
    explicit FrameAssembler(std::chrono::microseconds origin) : origin_(origin) {}

    void add(const RecordedEvent& event) {
        end_ = replayStart + (event.time - origin_);
        if (event.type == evdev::relative) {
            addRelative(event);
        } else if (event.type == evdev::key) {
            addKey(event);
        } else if (event.type == evdev::synchronization && event.code == evdev::report) {
            motionOfFrame_.reset();
        }
    }

    ReplayInputs finish() && { return {.inputs = std::move(inputs_), .end = end_}; }

  private:
    void addRelative(const RecordedEvent& event) {
        switch (event.code) {
            case evdev::x:
                motion().dx += event.value;
                break;
            case evdev::y:
                motion().dy += event.value;
                break;
            case evdev::wheel:
                append(WheelTurn{.axis = ScrollAxis::vertical, .lines = event.value});
                break;
            case evdev::horizontalWheel:
                append(WheelTurn{.axis = ScrollAxis::horizontal, .lines = event.value});
                break;
            default:
                break;
        }
    }

    void addKey(const RecordedEvent& event) {
        if (event.value != evdev::pressed && event.value != evdev::released) return;
        const bool isDown = event.value == evdev::pressed;
        if (event.code >= evdev::firstButton && event.code <= evdev::lastButton) {
            append(ButtonChange{.number = event.code - evdev::firstButton, .isDown = isDown});
        } else if (const auto code = modifiers_.keyChanged(event.code, isDown)) {
            append(ModifierKeyChange{.code = *code, .isDown = isDown});
        }
    }

    MouseMotion& motion() {
        if (!motionOfFrame_) {
            motionOfFrame_ = inputs_.size();
            append(MouseMotion{});
        }
        return std::get<MouseMotion>(inputs_[*motionOfFrame_].what);
    }

    template <typename What>
    void append(What what) {
        inputs_.push_back({.at = end_, .modifiers = modifiers_.held(), .what = what});
    }

    std::chrono::microseconds origin_;  // constant after construction
    std::vector<ReplayInput> inputs_;
    TimePoint end_ = replayStart;  // the time of the event at hand
    ModifierState modifiers_;
    std::optional<std::size_t> motionOfFrame_;  // where in `inputs_` the frame's motion stands
};

}  // namespace

ReplayInputs assembleInputs(const Recording& recording) {
    FrameAssembler assembler(recording.events.front().time);
    for (const RecordedEvent& event : recording.events)
        assembler.add(event);
    return std::move(assembler).finish();
}

}  // namespace tessara
