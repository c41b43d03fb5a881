#pragma once

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

#include "HIDPlusPlus/CaseOf.h"
#include "HIDPlusPlus/HIDPPConnectionState.h"
#include "HIDPlusPlus/HIDPPDeviceIdentity.h"

namespace tessara {

/// What a `HIDPPDevice` tells its listeners. A mouse that is plugged in is announced by
/// `StateChanged`, `DeviceReady`, `DeviceAttached`, in this order; one that goes by
/// `DeviceRemoved`, `StateChanged`. A state that stays as it is is not told: a mouse that goes
/// while it is being connected to leaves a `DeviceRemoved` alone.
struct HIDPPEvent {
    /// A plug-in, and not a call, led to the connection that now stands.
    struct DeviceAttached {
        HIDPPDeviceIdentity identity;
        bool operator==(const DeviceAttached&) const = default;
    };
    /// The connection stands and the feature table is known.
    struct DeviceReady {
        HIDPPDeviceIdentity identity;
        bool operator==(const DeviceReady&) const = default;
    };
    /// The published state is another one.
    struct StateChanged {
        HIDPPConnectionState state;
        bool operator==(const StateChanged&) const = default;
    };
    /// The mouse spoke of its own accord.
    struct Notification {
        /// On this mouse, for this connection.
        std::uint8_t featureIndex = 0;
        /// The event's number in the high nibble; the low one is 0, the mark of a notification.
        std::uint8_t functionByte = 0;
        /// The bytes behind these two, as many as came.
        std::vector<std::uint8_t> payload;
        bool operator==(const Notification&) const = default;
    };
    /// The interface that was connected to, or being connected to, is gone.
    struct DeviceRemoved {
        bool operator==(const DeviceRemoved&) const = default;
    };

    using Case =
        std::variant<DeviceAttached, DeviceReady, StateChanged, Notification, DeviceRemoved>;

    Case value;

    /// Implicit, so that a case can be given where an event is wanted.
    template <CaseOf<Case> T>
    explicit(false) HIDPPEvent(T event) : value(std::in_place_type<T>, std::move(event)) {}

    /// Whether it is that case.
    template <typename T>
    bool is() const {
        return std::holds_alternative<T>(value);
    }

    bool operator==(const HIDPPEvent&) const = default;
};

}  // namespace tessara
