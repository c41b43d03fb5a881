#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tessara {

/// Writes JSON for people to read: indented by two spaces, one member or element to a line.
///
/// It puts commas, colons and line breaks where they belong and leaves the order of calls to its
/// caller, who opens and closes objects and arrays in pairs and gives each member of an object its
/// key first. It checks neither that, nor that keys differ. Used on one thread.
///
///     JSONWriter writer;
///     writer.beginObject();
///     writer.key("priority");
///     writer.signedInteger(10);
///     writer.endObject();
///     const std::string text = std::move(writer).take();
///
/// Most callers want `encodeJSON` (JSON.h), which does all of it.
class JSONWriter {
  public:
    // Each of these is one value: the outermost, an element of the array that is open, or the value
    // of the key just written.

    void beginObject() { open('{'); }
    /// Closes the object begun last. One without members is written as "{}".
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    /// Closes the array begun last. One without elements is written as "[]".
    void endArray() { close(']'); }
    /// The key of the member that comes next, in an object. It must be UTF-8.
    void key(std::string_view key);

    /// "true" or "false".
    void boolean(bool value);
    /// In decimals, every digit of it, as for the unsigned ones.
    void signedInteger(std::int64_t value);
    void unsignedInteger(std::uint64_t value);
    /// The shortest text that reads back as the same double, the sign of a 0 included: 250, 0.1,
    /// 1e+300. False, and nothing written, when `value` is not finite.
    [[nodiscard]] bool number(double value);
    /// A string, with escapes for what JSON wants escaped and for nothing else. False, and nothing
    /// written, when `text` is not UTF-8.
    [[nodiscard]] bool string(std::string_view text);

    /// All that was written, without a line break at the end. The writer is spent.
    [[nodiscard]] std::string take() && { return std::move(text_); }

  private:
    void open(char bracket);
    void close(char bracket);
    /// What must stand ahead of the next value: a comma, a line break, the indent.
    void separate();
    void breakLine();

    std::string text_;
    std::size_t depth_ = 0;
    bool isFirst_ = true;  // of its array or object
    bool hasKey_ = false;  // the next value belongs to a key just written
};

}  // namespace tessara
