#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "TessaraCore/Action.h"
#include "TessaraCore/ButtonBinding.h"
#include "TessaraCore/ButtonEvent.h"
#include "TessaraCore/ButtonIntent.h"

namespace tessara {

/// Button numbers from `first` to `last`, both included. 0 is the left button, 1 the right one, 2
/// the middle one, and the others follow.
struct ButtonRange {
    std::int64_t first;
    std::int64_t last;

    [[nodiscard]] constexpr bool contains(std::int64_t button) const {
        return button >= first && button <= last;
    }
};

/// Says what each press and release of a button leads to, as a list of intents in order.
///
/// The binding is chosen at the press and remembered until the release, so that a modifier let go
/// in between, or a change of the bindings, cannot strand a key. A key held by two buttons goes
/// down once and up once. Shifts of the resolution stack: the newest still held is in force.
///
/// On a base of 2000, with one button for 800 and another for 1600 pressed in this order, the
/// resolution goes to 800 and to 1600. If the first is released first nothing changes, and the
/// release of the second brings back 2000; the other way round it goes to 800, then to 2000.
///
/// It performs nothing, keeps no time and allows any button number. The intents of an event have to
/// be carried out before those of the next. A value without a lock; its owner sees to it that one
/// thread at a time uses it.
class ButtonRouter {
  public:
    /// The buttons that the user can bind. The router itself sets no such limit.
    static constexpr ButtonRange bindableButtons{.first = 3, .last = 15};

    /// What a press chose, kept until the release of its button.
    struct HeldState {
        Action action = PassThroughAction{};
        /// The timestamp of the press.
        double pressedAtMillis = 0;
        /// As the press had them, Caps Lock included.
        ModifierFlags modifiersAtPress = ModifierFlags::none;

        bool operator==(const HeldState&) const = default;
    };

    /// A router over `bindings` with nothing held. `baseDPI` is the resolution while no shift is
    /// active, in counts per inch; it is not checked.
    ButtonRouter(std::vector<ButtonBinding> bindings, std::int64_t baseDPI);

    [[nodiscard]] const std::vector<ButtonBinding>& bindings() const { return bindings_; }
    /// Takes effect at the next press. What is held ends as it began.
    void setBindings(std::vector<ButtonBinding> bindings) { bindings_ = std::move(bindings); }

    /// The resolution while no shift is active, in counts per inch.
    [[nodiscard]] std::int64_t baseDPI() const { return baseDPI_; }
    /// Asks for nothing by itself: a shift that is active stays in force, and ends in the new base.
    void setBaseDPI(std::int64_t baseDPI) { baseDPI_ = baseDPI; }

    /// `press` or `release`, as the event says.
    [[nodiscard]] std::vector<ButtonIntent> handle(const ButtonEvent& event);

    /// Chooses the action of a button that goes down, by the modifiers of the event, and asks for
    /// its beginning. A press of a button that is already down asks for nothing and changes
    /// nothing, whatever its action.
    [[nodiscard]] std::vector<ButtonIntent> press(const ButtonEvent& event);

    /// Asks for the end of what the press of the button began. The modifiers of the event play no
    /// part. A release without a press is handed on, never swallowed. A shift of the resolution
    /// asks for something only if the resolution in force changes with its end.
    [[nodiscard]] std::vector<ButtonIntent> release(const ButtonEvent& event);

    /// Lets go of everything, for when the stream of events is broken: for each thing that is down
    /// an intent that takes it up, by rising button number, then the base resolution when a shift
    /// was active. A release that comes later is one without a press. With nothing held there are
    /// no intents.
    [[nodiscard]] std::vector<ButtonIntent> reset();

    /// The action that a press of `button` would choose: that of the enabled binding which asks for
    /// the most of the modifiers held. Among those that ask for as many, the lower bits win, then
    /// the earlier binding. Pass-through when there is none. Caps Lock and bits without a name
    /// count on neither side. Valid until the bindings change. It does not allocate.
    ///
    /// Of bindings for no modifier, for Shift, for Control and for Shift with Control, the last is
    /// chosen while Shift, Control and Command are held. Of one for Shift and one for Command, that
    /// for Shift is chosen while both are held.
    [[nodiscard]] const Action& action(std::int64_t button, ModifierFlags modifiers) const;

    /// The buttons that are down and what the press of each chose. Valid until the next call that
    /// changes the router.
    [[nodiscard]] const std::map<std::int64_t, HeldState>& held() const { return held_; }
    /// The action of a button that is down; empty for one that is not.
    [[nodiscard]] std::optional<Action> heldAction(std::int64_t button) const;
    /// The numbers of the buttons that are down, with whatever action, pass-through included.
    [[nodiscard]] std::set<std::int64_t> heldButtons() const;
    /// The resolution in force: that of the newest shift still held, or the base.
    [[nodiscard]] std::int64_t currentDPI() const;

    bool operator==(const ButtonRouter&) const = default;

  private:
    /// The same code with other modifiers is another key.
    struct HeldKey {
        std::uint16_t code = 0;
        std::uint32_t modifiers = 0;

        auto operator<=>(const HeldKey&) const = default;
    };
    struct DPIShift {
        std::int64_t button = 0;
        std::int64_t dpi = 0;

        bool operator==(const DPIShift&) const = default;
    };

    /// Adds an owner of the key of `hold`; true for the first.
    bool retainHeldKey(const HoldAction& hold);
    /// Takes an owner away; true when none is left, or none was known.
    bool releaseHeldKey(const HoldAction& hold);

    std::vector<ButtonBinding> bindings_;
    std::int64_t baseDPI_;
    std::map<std::int64_t, HeldState> held_;         // by button
    std::map<HeldKey, std::int64_t> heldKeyOwners_;  // never 0
    std::vector<DPIShift> dpiShifts_;                // oldest first
};

}  // namespace tessara
