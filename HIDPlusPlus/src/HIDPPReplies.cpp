#include "HIDPlusPlus/HIDPPReplies.h"

#include <algorithm>
#include <string_view>

#include <utf8proc.h>

#include "HIDPlusPlus/HIDPPWire.h"

namespace tessara::HIDPPReplies {

namespace {

using HIDPPWire::bigEndian16;

std::unexpected<HIDPPError> malformed(std::string_view text) {
    return std::unexpected<HIDPPError>(HIDPPError::MalformedResponse{std::string(text)});
}

/// The payload's first byte; `text` is the error when there is none.
HIDPPResult<std::uint8_t> firstByte(Payload payload, std::string_view text) {
    if (payload.empty()) return malformed(text);
    return payload[0];
}

/// The 16-bit entries behind the sensor index, up to the first that is 0 or incomplete.
std::vector<std::int64_t> dpiEntries(Payload payload) {
    std::vector<std::int64_t> entries;
    for (std::size_t offset = 1; offset + 1 < payload.size(); offset += 2) {
        const auto entry = bigEndian16(payload, offset);
        if (entry == 0) break;
        entries.push_back(entry);
    }
    return entries;
}

}  // namespace

HIDPPResult<HIDPPProtocolVersion> protocolVersion(Payload payload) {
    if (payload.size() < 3) return malformed("ping reply too short");
    if (payload[2] != pingToken) return malformed("ping token mismatch");
    return HIDPPProtocolVersion{payload[0], payload[1]};
}

HIDPPResult<HIDPPFeatureRecord> featureLookup(Payload payload) {
    if (payload.size() < 3) return malformed("getFeature reply too short");
    return HIDPPFeatureRecord{.index = payload[0], .type = {payload[1]}, .version = payload[2]};
}

HIDPPResult<std::uint8_t> featureCount(Payload payload) {
    return firstByte(payload, "getCount reply empty");
}

HIDPPResult<HIDPPFeatureRecord> featureTableRow(Payload payload) {
    if (payload.size() < 4) return malformed("getFeatureID reply too short");
    const auto id = bigEndian16(payload, 0);
    return HIDPPFeatureRecord{
        .id = id, .feature = hidppFeature(id), .type = {payload[2]}, .version = payload[3]};
}

HIDPPResult<HIDPPDeviceInformation> deviceInformation(Payload payload) {
    if (payload.size() < 13) return malformed("getDeviceInfo reply too short");
    HIDPPDeviceInformation information{.entityCount = payload[0],
                                       .transports = {bigEndian16(payload, 5)}};
    std::ranges::copy(payload.subspan(1, 4), information.unitID.begin());
    std::ranges::copy(payload.subspan(7, 6), information.modelIDs.begin());
    return information;
}

HIDPPResult<std::uint8_t> nameLength(Payload payload) {
    return firstByte(payload, "getDeviceNameCount reply empty");
}

HIDPPResult<std::uint8_t> sensorCount(Payload payload) {
    return firstByte(payload, "getSensorCount reply empty");
}

HIDPPResult<HIDPPDPIRange> dpiRange(Payload payload) {
    constexpr std::int64_t stepMark = 0xE000;
    constexpr std::int64_t stepMask = 0x1FFF;
    if (payload.size() < 3) return malformed("getSensorDpiList reply too short");
    auto entries = dpiEntries(payload);
    if (entries.empty()) return malformed("empty DPI list");
    // A marked entry between two others is the step of a span; anywhere else it is a value.
    const auto mark = std::ranges::find_if(
        entries, [](std::int64_t entry) { return (entry & stepMark) == stepMark; });
    if (mark != entries.end() && mark != entries.begin() && mark + 1 != entries.end()) {
        return HIDPPDPIRange{HIDPPDPIRange::Range{*(mark - 1), *(mark + 1), *mark & stepMask}};
    }
    return HIDPPDPIRange{HIDPPDPIRange::List{std::move(entries)}};
}

HIDPPResult<HIDPPDPIState> dpi(Payload payload) {
    if (payload.size() < 5) return malformed("getSensorDpi reply too short");
    return HIDPPDPIState{payload[0], bigEndian16(payload, 1), bigEndian16(payload, 3)};
}

HIDPPResult<std::uint8_t> reportRateBitmap(Payload payload) {
    return firstByte(payload, "getReportRateList reply empty");
}

HIDPPResult<HIDPPReportRate> reportRate(Payload payload) {
    if (payload.empty()) return malformed("getReportRate reply empty");
    return HIDPPReportRate{payload[0]};
}

HIDPPResult<HIDPPWheelCapability> wheelCapability(Payload payload) {
    constexpr std::uint8_t ratchetSwitchBit = 0x04;
    constexpr std::uint8_t invertBit = 0x08;
    if (payload.size() < 2) return malformed("getWheelCapability reply too short");
    const auto flags = payload[1];
    return HIDPPWheelCapability{payload[0], (flags & invertBit) != 0,
                                (flags & ratchetSwitchBit) != 0, flags};
}

HIDPPResult<HIDPPWheelMode> wheelMode(Payload payload) {
    if (payload.empty()) return malformed("getWheelMode reply empty");
    return HIDPPWheelMode::fromRawValue(payload[0]);
}

HIDPPResult<HIDPPRatchetState> ratchetState(Payload payload) {
    if (payload.empty()) return malformed("getRatchetSwitchState reply empty");
    return payload[0] == 1 ? HIDPPRatchetState::ratchet : HIDPPRatchetState::freeSpin;
}

HIDPPResult<HIDPPOnboardProfilesDescriptor> onboardProfilesDescriptor(Payload payload) {
    if (payload.size() < 11) return malformed("getOnboardProfilesDesc reply too short");
    return HIDPPOnboardProfilesDescriptor{
        .memoryModel = payload[0],
        .profileFormat = payload[1],
        .macroFormat = payload[2],
        .profileCount = payload[3],
        .profileCountOOB = payload[4],
        .buttonCount = payload[5],
        .sectorCount = payload[6],
        .sectorSize = bigEndian16(payload, 7),
        .mechanicalLayout = payload[9],
        .variousInfo = payload[10],
    };
}

HIDPPResult<HIDPPOnboardMode> onboardMode(Payload payload) {
    if (!payload.empty()) {
        const auto mode = static_cast<HIDPPOnboardMode>(payload[0]);
        if (mode == HIDPPOnboardMode::onboard || mode == HIDPPOnboardMode::host) return mode;
    }
    return malformed("getOnboardMode returned an unknown mode");
}

HIDPPResult<HIDPPCurrentProfile> currentProfile(Payload payload) {
    if (payload.size() < 2) return malformed("getCurrentProfile reply too short");
    return HIDPPCurrentProfile{payload[0], payload[1]};
}

HIDPPResult<std::array<std::uint8_t, 16>> onboardMemory(Payload payload) {
    std::array<std::uint8_t, 16> bytes{};
    if (payload.size() < bytes.size()) return malformed("memoryRead reply too short");
    std::ranges::copy(payload.first(bytes.size()), bytes.begin());
    return bytes;
}

std::string deviceName(Payload bytes, std::size_t length) {
    auto name = bytes.first(std::min(bytes.size(), length));
    const auto end = std::ranges::find(name, std::uint8_t{0});
    name = name.first(static_cast<std::size_t>(end - name.begin()));

    std::string text;
    while (!name.empty()) {
        utf8proc_int32_t codePoint = 0;
        const auto size =
            utf8proc_iterate(name.data(), static_cast<utf8proc_ssize_t>(name.size()), &codePoint);
        if (size > 0) {
            const auto character = name.first(static_cast<std::size_t>(size));
            text.append(character.begin(), character.end());
            name = name.subspan(character.size());
        } else {
            text += "\uFFFD";
            name = name.subspan(1);
        }
    }
    return text;
}

}  // namespace tessara::HIDPPReplies
