#include "TessaraEngine/TapMetrics.h"

#include <limits>

#include "TessaraCore/Precondition.h"

namespace tessara {

std::string_view rawValue(TapDisableReason reason) {
    switch (reason) {
        case TapDisableReason::timeout:
            return "timeout";
        case TapDisableReason::userInput:
            return "userInput";
    }
    preconditionFailed("a reason that is none of the cases");
}

double TapMetrics::meanCallbackMicros() const {
    if (events == 0) return 0;
    return totalCallbackNanos / static_cast<double>(events) / 1000.0;
}

double TapMetrics::watchdogHeadroomFactor() const {
    if (maxCallbackNanos == 0) return std::numeric_limits<double>::infinity();
    return 1e9 / maxCallbackNanos;
}

}  // namespace tessara
