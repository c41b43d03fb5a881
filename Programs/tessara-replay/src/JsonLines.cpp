#include "TessaraReplay/JsonLines.h"

#include <iterator>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "TessaraCore/Overloaded.h"
#include "TessaraCore/RawValue.h"
#include "TessaraReplay/ReplayRecord.h"

namespace tessara {
namespace {

std::string_view verdict(bool passes) {
    return passes ? "pass" : "suppress";
}

std::string quoted(const std::string& text) {
    using Json = nlohmann::json;
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// The type's name, or its number where it has none here.
std::string typeName(CGEventType type) {
    switch (type) {
        case CGEventType::leftMouseDown:
            return "leftMouseDown";
        case CGEventType::leftMouseUp:
            return "leftMouseUp";
        case CGEventType::rightMouseDown:
            return "rightMouseDown";
        case CGEventType::rightMouseUp:
            return "rightMouseUp";
        case CGEventType::mouseMoved:
            return "mouseMoved";
        case CGEventType::leftMouseDragged:
            return "leftMouseDragged";
        case CGEventType::rightMouseDragged:
            return "rightMouseDragged";
        case CGEventType::keyDown:
            return "keyDown";
        case CGEventType::keyUp:
            return "keyUp";
        case CGEventType::flagsChanged:
            return "flagsChanged";
        case CGEventType::scrollWheel:
            return "scrollWheel";
        case CGEventType::otherMouseDown:
            return "otherMouseDown";
        case CGEventType::otherMouseUp:
            return "otherMouseUp";
        case CGEventType::otherMouseDragged:
            return "otherMouseDragged";
        default:
            return fmt::format("{}", static_cast<std::uint32_t>(type));
    }
}

/// An event with its flags, its place, and all of its fields that are not 0.
std::string members(const CGEvent& event) {
    std::string fields;
    for (const CGEventField field : CGEvent::allFields) {
        const double value = event.doubleValue(field);
        if (value == 0) continue;
        const auto integer = event.integerValue(field);
        const std::string number = static_cast<double>(integer) == value
                                       ? fmt::format("{}", integer)
                                       : fmt::format("{}", value);
        fields += fmt::format(R"({}"{}":{})", fields.empty() ? "" : ",",
                              static_cast<std::uint32_t>(field), number);
    }
    return fmt::format(R"("received":"{}","flags":{},"x":{},"y":{},"fields":{{{}}})",
                       typeName(event.type), event.flags, event.location.x, event.location.y,
                       fields);
}

/// The line's members after the time; empty for what has no line.
std::string members(const ReplayRecord& record) {
    return std::visit(
        Overloaded{
            [](const HandledWheel& wheel) {
                return fmt::format(R"("event":"wheel","axis":"{}","lines":{},"verdict":"{}")",
                                   rawValue(wheel.turn.axis), wheel.turn.lines,
                                   verdict(wheel.passes));
            },
            [](const HandledButton& button) {
                return fmt::format(R"("event":"button","number":{},"down":{},"verdict":"{}")",
                                   button.change.number, button.change.isDown,
                                   verdict(button.passes));
            },
            [](const HandledMotion& motion) {
                return fmt::format(
                    R"("event":"motion","dx":{},"dy":{},"outDx":{},"outDy":{},"verdict":"{}")",
                    motion.motion.dx, motion.motion.dy, motion.out.dx, motion.out.dy,
                    verdict(true));
            },
            [](const PostedScroll& scroll) {
                return fmt::format(
                    R"("post":"scroll","axis":"{}","pixels":{},"phase":"{}","modifiers":{})",
                    rawValue(scroll.axis), scroll.pixels, rawValue(scroll.phase),
                    scroll.modifiers.rawValue());
            },
            [](const PostedKey& key) {
                return fmt::format(R"("post":"key","code":{},"down":{},"modifiers":{})", key.code,
                                   key.isDown, key.modifiers.rawValue());
            },
            [](const PostedButton& button) {
                return fmt::format(R"("post":"button","number":{},"down":{})", button.number,
                                   button.isDown);
            },
            [](const RequestedDPI& request) {
                return fmt::format(R"("effect":"dpi","value":{})", request.dpi);
            },
            [](const LaunchedApp& launch) {
                return fmt::format(R"("effect":"launch","bundleID":{})", quoted(launch.bundleID));
            },
            [](const RanShortcut& shortcut) {
                return fmt::format(R"("effect":"shortcut","name":{})", quoted(shortcut.name));
            },
            [](const ReceivedEvent& received) { return members(received.event); },
            [](const FinalReset&) { return std::string{}; },
        },
        record.what);
}

}  // namespace

void appendJsonLine(std::string& text, const ReplayRecord& record) {
    const std::string rest = members(record);
    if (rest.empty()) return;
    fmt::format_to(std::back_inserter(text), "{{\"t\":{},{}}}\n", exactMillis(record.at), rest);
}

std::string exactMillis(TimePoint moment) {
    constexpr std::int64_t nanosPerMilli = 1'000'000;
    const std::int64_t nanos = moment.time_since_epoch().count();
    std::string text = fmt::format("{}.{:06}", nanos / nanosPerMilli, nanos % nanosPerMilli);
    const std::size_t lastDigit = text.find_last_not_of('0');
    // One decimal always stays, so that the number reads as the fraction that it is.
    text.resize(text[lastDigit] == '.' ? lastDigit + 2 : lastDigit + 1);
    return text;
}

}  // namespace tessara
