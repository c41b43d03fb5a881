#include "Platform/CGEvent.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tessara {

void CGEvent::fieldIsUnknown(CGEventField field) {
    std::fprintf(stderr, "CGEvent: field %u is not one that the program knows\n",
                 static_cast<unsigned>(field));
    std::abort();
}

std::int64_t CGEvent::integerPart(double value) {
    constexpr double bound = 0x1p63;
    if (std::isnan(value)) return 0;
    if (value >= bound) return std::numeric_limits<std::int64_t>::max();
    if (value < -bound) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

}  // namespace tessara
