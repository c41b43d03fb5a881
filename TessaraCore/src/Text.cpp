#include "Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <utf8proc.h>

namespace tessara::text {

namespace {

bool isASCII(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

char lowercaseASCII(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

const utf8proc_uint8_t* bytes(std::string_view text) {
    return reinterpret_cast<const utf8proc_uint8_t*>(text.data());
}

/// The first code point of `text`, which is not empty, and how many bytes it takes; -1 and one byte
/// where there is none.
struct CodePoint {
    utf8proc_int32_t value = -1;
    std::size_t length = 1;
};
CodePoint firstCodePoint(std::string_view text) {
    CodePoint result;
    const utf8proc_ssize_t length =
        utf8proc_iterate(bytes(text), static_cast<utf8proc_ssize_t>(text.size()), &result.value);
    if (length > 0) result.length = static_cast<std::size_t>(length);
    return result;
}

bool isWhitespace(utf8proc_int32_t c) {
    if (c >= 0x09 && c <= 0x0D) return true;
    switch (utf8proc_category(c)) {
        case UTF8PROC_CATEGORY_ZS:
        case UTF8PROC_CATEGORY_ZL:
        case UTF8PROC_CATEGORY_ZP:
            return true;
        default:
            return c == 0x85;
    }
}

/// The code points of a text with case folded and composed characters taken apart, kept on the
/// stack where it is of a usual length.
class Folded {
  public:
    // Most of the room is never used, so nobody fills it beforehand.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
    explicit Folded(std::string_view text) {
        utf8proc_ssize_t count = decompose(text, inPlace_);
        if (count > static_cast<utf8proc_ssize_t>(inPlace_.size())) {
            onHeap_.resize(static_cast<std::size_t>(count));
            count = decompose(text, onHeap_);
        }
        isValid_ = count >= 0;
        if (isValid_) {
            codePoints_ = std::span(onHeap_.empty() ? inPlace_.data() : onHeap_.data(),
                                    static_cast<std::size_t>(count));
        }
    }
    Folded(const Folded&) = delete;
    Folded& operator=(const Folded&) = delete;

    /// False when the text was not UTF-8; there are no code points then.
    [[nodiscard]] bool isValid() const { return isValid_; }
    [[nodiscard]] std::span<const utf8proc_int32_t> codePoints() const { return codePoints_; }

  private:
    static utf8proc_ssize_t decompose(std::string_view text, std::span<utf8proc_int32_t> buffer) {
        constexpr auto options = static_cast<utf8proc_option_t>(
            UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_CASEFOLD);
        return utf8proc_decompose(bytes(text), static_cast<utf8proc_ssize_t>(text.size()),
                                  buffer.data(), static_cast<utf8proc_ssize_t>(buffer.size()),
                                  options);
    }

    std::array<utf8proc_int32_t, 256> inPlace_;
    std::vector<utf8proc_int32_t> onHeap_;
    std::span<const utf8proc_int32_t> codePoints_;
    bool isValid_ = false;
};

/// Where two texts stand after the longest beginning in which both are ASCII and agree but for
/// case. Nothing that follows can change that beginning, so a difference between two ASCII
/// characters settles the matter.
struct ASCIIComparison {
    std::size_t length = 0;
    bool isSettled = false;  // both go on, and differ in ASCII
    bool needsUnicode = false;
};
ASCIIComparison compareASCII(std::string_view a, std::string_view b) {
    ASCIIComparison result;
    const std::size_t shorter = std::min(a.size(), b.size());
    for (; result.length < shorter; ++result.length) {
        const char x = a[result.length];
        const char y = b[result.length];
        if (!isASCII(x) || !isASCII(y)) {
            result.needsUnicode = true;
            break;
        }
        if (lowercaseASCII(x) != lowercaseASCII(y)) {
            result.isSettled = true;
            break;
        }
    }
    return result;
}

bool startsWithBytes(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(),
                      [](char x, char y) { return lowercaseASCII(x) == lowercaseASCII(y); });
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    while (!text.empty()) {
        const CodePoint first = firstCodePoint(text);
        if (!isWhitespace(first.value)) break;
        text.remove_prefix(first.length);
    }
    while (!text.empty()) {
        std::size_t last = text.size() - 1;
        while (last > 0 && isContinuation(text[last]))
            --last;
        const CodePoint codePoint = firstCodePoint(text.substr(last));
        if (!isWhitespace(codePoint.value) || last + codePoint.length != text.size()) break;
        text = text.substr(0, last);
    }
    return text;
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    utf8proc_int32_t previous = -1;
    utf8proc_int32_t state = 0;
    while (!text.empty()) {
        const CodePoint codePoint = firstCodePoint(text);
        text.remove_prefix(codePoint.length);
        if (previous < 0 || codePoint.value < 0) {
            state = 0;  // what stood before has no part in what follows
            ++count;
        } else if (utf8proc_grapheme_break_stateful(previous, codePoint.value, &state)) {
            ++count;
        }
        previous = codePoint.value;
    }
    return count;
}

bool isValid(std::string_view text) {
    while (!text.empty()) {
        const auto* const ascii = std::ranges::find_if_not(text, isASCII);
        text.remove_prefix(static_cast<std::size_t>(ascii - text.begin()));
        if (text.empty()) break;
        const CodePoint codePoint = firstCodePoint(text);
        if (codePoint.value < 0) return false;
        text.remove_prefix(codePoint.length);
    }
    return true;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    const ASCIIComparison ascii = compareASCII(a, b);
    if (!ascii.needsUnicode) return !ascii.isSettled && a.size() == b.size();
    const Folded foldedA(a);
    const Folded foldedB(b);
    if (!foldedA.isValid() || !foldedB.isValid()) {
        return a.size() == b.size() && startsWithBytes(a, b);
    }
    return std::ranges::equal(foldedA.codePoints(), foldedB.codePoints());
}

bool hasPrefixIgnoringCase(std::string_view text, std::string_view prefix) {
    const ASCIIComparison ascii = compareASCII(text, prefix);
    if (ascii.isSettled) return false;
    if (!ascii.needsUnicode) {
        if (ascii.length < prefix.size()) return false;
        if (text.size() == prefix.size() || isASCII(text[prefix.size()])) return true;
    }
    const Folded folded(text);
    const Folded foldedPrefix(prefix);
    if (!folded.isValid() || !foldedPrefix.isValid()) return startsWithBytes(text, prefix);
    const auto whole = folded.codePoints();
    const auto start = foldedPrefix.codePoints();
    if (start.size() > whole.size() || !std::ranges::equal(start, whole.first(start.size()))) {
        return false;
    }
    return start.empty() || start.size() == whole.size() ||
           utf8proc_grapheme_break(start.back(), whole[start.size()]);
}

std::string presentable(std::string_view text) {
    constexpr std::size_t limit = 200;
    std::string result;
    while (!text.empty()) {
        if (result.size() > limit) return result + "…";
        const CodePoint codePoint = firstCodePoint(text);
        const bool isShowable =
            codePoint.value >= 0 && utf8proc_category(codePoint.value) != UTF8PROC_CATEGORY_CC;
        result += isShowable ? text.substr(0, codePoint.length) : "�";
        text.remove_prefix(codePoint.length);
    }
    return result;
}

}  // namespace tessara::text
