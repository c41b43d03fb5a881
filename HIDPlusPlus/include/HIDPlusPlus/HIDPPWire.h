#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <vector>

#include "HIDPlusPlus/HIDPPError.h"

/// What a HID++ report looks like on the wire: constants and pure encoders. Reports are 7 bytes
/// (short) or 20 bytes (long), always sent in full:
///
///     offset 0   report id: 0x10 short, 0x11 long
///     offset 1   device index
///     offset 2   feature index
///     offset 3   function number in the high nibble, software id in the low nibble
///     offset 4   parameters, 3 or 16 bytes, zero-filled
///
/// A reply has the same layout and echoes bytes 1 to 3. An error reply has a marker at offset 2,
/// the failed request's feature index and function byte at 3 and 4, and its code at 5. All
/// multi-byte integers are big-endian. Nothing here holds state; every function may be called on
/// any thread.

namespace tessara::HIDPPWire {

/// The HID usage page of the vendor collection that carries HID++.
inline constexpr std::int64_t vendorUsagePage = 0xFF00;
inline constexpr std::uint8_t shortReportID = 0x10;
inline constexpr std::uint8_t longReportID = 0x11;
/// Bytes behind the report id.
inline constexpr std::size_t shortPayloadLength = 6;
inline constexpr std::size_t longPayloadLength = 19;
/// Bytes in front of the parameters, the report id included.
inline constexpr std::size_t headerLength = 4;
/// The device index of a mouse that is connected directly and not through a receiver.
inline constexpr std::uint8_t defaultDeviceIndex = 0xFF;
/// Stands in for a software id of 0, which is the mark of a notification.
inline constexpr std::uint8_t softwareID = 8;
/// The software ids in rotation, first and last.
inline constexpr struct {
    std::uint8_t first = 1;
    std::uint8_t last = 15;
} softwareIDs;
inline constexpr std::uint8_t errorFeatureIndex20 = 0xFF;
inline constexpr std::uint8_t errorFeatureIndex10 = 0x8F;
/// The bytes up to and including an error reply's code; anything shorter is no error reply.
inline constexpr std::size_t errorReplyLength = 6;
/// The root feature has this index on every device.
inline constexpr std::uint8_t rootFeatureIndex = 0;

/// The software id that follows `last` in rotation: 1, 2, ... 15, 1. Only the low four bits count;
/// with 0 the rotation begins.
std::uint8_t softwareIDAfter(std::uint8_t last);

/// Function number and software id in one byte. A software id whose low four bits are 0 is replaced
/// by `HIDPPWire::softwareID`.
std::uint8_t functionByte(std::uint8_t function, std::uint8_t id);

/// The bytes of a request, 20 when `isLong`, else 7. Fails with `InvalidArgument` when there are
/// more than 16, or 3, parameters.
std::expected<std::vector<std::uint8_t>, HIDPPError> encodeRequest(
    std::uint8_t deviceIndex, std::uint8_t featureIndex, std::uint8_t function,
    std::span<const std::uint8_t> parameters, bool isLong, std::uint8_t id);

/// The big-endian integer at `offset`; both of its bytes must exist.
constexpr std::uint16_t bigEndian16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

/// The high and the low byte of `value`, in wire order.
constexpr std::uint8_t highByte(std::uint16_t value) {
    return static_cast<std::uint8_t>(value >> 8);
}
constexpr std::uint8_t lowByte(std::uint16_t value) {
    return static_cast<std::uint8_t>(value & 0xFF);
}

}  // namespace tessara::HIDPPWire
