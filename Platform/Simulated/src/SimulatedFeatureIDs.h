#pragma once

#include <cstdint>

/// The features that the simulated firmware answers for, by their HID++ numbers.
namespace tessara::SimulatedFeatureID {

inline constexpr std::uint16_t root = 0x0000;
inline constexpr std::uint16_t featureSet = 0x0001;
inline constexpr std::uint16_t deviceInformation = 0x0003;
inline constexpr std::uint16_t deviceName = 0x0005;
inline constexpr std::uint16_t wheel = 0x2121;
inline constexpr std::uint16_t adjustableDPI = 0x2201;
inline constexpr std::uint16_t reportRate = 0x8060;
inline constexpr std::uint16_t onboardProfiles = 0x8100;

}  // namespace tessara::SimulatedFeatureID
