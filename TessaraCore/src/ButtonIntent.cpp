#include "TessaraCore/ButtonIntent.h"

#include <algorithm>

#include "TessaraCore/Overloaded.h"

namespace tessara {

void appendIntents(const MacroStep& step, std::vector<ButtonIntent>& sink) {
    std::visit(
        Overloaded{
            [&](const KeyStep& key) {
                sink.emplace_back(KeyDownIntent{key.code, key.modifiers});
                sink.emplace_back(KeyUpIntent{key.code, key.modifiers});
            },
            [&](const KeyDownStep& key) {
                sink.emplace_back(KeyDownIntent{key.code, key.modifiers});
            },
            [&](const KeyUpStep& key) { sink.emplace_back(KeyUpIntent{key.code, key.modifiers}); },
            [&](const DelayStep& delay) {
                sink.emplace_back(DelayIntent{std::max(delay.millis, 0.0)});
            },
            [&](const MouseButtonStep& button) {
                sink.emplace_back(MouseButtonDownIntent{button.number});
                sink.emplace_back(MouseButtonUpIntent{button.number});
            },
        },
        step);
}

std::vector<ButtonIntent> intents(const MacroStep& step) {
    std::vector<ButtonIntent> result;
    appendIntents(step, result);
    return result;
}

}  // namespace tessara
