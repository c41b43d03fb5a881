#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "HIDPlusPlus/HIDPPDPI.h"
#include "HIDPlusPlus/HIDPPDeviceInformation.h"
#include "HIDPlusPlus/HIDPPFeature.h"
#include "HIDPlusPlus/HIDPPOnboardProfiles.h"
#include "HIDPlusPlus/HIDPPProtocolVersion.h"
#include "HIDPlusPlus/HIDPPReportRate.h"
#include "HIDPlusPlus/HIDPPTask.h"
#include "HIDPlusPlus/HIDPPWheel.h"

/// What the payload of each reply means. Pure functions of the bytes a device sent, which may be
/// any: a payload that is too short or makes no sense gives `MalformedResponse` with words that
/// name the reply; bytes beyond those that are needed are ignored. Any thread.
///
/// With each stand the bytes that the protocol gives it, counted from the first behind the function
/// byte; integers of two bytes are big-endian.

namespace tessara::HIDPPReplies {

using Payload = std::span<const std::uint8_t>;

/// The byte that a ping sends along and its reply brings back.
inline constexpr std::uint8_t pingToken = 0x5A;

/// Major, minor, and the token of the ping: another one is no answer to it.
HIDPPResult<HIDPPProtocolVersion> protocolVersion(Payload payload);

/// Index, type and version of a feature; index 0 says that the device does not have it. `id` and
/// `feature` of the record are left for the caller.
HIDPPResult<HIDPPFeatureRecord> featureLookup(Payload payload);
/// The number of rows in the feature table, the root feature not counted.
HIDPPResult<std::uint8_t> featureCount(Payload payload);
/// One row of the feature table: identifier (0, 1), type, version. `index` is left for the caller.
HIDPPResult<HIDPPFeatureRecord> featureTableRow(Payload payload);

/// Entities (0), unit id (1 to 4), transports (5, 6), model ids (7 to 12).
HIDPPResult<HIDPPDeviceInformation> deviceInformation(Payload payload);
/// The bytes of the device's name.
HIDPPResult<std::uint8_t> nameLength(Payload payload);

/// How many sensors there are (0).
HIDPPResult<std::uint8_t> sensorCount(Payload payload);
/// The sensor (0), and from there on values of two bytes, up to the first that is 0. A value whose
/// three highest bits are set is no resolution but the step, in its other bits, from the value
/// before it to the one behind it; where it has no two neighbours it counts as a value.
HIDPPResult<HIDPPDPIRange> dpiRange(Payload payload);
/// The sensor (0), its resolution (1, 2) and its default (3, 4).
HIDPPResult<HIDPPDPIState> dpi(Payload payload);

/// The rates on offer (0), a bit each, as `HIDPPReportRateInfo` keeps them.
HIDPPResult<std::uint8_t> reportRateBitmap(Payload payload);
/// The present interval in milliseconds (0).
HIDPPResult<HIDPPReportRate> reportRate(Payload payload);

/// Reports per detent (0) and flags (1): bit 2 for a ratchet switch, bit 3 for a direction that can
/// be turned round.
HIDPPResult<HIDPPWheelCapability> wheelCapability(Payload payload);
/// The mode (0), as `HIDPPWheelMode::rawValue` has it.
HIDPPResult<HIDPPWheelMode> wheelMode(Payload payload);
/// 1 where the wheel clicks (0), anything else where it runs freely.
HIDPPResult<HIDPPRatchetState> ratchetState(Payload payload);

/// The fields in the order of the type, a byte each (0 to 10), the sector's size two (7, 8).
HIDPPResult<HIDPPOnboardProfilesDescriptor> onboardProfilesDescriptor(Payload payload);
/// The mode (0); a value that is none, and no value at all, are malformed.
HIDPPResult<HIDPPOnboardMode> onboardMode(Payload payload);
/// Page (0) and index (1).
HIDPPResult<HIDPPCurrentProfile> currentProfile(Payload payload);
/// The 16 bytes that one read of the mouse's memory gives (0 to 15).
HIDPPResult<std::array<std::uint8_t, 16>> onboardMemory(Payload payload);

/// The text of a name's bytes: at most `length` of them, cut at the first zero byte, with what is
/// no UTF-8 replaced by U+FFFD.
std::string deviceName(Payload bytes, std::size_t length);

}  // namespace tessara::HIDPPReplies
