#include "TessaraCore/PointerAccumulator.h"

#include <cmath>

#include "TessaraCore/Checked.h"

namespace tessara {

namespace {

/// The whole pixels of `scaled` and what was held back before; `remainder` takes what is left.
std::int64_t takeWholePixels(double scaled, double& remainder) {
    const double sum = remainder + scaled;
    const std::int64_t whole = checkedInt64(sum);
    remainder = sum - std::trunc(sum);
    return whole;
}

}  // namespace

PointerPixels PointerAccumulator::apply(const PointerDelta& delta, double intervalMillis) {
    const PointerDelta scaled = curve_.apply(delta, intervalMillis);
    const std::int64_t dx = takeWholePixels(scaled.dx, remainderX_);
    const std::int64_t dy = takeWholePixels(scaled.dy, remainderY_);
    return {.dx = dx, .dy = dy};
}

void PointerAccumulator::reset() {
    remainderX_ = 0;
    remainderY_ = 0;
}

}  // namespace tessara
