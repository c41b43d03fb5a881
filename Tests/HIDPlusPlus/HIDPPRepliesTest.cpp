#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HIDPlusPlus/HIDPPReplies.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;
using Range = HIDPPDPIRange::Range;
using List = HIDPPDPIRange::List;

template <typename T>
std::string errorOf(const HIDPPResult<T>& result) {
    return result ? "" : result.error().description();
}

TEST(HIDPPReplies, one_byte_too_few_is_an_error_that_names_the_reply) {
    using namespace HIDPPReplies;
    const struct {
        std::size_t needed;
        const char* text;
        std::function<std::string(Payload)> error;
    } cases[] = {
        {3, "ping reply too short", [](Payload p) { return errorOf(protocolVersion(p)); }},
        {3, "getFeature reply too short", [](Payload p) { return errorOf(featureLookup(p)); }},
        {1, "getCount reply empty", [](Payload p) { return errorOf(featureCount(p)); }},
        {4, "getFeatureID reply too short", [](Payload p) { return errorOf(featureTableRow(p)); }},
        {13, "getDeviceInfo reply too short",
         [](Payload p) { return errorOf(deviceInformation(p)); }},
        {1, "getDeviceNameCount reply empty", [](Payload p) { return errorOf(nameLength(p)); }},
        {1, "getSensorCount reply empty", [](Payload p) { return errorOf(sensorCount(p)); }},
        {3, "getSensorDpiList reply too short", [](Payload p) { return errorOf(dpiRange(p)); }},
        {5, "getSensorDpi reply too short", [](Payload p) { return errorOf(dpi(p)); }},
        {1, "getReportRateList reply empty",
         [](Payload p) { return errorOf(reportRateBitmap(p)); }},
        {1, "getReportRate reply empty", [](Payload p) { return errorOf(reportRate(p)); }},
        {2, "getWheelCapability reply too short",
         [](Payload p) { return errorOf(wheelCapability(p)); }},
        {1, "getWheelMode reply empty", [](Payload p) { return errorOf(wheelMode(p)); }},
        {1, "getRatchetSwitchState reply empty",
         [](Payload p) { return errorOf(ratchetState(p)); }},
        {11, "getOnboardProfilesDesc reply too short",
         [](Payload p) { return errorOf(onboardProfilesDescriptor(p)); }},
        {1, "getOnboardMode returned an unknown mode",
         [](Payload p) { return errorOf(onboardMode(p)); }},
        {2, "getCurrentProfile reply too short",
         [](Payload p) { return errorOf(currentProfile(p)); }},
        {16, "memoryRead reply too short", [](Payload p) { return errorOf(onboardMemory(p)); }},
    };
    for (const auto& [needed, text, error] : cases) {
        Bytes payload(needed, 1);
        if (needed == 3) payload[2] = pingToken;
        EXPECT_EQ(error(payload), "") << text;
        payload.pop_back();
        EXPECT_EQ(error(payload), std::string("malformed response: ") + text);
    }
}

TEST(HIDPPReplies, reads_the_resolutions_as_a_span_or_as_a_list) {
    const struct {
        Bytes payload;
        HIDPPDPIRange range;
    } cases[] = {
        {{0, 0, 0xC8, 0xE0, 0x32, 0x64, 0, 0, 0}, {Range{200, 25600, 50}}},
        {{0, 1, 0x90, 3, 0x20, 6, 0x40, 0, 0}, {List{{400, 800, 1600}}}},
        {{0, 1, 0x90, 3, 0x20, 6, 0x40}, {List{{400, 800, 1600}}}},
        {{0, 1, 0x90, 3}, {List{{400}}}},                                       // half an entry
        {{0, 1, 0x90, 0, 0, 3, 0x20}, {List{{400}}}},                           // behind the end
        {{0, 0xE0, 0x32, 1, 0x90, 3, 0x20}, {List{{57394, 400, 800}}}},         // marked first
        {{0, 1, 0x90, 3, 0x20, 0xE0, 0x32}, {List{{400, 800, 57394}}}},         // marked last
        {{0, 1, 0x90, 0xE0, 1, 3, 0x20, 0xE0, 2, 9, 9}, {Range{400, 800, 1}}},  // two spans
        {{0, 0xE0, 1, 0xE0, 2, 3, 0x20}, {List{{0xE001, 0xE002, 800}}}},        // first one counts
        {{0, 3, 0x20, 0xFF, 0xFF, 1, 0x90}, {Range{800, 400, 0x1FFF}}},         // crossed
    };
    for (const auto& [payload, range] : cases) {
        const auto decoded = HIDPPReplies::dpiRange(payload);
        ASSERT_TRUE(decoded.has_value());
        EXPECT_EQ(*decoded, range) << decoded->description();
    }
    EXPECT_EQ(errorOf(HIDPPReplies::dpiRange(Bytes{0, 0, 0, 1, 0x90})),
              "malformed response: empty DPI list");
}

TEST(HIDPPReplies, reads_facts_and_settings) {
    using namespace HIDPPReplies;
    EXPECT_EQ(
        deviceInformation(Bytes{3, 0xDE, 0xAD, 0xBE, 0x0F, 0x00, 0x09, 1, 2, 3, 0xA, 0xB, 0xC, 99})
            ->description(),
        "entities=3 unitID=DEADBE0F transports=[Bluetooth,USB] modelIDs=0102030A0B0C");
    EXPECT_EQ(dpi(Bytes{1, 0x06, 0x40, 0x03, 0x20})->description(),
              "current=1600 default=800 sensor=1");
    EXPECT_EQ(wheelCapability(Bytes{8, 0x0C})->description(),
              "multiplier=8 hasInvert=true hasRatchetSwitch=true flags=0x0C");
    EXPECT_EQ(wheelCapability(Bytes{8, 0xF3})->description(),
              "multiplier=8 hasInvert=false hasRatchetSwitch=false flags=0xF3");
    EXPECT_EQ(wheelMode(Bytes{0x05})->description(),
              "target=HID++ events hiRes=false inverted=true");
    EXPECT_EQ(wheelMode(Bytes{0xFA})->description(),
              "target=plain HID wheel hiRes=true inverted=false");
    for (int raw = 0; raw < 8; ++raw) {
        const auto byte = static_cast<std::uint8_t>(raw);
        EXPECT_EQ(wheelMode(Bytes{byte})->rawValue(), byte);
    }
    EXPECT_EQ(description(*ratchetState(Bytes{1})), "ratchet (engaged)");
    EXPECT_EQ(description(*ratchetState(Bytes{2})), "free-spin");
    EXPECT_EQ(description(*onboardMode(Bytes{1})), "ONBOARD (device-driven)");
    EXPECT_EQ(description(*onboardMode(Bytes{2})), "HOST (software-driven)");
    EXPECT_EQ(errorOf(onboardMode(Bytes{3})),
              "malformed response: getOnboardMode returned an unknown mode");
    EXPECT_EQ(currentProfile(Bytes{0, 3})->description(), "page=0 index=3");
    EXPECT_EQ(onboardProfilesDescriptor(Bytes{1, 2, 3, 5, 1, 11, 16, 0x01, 0x00, 0x0A, 0x05})
                  ->description(),
              "memModel=1 profileFmt=2 macroFmt=3 profiles=5 oob=1 buttons=11 sectors=16 "
              "sectorSize=256 mechLayout=0x0A various=0x05");
    Bytes memory(20, 7);
    memory[15] = 9;
    EXPECT_EQ(onboardMemory(memory)->back(), 9);
}

TEST(HIDPPReplies, a_name_ends_at_its_length_or_first_zero_and_is_always_text) {
    const struct {
        std::string bytes;
        std::size_t length;
        std::string name;
    } cases[] = {
        {"Mouse", 5, "Mouse"},
        {"Mouse", 9, "Mouse"},
        {"Mouse", 3, "Mou"},
        {std::string("Mo\0use", 6), 6, "Mo"},
        {"", 0, ""},
        {"Maus \xC3\xBC", 7, "Maus \xC3\xBC"},
        {"Maus \xC3\xBC", 6, "Maus \xEF\xBF\xBD"},
        {"\xFF"
         "a\x80",
         3,
         "\xEF\xBF\xBD"
         "a\xEF\xBF\xBD"},
    };
    for (const auto& [text, length, name] : cases) {
        EXPECT_EQ(HIDPPReplies::deviceName(Bytes(text.begin(), text.end()), length), name);
    }
}

TEST(HIDPPDPIRange, normalises_to_the_nearest_value_the_sensor_takes) {
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    constexpr auto highest = std::numeric_limits<std::int64_t>::max();
    const HIDPPDPIRange span{Range{200, 25600, 50}};
    const HIDPPDPIRange offGrid{Range{200, 1060, 100}};
    const HIDPPDPIRange list{List{{400, 800}}};
    const HIDPPDPIRange backwards{List{{800, 400}}};
    const struct {
        const HIDPPDPIRange& range;
        std::int64_t wanted, normalized;
    } cases[] = {
        {span, 1234, 1250},    {span, 1224, 1200},   {span, 1225, 1250},     {span, 30000, 25600},
        {span, 100, 200},      {span, lowest, 200},  {span, highest, 25600}, {offGrid, 1055, 1060},
        {offGrid, 1049, 1000}, {list, 600, 400},     {backwards, 600, 800},  {list, 601, 800},
        {list, lowest, 400},   {list, highest, 800},
    };
    for (const auto& [range, wanted, normalized] : cases) {
        EXPECT_EQ(range.normalize(wanted), normalized) << range.description() << " " << wanted;
        EXPECT_EQ(range.contains(wanted), wanted == normalized);
        EXPECT_TRUE(range.contains(normalized));
    }
    for (const std::int64_t step : {0, 1}) {
        EXPECT_EQ((HIDPPDPIRange{Range{200, 800, step}}.normalize(333)), 333);
    }
    EXPECT_EQ(HIDPPDPIRange{List{}}.normalize(333), 333);
    EXPECT_EQ(HIDPPDPIRange{List{{500}}}.normalize(333), 500);
}

TEST(HIDPPDPIRange, has_bounds_and_a_description) {
    const struct {
        HIDPPDPIRange range;
        std::int64_t minimum, maximum;
        const char* text;
    } cases[] = {{{List{{800, 400, 1600}}}, 400, 1600, "800, 400, 1600"},
                 {{List{}}, 0, 0, ""},
                 {{Range{200, 25600, 50}}, 200, 25600, "200\u201325600 step 50"}};
    for (const auto& [range, minimum, maximum, text] : cases) {
        EXPECT_EQ(range.minimum(), minimum);
        EXPECT_EQ(range.maximum(), maximum);
        EXPECT_EQ(range.description(), text);
    }
}

TEST(HIDPPReportRate, converts_between_hertz_and_whole_milliseconds) {
    EXPECT_EQ(HIDPPReportRate::fromHertz(125), HIDPPReportRate{8});
    EXPECT_EQ(HIDPPReportRate::fromHertz(1000), HIDPPReportRate{1});
    for (const std::int64_t none : {333, 0, -1, 2000}) {
        EXPECT_EQ(HIDPPReportRate::fromHertz(none), std::nullopt) << none;
    }
    EXPECT_EQ(HIDPPReportRate{3}.description(), "333 Hz (3 ms)");
    EXPECT_EQ(HIDPPReportRate{0}.hertz(), 0);
    EXPECT_EQ(HIDPPReportRate{-5}.hertz(), 0);

    const HIDPPReportRateInfo info{0x8B, {1}};
    EXPECT_THAT(info.supported(), ElementsAre(HIDPPReportRate{1}, HIDPPReportRate{2},
                                              HIDPPReportRate{4}, HIDPPReportRate{8}));
    EXPECT_EQ(info.description(),
              "current=1000 Hz (1 ms) supported=[1000 Hz (1 ms), 500 Hz (2 ms), 250 Hz (4 ms), "
              "125 Hz (8 ms)] bitmap=0x8B");
}

}  // namespace
}  // namespace tessara
