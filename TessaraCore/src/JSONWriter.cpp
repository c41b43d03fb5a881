#include "TessaraCore/JSONWriter.h"

#include <array>
#include <charconv>
#include <cmath>

#include <nlohmann/json.hpp>

#include "TessaraCore/Precondition.h"
#include "Text.h"

namespace tessara {

namespace {

template <typename T>
void appendNumber(std::string& text, T value) {
    std::array<char, 32> buffer{};  // the longest double takes 24
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    TESSARA_PRECONDITION(error == std::errc{}, "a number longer than any can be");
    text.append(buffer.data(), end);
}

}  // namespace

void JSONWriter::key(std::string_view key) {
    static_cast<void>(string(key));
    text_ += ": ";
    hasKey_ = true;
}

void JSONWriter::boolean(bool value) {
    separate();
    text_ += value ? "true" : "false";
}

void JSONWriter::signedInteger(std::int64_t value) {
    separate();
    appendNumber(text_, value);
}

void JSONWriter::unsignedInteger(std::uint64_t value) {
    separate();
    appendNumber(text_, value);
}

bool JSONWriter::number(double value) {
    if (!std::isfinite(value)) return false;
    separate();
    // As "-0" it would come back as the integer 0, and lose its sign.
    if (value == 0 && std::signbit(value)) {
        text_ += "-0.0";
    } else {
        appendNumber(text_, value);
    }
    return true;
}

bool JSONWriter::string(std::string_view text) {
    if (!text::isValid(text)) return false;
    separate();
    text_ += nlohmann::json(text).dump();
    return true;
}

void JSONWriter::open(char bracket) {
    separate();
    text_ += bracket;
    ++depth_;
    isFirst_ = true;
}

void JSONWriter::close(char bracket) {
    --depth_;
    if (!isFirst_) breakLine();
    text_ += bracket;
    isFirst_ = false;
}

void JSONWriter::separate() {
    if (hasKey_) {
        hasKey_ = false;
        return;
    }
    if (depth_ == 0) return;
    if (!isFirst_) text_ += ',';
    isFirst_ = false;
    breakLine();
}

void JSONWriter::breakLine() {
    text_ += '\n';
    text_.append(2 * depth_, ' ');
}

}  // namespace tessara
