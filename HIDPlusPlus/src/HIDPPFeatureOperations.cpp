#include <algorithm>

#include <fmt/format.h>

#include "HIDPPConnection.h"
#include "HIDPlusPlus/HIDPPWire.h"

// What the mouse can be asked for and set to. Whatever is set in several steps is read first, so
// that only a value the mouse takes is written.

namespace tessara {

namespace {

constexpr bool shortReport = false;
constexpr bool longReport = true;

constexpr std::int64_t largestDPI = 0xFFFF;

}  // namespace

HIDPPTask<std::uint8_t> HIDPPConnection::sensorCount() {
    return read(HIDPPFeature::adjustableDPI, 0, {}, shortReport, HIDPPReplies::sensorCount);
}

HIDPPTask<HIDPPDPIRange> HIDPPConnection::dpiRange(std::uint8_t sensor) {
    return read(HIDPPFeature::adjustableDPI, 1, {sensor, 0, 0}, longReport, HIDPPReplies::dpiRange);
}

HIDPPTask<HIDPPDPIState> HIDPPConnection::dpi(std::uint8_t sensor) {
    return read(HIDPPFeature::adjustableDPI, 2, {sensor, 0, 0}, shortReport, HIDPPReplies::dpi);
}

HIDPPTask<std::int64_t> HIDPPConnection::setDPI(std::int64_t wanted, std::uint8_t sensor) {
    const auto range = co_await dpiRange(sensor);
    if (!range) co_return std::unexpected(range.error());
    const auto normalized = range->normalize(wanted);
    if (normalized < 1 || normalized > largestDPI) {
        co_return std::unexpected(
            HIDPPError::InvalidArgument{fmt::format("DPI {} cannot be encoded", wanted)});
    }
    const auto encoded = static_cast<std::uint16_t>(normalized);
    Bytes parameters{sensor, HIDPPWire::highByte(encoded), HIDPPWire::lowByte(encoded)};
    const auto written = co_await set(HIDPPFeature::adjustableDPI, 3, std::move(parameters));
    if (!written) co_return std::unexpected(written.error());
    const auto state = co_await dpi(sensor);
    if (!state) co_return std::unexpected(state.error());
    co_return state->current;
}

HIDPPTask<HIDPPReportRateInfo> HIDPPConnection::reportRate() {
    const auto bitmap = co_await read(HIDPPFeature::reportRate, 0, Bytes(), shortReport,
                                      HIDPPReplies::reportRateBitmap);
    if (!bitmap) co_return std::unexpected(bitmap.error());
    const auto current =
        co_await read(HIDPPFeature::reportRate, 1, Bytes(), shortReport, HIDPPReplies::reportRate);
    if (!current) co_return std::unexpected(current.error());
    co_return HIDPPReportRateInfo{*bitmap, *current};
}

HIDPPTask<void> HIDPPConnection::setReportRate(HIDPPReportRate rate) {
    const auto info = co_await reportRate();
    if (!info) co_return std::unexpected(info.error());
    if (std::ranges::count(info->supported(), rate) == 0) {
        co_return std::unexpected(HIDPPError::InvalidArgument{
            fmt::format("report rate {} is not supported (bitmap 0x{:02X})", rate.description(),
                        info->bitmap)});
    }
    if (rate.milliseconds < 1 || rate.milliseconds > 0xFF) {
        co_return std::unexpected(HIDPPError::InvalidArgument{
            fmt::format("report interval {} ms cannot be encoded", rate.milliseconds)});
    }
    Bytes parameters{static_cast<std::uint8_t>(rate.milliseconds)};
    co_return co_await set(HIDPPFeature::reportRate, 2, std::move(parameters));
}

HIDPPTask<HIDPPWheelCapability> HIDPPConnection::wheelCapability() {
    return read(HIDPPFeature::hiResWheel, 0, {}, shortReport, HIDPPReplies::wheelCapability);
}

HIDPPTask<HIDPPWheelMode> HIDPPConnection::wheelMode() {
    return read(HIDPPFeature::hiResWheel, 1, {}, shortReport, HIDPPReplies::wheelMode);
}

HIDPPTask<void> HIDPPConnection::setWheelMode(HIDPPWheelMode mode) {
    return set(HIDPPFeature::hiResWheel, 2, {mode.rawValue()});
}

HIDPPTask<HIDPPWheelMode> HIDPPConnection::setWheelHighResolution(bool enabled) {
    auto mode = co_await wheelMode();
    if (!mode || mode->highResolution == enabled) co_return mode;
    mode->highResolution = enabled;
    const auto written = co_await setWheelMode(*mode);
    if (!written) co_return std::unexpected(written.error());
    co_return co_await wheelMode();
}

HIDPPTask<HIDPPRatchetState> HIDPPConnection::ratchetState() {
    return read(HIDPPFeature::hiResWheel, 3, {}, shortReport, HIDPPReplies::ratchetState);
}

HIDPPTask<HIDPPOnboardProfilesDescriptor> HIDPPConnection::onboardProfilesDescriptor() {
    return read(HIDPPFeature::onboardProfiles, 0, {}, longReport,
                HIDPPReplies::onboardProfilesDescriptor);
}

HIDPPTask<void> HIDPPConnection::setOnboardMode(HIDPPOnboardMode mode) {
    return set(HIDPPFeature::onboardProfiles, 1, {static_cast<std::uint8_t>(mode)});
}

HIDPPTask<HIDPPOnboardMode> HIDPPConnection::onboardMode() {
    return read(HIDPPFeature::onboardProfiles, 2, {}, shortReport, HIDPPReplies::onboardMode);
}

HIDPPTask<HIDPPCurrentProfile> HIDPPConnection::currentProfile() {
    return read(HIDPPFeature::onboardProfiles, 4, {}, shortReport, HIDPPReplies::currentProfile);
}

HIDPPTask<std::array<std::uint8_t, 16>> HIDPPConnection::readOnboardMemory(std::uint16_t sector,
                                                                           std::uint16_t offset) {
    using namespace HIDPPWire;
    return read(HIDPPFeature::onboardProfiles, 5,
                {highByte(sector), lowByte(sector), highByte(offset), lowByte(offset)}, longReport,
                HIDPPReplies::onboardMemory);
}

}  // namespace tessara
