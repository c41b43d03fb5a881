#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessara {

/// One event of an input device as the kernel reported it: one line of a recording. Nothing is made
/// of it here; `assembleInputs` does.
struct RecordedEvent {
    /// On the clock of whoever recorded it; only distances mean something.
    std::chrono::microseconds time{0};
    std::uint16_t type = 0;  ///< EV_REL and the like (input-event-codes.h)
    std::uint16_t code = 0;  ///< of that type: REL_X and the like
    std::int32_t value = 0;  ///< a distance, or 1 for down and 0 for up

    bool operator==(const RecordedEvent&) const = default;
};

/// What a hand did on a device, event by event. Never empty, and its times never go back.
struct Recording {
    /// The name of the file, as given.
    std::string name;
    std::vector<RecordedEvent> events;
};

/// Why a recording cannot be used.
struct RecordingError {
    /// The name of the recording, as given.
    std::string file;
    /// Counted from 1; absent when the fault is the file's as a whole.
    std::optional<std::size_t> line;
    /// What is wrong, in words for people; what it quotes of the file is cut short and printable.
    std::string reason;

    /// "FILE:LINE: reason", or "FILE: reason".
    [[nodiscard]] std::string description() const;
};

/// Reads the text of a recording, for which `name` stands in the result and in errors. The form is
/// that of evemu, in its older and its newer variety.
///
/// A line that begins with "E:" is an event: seconds with exactly six decimals, type and code of
/// four hexadecimal digits each, a decimal value of 32 bits with its sign, and after a `#` a
/// comment. Every other line describes the device and is skipped. Lines end with LF or CRLF, the
/// last one also without. A line of the first kind that cannot be read, or whose time lies before
/// that of an earlier one, is an error; so is a text without events.
[[nodiscard]] std::expected<Recording, RecordingError> parseRecording(std::string_view text,
                                                                      std::string name);

/// As `parseRecording`, of the file at `path`; one that cannot be read is an error.
[[nodiscard]] std::expected<Recording, RecordingError> readRecording(const std::string& path);

}  // namespace tessara
