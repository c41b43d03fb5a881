#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/ModifierKeys.h"
#include "TessaraCore/ModifierFlags.h"

namespace tessara {

class EventServices;
class EventSource;

/// Posts key strokes with their modifiers: makes the system believe that the modifiers of a stroke
/// are held, leaves those alone that the user is really holding, and undoes exactly what it did.
///
/// A press puts the modifiers down first and then the key; a release lets the key go first and then
/// the modifiers. A modifier stays down as long as some held key needs it. What the key codes mean
/// is not known here, but for the nine modifier keys.
///
/// Nothing is reported: a stroke whose event cannot be made is dropped. Any thread; a lock is held
/// across the posts, so that strokes of several threads do not mingle. Not for the tap thread.
class KeyboardEventPoster {
  public:
    /// The modifier keys that the program knows. Those before `firstRightModifier` are the ones it
    /// presses when a stroke asks for a modifier that is not held; the others are recognised when
    /// they are asked for by code or found pressed.
    static constexpr const auto& modifiers = modifierKeys;
    static constexpr std::size_t firstRightModifier = 5;

    /// `services` must outlive the poster.
    explicit KeyboardEventPoster(EventServices& services);
    ~KeyboardEventPoster();

    KeyboardEventPoster(const KeyboardEventPoster&) = delete;
    KeyboardEventPoster& operator=(const KeyboardEventPoster&) = delete;

    /// Presses or releases the key `code` under `modifierFlags`, into the stream at `location`. A
    /// release goes by the modifiers of its press, whatever it is given. A modifier key is posted
    /// as a change of flags and never as a key.
    ///
    /// Every event carries the flags of the state after it: the modifiers that are held, by the
    /// program or by the user, and Caps Lock while it is on or asked for.
    void post(std::uint16_t code, bool isDown, ModifierFlags modifierFlags,
              CGEventTapLocation location);

  private:
    /// Rows of `modifiers`.
    using ModifierSet = std::bitset<modifierKeys.size()>;

    /// One call's view of the keyboard and where its events go.
    struct Stroke {
        ModifierSet physical;        ///< what the user holds
        std::uint64_t capsLock = 0;  ///< the Caps Lock bit while it is on
        CGEventTapLocation location{};
    };

    ModifierSet physicalModifiers(CGEventTapLocation location) const TESSARA_REQUIRES(mutex_);
    ModifierSet desiredModifiers() const TESSARA_REQUIRES(mutex_);
    void synchronizeModifiers(const Stroke& stroke) TESSARA_REQUIRES(mutex_);
    void postModifier(std::size_t row, bool isDown, const Stroke& stroke) TESSARA_REQUIRES(mutex_);
    void postKey(std::uint16_t code, bool isDown, ModifierFlags modifierFlags, const Stroke& stroke)
        TESSARA_REQUIRES(mutex_);

    EventServices& services_;

    mutable Mutex mutex_;
    /// Made at the first stroke and then kept.
    std::unique_ptr<EventSource> source_ TESSARA_GUARDED_BY(mutex_);
    /// Keys that the program holds, each with the modifiers it was pressed under.
    std::map<std::uint16_t, ModifierFlags> heldKeys_ TESSARA_GUARDED_BY(mutex_);
    /// Modifier keys that the program regards as down, the user's own fingers included.
    ModifierSet heldModifiers_ TESSARA_GUARDED_BY(mutex_);
    /// Those of them that it pressed itself.
    ModifierSet synthesizedModifiers_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
