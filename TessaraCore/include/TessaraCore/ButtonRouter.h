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

/// Button numbers from `first` to `last`, both included.
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
/// It performs nothing and allows any button number. A value without a lock; its owner sees to it
/// that one thread at a time uses it.
class ButtonRouter {
  public:
    /// The buttons that the user can bind. The router itself sets no such limit.
    static constexpr ButtonRange bindableButtons{.first = 3, .last = 15};

    /// What a press chose.
    struct HeldState {
        Action action = PassThroughAction{};
        double pressedAtMillis = 0;
        ModifierFlags modifiersAtPress = ModifierFlags::none;

        bool operator==(const HeldState&) const = default;
    };

    ButtonRouter(std::vector<ButtonBinding> bindings, std::int64_t baseDPI);

    [[nodiscard]] const std::vector<ButtonBinding>& bindings() const { return bindings_; }
    /// Takes effect at the next press. What is held ends as it began.
    void setBindings(std::vector<ButtonBinding> bindings) { bindings_ = std::move(bindings); }

    /// The resolution while no shift is active.
    [[nodiscard]] std::int64_t baseDPI() const { return baseDPI_; }
    void setBaseDPI(std::int64_t baseDPI) { baseDPI_ = baseDPI; }

    /// `press` or `release`, as the event says.
    [[nodiscard]] std::vector<ButtonIntent> handle(const ButtonEvent& event);

    /// A press of a button that is already down asks for nothing and changes nothing.
    [[nodiscard]] std::vector<ButtonIntent> press(const ButtonEvent& event);

    /// A release without a press is handed on, never swallowed.
    [[nodiscard]] std::vector<ButtonIntent> release(const ButtonEvent& event);

    /// Lets go of everything, for when the stream of events is broken: for each thing that is down
    /// an intent that takes it up, by rising button number, then the base resolution when a shift
    /// was active.
    [[nodiscard]] std::vector<ButtonIntent> reset();

    /// The action that a press of `button` would choose: that of the enabled binding which asks for
    /// the most of the modifiers held. Among those that ask for as many, the lower bits win, then
    /// the earlier binding. Pass-through when there is none. Valid until the bindings change. It
    /// does not allocate.
    [[nodiscard]] const Action& action(std::int64_t button, ModifierFlags modifiers) const;

    /// The action of a button that is down.
    [[nodiscard]] std::optional<Action> heldAction(std::int64_t button) const;
    [[nodiscard]] std::set<std::int64_t> heldButtons() const;
    /// The resolution in force: that of the newest shift, or the base.
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
