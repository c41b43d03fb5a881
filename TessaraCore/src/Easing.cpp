#include "TessaraCore/Easing.h"

#include "TessaraCore/Clamp.h"
#include "TessaraCore/Precondition.h"

namespace tessara {

namespace {

/// A product, not std::pow: the curve is defined by this rounding.
double cubed(double x) {
    return x * x * x;
}

}  // namespace

double valueAt(Easing easing, double progress) {
    const double p = clamp(progress, 0.0, 1.0);
    switch (easing) {
        case Easing::linear:
            return p;
        case Easing::easeOut:
            return 1 - cubed(1 - p);
        case Easing::easeInOut:
            return p < 0.5 ? 4 * cubed(p) : 1 - cubed(2 - 2 * p) / 2;
    }
    preconditionFailed("an easing without a curve");
}

}  // namespace tessara
