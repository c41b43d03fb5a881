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
/// key first.
class JSONWriter {
  public:
    // Each of these is one value: the outermost, an element of the array that is open, or the value
    // of the key just written.

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    /// The key of the member that comes next, in an object. It must be UTF-8.
    void key(std::string_view key);

    void boolean(bool value);
    void signedInteger(std::int64_t value);
    void unsignedInteger(std::uint64_t value);
    /// The shortest text that reads back as the same double. False, and nothing written, when
    /// `value` is not finite.
    [[nodiscard]] bool number(double value);
    /// False, and nothing written, when `text` is not UTF-8.
    [[nodiscard]] bool string(std::string_view text);

    /// All that was written.
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
