#include "TessaraEngine/TapMetrics.h"

#include <limits>

namespace tessara {

double TapMetrics::meanCallbackMicros() const {
    if (events == 0) return 0;
    return totalCallbackNanos / static_cast<double>(events) / 1000.0;
}

double TapMetrics::watchdogHeadroomFactor() const {
    if (maxCallbackNanos == 0) return std::numeric_limits<double>::infinity();
    return 1e9 / maxCallbackNanos;
}

}  // namespace tessara
