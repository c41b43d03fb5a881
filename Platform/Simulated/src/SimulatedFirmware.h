#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/Simulated/SimulatedMouse.h"

namespace tessara {

/// One request to the mouse, taken apart.
struct SimulatedRequest {
    std::uint8_t reportID = 0;
    std::uint8_t deviceIndex = 0;
    std::uint8_t featureIndex = 0;
    std::uint8_t functionByte = 0;
    std::span<const std::uint8_t> parameters;

    [[nodiscard]] unsigned function() const { return functionByte >> 4U; }
    /// 0 for one that the request does not have.
    [[nodiscard]] std::uint8_t parameter(std::size_t i) const {
        return i < parameters.size() ? parameters[i] : std::uint8_t{0};
    }
    [[nodiscard]] std::uint16_t word(std::size_t i) const {
        return static_cast<std::uint16_t>(parameter(i) << 8U | parameter(i + 1));
    }
};

/// What the simulated mouse is set to, and what it answers, feature by feature. It knows no faults
/// and has no lock: its owner has both.
class SimulatedFirmware {
  public:
    using Bytes = SimulatedMouse::Bytes;
    /// The payload of a reply, or the code of a HID++ 2.0 error.
    using Answer = std::variant<Bytes, std::uint8_t>;

    /// What is lost when the power goes.
    struct Settings {
        std::uint16_t dpi = 0;
        std::uint8_t reportInterval = 0;
        std::uint8_t wheelMode = 0;
        std::uint8_t onboardMode = 1;
    };

    explicit SimulatedFirmware(SimulatedMouseDescription description)
        : settings(defaultsOf(description)), description_(std::move(description)) {}

    /// Carries the request out.
    [[nodiscard]] Answer answer(const SimulatedRequest& request);
    /// Loses the settings.
    void powerCycle() { settings = defaultsOf(description_); }
    [[nodiscard]] std::optional<std::uint8_t> featureIndex(std::uint16_t id) const;

    Settings settings;
    bool isRatchetEngaged = true;  // a switch at the mouse, which keeps its place without power

  private:
    static Settings defaultsOf(const SimulatedMouseDescription& description);
    [[nodiscard]] Answer answerRoot(const SimulatedRequest& request) const;
    [[nodiscard]] Answer answerFeatureSet(const SimulatedRequest& request) const;
    [[nodiscard]] Answer answerDeviceInformation(const SimulatedRequest& request) const;
    [[nodiscard]] Answer answerName(const SimulatedRequest& request) const;
    [[nodiscard]] Answer answerDPI(const SimulatedRequest& request);
    [[nodiscard]] Answer answerReportRate(const SimulatedRequest& request);
    [[nodiscard]] Answer answerWheel(const SimulatedRequest& request);
    [[nodiscard]] Answer answerOnboardProfiles(const SimulatedRequest& request);
    [[nodiscard]] bool offersDPI(std::uint16_t dpi) const;

    const SimulatedMouseDescription description_;
};

}  // namespace tessara
