#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The profiles in the mouse's own memory. The client reads that memory as raw bytes and does not
/// know what they mean.

namespace tessara {

/// Who decides what the mouse does: its own profiles or the host's software.
enum class HIDPPOnboardMode : std::uint8_t { onboard = 1, host = 2 };

/// The text for the user.
std::string_view description(HIDPPOnboardMode mode);

/// The make-up of the mouse's memory.
struct HIDPPOnboardProfilesDescriptor {
    std::uint8_t memoryModel = 0;
    std::uint8_t profileFormat = 0;
    std::uint8_t macroFormat = 0;
    std::uint8_t profileCount = 0;
    /// Profiles as the mouse left the factory.
    std::uint8_t profileCountOOB = 0;
    std::uint8_t buttonCount = 0;
    std::uint8_t sectorCount = 0;
    /// Bytes of a sector.
    std::int64_t sectorSize = 0;
    std::uint8_t mechanicalLayout = 0;
    std::uint8_t variousInfo = 0;

    /// All fields in one line.
    std::string description() const;

    bool operator==(const HIDPPOnboardProfilesDescriptor&) const = default;
};

/// The profile that is in force in the mouse.
struct HIDPPCurrentProfile {
    std::uint8_t page = 0;
    std::uint8_t index = 0;

    /// Both fields in one line.
    std::string description() const;

    bool operator==(const HIDPPCurrentProfile&) const = default;
};

}  // namespace tessara
