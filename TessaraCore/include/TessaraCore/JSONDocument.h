#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "TessaraCore/JSONError.h"

namespace tessara {

class JSONValue;

/// A parsed JSON text, read-only.
///
/// It keeps what a strict decoder must see and a map of keys would hide: the order of members, and
/// keys that appear twice. All of it lies in two blocks of memory, so that reading a large document
/// costs little beyond the parsing. It is for decoding only; to write, see JSONWriter. A document
/// does not change once it is parsed, so that any thread may read it.
///
///     const auto document = JSONDocument::parse(text);
///     if (!document) return document.error();
///     for (const JSONValue member : document->root().children())
///         use(member.key(), member.number());
///
/// Most callers want `decodeJSON` (JSON.h), which checks the shape as well.
class JSONDocument {
  public:
    /// How many arrays and objects may lie inside one another. Deeper nesting is refused.
    static constexpr std::size_t maximumDepth = 512;

    /// Parses UTF-8 text, all of it; a byte order mark in front is passed over. Invalid UTF-8,
    /// numbers beyond the range of a double and a NUL byte are errors like any other. `text` need
    /// not live on. Time and memory are in proportion to its length.
    [[nodiscard]] static std::expected<JSONDocument, JSONSyntaxError> parse(std::string_view text);

    /// The outermost value. Valid as long as the document is neither moved nor destroyed.
    [[nodiscard]] JSONValue root() const;

  private:
    friend class JSONValue;
    friend class JSONDocumentBuilder;

    /// A part of `characters_`. Not a view, because the characters move as they grow in number.
    struct Text {
        std::size_t offset = 0;
        std::size_t length = 0;
    };
    struct Array {};
    struct Object {};
    /// One value. The values inside an array or object follow it directly, up to `end`.
    struct Node {
        std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, Text, Array, Object>
            value;            // nothing stands for null
        Text key;             // of a member of an object
        std::size_t end = 0;  // the index of the next value that is not inside this one
    };

    JSONDocument() = default;

    [[nodiscard]] std::string_view view(Text text) const {
        return std::string_view(characters_).substr(text.offset, text.length);
    }

    std::vector<Node> nodes_;
    std::string characters_;  // of all strings and keys, end to end
};

/// One value inside a `JSONDocument`; a reference, cheap to copy.
class JSONValue {
  public:
    /// The elements of an array or the members of an object, in the order of the text, and a member
    /// as often as it is there.
    class Children;

    // Each reading is empty when the value is something else. A boolean is no number, a number no
    // boolean, and null is none of them.

    /// What `true` and `false` stand for.
    [[nodiscard]] std::optional<bool> boolean() const;
    /// A string with its escapes resolved; it may hold any character, NUL too. Valid as long as the
    /// document.
    [[nodiscard]] std::optional<std::string_view> string() const;
    /// Any number, as the nearest double.
    [[nodiscard]] std::optional<double> number() const;
    /// A number without a fraction, written with a point or without, that fits.
    [[nodiscard]] std::optional<std::int64_t> signedInteger() const;
    /// The same, from 0 to the greatest number of 64 bits.
    [[nodiscard]] std::optional<std::uint64_t> unsignedInteger() const;

    [[nodiscard]] bool isNull() const { return is<std::monostate>(); }
    [[nodiscard]] bool isArray() const { return is<JSONDocument::Array>(); }
    [[nodiscard]] bool isObject() const { return is<JSONDocument::Object>(); }

    /// The key of a member of an object; empty for any other value.
    [[nodiscard]] std::string_view key() const { return document_->view(node().key); }

    /// Empty for what is neither an array nor an object.
    [[nodiscard]] Children children() const;
    /// The first member with this key; empty for what is no object or has none. It looks through
    /// the members one by one.
    [[nodiscard]] std::optional<JSONValue> member(std::string_view key) const;

    /// What it is, in words for people: "a string", "the number 3.5".
    [[nodiscard]] std::string description() const;

  private:
    friend class JSONDocument;

    /// The value at `index` of the nodes of `document`.
    JSONValue(const JSONDocument* document, std::size_t index)
        : document_(document), index_(index) {}
    [[nodiscard]] const JSONDocument::Node& node() const { return document_->nodes_[index_]; }
    template <typename T>
    [[nodiscard]] bool is() const {
        return std::holds_alternative<T>(node().value);
    }

    const JSONDocument* document_;
    std::size_t index_;
};

/// A range to go through once or often, valid as long as the document.
class JSONValue::Children {
  public:
    /// Steps from a value to the next one beside it, over all that lies inside.
    class Iterator {
      public:
        Iterator(const JSONDocument* document, std::size_t index) : value_(document, index) {}

        const JSONValue& operator*() const { return value_; }
        const JSONValue* operator->() const { return &value_; }
        Iterator& operator++() {
            value_.index_ = value_.node().end;
            return *this;
        }
        bool operator==(const Iterator& other) const {
            return value_.index_ == other.value_.index_;
        }

      private:
        JSONValue value_;
    };

    Children(Iterator begin, Iterator end) : begin_(begin), end_(end) {}

    [[nodiscard]] Iterator begin() const { return begin_; }
    [[nodiscard]] Iterator end() const { return end_; }

  private:
    Iterator begin_;
    Iterator end_;
};

}  // namespace tessara
