#include "TessaraReplay/Recording.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <concepts>
#include <cstring>
#include <fstream>
#include <system_error>
#include <utility>

#include <fmt/format.h>

namespace tessara {
namespace {

constexpr std::string_view eventPrefix = "E:";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t decimalsOfSeconds = 6;
/// The distance between two events in nanoseconds must fit 64 bits, with room for what follows.
constexpr std::uint64_t greatestSeconds = 9'000'000'000;

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// A piece of the file for an error message: short, and without what would upset a terminal.
std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 40;
    std::string result = "\"";
    for (const char c : text.substr(0, longest))
        result += std::isprint(static_cast<unsigned char>(c)) != 0 ? c : '?';
    return result + (text.size() > longest ? "...\"" : "\"");
}

/// Takes the next word off the front of `rest`; empty at the end of the line.
std::string_view takeWord(std::string_view& rest) {
    const auto* const begin = std::ranges::find_if_not(rest, isBlank);
    const auto* const end = std::find_if(begin, rest.end(), isBlank);
    const std::string_view word(begin, end);
    rest = std::string_view(end, rest.end());
    return word;
}

template <std::integral T>
std::errc parseWhole(std::string_view text, T& result, int base = 10) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const auto [stop, error] = std::from_chars(begin, end, result, base);
    return error == std::errc{} && stop != end ? std::errc::invalid_argument : error;
}

std::expected<std::chrono::microseconds, std::string> parseTime(std::string_view text) {
    const std::size_t dot = text.find('.');
    const std::string_view whole = text.substr(0, dot);
    const std::string_view decimals =
        dot == std::string_view::npos ? std::string_view{} : text.substr(dot + 1);
    if (whole.empty() || !std::ranges::all_of(whole, isDigit) ||
        decimals.size() != decimalsOfSeconds || !std::ranges::all_of(decimals, isDigit)) {
        return std::unexpected(
            fmt::format("the time {} is not seconds with exactly six decimals", quoted(text)));
    }
    std::uint64_t seconds = 0;
    std::int64_t micros = 0;
    if (parseWhole(whole, seconds) != std::errc{} || parseWhole(decimals, micros) != std::errc{} ||
        seconds > greatestSeconds)
        return std::unexpected(
            fmt::format("the time {} lies beyond {} seconds", quoted(text), greatestSeconds));
    return std::chrono::seconds(seconds) + std::chrono::microseconds(micros);
}

std::expected<std::uint16_t, std::string> parseHex(std::string_view what, std::string_view text) {
    std::uint16_t result = 0;
    if (text.size() != 4 || parseWhole(text, result, 16) != std::errc{})
        return std::unexpected(
            fmt::format("the {} {} is not four hexadecimal digits", what, quoted(text)));
    return result;
}

std::expected<std::int32_t, std::string> parseValue(std::string_view text) {
    std::int32_t result = 0;
    const std::errc error = parseWhole(text, result);
    if (error == std::errc{}) return result;
    if (error == std::errc::result_out_of_range)
        return std::unexpected(fmt::format("the value {} does not fit 32 bits", quoted(text)));
    return std::unexpected(fmt::format("the value {} is not a whole decimal number", quoted(text)));
}

/// Reads what follows "E:" on a line.
std::expected<RecordedEvent, std::string> parseEvent(std::string_view fields) {
    fields = fields.substr(0, fields.find('#'));
    const std::string_view time = takeWord(fields);
    const std::string_view type = takeWord(fields);
    const std::string_view code = takeWord(fields);
    const std::string_view value = takeWord(fields);
    if (value.empty()) return std::unexpected("an event needs a time, a type, a code and a value");
    if (const std::string_view excess = takeWord(fields); !excess.empty())
        return std::unexpected(fmt::format("unexpected {} after the value", quoted(excess)));

    const auto parsedTime = parseTime(time);
    if (!parsedTime) return std::unexpected(parsedTime.error());
    const auto parsedType = parseHex("type", type);
    if (!parsedType) return std::unexpected(parsedType.error());
    const auto parsedCode = parseHex("code", code);
    if (!parsedCode) return std::unexpected(parsedCode.error());
    const auto parsedValue = parseValue(value);
    if (!parsedValue) return std::unexpected(parsedValue.error());
    return RecordedEvent{
        .time = *parsedTime, .type = *parsedType, .code = *parsedCode, .value = *parsedValue};
}

std::string seconds(std::chrono::microseconds time) {
    constexpr std::int64_t microsPerSecond = 1'000'000;
    return fmt::format("{}.{:06}", time.count() / microsPerSecond, time.count() % microsPerSecond);
}

}  // namespace

std::string RecordingError::description() const {
    return line ? fmt::format("{}:{}: {}", file, *line, reason)
                : fmt::format("{}: {}", file, reason);
}

std::expected<Recording, RecordingError> parseRecording(std::string_view text, std::string name) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    Recording recording{.name = std::move(name), .events = {}};
    std::vector<RecordedEvent>& events = recording.events;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t newline = text.find('\n');
        std::string_view line = text.substr(0, newline);
        text.remove_prefix(newline == std::string_view::npos ? text.size() : newline + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!line.starts_with(eventPrefix)) continue;

        auto event = parseEvent(line.substr(eventPrefix.size()));
        if (event && !events.empty() && event->time < events.back().time)
            event = std::unexpected(fmt::format("the time goes back from {} to {}",
                                                seconds(events.back().time), seconds(event->time)));
        if (!event) return std::unexpected(RecordingError{recording.name, number, event.error()});
        events.push_back(*event);
    }
    if (events.empty())
        return std::unexpected(RecordingError{
            recording.name, std::nullopt, "the recording is empty: no line begins with \"E:\""});
    return recording;
}

std::expected<Recording, RecordingError> readRecording(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text;
    constexpr std::size_t chunk = 1U << 16U;
    while (file) {
        const std::size_t size = text.size();
        text.resize(size + chunk);
        file.read(text.data() + size, chunk);
        text.resize(size + static_cast<std::size_t>(file.gcount()));
    }
    if (!file.is_open() || !file.eof())
        return std::unexpected(
            RecordingError{path, std::nullopt,
                           fmt::format("cannot be read: {}",
                                       errno != 0 ? std::strerror(errno) : "unknown error")});
    return parseRecording(text, path);
}

}  // namespace tessara
