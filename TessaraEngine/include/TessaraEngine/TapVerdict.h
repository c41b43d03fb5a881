#pragma once

#include <cstdint>

namespace tessara {

/// What becomes of an event that the tap was shown.
enum class TapVerdict : std::uint8_t {
    pass,     ///< it goes on, as the handler left it
    suppress  ///< it goes no further
};

}  // namespace tessara
