#include "PlotScale.h"

#include <cmath>

namespace tessara {

double tickDistance(double span, int count) {
    const double rough = span / count;
    const double magnitude = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * magnitude >= rough) return factor * magnitude;
    }
    return 10.0 * magnitude;
}

std::vector<double> ticksWithin(double from, double to, double distance) {
    // A mark that rounding has put just outside still belongs to the range.
    constexpr double slack = 1e-9;
    std::vector<double> ticks;
    const double last = std::floor(to / distance + slack);
    for (double i = std::ceil(from / distance - slack); i <= last; ++i)
        ticks.push_back(i * distance);
    return ticks;
}

}  // namespace tessara
