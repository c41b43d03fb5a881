#pragma once

#include <string>
#include <utility>
#include <variant>

#include "HIDPlusPlus/CaseOf.h"
#include "HIDPlusPlus/HIDPPDeviceIdentity.h"

namespace tessara {

/// How the mouse stands to the program. `Connected` is only ever said once the mouse's features are
/// known, so that whoever hears of it can use them at once.
struct HIDPPConnectionState {
    /// There is no mouse, or nobody asked for it, or the last attempt to connect failed.
    struct Disconnected {
        bool operator==(const Disconnected&) const = default;
    };
    /// The mouse is there, but the user has not granted access to it.
    struct NotPermitted {
        bool operator==(const NotPermitted&) const = default;
    };
    /// The mouse can be talked to.
    struct Connected {
        /// Of the interface that carries the protocol.
        HIDPPDeviceIdentity identity;
        bool operator==(const Connected&) const = default;
    };

    using Case = std::variant<Disconnected, NotPermitted, Connected>;

    Case value;

    /// Disconnected.
    HIDPPConnectionState() = default;

    /// Implicit, so that a case can be given where a state is wanted.
    template <CaseOf<Case> T>
    explicit(false) HIDPPConnectionState(T state)
        : value(std::in_place_type<T>, std::move(state)) {}

    /// Whether it is that case.
    template <typename T>
    bool is() const {
        return std::holds_alternative<T>(value);
    }

    bool isConnected() const { return is<Connected>(); }

    /// "disconnected", "notPermitted" or "connected(...)" with the product's name.
    std::string description() const;

    bool operator==(const HIDPPConnectionState&) const = default;
};

}  // namespace tessara
