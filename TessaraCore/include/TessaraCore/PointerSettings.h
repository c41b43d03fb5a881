#pragma once

#include <cstdint>

#include "TessaraCore/PointerCurve.h"

namespace tessara {

/// How the pointer of one profile behaves. The numbers are kept as they are given; what a bad one
/// does is said in `PointerCurve`.
///
/// The stored form is an object with the names of the fields as its keys, all required.
struct PointerSettings {
    /// Whether the curve is applied at all. When it is not, motion stays the system's; the
    /// resolution is asked for all the same.
    bool isEnabled = true;
    /// The resolution that the profile asks of the mouse, in counts per inch. Not checked against
    /// what the mouse can do.
    std::int64_t dpi = 2000;
    /// How the counts of the mouse become pixels.
    PointerCurve curve = PointerCurve::desktop;

    bool operator==(const PointerSettings&) const = default;
};

}  // namespace tessara
