#pragma once

#include <cstdint>

#include "TessaraCore/PointerCurve.h"

namespace tessara {

/// How the pointer of one profile behaves. The numbers are kept as they are given.
struct PointerSettings {
    /// Whether the curve is applied at all.
    bool isEnabled = true;
    /// The resolution that the profile asks of the mouse.
    std::int64_t dpi = 2000;
    /// How the counts of the mouse become pixels.
    PointerCurve curve = PointerCurve::desktop;

    bool operator==(const PointerSettings&) const = default;
};

}  // namespace tessara
