#include "HeldInput.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <ranges>
#include <variant>

#include "TessaraCore/Overloaded.h"

namespace tessara {

namespace {

bool releasesKey(const ButtonIntent& intent, std::uint16_t code) {
    const auto* up = std::get_if<KeyUpIntent>(&intent);
    return up != nullptr && up->code == code;
}

bool releasesMouseButton(const ButtonIntent& intent, std::int64_t number) {
    if (const auto* up = std::get_if<MouseButtonUpIntent>(&intent)) return up->number == number;
    const auto* passed = std::get_if<PassThroughButtonIntent>(&intent);
    return passed != nullptr && !passed->isDown && passed->number == number;
}

/// Moves the elements that are not `kept` out of `held`, the last of them first.
template <typename Element, typename Predicate>
std::vector<Element> takeNewestFirst(std::vector<Element>& held, Predicate kept) {
    std::vector<Element> taken;
    std::ranges::copy_if(held | std::views::reverse, std::back_inserter(taken), std::not_fn(kept));
    std::erase_if(held, std::not_fn(kept));
    return taken;
}

}  // namespace

void HeldInput::note(const ButtonIntent& intent) {
    const auto keyUp = [this](std::uint16_t code) {
        std::erase_if(keys_, [code](const HeldKey& key) { return key.code == code; });
    };
    const auto mouseButton = [this](std::int64_t number, bool isDown) {
        std::erase(mouseButtons_, number);
        if (isDown) mouseButtons_.push_back(number);
    };
    std::visit(Overloaded{
                   [&](const KeyDownIntent& key) {
                       keyUp(key.code);
                       keys_.push_back({.code = key.code, .modifiers = key.modifiers});
                   },
                   [&](const KeyUpIntent& key) { keyUp(key.code); },
                   [&](const MouseButtonDownIntent& button) { mouseButton(button.number, true); },
                   [&](const MouseButtonUpIntent& button) { mouseButton(button.number, false); },
                   [&](const PassThroughButtonIntent& button) {
                       mouseButton(button.number, button.isDown);
                   },
                   [](const DelayIntent&) {},
                   [](const StartRepeatIntent&) {},
                   [](const StopRepeatIntent&) {},
                   [](const SetDPIIntent&) {},
                   [](const LaunchAppIntent&) {},
                   [](const RunShortcutIntent&) {},
               },
               intent);
}

HeldInput HeldInput::takeAllBut(const std::vector<ButtonIntent>& releases) {
    HeldInput taken;
    taken.keys_ = takeNewestFirst(keys_, [&](const HeldKey& key) {
        return std::ranges::any_of(
            releases, [&](const ButtonIntent& intent) { return releasesKey(intent, key.code); });
    });
    taken.mouseButtons_ = takeNewestFirst(mouseButtons_, [&](std::int64_t number) {
        return std::ranges::any_of(releases, [&](const ButtonIntent& intent) {
            return releasesMouseButton(intent, number);
        });
    });
    return taken;
}

}  // namespace tessara
