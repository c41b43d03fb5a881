#include <algorithm>
#include <span>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/Simulated/SimulatedMouse.h"

/// What the simulated firmware answers, feature by feature.
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

SimulatedMouse::Answer SimulatedMouse::answer(const Request& request) {
    if (request.featureIndex >= description_.features.size()) return invalidFeatureIndex;
    switch (description_.features[request.featureIndex].id) {
        case 0x0000:
            return answerRoot(request);
        case 0x0001:
            return answerFeatureSet(request);
        case 0x0003:
            return answerDeviceInformation(request);
        case 0x0005:
            return answerName(request);
        case 0x2201:
            return answerDPI(request);
        case 0x8060:
            return answerReportRate(request);
        case 0x2121:
            return answerWheel(request);
        case 0x8100:
            return answerOnboardProfiles(request);
        default:
            return invalidFunction;
    }
}

SimulatedMouse::Answer SimulatedMouse::answerRoot(const Request& request) const {
    switch (request.function()) {
        case 0: {
            const auto index = featureIndex(request.word(0));
            if (!index) return Bytes{0, 0, 0};
            const SimulatedFeature& feature = description_.features[*index];
            return Bytes{*index, feature.type, feature.version};
        }
        case 1:
            return Bytes{description_.protocolVersion[0], description_.protocolVersion[1],
                         request.parameter(2)};
        default:
            return invalidFunction;
    }
}

SimulatedMouse::Answer SimulatedMouse::answerFeatureSet(const Request& request) const {
    const auto& features = description_.features;
    switch (request.function()) {
        case 0:  // the root feature is not counted
            return Bytes{static_cast<std::uint8_t>(features.size() - 1)};
        case 1: {
            if (request.parameter(0) >= features.size()) return outOfRange;
            const SimulatedFeature& feature = features[request.parameter(0)];
            return Bytes{high(feature.id), low(feature.id), feature.type, feature.version};
        }
        default:
            return invalidFunction;
    }
}

SimulatedMouse::Answer SimulatedMouse::answerDeviceInformation(const Request& request) const {
    if (request.function() != 0) return invalidFunction;
    constexpr std::uint8_t usb = 0x08;
    Bytes payload{1};
    payload.insert(payload.end(), description_.unitID.begin(), description_.unitID.end());
    payload.insert(payload.end(), {0, usb});
    payload.insert(payload.end(), description_.modelIDs.begin(), description_.modelIDs.end());
    return payload;
}

SimulatedMouse::Answer SimulatedMouse::answerName(const Request& request) const {
    const std::string& name = description_.name;
    switch (request.function()) {
        case 0:
            return Bytes{static_cast<std::uint8_t>(name.size())};
        case 1: {
            const std::size_t offset = request.parameter(0);
            if (offset >= name.size()) return outOfRange;
            const std::string chunk = name.substr(offset, chunkSize);
            return Bytes(chunk.begin(), chunk.end());
        }
        default:
            return invalidFunction;
    }
}

bool SimulatedMouse::offersDPI(std::uint16_t dpi) const {
    if (const auto* list = std::get_if<SimulatedMouseDescription::DPIList>(&description_.dpi)) {
        return std::ranges::find(*list, dpi) != list->end();
    }
    const auto& range = std::get<SimulatedMouseDescription::DPIRange>(description_.dpi);
    return dpi >= range.minimum && dpi <= range.maximum;
}

SimulatedMouse::Answer SimulatedMouse::answerDPI(const Request& request) {
    if (request.function() > 0 && request.parameter(0) != 0) return invalidArgument;
    switch (request.function()) {
        case 0:
            return Bytes{1};
        case 1: {
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
        case 2:
            return Bytes{0, high(settings_.dpi), low(settings_.dpi), high(description_.defaultDPI),
                         low(description_.defaultDPI)};
        case 3:
            if (!offersDPI(request.word(1))) return outOfRange;
            settings_.dpi = request.word(1);
            return Bytes{0, high(settings_.dpi), low(settings_.dpi)};
        default:
            return invalidFunction;
    }
}

SimulatedMouse::Answer SimulatedMouse::answerReportRate(const Request& request) {
    const std::uint8_t interval = request.parameter(0);
    switch (request.function()) {
        case 0:
            return Bytes{description_.reportRates};
        case 1:
            return Bytes{settings_.reportInterval};
        case 2:
            if (interval < 1 || interval > 8) return outOfRange;
            if ((description_.reportRates >> (interval - 1U) & 1U) == 0) return outOfRange;
            settings_.reportInterval = interval;
            return Bytes{};
        default:
            return invalidFunction;
    }
}

SimulatedMouse::Answer SimulatedMouse::answerWheel(const Request& request) {
    switch (request.function()) {
        case 0:
            return Bytes(description_.wheelCapability.begin(), description_.wheelCapability.end());
        case 1:
            return Bytes{settings_.wheelMode};
        case 2:
            settings_.wheelMode = request.parameter(0) & 0x07U;
            return Bytes{settings_.wheelMode};
        case 3:
            return Bytes{static_cast<std::uint8_t>(isRatchetEngaged_)};
        default:
            return invalidFunction;
    }
}

SimulatedMouse::Answer SimulatedMouse::answerOnboardProfiles(const Request& request) {
    constexpr std::uint16_t sectorSize = 255;
    constexpr std::uint8_t sectorCount = 16;
    switch (request.function()) {
        case 0:
            return Bytes{1,    5, 1, 5, 1, 13, sectorCount, high(sectorSize), low(sectorSize),
                         0x0A, 1};
        case 1:
            if (request.parameter(0) < 1 || request.parameter(0) > 2) return invalidArgument;
            settings_.onboardMode = request.parameter(0);
            return Bytes{};
        case 2:
            return Bytes{settings_.onboardMode};
        case 4:
            return Bytes{0, 1};
        case 5: {
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
