#include <algorithm>
#include <array>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "HIDPlusPlus/HIDPPDPI.h"
#include "HIDPlusPlus/HIDPPDeviceInformation.h"
#include "HIDPlusPlus/HIDPPOnboardProfiles.h"
#include "HIDPlusPlus/HIDPPReportRate.h"
#include "HIDPlusPlus/HIDPPWheel.h"

namespace tessara {

namespace {

/// How far apart two values are, whatever they are.
std::uint64_t distance(std::int64_t a, std::int64_t b) {
    const auto [low, high] = std::minmax(a, b);
    return static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
}

std::int64_t normalizeIn(const HIDPPDPIRange::Range& range, std::int64_t dpi) {
    // A device that crosses its bounds is taken at its maximum.
    const auto clamped = std::min(std::max(dpi, range.minimum), range.maximum);
    if (range.step < 2) return clamped;
    const auto steps = (clamped - range.minimum + range.step / 2) / range.step;
    return std::min(range.minimum + steps * range.step, range.maximum);
}

std::int64_t normalizeIn(const HIDPPDPIRange::List& list, std::int64_t dpi) {
    if (list.values.empty()) return dpi;
    return *std::ranges::min_element(list.values, {},
                                     [dpi](std::int64_t value) { return distance(value, dpi); });
}

}  // namespace

std::string HIDPPDeviceInformation::unitIDHex() const {
    return fmt::format("{:02X}", fmt::join(unitID, ""));
}

std::string HIDPPDeviceInformation::modelIDHex() const {
    return fmt::format("{:02X}", fmt::join(modelIDs, ""));
}

std::string HIDPPDeviceInformation::description() const {
    return fmt::format("entities={} unitID={} transports=[{}] modelIDs={}", entityCount,
                       unitIDHex(), transports.description(), modelIDHex());
}

std::int64_t HIDPPDPIRange::minimum() const {
    if (const auto* range = std::get_if<Range>(&value)) return range->minimum;
    const auto& values = std::get<List>(value).values;
    return values.empty() ? 0 : std::ranges::min(values);
}

std::int64_t HIDPPDPIRange::maximum() const {
    if (const auto* range = std::get_if<Range>(&value)) return range->maximum;
    const auto& values = std::get<List>(value).values;
    return values.empty() ? 0 : std::ranges::max(values);
}

std::int64_t HIDPPDPIRange::normalize(std::int64_t dpi) const {
    return std::visit([dpi](const auto& shape) { return normalizeIn(shape, dpi); }, value);
}

std::string HIDPPDPIRange::description() const {
    if (const auto* range = std::get_if<Range>(&value)) {
        return fmt::format("{}–{} step {}", range->minimum, range->maximum, range->step);
    }
    return fmt::format("{}", fmt::join(std::get<List>(value).values, ", "));
}

std::string HIDPPDPIState::description() const {
    return fmt::format("current={} default={} sensor={}", current, default_, sensorIndex);
}

std::optional<HIDPPReportRate> HIDPPReportRate::fromHertz(std::int64_t hertz) {
    if (hertz < 1 || 1000 % hertz != 0) return std::nullopt;
    return HIDPPReportRate{1000 / hertz};
}

std::int64_t HIDPPReportRate::hertz() const {
    return milliseconds < 1 ? 0 : 1000 / milliseconds;
}

std::string HIDPPReportRate::description() const {
    return fmt::format("{} Hz ({} ms)", hertz(), milliseconds);
}

std::vector<HIDPPReportRate> HIDPPReportRateInfo::supported() const {
    std::vector<HIDPPReportRate> rates;
    for (int bit = 0; bit < 8; ++bit) {
        if ((bitmap >> bit & 1) != 0) rates.push_back({bit + 1});
    }
    return rates;
}

std::string HIDPPReportRateInfo::description() const {
    std::vector<std::string> rates;
    for (const auto& rate : supported())
        rates.push_back(rate.description());
    return fmt::format("current={} supported=[{}] bitmap=0x{:02X}", current.description(),
                       fmt::join(rates, ", "), bitmap);
}

std::string HIDPPWheelCapability::description() const {
    return fmt::format("multiplier={} hasInvert={} hasRatchetSwitch={} flags=0x{:02X}", multiplier,
                       hasInvert, hasRatchetSwitch, flags);
}

std::uint8_t HIDPPWheelMode::rawValue() const {
    return static_cast<std::uint8_t>((target ? 1 : 0) | (highResolution ? 2 : 0) |
                                     (inverted ? 4 : 0));
}

HIDPPWheelMode HIDPPWheelMode::fromRawValue(std::uint8_t rawValue) {
    return {(rawValue & 1) != 0, (rawValue & 2) != 0, (rawValue & 4) != 0};
}

std::string HIDPPWheelMode::description() const {
    return fmt::format("target={} hiRes={} inverted={}",
                       target ? "HID++ events" : "plain HID wheel", highResolution, inverted);
}

std::string_view description(HIDPPRatchetState state) {
    return state == HIDPPRatchetState::ratchet ? "ratchet (engaged)" : "free-spin";
}

std::string_view description(HIDPPOnboardMode mode) {
    return mode == HIDPPOnboardMode::onboard ? "ONBOARD (device-driven)" : "HOST (software-driven)";
}

std::string HIDPPOnboardProfilesDescriptor::description() const {
    return fmt::format(
        "memModel={} profileFmt={} macroFmt={} profiles={} oob={} buttons={} sectors={} "
        "sectorSize={} mechLayout=0x{:02X} various=0x{:02X}",
        memoryModel, profileFormat, macroFormat, profileCount, profileCountOOB, buttonCount,
        sectorCount, sectorSize, mechanicalLayout, variousInfo);
}

std::string HIDPPCurrentProfile::description() const {
    return fmt::format("page={} index={}", page, index);
}

}  // namespace tessara
