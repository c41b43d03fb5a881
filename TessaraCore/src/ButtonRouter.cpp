#include "TessaraCore/ButtonRouter.h"

#include <algorithm>

#include "TessaraCore/Checked.h"
#include "TessaraCore/Overloaded.h"

namespace tessara {

namespace {

/// Whether a binding for `challenger` is chosen over an earlier one for `best`, both normalized.
bool isBetter(ModifierFlags challenger, ModifierFlags best) {
    if (challenger.count() != best.count()) return challenger.count() > best.count();
    return challenger.rawValue() < best.rawValue();
}

}  // namespace

ButtonRouter::ButtonRouter(std::vector<ButtonBinding> bindings, std::int64_t baseDPI)
    : bindings_(std::move(bindings)), baseDPI_(baseDPI) {}

const Action& ButtonRouter::action(std::int64_t button, ModifierFlags modifiers) const {
    static const Action passThrough = PassThroughAction{};
    const ModifierFlags wanted = modifiers.normalized();
    const ButtonBinding* best = nullptr;
    for (const ButtonBinding& binding : bindings_) {
        if (!binding.isEnabled || binding.button != button) continue;
        const ModifierFlags needed = binding.modifiers.normalized();
        if (!needed.isSubset(wanted)) continue;
        if (best == nullptr || isBetter(needed, best->modifiers.normalized())) best = &binding;
    }
    return best == nullptr ? passThrough : best->action;
}

std::vector<ButtonIntent> ButtonRouter::handle(const ButtonEvent& event) {
    return event.isDown ? press(event) : release(event);
}

std::vector<ButtonIntent> ButtonRouter::press(const ButtonEvent& event) {
    if (held_.contains(event.button)) return {};
    const HeldState& state =
        held_
            .emplace(event.button, HeldState{.action = action(event.button, event.modifiers),
                                             .pressedAtMillis = event.timestampMillis,
                                             .modifiersAtPress = event.modifiers})
            .first->second;

    std::vector<ButtonIntent> result;
    std::visit(Overloaded{
                   [&](const PassThroughAction&) {
                       result.emplace_back(PassThroughButtonIntent{event.button, true});
                   },
                   [&](const KeyStrokeAction& key) {
                       result.emplace_back(KeyDownIntent{key.code, key.modifiers});
                       result.emplace_back(KeyUpIntent{key.code, key.modifiers});
                   },
                   [&](const SequenceAction& sequence) {
                       for (const MacroStep& step : sequence.steps)
                           appendIntents(step, result);
                   },
                   [&](const HoldAction& hold) {
                       if (retainHeldKey(hold)) {
                           result.emplace_back(KeyDownIntent{hold.code, hold.modifiers});
                       }
                   },
                   [&](const RepeatWhileHeldAction& repeat) {
                       appendIntents(repeat.step, result);
                       result.emplace_back(StartRepeatIntent{
                           {.id = event.button,
                            .step = repeat.step,
                            .intervalMillis = std::max(repeat.intervalMillis, 1.0),
                            .startedAtMillis = event.timestampMillis}});
                   },
                   [&](const DPIShiftAction& shift) {
                       const std::int64_t before = currentDPI();
                       // Pushed even when nothing changes, so that the release has something to
                       // take back.
                       dpiShifts_.push_back({.button = event.button, .dpi = shift.toDPI});
                       if (before != shift.toDPI) result.emplace_back(SetDPIIntent{shift.toDPI});
                   },
                   [&](const LaunchAppAction& launch) {
                       result.emplace_back(LaunchAppIntent{launch.bundleID});
                   },
                   [&](const RunShortcutAction& shortcut) {
                       result.emplace_back(RunShortcutIntent{shortcut.name});
                   },
               },
               state.action);
    return result;
}

std::vector<ButtonIntent> ButtonRouter::release(const ButtonEvent& event) {
    const auto held = held_.extract(event.button);
    if (held.empty()) return {PassThroughButtonIntent{event.button, false}};

    std::vector<ButtonIntent> result;
    std::visit(Overloaded{
                   [&](const PassThroughAction&) {
                       result.emplace_back(PassThroughButtonIntent{event.button, false});
                   },
                   [&](const HoldAction& hold) {
                       if (releaseHeldKey(hold)) {
                           result.emplace_back(KeyUpIntent{hold.code, hold.modifiers});
                       }
                   },
                   [&](const RepeatWhileHeldAction&) {
                       result.emplace_back(StopRepeatIntent{event.button});
                   },
                   [&](const DPIShiftAction&) {
                       const std::int64_t before = currentDPI();
                       std::erase_if(dpiShifts_, [&](const DPIShift& shift) {
                           return shift.button == event.button;
                       });
                       if (before != currentDPI()) result.emplace_back(SetDPIIntent{currentDPI()});
                   },
                   [](const KeyStrokeAction&) {},
                   [](const SequenceAction&) {},
                   [](const LaunchAppAction&) {},
                   [](const RunShortcutAction&) {},
               },
               held.mapped().action);
    return result;
}

std::vector<ButtonIntent> ButtonRouter::reset() {
    std::vector<ButtonIntent> result;
    for (const auto& [button, state] : held_) {
        if (const auto* hold = std::get_if<HoldAction>(&state.action)) {
            if (releaseHeldKey(*hold)) {
                result.emplace_back(KeyUpIntent{hold->code, hold->modifiers});
            }
        } else if (std::holds_alternative<RepeatWhileHeldAction>(state.action)) {
            result.emplace_back(StopRepeatIntent{button});
        } else if (std::holds_alternative<PassThroughAction>(state.action)) {
            result.emplace_back(PassThroughButtonIntent{button, false});
        }
    }
    held_.clear();
    heldKeyOwners_.clear();
    if (!dpiShifts_.empty()) {
        dpiShifts_.clear();
        result.emplace_back(SetDPIIntent{baseDPI_});
    }
    return result;
}

std::optional<Action> ButtonRouter::heldAction(std::int64_t button) const {
    const auto held = held_.find(button);
    if (held == held_.end()) return std::nullopt;
    return held->second.action;
}

std::set<std::int64_t> ButtonRouter::heldButtons() const {
    std::set<std::int64_t> result;
    for (const auto& [button, state] : held_)
        result.insert(button);
    return result;
}

std::int64_t ButtonRouter::currentDPI() const {
    return dpiShifts_.empty() ? baseDPI_ : dpiShifts_.back().dpi;
}

bool ButtonRouter::retainHeldKey(const HoldAction& hold) {
    std::int64_t& owners = heldKeyOwners_[{hold.code, hold.modifiers.rawValue()}];
    owners = checkedAdd<std::int64_t>(owners, 1);
    return owners == 1;
}

bool ButtonRouter::releaseHeldKey(const HoldAction& hold) {
    const auto owners = heldKeyOwners_.find({hold.code, hold.modifiers.rawValue()});
    // A key that is not known as held comes up all the same: better one key-up too many than a key
    // left down.
    if (owners == heldKeyOwners_.end()) return true;
    if (owners->second > 1) {
        --owners->second;
        return false;
    }
    heldKeyOwners_.erase(owners);
    return true;
}

}  // namespace tessara
