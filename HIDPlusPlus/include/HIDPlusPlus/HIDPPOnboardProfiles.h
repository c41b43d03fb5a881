#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The profiles in the mouse's own memory. The client reads that memory as raw bytes and does not
/// know what they mean; it never writes it.

namespace tessara {

/// Who decides what the mouse does: its own profiles or the host's software. The values are those
/// on the wire.
enum class HIDPPOnboardMode : std::uint8_t { onboard = 1, host = 2 };

/// The text for the user.
std::string_view description(HIDPPOnboardMode mode);

/// The make-up of the mouse's memory.
struct HIDPPOnboardProfilesDescriptor {
    // Numbers that stand for a layout; what each layout is, the client does not know.
    std::uint8_t memoryModel = 0;
    std::uint8_t profileFormat = 0;
    std::uint8_t macroFormat = 0;
    /// Profiles that there is room for.
    std::uint8_t profileCount = 0;
    /// Profiles that the mouse left the factory with ("out of the box").
    std::uint8_t profileCountOOB = 0;
    /// Buttons that a profile has an entry for.
    std::uint8_t buttonCount = 0;
    std::uint8_t sectorCount = 0;
    /// Bytes of a sector.
    std::int64_t sectorSize = 0;
    /// Flags, kept as they are read.
    std::uint8_t mechanicalLayout = 0;
    std::uint8_t variousInfo = 0;

    /// All fields in one line.
    std::string description() const;

    bool operator==(const HIDPPOnboardProfilesDescriptor&) const = default;
};

/// The profile that is in force in the mouse.
struct HIDPPCurrentProfile {
    /// Where in the memory it lies, as the mouse counts.
    std::uint8_t page = 0;
    std::uint8_t index = 0;

    /// Both fields in one line.
    std::string description() const;

    bool operator==(const HIDPPCurrentProfile&) const = default;
};

}  // namespace tessara
