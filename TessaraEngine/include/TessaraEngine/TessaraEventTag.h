#pragma once

#include <cstdint>
#include <memory>

namespace tessara {

class CGEvent;
class EventServices;
class EventSource;

/// The mark on everything that the program posts, by which it knows its own output when that comes
/// back through the tap. Other programs' taps see it too.
namespace TessaraEventTag {

/// The program's name in ASCII, read as one big-endian number; carried in the user-data field of an
/// event.
inline constexpr std::int64_t value = 0x54455353415241;

/// A source with a state of its own whose events carry the tag, and whose posting never mutes the
/// user's own input. Nothing when the system gives no source. Any thread.
[[nodiscard]] std::unique_ptr<EventSource> makeSource(EventServices& services);

}  // namespace TessaraEventTag

/// Whether the event carries the tag.
[[nodiscard]] bool isTessaraEmitted(const CGEvent& event);

/// Puts the tag on the event.
void tagAsTessaraEmitted(CGEvent& event);

}  // namespace tessara
