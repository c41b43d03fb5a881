#pragma once

#include <cstdint>

namespace tessara {

/// What becomes of an event that the tap was shown.
enum class TapVerdict : std::uint8_t {
    /// It goes on, as the handler left it.
    pass,
    /// It goes no further: no application ever hears of it.
    suppress
};

}  // namespace tessara
