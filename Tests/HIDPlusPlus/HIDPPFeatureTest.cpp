#include <gmock/gmock.h>

#include "ScriptedMouseFixture.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

// Where the scripted mouse has its features.
constexpr std::uint8_t nameType = 3;
constexpr std::uint8_t wheel = 4;
constexpr std::uint8_t sensor = 5;
constexpr std::uint8_t rate = 6;
constexpr std::uint8_t profiles = 7;

/// What the library asks of a connected mouse, and how it reads what comes back. Requests are kept
/// without device index and software id: report id, feature index, function, parameters.
class HIDPPFeatureTest : public ScriptedMouseFixture {
  protected:
    HIDPPFeatureTest() {
        mouse.plug();
        EXPECT_EQ(textOf(run(device->connect())), "ok");
        mouse.takeRequests();
    }

    std::vector<Bytes> takeRequests() {
        auto requests = mouse.takeRequests();
        for (auto& request : requests) {
            EXPECT_EQ(request.size(), request[0] == 0x11 ? 20U : 7U);
            request[3] >>= 4;
            request.erase(request.begin() + 1);
            while (request.size() > 3 && request.back() == 0)
                request.pop_back();
        }
        return requests;
    }
};

TEST_F(HIDPPFeatureTest, knows_the_whole_table_and_asks_no_more) {
    const auto features = run(device->features());
    ASSERT_EQ(features.size(), mouse.table.size());
    EXPECT_EQ(features.front().description(), "idx 0x00 -> 0x0000 Root v1 [-]");
    EXPECT_EQ(features.back().description(), "idx 0x08 -> 0x18B1 unknown v1 [-]");
    EXPECT_EQ(run(device->featureIndex(HIDPPFeature::adjustableDPI)), sensor);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(textOf(run(device->featureIndex(HIDPPFeature::smartShift))),
                  "feature 0x2110 SmartShift is not supported by this device");
    }
    EXPECT_TRUE(run(device->supports(HIDPPFeature::reportRate)));
    EXPECT_FALSE(run(device->supports(HIDPPFeature::smartShift)));
    EXPECT_THAT(takeRequests(), IsEmpty());

    disconnect();
    mouse.table.resize(4);
    EXPECT_EQ(textOf(run(device->connect())), "ok");
    mouse.takeRequests();
    EXPECT_EQ(textOf(run(device->setDPI(800))),
              "feature 0x2201 AdjustableDPI is not supported by this device");
    EXPECT_THAT(takeRequests(), IsEmpty());
}

TEST_F(HIDPPFeatureTest, the_root_needs_neither_a_request_nor_a_mouse) {
    EXPECT_EQ(run(device->featureIndex(HIDPPFeature::root)), 0);
    disconnect();
    EXPECT_EQ(run(device->featureIndex(HIDPPFeature::root)), 0);
    EXPECT_TRUE(run(device->supports(HIDPPFeature::root)));
    EXPECT_FALSE(run(device->supports(HIDPPFeature::featureSet)));
    EXPECT_EQ(textOf(run(device->featureIndex(HIDPPFeature::featureSet))), "not connected");
    EXPECT_THAT(takeRequests(), IsEmpty());
}

TEST_F(HIDPPFeatureTest, a_question_with_parameters_takes_one_request_that_carries_them) {
    using enum HIDPPFeature;
    const struct {
        HIDPPFeature feature;
        int function;
        Bytes reply;
        std::function<std::string()> read;
        Bytes request;
        const char* text;
    } cases[] = {
        {adjustableDPI,
         1,
         {1, 3, 0x20},
         [this] { return run(device->dpiRange(1))->description(); },
         {0x11, sensor, 1, 1},
         "800"},
        {adjustableDPI,
         2,
         {1, 3, 0x20, 6, 0x40},
         [this] { return run(device->dpi(1))->description(); },
         {0x10, sensor, 2, 1},
         "current=800 default=1600 sensor=1"},
        {onboardProfiles,
         5,
         Bytes(16, 9),
         [this] { return std::to_string(run(device->readOnboardMemory(0x0102, 0x0304))->back()); },
         {0x11, profiles, 5, 1, 2, 3, 4},
         "9"},
    };
    for (const auto& [feature, function, reply, read, request, text] : cases) {
        mouse.answer(feature, function, reply);
        EXPECT_EQ(read(), text);
        EXPECT_THAT(takeRequests(), ElementsAre(request)) << text;
    }
}

TEST_F(HIDPPFeatureTest, a_protocol_version_is_asked_for_once_unless_one_pings) {
    run(device->protocolVersion());
    EXPECT_THAT(takeRequests(), IsEmpty());
    run(device->ping());
    EXPECT_THAT(takeRequests(), ElementsAre(Bytes{0x10, 0, 1, 0, 0, 0x5A}));
    mouse.answer(HIDPPFeature::root, 1, {5, 0, 0x5B});
    EXPECT_EQ(textOf(run(device->ping())), "malformed response: ping token mismatch");
    EXPECT_EQ(run(device->protocolVersion())->description(), "HID++ 4.2");
}

TEST_F(HIDPPFeatureTest, a_table_of_no_rows_but_the_root_takes_one_request) {
    mouse.answer(HIDPPFeature::featureSet, 0, {0});
    EXPECT_EQ(run(device->discoverFeatures())->size(), 1U);
    EXPECT_THAT(takeRequests(), ElementsAre(Bytes{0x10, 1, 0}, Bytes{0x10, 1, 1}));
}

TEST_F(HIDPPFeatureTest, a_mouse_without_a_feature_table_does_not_connect) {
    disconnect();
    mouse.answer(HIDPPFeature::root, 0, {0, 0, 0});
    EXPECT_EQ(textOf(run(device->connect())),
              "feature 0x0001 FeatureSet is not supported by this device");
    EXPECT_EQ(state(), "disconnected");
}

TEST_F(HIDPPFeatureTest, a_lookup_before_the_table_is_known_is_remembered_hit_or_miss) {
    disconnect();
    mouse.gate = [](const Bytes& request) {
        return request[2] != 1 || request[3] >> 4 != 1 || request[4] < 2;
    };
    const auto second = begin(device->connect());
    dispatcher.advance(10ms);
    mouse.takeRequests();
    // The stalled row is answered by hand once the lookups wait behind it.
    const auto stalled = mouse.interface->written.back();
    EXPECT_EQ(stalled[4], 2);
    const auto early = begin(device->featureIndex(HIDPPFeature::hiResWheel));
    const auto absent = begin(device->featureIndex(HIDPPFeature::smartShift));
    dispatcher.advance(1ms);
    mouse.gate = nullptr;
    mouse.send({0x11, stalled[1], stalled[2], stalled[3], 0, 3, 0, 1});
    dispatcher.advance(1ms);
    EXPECT_EQ(**early, wheel);
    EXPECT_EQ(textOf(absent), "feature 0x2110 SmartShift is not supported by this device");
    EXPECT_EQ(textOf(second), "ok");
    const auto requests = takeRequests();
    EXPECT_EQ(std::ranges::count(requests, Bytes{0x10, 0, 0, 0x21, 0x21}), 1);
    EXPECT_EQ(std::ranges::count(requests, Bytes{0x10, 0, 0, 0x21, 0x10}), 1);
}

TEST_F(HIDPPFeatureTest, reads_a_name_in_chunks) {
    const std::string name = "A mouse with a long long name";
    mouse.answers[{HIDPPFeature::deviceNameType, 1}] = [&](const Bytes& parameters) {
        Bytes chunk(16, 0);
        for (std::size_t i = 0; i < 16 && parameters[0] + i < name.size(); ++i) {
            chunk[i] = static_cast<std::uint8_t>(name[parameters[0] + i]);
        }
        return chunk;
    };
    mouse.answer(HIDPPFeature::deviceNameType, 0, {30});
    EXPECT_EQ(run(device->deviceName()), name);
    EXPECT_THAT(takeRequests(), ElementsAre(Bytes{0x10, nameType, 0}, Bytes{0x11, nameType, 1},
                                            Bytes{0x11, nameType, 1, 16}));

    mouse.answer(HIDPPFeature::deviceNameType, 0, {0});
    EXPECT_EQ(run(device->deviceName()), "");
    EXPECT_EQ(takeRequests().size(), 1U);

    mouse.answer(HIDPPFeature::deviceNameType, 0, {255});
    mouse.answer(HIDPPFeature::deviceNameType, 1, {});
    EXPECT_EQ(run(device->deviceName()), "") << "an empty chunk ends the name";
    EXPECT_EQ(takeRequests().size(), 2U);
}

TEST_F(HIDPPFeatureTest, sets_the_nearest_resolution_and_gives_what_the_mouse_then_has) {
    mouse.answer(HIDPPFeature::adjustableDPI, 1, {0, 0, 0xC8, 0xE0, 0x32, 0x64, 0});
    mouse.answer(HIDPPFeature::adjustableDPI, 2, {0, 3, 0x20, 6, 0x40});
    mouse.answer(HIDPPFeature::adjustableDPI, 3, {});
    EXPECT_EQ(run(device->setDPI(1234)), 800);
    EXPECT_THAT(takeRequests(),
                ElementsAre(Bytes{0x11, sensor, 1}, Bytes{0x11, sensor, 3, 0, 0x04, 0xE2},
                            Bytes{0x10, sensor, 2}));
    mouse.answers.erase({HIDPPFeature::adjustableDPI, 3});
    EXPECT_EQ(textOf(run(device->setDPI(1600, 1))), "HID++ 2.0 error 0x07 (invalidFunctionId)");
    EXPECT_EQ(takeRequests().size(), 2U) << "a refused write is not read back";
}

TEST_F(HIDPPFeatureTest, sets_only_a_report_rate_the_mouse_offers) {
    mouse.answer(HIDPPFeature::reportRate, 0, {0x8B});
    mouse.answer(HIDPPFeature::reportRate, 1, {4});
    mouse.answer(HIDPPFeature::reportRate, 2, {});
    EXPECT_EQ(run(device->reportRate())->current.hertz(), 250);
    EXPECT_THAT(takeRequests(), ElementsAre(Bytes{0x10, rate, 0}, Bytes{0x10, rate, 1}));

    EXPECT_EQ(textOf(run(device->setReportRate({8}))), "ok");
    EXPECT_THAT(takeRequests(),
                ElementsAre(Bytes{0x10, rate, 0}, Bytes{0x10, rate, 1}, Bytes{0x11, rate, 2, 8}));
    EXPECT_EQ(textOf(run(device->setReportRate({3}))),
              "invalid argument: report rate 333 Hz (3 ms) is not supported (bitmap 0x8B)");
    EXPECT_EQ(takeRequests().size(), 2U);
}

TEST_F(HIDPPFeatureTest, high_resolution_leaves_the_rest_of_the_wheel_mode_alone) {
    std::uint8_t mode = 0x02;
    mouse.answers[{HIDPPFeature::hiResWheel, 1}] = [&](const Bytes&) { return Bytes{mode}; };
    mouse.answers[{HIDPPFeature::hiResWheel, 2}] = [&](const Bytes& parameters) {
        mode = parameters[0];
        return Bytes();
    };
    EXPECT_EQ(run(device->setWheelHighResolution(true))->rawValue(), 2);
    EXPECT_EQ(takeRequests().size(), 1U) << "nothing to write";

    mode = 0x05;
    EXPECT_EQ(run(device->setWheelHighResolution(true))->rawValue(), 7);
    EXPECT_THAT(takeRequests(), ElementsAre(Bytes{0x10, wheel, 1}, Bytes{0x11, wheel, 2, 7},
                                            Bytes{0x10, wheel, 1}));
    EXPECT_EQ(run(device->setWheelHighResolution(false))->rawValue(), 5);

    EXPECT_EQ(textOf(run(device->setWheelMode({.target = false, .inverted = true}))), "ok");
    EXPECT_EQ(mode, 4);
}

TEST_F(HIDPPFeatureTest, an_operation_of_several_steps_does_not_run_on_over_a_reconnection) {
    mouse.answer(HIDPPFeature::adjustableDPI, 1, {0, 0, 0xC8, 0xE0, 0x32, 0x64, 0});
    // The disconnect overtakes the reply to the first step on its way back to the operation.
    mouse.gate = [this](const Bytes&) {
        mouse.gate = nullptr;
        spawn(device->disconnect());
        return true;
    };
    const auto setting = begin(device->setDPI(800));
    dispatcher.runReady();
    EXPECT_EQ(textOf(run(device->connect())), "ok");
    EXPECT_EQ(textOf(setting), "not connected");
    const auto requests = takeRequests();
    EXPECT_EQ(std::ranges::count(requests, Bytes{0x11, sensor, 3, 0, 3, 0x20}), 0);
}

}  // namespace
}  // namespace tessara
