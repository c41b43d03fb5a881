#include "TessaraCore/JSONDocument.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "TessaraCore/Overloaded.h"
#include "Text.h"

namespace tessara {

namespace {

/// Where the bracket stands that opens nesting level `level` of `text`, which is JSON up to there.
std::size_t offsetOfLevel(std::string_view text, std::size_t level) {
    std::size_t depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (isInString) {
            if (c == '\\') ++i;
            if (c == '"') isInString = false;
        } else if (c == '"') {
            isInString = true;
        } else if (c == '[' || c == '{') {
            if (++depth == level) return i;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return text.size();
}

/// The words of an error of the JSON library without the code in brackets and the position, which
/// it gives for some errors and not for others.
std::string_view withoutPosition(std::string_view words) {
    const auto dropThrough = [&](std::string_view mark) {
        const std::size_t found = words.find(mark);
        if (found != std::string_view::npos) words.remove_prefix(found + mark.size());
    };
    dropThrough("] ");
    if (words.starts_with("parse error")) dropThrough(": ");
    return words;
}

JSONSyntaxError errorAt(std::size_t offset, std::string_view text, std::string_view reason) {
    const std::string_view before = text.substr(0, std::min(offset, text.size()));
    const std::size_t lineStart = before.rfind('\n') + 1;  // 0 when there is none
    return {.line = 1 + static_cast<std::size_t>(std::ranges::count(before, '\n')),
            .column = before.size() - lineStart + 1,
            .reason = text::presentable(reason)};
}

}  // namespace

/// Takes what the parser of the JSON library reports and lays it out in the nodes of a document.
class JSONDocumentBuilder {
  public:
    bool null() { return add(std::monostate{}); }
    bool boolean(bool value) { return add(value); }
    bool number_integer(std::int64_t value) { return add(value); }
    bool number_unsigned(std::uint64_t value) { return add(value); }
    bool number_float(double value, const std::string&) { return add(value); }
    bool string(const std::string& value) { return add(keep(value)); }
    bool binary(const nlohmann::json::binary_t&) { return false; }  // JSON has none
    bool key(const std::string& value) {
        key_ = keep(value);
        return true;
    }
    bool start_object(std::size_t) { return open(JSONDocument::Object{}); }
    bool end_object() { return close(); }
    bool start_array(std::size_t) { return open(JSONDocument::Array{}); }
    bool end_array() { return close(); }
    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::json::exception& exception) {
        errorOffset_ = position == 0 ? 0 : position - 1;
        reason_ = exception.what();
        return false;
    }

    /// The document, or why `text`, which was just parsed, is none.
    [[nodiscard]] std::expected<JSONDocument, JSONSyntaxError> finish(bool isWhole,
                                                                      std::string_view text) && {
        if (isWhole) return std::move(document_);
        if (isTooDeep_) {
            return std::unexpected(
                errorAt(offsetOfLevel(text, JSONDocument::maximumDepth + 1), text,
                        fmt::format("nested deeper than {} levels", JSONDocument::maximumDepth)));
        }
        return std::unexpected(errorAt(errorOffset_, text, withoutPosition(reason_)));
    }

  private:
    JSONDocument::Text keep(std::string_view text) {
        const std::size_t offset = document_.characters_.size();
        document_.characters_ += text;
        return {.offset = offset, .length = text.size()};
    }
    template <typename Value>
    bool add(Value value) {
        document_.nodes_.push_back(
            {.value = value, .key = std::exchange(key_, {}), .end = document_.nodes_.size() + 1});
        return true;
    }
    template <typename Value>
    bool open(Value value) {
        if (open_.size() == JSONDocument::maximumDepth) {
            isTooDeep_ = true;
            return false;
        }
        open_.push_back(document_.nodes_.size());
        return add(value);
    }
    bool close() {
        document_.nodes_[open_.back()].end = document_.nodes_.size();
        open_.pop_back();
        return true;
    }

    JSONDocument document_;
    JSONDocument::Text key_;         // of the value that comes next
    std::vector<std::size_t> open_;  // the arrays and objects around it
    std::size_t errorOffset_ = 0;
    std::string reason_;
    bool isTooDeep_ = false;
};

std::expected<JSONDocument, JSONSyntaxError> JSONDocument::parse(std::string_view text) {
    // The library takes a NUL for the end of the text and would not see what follows.
    const std::size_t nul = text.find('\0');
    if (nul != std::string_view::npos) {
        return std::unexpected(errorAt(nul, text, "a character that is no part of JSON"));
    }
    JSONDocumentBuilder builder;
    const bool isWhole = nlohmann::json::sax_parse(text, &builder);
    return std::move(builder).finish(isWhole, text);
}

JSONValue JSONDocument::root() const {
    return {this, 0};
}

std::optional<bool> JSONValue::boolean() const {
    const bool* value = std::get_if<bool>(&node().value);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

std::optional<std::string_view> JSONValue::string() const {
    const auto* text = std::get_if<JSONDocument::Text>(&node().value);
    return text == nullptr ? std::nullopt : std::optional(document_->view(*text));
}

namespace {

/// `value` as an integer, when it is a number without a fraction that lies in `lower` to below
/// `upper`, which are the limits of `T`.
template <typename T, typename Value>
std::optional<T> whole(const Value& value, double lower, double upper) {
    if constexpr (std::is_same_v<Value, double>) {
        if (value >= lower && value < upper && std::trunc(value) == value) {
            return static_cast<T>(value);
        }
    } else if constexpr (std::is_integral_v<Value> && !std::is_same_v<Value, bool>) {
        if (std::in_range<T>(value)) return static_cast<T>(value);
    }
    return std::nullopt;
}

}  // namespace

std::optional<double> JSONValue::number() const {
    return std::visit(
        []<typename Value>(const Value& value) -> std::optional<double> {
            if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>) {
                return static_cast<double>(value);
            }
            return std::nullopt;
        },
        node().value);
}

std::optional<std::int64_t> JSONValue::signedInteger() const {
    return std::visit([](const auto& value) { return whole<std::int64_t>(value, -0x1p63, 0x1p63); },
                      node().value);
}

std::optional<std::uint64_t> JSONValue::unsignedInteger() const {
    return std::visit([](const auto& value) { return whole<std::uint64_t>(value, 0, 0x1p64); },
                      node().value);
}

JSONValue::Children JSONValue::children() const {
    const bool hasChildren = isArray() || isObject();
    const std::size_t end = node().end;
    return {{document_, hasChildren ? index_ + 1 : end}, {document_, end}};
}

std::optional<JSONValue> JSONValue::member(std::string_view key) const {
    if (!isObject()) return std::nullopt;
    for (const JSONValue child : children()) {
        if (child.key() == key) return child;
    }
    return std::nullopt;
}

std::string JSONValue::description() const {
    const auto number = [](auto value) { return fmt::format("the number {}", value); };
    return std::visit(Overloaded{
                          [](std::monostate) -> std::string { return "null"; },
                          [](bool) -> std::string { return "a boolean"; },
                          [&](std::int64_t value) { return number(value); },
                          [&](std::uint64_t value) { return number(value); },
                          [&](double value) { return number(value); },
                          [](JSONDocument::Text) -> std::string { return "a string"; },
                          [](JSONDocument::Array) -> std::string { return "an array"; },
                          [](JSONDocument::Object) -> std::string { return "an object"; },
                      },
                      node().value);
}

}  // namespace tessara
