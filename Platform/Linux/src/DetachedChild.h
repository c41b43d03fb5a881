#pragma once

namespace tessara {

/// What a child does between fork and exec so that it stands on its own: a session to itself, all
/// signals as a fresh program expects them. Only async-signal-safe calls; GLib's child set-up.
void detachChild(void* ignored);

/// The flags of GLib's spawning that go with it: our descriptors are closed and the output goes
/// nowhere. GLib itself gives an empty input and leaves no zombie.
[[nodiscard]] int detachedSpawnFlags();

}  // namespace tessara
