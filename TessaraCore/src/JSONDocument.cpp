#include "TessaraCore/JSONDocument.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

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
    bool null() {
        add(JSONDocument::Kind::null);
        return true;
    }
    bool boolean(bool value) {
        add(JSONDocument::Kind::boolean).boolean = value;
        return true;
    }
    bool number_integer(std::int64_t value) {
        add(JSONDocument::Kind::integer).integer = value;
        return true;
    }
    bool number_unsigned(std::uint64_t value) {
        add(JSONDocument::Kind::unsignedInteger).unsignedInteger = value;
        return true;
    }
    bool number_float(double value, const std::string&) {
        add(JSONDocument::Kind::number).number = value;
        return true;
    }
    bool string(const std::string& value) {
        const JSONDocument::Text text = keep(value);
        add(JSONDocument::Kind::string).string = text;
        return true;
    }
    bool binary(const nlohmann::json::binary_t&) { return false; }  // JSON has none
    bool key(const std::string& value) {
        key_ = keep(value);
        return true;
    }
    bool start_object(std::size_t) { return open(JSONDocument::Kind::object); }
    bool end_object() { return close(); }
    bool start_array(std::size_t) { return open(JSONDocument::Kind::array); }
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
    JSONDocument::Node& add(JSONDocument::Kind kind) {
        JSONDocument::Node& node = document_.nodes_.emplace_back();
        node.key = std::exchange(key_, {});
        node.kind = kind;
        node.end = document_.nodes_.size();
        return node;
    }
    bool open(JSONDocument::Kind kind) {
        if (open_.size() == JSONDocument::maximumDepth) {
            isTooDeep_ = true;
            return false;
        }
        open_.push_back(document_.nodes_.size());
        add(kind);
        return true;
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
    JSONDocumentBuilder builder;
    // The library takes a NUL for the end of the text and would not see what follows.
    const std::size_t nul = text.find('\0');
    if (nul != std::string_view::npos) {
        return std::unexpected(errorAt(nul, text, "a character that is no part of JSON"));
    }
    const bool isWhole = nlohmann::json::sax_parse(text, &builder);
    return std::move(builder).finish(isWhole, text);
}

JSONValue JSONDocument::root() const {
    return {this, 0};
}

std::optional<bool> JSONValue::boolean() const {
    if (node().kind != JSONDocument::Kind::boolean) return std::nullopt;
    return node().boolean;
}

std::optional<std::string_view> JSONValue::string() const {
    if (node().kind != JSONDocument::Kind::string) return std::nullopt;
    return document_->view(node().string);
}

std::optional<double> JSONValue::number() const {
    switch (node().kind) {
        case JSONDocument::Kind::integer:
            return static_cast<double>(node().integer);
        case JSONDocument::Kind::unsignedInteger:
            return static_cast<double>(node().unsignedInteger);
        case JSONDocument::Kind::number:
            return node().number;
        default:
            return std::nullopt;
    }
}

namespace {

/// `value` as an integer, when it has no fraction and lies in `lower` to below `upper`.
template <typename T>
std::optional<T> whole(double value, double lower, double upper) {
    if (!(value >= lower && value < upper) || std::trunc(value) != value) return std::nullopt;
    return static_cast<T>(value);
}

template <typename T, typename From>
std::optional<T> inRange(From value) {
    if (!std::in_range<T>(value)) return std::nullopt;
    return static_cast<T>(value);
}

}  // namespace

std::optional<std::int64_t> JSONValue::signedInteger() const {
    switch (node().kind) {
        case JSONDocument::Kind::integer:
            return node().integer;
        case JSONDocument::Kind::unsignedInteger:
            return inRange<std::int64_t>(node().unsignedInteger);
        case JSONDocument::Kind::number:
            return whole<std::int64_t>(node().number, -0x1p63, 0x1p63);
        default:
            return std::nullopt;
    }
}

std::optional<std::uint64_t> JSONValue::unsignedInteger() const {
    switch (node().kind) {
        case JSONDocument::Kind::integer:
            return inRange<std::uint64_t>(node().integer);
        case JSONDocument::Kind::unsignedInteger:
            return node().unsignedInteger;
        case JSONDocument::Kind::number:
            return whole<std::uint64_t>(node().number, 0, 0x1p64);
        default:
            return std::nullopt;
    }
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
    switch (node().kind) {
        case JSONDocument::Kind::null:
            return "null";
        case JSONDocument::Kind::boolean:
            return "a boolean";
        case JSONDocument::Kind::integer:
            return fmt::format("the number {}", node().integer);
        case JSONDocument::Kind::unsignedInteger:
            return fmt::format("the number {}", node().unsignedInteger);
        case JSONDocument::Kind::number:
            return fmt::format("the number {}", node().number);
        case JSONDocument::Kind::string:
            return "a string";
        case JSONDocument::Kind::array:
            return "an array";
        case JSONDocument::Kind::object:
            return "an object";
    }
    return {};
}

}  // namespace tessara
