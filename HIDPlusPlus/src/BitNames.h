#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tessara {

/// The word that stands for one bit of a set of flags.
struct BitName {
    unsigned bit;
    std::string_view word;
};

/// The words of the bits that are set in `value`, in the order of `names` and joined by commas; "-"
/// when none of them is set.
inline std::string joinBitNames(unsigned value, std::span<const BitName> names) {
    std::string joined;
    for (const auto& [bit, word] : names) {
        if ((value & bit) == 0) continue;
        if (!joined.empty()) joined += ',';
        joined += word;
    }
    return joined.empty() ? "-" : joined;
}

}  // namespace tessara
