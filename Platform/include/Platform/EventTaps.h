#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/CGEvent.h"

namespace tessara {

class DispatchQueue;

/// One tap of the system's event stream, as `EventTapService::makeTap` gives it. Destroying it
/// takes the tap out of the stream: no callback begins afterwards, an event that was on its way to
/// it goes on unchanged, and a callback that is under way goes on to its end. It may be destroyed
/// on any thread, by its own callback too.
class EventTap {
  public:
    virtual ~EventTap() = default;

    /// Lets events come through the tap, or go past it. A new tap is disabled. Any thread.
    virtual void setEnabled(bool isEnabled) = 0;

    /// False when it was disabled, by `setEnabled` or by the system. Any thread.
    [[nodiscard]] virtual bool isEnabled() const = 0;
};

/// Where in the event stream a tap goes and which events it asks for.
struct EventTapRequest {
    CGEventTapLocation location = CGEventTapLocation::session;
    CGEventTapPlacement placement = CGEventTapPlacement::headInsert;
    CGEventTapOptions options = CGEventTapOptions::defaultTap;
    /// One bit per `CGEventType` number below 64.
    std::uint64_t eventsOfInterest = 0;
};

/// Puts taps into the system's event stream.
///
/// The engine expects: the callback runs on the given queue only, one event at a time; the event it
/// gets may be changed in place; an event for which it answers true goes on as the callback left
/// it, and one for which it answers false goes no further. When the system takes the tap out of the
/// stream by itself, the callback is called with the type `tapDisabledByTimeout` or
/// `tapDisabledByUserInput`, whatever the mask, and what it answers does not matter.
///
/// A platform must not wait inside the callback's thread for anything of the engine's, and must let
/// every event through unchanged that reaches no tap.
class EventTapService {
  public:
    /// True to let the event through. Called on the tap's queue; must not block.
    using Callback = std::move_only_function<bool(CGEventType type, CGEvent& event)>;

    virtual ~EventTapService() = default;

    /// Makes a tap, disabled, that calls back on `queue`. Called on that queue. Nothing when the
    /// system refuses, which is mostly a permission that is missing.
    [[nodiscard]] virtual std::unique_ptr<EventTap> makeTap(const EventTapRequest& request,
                                                            std::shared_ptr<DispatchQueue> queue,
                                                            Callback callback) = 0;

    /// Why a tap is not to be had now, or why one that there is does not get the events that it
    /// should, in words for the user. Nothing when all is well, or when the platform does not know.
    /// May take a while: not for the tap's queue. Any other thread.
    [[nodiscard]] virtual std::optional<std::string> lastRefusal() const { return std::nullopt; }
};

}  // namespace tessara
