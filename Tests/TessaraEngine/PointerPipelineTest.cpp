
#include <gtest/gtest.h>

#include "TessaraEngine/PointerPipeline.h"

namespace tessara {
namespace {

constexpr DeviceID mouse{7};
constexpr DeviceID otherMouse{8};

PointerSettings settingsWith(PointerCurve curve) {
    PointerSettings settings;
    settings.curve = curve;
    return settings;
}

PointerCurve scaledBy(double sensitivity) {
    return {.sensitivity = sensitivity, .acceleration = AccelerationOff{}};
}

PointerMotion motion(double dx, double atMillis, DeviceID device = mouse) {
    return {.delta = {.dx = dx, .dy = 0}, .timestampMillis = atMillis, .deviceID = device};
}

TEST(PointerPipeline, the_speed_comes_from_the_time_since_the_last_sample) {
    struct Case {
        const char* what;
        double gapMillis;
        double counts;
        std::int64_t pixels;
    };
    // With the desktop curve the gain is the speed over 800 counts per second, between 1 and 6.
    const Case cases[] = {
        {"an everyday gap", 5, 10, 25},
        {"equal times tell no speed", 0, 10, 10},
        {"a time that goes back tells no speed", -3, 10, 10},
        {"a tiny gap counts as a quarter of a millisecond", 0.1, 1, 5},
        {"just a quarter of a millisecond", 0.25, 1, 5},
        {"just above a quarter", 0.5, 1, 2},
        {"the longest gap", 250, 400, 800},
        {"a longer gap is a rest", 250.001, 400, 400},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        PointerPipeline pipeline(settingsWith(PointerCurve::desktop), true);
        EXPECT_EQ(pipeline.handle(motion(10, 1000)).dx, 10);
        EXPECT_EQ(pipeline.handle(motion(c.counts, 1000 + c.gapMillis)),
                  (PointerOutcome{PointerDisposition::transformed, c.pixels, 0}));
        // The time of the second sample is the one that counts from here on.
        EXPECT_EQ(pipeline.handle(motion(10, 1000 + c.gapMillis + 5)).dx, 25);
    }
}

TEST(PointerPipeline, a_sample_after_time_zero_tells_no_speed) {
    PointerPipeline pipeline(settingsWith(PointerCurve::desktop), true);
    EXPECT_EQ(pipeline.handle(motion(10, 0)).dx, 10);
    EXPECT_EQ(pipeline.handle(motion(10, 5)).dx, 10);
    EXPECT_EQ(pipeline.handle(motion(10, 10)).dx, 25);
}

TEST(PointerPipeline, a_rest_keeps_the_fractions_and_another_device_drops_them) {
    PointerPipeline pipeline(settingsWith(scaledBy(0.4)), true);
    EXPECT_EQ(pipeline.handle(motion(2, 1000)).dx, 0);
    EXPECT_EQ(pipeline.handle(motion(1, 1300)).dx, 1) << "0.8 and 0.4, across 300 ms";
    EXPECT_EQ(pipeline.handle(motion(2, 1310)).dx, 1) << "0.2 and 0.8";
    EXPECT_EQ(pipeline.handle(motion(2, 1320)).dx, 0);
    EXPECT_EQ(pipeline.handle(motion(1, 1330, otherMouse)).dx, 0) << "0.4 alone";

    const PointerPipeline::Metrics metrics = pipeline.snapshotMetrics();
    EXPECT_EQ(metrics.deviceChanges, 1);
    EXPECT_EQ(metrics.accumulatorResets, 2) << "the first sample and the change";
}

TEST(PointerPipeline, a_reset_and_new_settings_make_the_next_sample_a_first_one) {
    PointerPipeline pipeline(settingsWith(PointerCurve::desktop), false);
    const auto fastSampleAfter = [&](double atMillis) {
        (void)pipeline.handle(motion(10, atMillis));
        return pipeline.handle(motion(10, atMillis + 5)).dx;
    };
    EXPECT_EQ(fastSampleAfter(1000), 25);
    pipeline.reset();
    EXPECT_EQ(pipeline.handle(motion(10, 1010)).dx, 10);

    PointerSettings slow = settingsWith(scaledBy(0.06));
    pipeline.setSettings(slow);
    EXPECT_EQ(pipeline.settings(), slow);
    EXPECT_EQ(pipeline.handle(motion(10, 1015)).dx, 0);
    pipeline.setSettings(slow);
    EXPECT_EQ(pipeline.handle(motion(10, 1020)).dx, 0) << "the fraction of 0.6 is forgotten";

    EXPECT_EQ(pipeline.snapshotMetrics().deviceChanges, 0);
    EXPECT_EQ(pipeline.snapshotMetrics().accumulatorResets, 7) << "3 resets and 4 first samples";
}

TEST(PointerPipeline, only_a_whole_count_that_gives_no_pixel_is_a_hold) {
    PointerPipeline pipeline(settingsWith(scaledBy(0.1)), true);
    (void)pipeline.handle(motion(0.4, 1000));   // rounds to no count
    (void)pipeline.handle(motion(-0.5, 1001));  // rounds to one
    (void)pipeline.handle(motion(3, 1002));
    EXPECT_EQ(pipeline.handle(motion(-12, 1003)),
              (PointerOutcome{PointerDisposition::transformed, 0, 0}));
    EXPECT_EQ(pipeline.handle(motion(-4, 1004)).dx, -1);
    EXPECT_EQ(pipeline.snapshotMetrics(), (PointerPipeline::Metrics{.samplesSeen = 5,
                                                                    .samplesTransformed = 5,
                                                                    .pixelsIn = 20,
                                                                    .pixelsOut = 1,
                                                                    .subPixelHolds = 3,
                                                                    .accumulatorResets = 1}));
    pipeline.resetMetrics();
    EXPECT_EQ(pipeline.snapshotMetrics(), PointerPipeline::Metrics{});
}

}  // namespace
}  // namespace tessara
