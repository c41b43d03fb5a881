#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "TessaraCore/ScrollSettings.h"

namespace tessara {
namespace {

TEST(ScrollSettings, every_number_is_brought_into_its_range_for_use_and_kept_as_it_is) {
    using Field = double ScrollSettings::*;
    struct Case {
        const char* name;
        Field field;
        double lower;
        double upper;
    };
    constexpr double unbounded = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {"durationMillis", &ScrollSettings::durationMillis, 1, 5000},
        {"pixelsPerDetent", &ScrollSettings::pixelsPerDetent, 0, 10'000},
        {"frameIntervalMillis", &ScrollSettings::frameIntervalMillis, 1, 250},
        {"maxInFlightPixels", &ScrollSettings::maxInFlightPixels, 0, 1'000'000},
        {"accelerationWindowMillis", &ScrollSettings::accelerationWindowMillis, 0, unbounded},
        {"accelerationGain", &ScrollSettings::accelerationGain, 0, 100},
        {"maxAccelerationMultiplier", &ScrollSettings::maxAccelerationMultiplier, 1, 100}};
    for (const auto& [name, field, lower, upper] : cases) {
        SCOPED_TRACE(name);
        const auto sanitized = [&](double value) {
            ScrollSettings settings;
            settings.*field = value;
            const ScrollSettings result = settings.sanitized();
            EXPECT_EQ(settings.*field, value);
            return result.*field;
        };
        EXPECT_EQ(sanitized(lower - 1), lower);
        EXPECT_EQ(sanitized(std::nextafter(lower, -1e9)), lower);
        EXPECT_EQ(sanitized(lower), lower);
        EXPECT_EQ(sanitized(lower + 0.5), lower + 0.5);
        EXPECT_EQ(sanitized(upper), upper);
        EXPECT_EQ(sanitized(upper + 1), upper);
    }
}

TEST(Easing, each_curve_has_its_shape_between_nothing_and_all) {
    for (const Easing easing : allCases<Easing>) {
        for (const auto& [progress, value] : {std::pair{-1, 0}, {0, 0}, {1, 1}, {7, 1}})
            EXPECT_EQ(valueAt(easing, progress), value) << rawValue(easing) << " at " << progress;
    }
    struct Case {
        Easing easing;
        double progress;
        double value;
    };
    for (const auto& [easing, progress, value] :
         {Case{Easing::linear, 0.25, 0.25}, Case{Easing::easeOut, 0.25, 0.578125},
          Case{Easing::easeOut, 0.5, 0.875}, Case{Easing::easeInOut, 0.25, 0.0625},
          Case{Easing::easeInOut, 0.5, 0.5}, Case{Easing::easeInOut, 0.75, 0.9375}}) {
        EXPECT_EQ(valueAt(easing, progress), value) << rawValue(easing) << " at " << progress;
    }
}

}  // namespace
}  // namespace tessara
