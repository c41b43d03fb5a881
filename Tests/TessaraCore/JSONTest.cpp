#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "TessaraCore/Config.h"
#include "TessaraCore/JSON.h"

namespace tessara {
namespace {

/// Removes the white space of pretty printing; the texts of these tests have none of their own.
std::string compact(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
}

/// Checks that `value` is stored as `json`, and `json` read as `value`.
template <typename T>
void expectForm(const T& value, const char* json) {
    SCOPED_TRACE(json);
    const auto encoded = encodeJSON(value);
    ASSERT_TRUE(encoded) << description(encoded.error());
    EXPECT_EQ(compact(*encoded), json);
    const auto decoded = decodeJSON<T>(*encoded);
    ASSERT_TRUE(decoded) << description(decoded.error());
    EXPECT_EQ(*decoded, value);
    EXPECT_EQ(encodeJSON(*decoded), encoded);
}

TEST(JSON, each_value_has_its_stored_form) {
    expectForm(ModifierFlags{ModifierFlags::shift, ModifierFlags::command}, "18");
    expectForm(ModifierFlags::capsLock | ModifierFlags::control | ModifierFlags::function, "37");
    expectForm(ModifierFlags{~0U}, "4294967295");
    expectForm(ScrollAxes{std::uint8_t{0xFC}}, "252");
    expectForm(DeviceID{~std::uint64_t{0}}, "18446744073709551615");
    expectForm(ScrollAxis::horizontal, R"("horizontal")");
    expectForm(Easing::easeInOut, R"("easeInOut")");

    expectForm(PointerAcceleration{AccelerationOff{}}, R"({"off":{}})");
    expectForm(PointerAcceleration{AccelerationCurve{0.5, 800, 6}},
               R"({"curve":{"exponent":0.5,"maxGain":6,"thresholdCountsPerSecond":800}})");
    expectForm(PointerSettings{.isEnabled = false, .dpi = -1, .curve = PointerCurve::linear},
               R"({"curve":{"acceleration":{"off":{}},"sensitivity":1},"dpi":-1,)"
               R"("isEnabled":false})");

    constexpr ModifierFlags shift = ModifierFlags::shift;
    expectForm(MacroStep{KeyStep{65535, shift}}, R"({"key":{"code":65535,"modifiers":2}})");
    expectForm(MacroStep{KeyDownStep{4, shift}}, R"({"keyDown":{"code":4,"modifiers":2}})");
    expectForm(MacroStep{KeyUpStep{4, shift}}, R"({"keyUp":{"code":4,"modifiers":2}})");
    expectForm(MacroStep{DelayStep{-5}}, R"({"delay":{"millis":-5}})");
    expectForm(MacroStep{DelayStep{-0.0}}, R"({"delay":{"millis":-0.0}})");
    expectForm(MacroStep{MouseButtonStep{3}}, R"({"mouseButton":{"number":3}})");

    expectForm(Action{PassThroughAction{}}, R"({"passThrough":{}})");
    expectForm(Action{KeyStrokeAction{4, shift}}, R"({"keyStroke":{"code":4,"modifiers":2}})");
    expectForm(Action{SequenceAction{}}, R"({"sequence":{"_0":[]}})");
    expectForm(Action{SequenceAction{{DelayStep{1}, DelayStep{2}}}},
               R"({"sequence":{"_0":[{"delay":{"millis":1}},{"delay":{"millis":2}}]}})");
    expectForm(Action{HoldAction{4, shift}}, R"({"hold":{"code":4,"modifiers":2}})");
    expectForm(Action{RepeatWhileHeldAction{DelayStep{1}, 0}},
               R"({"repeatWhileHeld":{"intervalMillis":0,"step":{"delay":{"millis":1}}}})");
    expectForm(Action{DPIShiftAction{400}}, R"({"dpiShift":{"toDPI":400}})");
    expectForm(Action{LaunchAppAction{"org.a\"b\\c\n\u0001é"}},
               R"({"launchApp":{"bundleID":"org.a\"b\\c\n\u0001é"}})");
    expectForm(Action{RunShortcutAction{""}}, R"({"runShortcut":{"name":""}})");
    expectForm(ButtonBinding{.button = 5, .action = DPIShiftAction{400}},
               R"({"action":{"dpiShift":{"toDPI":400}},"button":5,"isEnabled":true,)"
               R"("modifiers":0})");

    expectForm(BundleIDPattern{AnyBundleID{}}, R"({"any":{}})");
    expectForm(BundleIDPattern{ExactBundleID{"*"}}, R"({"exact":{"_0":"*"}})");
    expectForm(BundleIDPattern{BundleIDPrefix{"com."}}, R"({"prefix":{"_0":"com."}})");
}

TEST(JSON, the_settings_of_the_wheel_are_stored_under_their_names_in_the_order_of_the_alphabet) {
    const char* rest =
        R"("durationMillis":250,"easing":"easeOut","enabledAxes":3,"frameIntervalMillis":8,)"
        R"("isEnabled":true,"isInverted":false,"maxAccelerationMultiplier":6,)"
        R"("maxInFlightPixels":4000,"pixelsPerDetent":50})";
    const std::string start =
        R"({"accelerationEnabled":true,"accelerationGain":1.2,"accelerationWindowMillis":140,)";
    expectForm(ScrollSettings{}, (start + rest).c_str());
    expectForm(ScrollSettings{.activationModifiers = ModifierFlags{65U}},
               (start + R"("activationModifiers":65,)" + rest).c_str());
    const auto decoded =
        decodeJSON<ScrollSettings>(start + R"("activationModifiers":null,)" + rest);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, ScrollSettings{});
}

TEST(JSON, what_has_no_form_is_refused_with_the_way_to_it) {
    Profile profile = Profile::default_();
    profile.scroll.accelerationGain = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(encodeJSON(profile).error(),
              (EncodingError{"scroll.accelerationGain",
                             "JSON has no form for a number that is not finite"}));
    profile = Profile::default_();
    profile.buttons.push_back({.action = LaunchAppAction{"\xff"}});
    EXPECT_EQ(description(encodeJSON(profile).error()),
              "buttons[1].action.launchApp.bundleID: the text is not valid UTF-8");
}

template <typename T>
std::string errorOf(std::string_view json) {
    const auto decoded = decodeJSON<T>(json);
    return decoded ? "decoded" : description(decoded.error());
}

TEST(JSON, numbers_must_be_of_the_kind_and_range_that_is_asked_for) {
    struct Case {
        std::string (*errorOf)(std::string_view);
        const char* json;
        const char* error;
    };
    const Case cases[] = {
        {errorOf<ModifierFlags>, "4294967295", "decoded"},
        {errorOf<ModifierFlags>, "4294967296",
         "the number 4294967296 does not lie in 0 to 4294967295"},
        {errorOf<ModifierFlags>, "-1", "the number -1 does not lie in 0 to 4294967295"},
        {errorOf<ModifierFlags>, "3.0", "decoded"},
        {errorOf<ModifierFlags>, "3.5", "expected an integer, found the number 3.5"},
        {errorOf<ModifierFlags>, "1e300", "the number 1e+300 does not lie in 0 to 4294967295"},
        {errorOf<ModifierFlags>, "true", "expected an integer, found a boolean"},
        {errorOf<ScrollAxes>, "256", "the number 256 does not lie in 0 to 255"},
        {errorOf<DeviceID>, "18446744073709551616",
         "the number 1.8446744073709552e+19 does not lie in 0 to 18446744073709551615"},
        {errorOf<MacroStep>, R"({"mouseButton":{"number":9223372036854775807}})", "decoded"},
        {errorOf<MacroStep>, R"({"mouseButton":{"number":-9223372036854775808}})", "decoded"},
        {errorOf<MacroStep>, R"({"mouseButton":{"number":9223372036854775808}})",
         "mouseButton.number: the number 9223372036854775808 does not lie in "
         "-9223372036854775808 to 9223372036854775807"},
        {errorOf<MacroStep>, R"({"key":{"code":65536,"modifiers":0}})",
         "key.code: the number 65536 does not lie in 0 to 65535"},
        {errorOf<MacroStep>, R"({"delay":{"millis":3}})", "decoded"},
        {errorOf<MacroStep>, R"({"delay":{"millis":false}})",
         "delay.millis: expected a number, found a boolean"}};
    for (const auto& [error, json, expected] : cases)
        EXPECT_EQ(error(json), expected) << json;
}

TEST(JSON, a_tagged_union_holds_exactly_one_known_key) {
    constexpr const char* wrongNumber = "Invalid number of keys found, expected one.";
    struct Case {
        const char* json;
        const char* error;
    };
    const Case cases[] = {
        {R"({})", wrongNumber},
        {R"({"teleport":{}})", wrongNumber},
        {R"({"passThrough":{},"dpiShift":{"toDPI":1}})", wrongNumber},
        {R"({"passThrough":{},"passThrough":{}})", wrongNumber},
        {R"({"teleport":{},"passThrough":{"unknown":1}})", "decoded"},
        {R"({"passThrough":null})", "passThrough: expected an object, found null"},
        {R"("passThrough")", "expected an object, found a string"},
        {R"({"dpiShift":{}})", "dpiShift.toDPI: the key is missing"},
        {R"({"sequence":{"steps":[]}})", "sequence._0: the key is missing"},
        {R"({"sequence":{"_0":{}}})", "sequence._0: expected an array, found an object"},
        {R"({"sequence":{"_0":[{"delay":{"millis":1}},{"key":{"code":1}}]}})",
         "sequence._0[1].key.modifiers: the key is missing"},
        {R"({"repeatWhileHeld":{"step":{},"intervalMillis":1}})",
         "repeatWhileHeld.step: Invalid number of keys found, expected one."}};
    for (const auto& [json, expected] : cases)
        EXPECT_EQ(errorOf<Action>(json), expected) << json;
}

TEST(JSON, each_fault_of_a_structure_is_named_with_its_place) {
    const std::string valid = R"({"id":"a","pattern":{"any":{}},"profileID":"p","priority":1,)";
    struct Case {
        std::string json;
        const char* error;
    };
    const Case cases[] = {
        {valid + R"("isEnabled":true,"note":[{"any":1}]})", "decoded"},
        {valid + R"("isEnabled":true,"note":1,"note":2})", "decoded"},
        {valid + R"("isEnabled":1})", "isEnabled: expected a boolean, found the number 1"},
        {valid + R"("id":"b","isEnabled":true})", "id: the key appears twice"},
        {valid + R"("x":0})", "isEnabled: the key is missing"},
        {R"([])", "expected an object, found an array"},
        {R"({"id":7})", "id: expected a string, found the number 7"}};
    for (const auto& [json, expected] : cases)
        EXPECT_EQ(errorOf<Rule>(json), expected) << json;
    EXPECT_EQ(errorOf<Easing>(R"("EaseOut")"),
              R"("EaseOut" is none of "linear", "easeOut", "easeInOut")");
    EXPECT_TRUE(errorOf<Easing>(R"("a\u001b[1m\n\u0085")").starts_with("\"a�[1m��\" is none of"));
    EXPECT_LT(errorOf<Easing>('"' + std::string(100'000, 'x') + '"').size(), 300U);
}

TEST(JSON, text_that_is_not_json_is_refused_with_line_and_column) {
    const auto nested = [](std::size_t depth) {
        return R"({"any":{"\"[":)" + std::string(depth, '[') + std::string(depth, ']') + "}}";
    };
    struct Case {
        std::string json;
        const char* error;
    };
    const Case cases[] = {
        {"", "not valid JSON at line 1, column 1: "},
        {"{\"any\":\n  {]}", "not valid JSON at line 2, column 4: "},
        {R"({"any":{}} x)", "not valid JSON at line 1, column 12: "},
        {std::string("{\"any\":{}}\0x", 12), "not valid JSON at line 1, column 11: "},
        {R"({"any":{"x":1e400}})", "not valid JSON at line 1, column 17: number overflow"},
        {R"({"exact":{"_0":"\ud800"}})", "not valid JSON at line 1, column "},
        {"{\"exact\":{\"_0\":\"\xC0\x80\"}}", "not valid JSON at line 1, column 17: "},
        {nested(510), "decoded"},
        {nested(511), "not valid JSON at line 1, column 525: nested deeper than 512 levels"},
        {std::string(100'000, '['), "not valid JSON at line 1, column 513: nested deeper"},
        {std::string(1'000'000, '{'), "not valid JSON at line 1, column 2: "}};
    for (const auto& [json, expected] : cases) {
        const std::string error = errorOf<BundleIDPattern>(json);
        EXPECT_EQ(error.substr(0, std::strlen(expected)), expected) << json.substr(0, 100) << error;
        EXPECT_LT(error.size(), 400U);
    }
}

}  // namespace
}  // namespace tessara
