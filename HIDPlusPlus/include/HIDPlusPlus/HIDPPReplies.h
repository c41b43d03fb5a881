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

namespace tessara::HIDPPReplies {

using Payload = std::span<const std::uint8_t>;

/// The byte that a ping sends along and its reply brings back.
inline constexpr std::uint8_t pingToken = 0x5A;

HIDPPResult<HIDPPProtocolVersion> protocolVersion(Payload payload);

/// Index, type and version of a feature; index 0 says that the device does not have it. `id` and
/// `feature` of the record are left for the caller.
HIDPPResult<HIDPPFeatureRecord> featureLookup(Payload payload);
/// The number of rows in the feature table, the root feature not counted.
HIDPPResult<std::uint8_t> featureCount(Payload payload);
/// One row of the feature table; `index` is left for the caller.
HIDPPResult<HIDPPFeatureRecord> featureTableRow(Payload payload);

HIDPPResult<HIDPPDeviceInformation> deviceInformation(Payload payload);
/// The bytes of the device's name.
HIDPPResult<std::uint8_t> nameLength(Payload payload);

HIDPPResult<std::uint8_t> sensorCount(Payload payload);
HIDPPResult<HIDPPDPIRange> dpiRange(Payload payload);
HIDPPResult<HIDPPDPIState> dpi(Payload payload);

HIDPPResult<std::uint8_t> reportRateBitmap(Payload payload);
HIDPPResult<HIDPPReportRate> reportRate(Payload payload);

HIDPPResult<HIDPPWheelCapability> wheelCapability(Payload payload);
HIDPPResult<HIDPPWheelMode> wheelMode(Payload payload);
HIDPPResult<HIDPPRatchetState> ratchetState(Payload payload);

HIDPPResult<HIDPPOnboardProfilesDescriptor> onboardProfilesDescriptor(Payload payload);
HIDPPResult<HIDPPOnboardMode> onboardMode(Payload payload);
HIDPPResult<HIDPPCurrentProfile> currentProfile(Payload payload);
/// The 16 bytes that one read of the mouse's memory gives.
HIDPPResult<std::array<std::uint8_t, 16>> onboardMemory(Payload payload);

/// The text of a name's bytes: at most `length` of them, cut at the first zero byte, with what is
/// no UTF-8 replaced by U+FFFD.
std::string deviceName(Payload bytes, std::size_t length);

}  // namespace tessara::HIDPPReplies
