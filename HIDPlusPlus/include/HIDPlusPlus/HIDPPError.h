#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "HIDPlusPlus/CaseOf.h"
#include "HIDPlusPlus/HIDPPFeature.h"
#include "Platform/IOReturn.h"

/// What can go wrong between the client and the mouse. `HIDPPError` is the only error type of the
/// library; its texts are the ones the user finally reads.

namespace tessara {

/// The code of a HID++ 2.0 error reply. Every value is legal; those without a name here are the
/// vendor's.
struct HIDPP20ErrorCode {
    static const HIDPP20ErrorCode noError;
    static const HIDPP20ErrorCode unknown;
    static const HIDPP20ErrorCode invalidArgument;
    static const HIDPP20ErrorCode outOfRange;
    static const HIDPP20ErrorCode hardwareError;
    static const HIDPP20ErrorCode vendorInternal;
    static const HIDPP20ErrorCode invalidFeatureIndex;
    static const HIDPP20ErrorCode invalidFunctionId;
    static const HIDPP20ErrorCode busy;
    static const HIDPP20ErrorCode unsupported;
    static const HIDPP20ErrorCode invalidDeviceIndex;

    /// The code as it came in.
    std::uint8_t rawValue = 0;

    /// The constant's name, "vendor/unassigned" for a value without one.
    std::string_view name() const;

    bool operator==(const HIDPP20ErrorCode&) const = default;
};

inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::noError{0};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::unknown{1};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::invalidArgument{2};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::outOfRange{3};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::hardwareError{4};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::vendorInternal{5};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::invalidFeatureIndex{6};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::invalidFunctionId{7};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::busy{8};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::unsupported{9};
inline constexpr HIDPP20ErrorCode HIDPP20ErrorCode::invalidDeviceIndex{10};

/// An error of the client, a plain value. Every operation of the library says which of these it
/// gives. Absence of the device (`DeviceNotFound`, `NotOpen`, `NotConnected`,
/// `DeviceRemoved`) is an expected condition that callers show as a state.
struct HIDPPError {
    /// A platform call failed; `operation` is the call's name, `code` its result.
    struct IOKit {
        std::string operation;
        IOReturn code = IOReturn::error;
        bool operator==(const IOKit&) const = default;
    };
    /// No reply came in time; `operation` names feature index and function.
    struct Timeout {
        std::string operation;
        bool operator==(const Timeout&) const = default;
    };
    /// The device does not have the feature; it may not even have been asked.
    struct FeatureUnsupported {
        HIDPPFeature feature = HIDPPFeature::root;
        bool operator==(const FeatureUnsupported&) const = default;
    };
    /// The device answered with a HID++ 2.0 error, whatever its code, 0 included.
    struct Protocol20 {
        HIDPP20ErrorCode code = {};
        bool operator==(const Protocol20&) const = default;
    };
    /// The device answered with a HID++ 1.0 error.
    struct Protocol10 {
        /// As it came in; these codes have no names here.
        std::uint8_t code = 0;
        bool operator==(const Protocol10&) const = default;
    };
    /// The reply does not have the bytes it should; `text` says which reply and what is wrong.
    struct MalformedResponse {
        std::string text;
        bool operator==(const MalformedResponse&) const = default;
    };
    /// What the caller asked for cannot be said to the device, and was not; `text` says why.
    struct InvalidArgument {
        std::string text;
        bool operator==(const InvalidArgument&) const = default;
    };
    /// No interface that speaks the protocol is plugged in.
    struct DeviceNotFound {
        bool operator==(const DeviceNotFound&) const = default;
    };
    /// The user has not granted access to the device.
    struct NotPermitted {
        bool operator==(const NotPermitted&) const = default;
    };
    /// The interface or its link is closed.
    struct NotOpen {
        bool operator==(const NotOpen&) const = default;
    };
    /// There is no connection, or it was ended while the operation waited.
    struct NotConnected {
        bool operator==(const NotConnected&) const = default;
    };
    /// The device went away while the operation waited.
    struct DeviceRemoved {
        bool operator==(const DeviceRemoved&) const = default;
    };

    using Case = std::variant<IOKit, Timeout, FeatureUnsupported, Protocol20, Protocol10,
                              MalformedResponse, InvalidArgument, DeviceNotFound, NotPermitted,
                              NotOpen, NotConnected, DeviceRemoved>;

    Case value;

    /// Implicit, so that a case can be returned where an error is wanted.
    template <CaseOf<Case> T>
    explicit(false) HIDPPError(T error) : value(std::in_place_type<T>, std::move(error)) {}

    /// The error for a platform call that failed. A refusal is `NotPermitted` and an absent device
    /// `DeviceRemoved` whatever the platform called them; `code` must not be `IOReturn::success`.
    static HIDPPError from(IOReturn code, std::string_view operation);

    template <typename T>
    bool is() const {
        return std::holds_alternative<T>(value);
    }

    /// The text for the user.
    std::string description() const;

    bool operator==(const HIDPPError&) const = default;
};

/// A platform code as text: number and name, such as "0xE00002CD (kIOReturnNotOpen)".
std::string ioReturnDescription(IOReturn code);

}  // namespace tessara
