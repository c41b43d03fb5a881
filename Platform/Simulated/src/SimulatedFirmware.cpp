#include "SimulatedFirmware.h"

#include <algorithm>

#include "SimulatedFeatureIDs.h"

namespace tessara {
namespace {

// HID++ 2.0 error codes.
constexpr std::uint8_t invalidArgument = 2;
constexpr std::uint8_t outOfRange = 3;
constexpr std::uint8_t invalidFeatureIndex = 6;
constexpr std::uint8_t invalidFunction = 7;

constexpr std::size_t chunkSize = 16;

std::uint8_t high(std::uint16_t word) {
    return static_cast<std::uint8_t>(word >> 8U);
}
std::uint8_t low(std::uint16_t word) {
    return static_cast<std::uint8_t>(word & 0xFFU);
}

}  // namespace

SimulatedFirmware::Settings SimulatedFirmware::defaultsOf(
    const SimulatedMouseDescription& description) {
    return {.dpi = description.defaultDPI, .reportInterval = description.defaultReportInterval};
}

std::optional<std::uint8_t> SimulatedFirmware::featureIndex(std::uint16_t id) const {
    const auto found = std::ranges::find(description_.features, id, &SimulatedFeature::id);
    if (found == description_.features.end()) return std::nullopt;
    return static_cast<std::uint8_t>(found - description_.features.begin());
}

SimulatedFirmware::Answer SimulatedFirmware::answer(const SimulatedRequest& request) {
    if (request.featureIndex >= description_.features.size()) return invalidFeatureIndex;
    switch (description_.features[request.featureIndex].id) {
        case SimulatedFeatureID::root:
            return answerRoot(request);
        case SimulatedFeatureID::featureSet:
            return answerFeatureSet(request);
        case SimulatedFeatureID::deviceInformation:
            return answerDeviceInformation(request);
        case SimulatedFeatureID::deviceName:
            return answerName(request);
        case SimulatedFeatureID::adjustableDPI:
            return answerDPI(request);
        case SimulatedFeatureID::reportRate:
            return answerReportRate(request);
        case SimulatedFeatureID::wheel:
            return answerWheel(request);
        case SimulatedFeatureID::onboardProfiles:
            return answerOnboardProfiles(request);
        default:
            return invalidFunction;
    }
}

SimulatedFirmware::Answer SimulatedFirmware::answerRoot(const SimulatedRequest& request) const {
    enum Function : unsigned { getFeature, ping };
    switch (request.function()) {
        case getFeature: {
            const auto index = featureIndex(request.word(0));
            if (!index) return Bytes{0, 0, 0};
            const SimulatedFeature& feature = description_.features[*index];
            return Bytes{*index, feature.type, feature.version};
        }
        case ping:
            return Bytes{description_.protocolVersion[0], description_.protocolVersion[1],
                         request.parameter(2)};
        default:
            return invalidFunction;
    }
}

SimulatedFirmware::Answer SimulatedFirmware::answerFeatureSet(
    const SimulatedRequest& request) const {
    enum Function : unsigned { getCount, getFeatureID };
    const auto& features = description_.features;
    switch (request.function()) {
        case getCount:  // the root feature is not counted
            return Bytes{static_cast<std::uint8_t>(features.size() - 1)};
        case getFeatureID: {
            if (request.parameter(0) >= features.size()) return outOfRange;
            const SimulatedFeature& feature = features[request.parameter(0)];
            return Bytes{high(feature.id), low(feature.id), feature.type, feature.version};
        }
        default:
            return invalidFunction;
    }
}

SimulatedFirmware::Answer SimulatedFirmware::answerDeviceInformation(
    const SimulatedRequest& request) const {
    if (request.function() != 0) return invalidFunction;
    constexpr std::uint8_t usb = 0x08;
    Bytes payload{1};
    payload.insert(payload.end(), description_.unitID.begin(), description_.unitID.end());
    payload.insert(payload.end(), {0, usb});
    payload.insert(payload.end(), description_.modelIDs.begin(), description_.modelIDs.end());
    return payload;
}

SimulatedFirmware::Answer SimulatedFirmware::answerName(const SimulatedRequest& request) const {
    enum Function : unsigned { getLength, getChunk };
    const std::string& name = description_.name;
    switch (request.function()) {
        case getLength:
            return Bytes{static_cast<std::uint8_t>(name.size())};
        case getChunk: {
            const std::size_t offset = request.parameter(0);
            if (offset >= name.size()) return outOfRange;
            const std::string chunk = name.substr(offset, chunkSize);
            return Bytes(chunk.begin(), chunk.end());
        }
        default:
            return invalidFunction;
    }
}

bool SimulatedFirmware::offersDPI(std::uint16_t dpi) const {
    if (const auto* list = std::get_if<SimulatedMouseDescription::DPIList>(&description_.dpi)) {
        return std::ranges::find(*list, dpi) != list->end();
    }
    const auto& range = std::get<SimulatedMouseDescription::DPIRange>(description_.dpi);
    return dpi >= range.minimum && dpi <= range.maximum;
}

SimulatedFirmware::Answer SimulatedFirmware::answerDPI(const SimulatedRequest& request) {
    enum Function : unsigned { getSensorCount, getList, getDPI, setDPI };
    if (request.function() != getSensorCount && request.parameter(0) != 0) return invalidArgument;
    switch (request.function()) {
        case getSensorCount:
            return Bytes{1};
        case getList: {
            Bytes payload{0};
            const auto append = [&](std::uint16_t word) {
                payload.insert(payload.end(), {high(word), low(word)});
            };
            if (const auto* list =
                    std::get_if<SimulatedMouseDescription::DPIList>(&description_.dpi)) {
                std::ranges::for_each(*list, append);
            } else {
                const auto& range = std::get<SimulatedMouseDescription::DPIRange>(description_.dpi);
                append(range.minimum);
                append(static_cast<std::uint16_t>(0xE000U | range.step));
                append(range.maximum);
            }
            append(0);
            return payload;
        }
        case getDPI:
            return Bytes{0, high(settings.dpi), low(settings.dpi), high(description_.defaultDPI),
                         low(description_.defaultDPI)};
        case setDPI:
            if (!offersDPI(request.word(1))) return outOfRange;
            settings.dpi = request.word(1);
            return Bytes{0, high(settings.dpi), low(settings.dpi)};
        default:
            return invalidFunction;
    }
}

SimulatedFirmware::Answer SimulatedFirmware::answerReportRate(const SimulatedRequest& request) {
    enum Function : unsigned { getList, getInterval, setInterval };
    const std::uint8_t interval = request.parameter(0);
    switch (request.function()) {
        case getList:
            return Bytes{description_.reportRates};
        case getInterval:
            return Bytes{settings.reportInterval};
        case setInterval:
            if (interval < 1 || interval > 8) return outOfRange;
            if ((description_.reportRates >> (interval - 1U) & 1U) == 0) return outOfRange;
            settings.reportInterval = interval;
            return Bytes{};
        default:
            return invalidFunction;
    }
}

SimulatedFirmware::Answer SimulatedFirmware::answerWheel(const SimulatedRequest& request) {
    enum Function : unsigned { getCapability, getMode, setMode, getRatchetState };
    switch (request.function()) {
        case getCapability:
            return Bytes(description_.wheelCapability.begin(), description_.wheelCapability.end());
        case getMode:
            return Bytes{settings.wheelMode};
        case setMode:
            settings.wheelMode = request.parameter(0) & 0x07U;
            return Bytes{settings.wheelMode};
        case getRatchetState:
            return Bytes{static_cast<std::uint8_t>(isRatchetEngaged)};
        default:
            return invalidFunction;
    }
}

SimulatedFirmware::Answer SimulatedFirmware::answerOnboardProfiles(
    const SimulatedRequest& request) {
    enum Function : unsigned {
        getDescription = 0,
        setMode = 1,
        getMode = 2,
        getProfile = 4,
        readMemory = 5
    };
    constexpr std::uint16_t sectorSize = 255;
    constexpr std::uint8_t sectorCount = 16;
    switch (request.function()) {
        case getDescription:
            return Bytes{1,    5, 1, 5, 1, 13, sectorCount, high(sectorSize), low(sectorSize),
                         0x0A, 1};
        case setMode:
            if (request.parameter(0) < 1 || request.parameter(0) > 2) return invalidArgument;
            settings.onboardMode = request.parameter(0);
            return Bytes{};
        case getMode:
            return Bytes{settings.onboardMode};
        case getProfile:
            return Bytes{0, 1};
        case readMemory: {
            const std::uint16_t sector = request.word(0);
            const std::uint16_t offset = request.word(2);
            if (sector >= sectorCount || offset + chunkSize > sectorSize) return outOfRange;
            // Memory whose bytes tell where they are from.
            Bytes payload;
            for (std::size_t i = 0; i < chunkSize; ++i) {
                payload.push_back(static_cast<std::uint8_t>(sector * 31U + offset + i));
            }
            return payload;
        }
        default:
            return invalidFunction;
    }
}

}  // namespace tessara
