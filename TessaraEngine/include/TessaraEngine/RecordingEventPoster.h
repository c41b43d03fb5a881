#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "TessaraEngine/EventPosting.h"

namespace tessara {

/// A scroll step that was asked for: the arguments of `EventPosting::postScrollStep`.
struct ScrollEmission {
    ScrollAxis axis = ScrollAxis::vertical;
    std::int64_t pixelDelta = 0;
    ScrollPhase phase = ScrollPhase::changed;
    ModifierFlags modifiers;

    bool operator==(const ScrollEmission&) const = default;
};

/// A key that was asked for: the arguments of `EventPosting::postKey`.
struct KeyEmission {
    std::uint16_t code = 0;
    bool isDown = false;
    ModifierFlags modifiers;

    bool operator==(const KeyEmission&) const = default;
};

/// A mouse button that was asked for: the arguments of `EventPosting::postMouseButton`.
struct MouseButtonEmission {
    std::int64_t number = 0;
    bool isDown = false;

    bool operator==(const MouseButtonEmission&) const = default;
};

/// One call of an `EventPosting`.
using Emission = std::variant<ScrollEmission, KeyEmission, MouseButtonEmission>;

/// One line for people: "scroll(vertical 5px began mods=0)", "key(8 down mods=16)" or
/// "mouseButton(3 up)".
[[nodiscard]] std::string description(const Emission& emission);

/// A sink that remembers what it was asked to post and posts nothing. It lets the pipelines run,
/// and be looked at, on any platform.
///
/// Scroll steps are handed on to a further sink when one is given; keys and buttons never are, so
/// that a glide can be watched on a real screen while the macros beside it stay on paper.
class RecordingEventPoster final : public EventPosting {
  public:
    /// `forwardingTo`, if given, gets every scroll step once it has been recorded.
    explicit RecordingEventPoster(std::shared_ptr<EventPosting> forwardingTo = nullptr);

    void postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                        ModifierFlags modifiers) override;
    void postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) override;
    void postMouseButton(std::int64_t number, bool isDown) override;

    /// All that was asked for since the start or the last `reset`, in order. Any thread.
    [[nodiscard]] std::vector<Emission> emissions() const;

    /// Forgets what was recorded. Any thread.
    void reset();

  private:
    void record(const Emission& emission);

    const std::shared_ptr<EventPosting> forwarding_;  // null when there is none
    mutable Mutex mutex_;
    std::vector<Emission> emissions_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara

template <>
struct std::hash<tessara::ScrollEmission> {
    std::size_t operator()(const tessara::ScrollEmission& emission) const noexcept;
};

template <>
struct std::hash<tessara::KeyEmission> {
    std::size_t operator()(const tessara::KeyEmission& emission) const noexcept;
};

template <>
struct std::hash<tessara::MouseButtonEmission> {
    std::size_t operator()(const tessara::MouseButtonEmission& emission) const noexcept;
};
