#include <limits>
#include <random>
#include <regex>

#include <gtest/gtest.h>

#include "TessaraCore/Config.h"
#include "TessaraCore/ConfigMigrator.h"

namespace tessara {
namespace {

/// The error of a text that is no document, in words.
std::string errorOf(std::string_view text) {
    const auto config = Config::decoded(text);
    return config ? "decoded" : description(config.error());
}

std::string encodedDefault() {
    return *Config::default_().encoded();
}

/// `text` with its one `from` replaced.
std::string replaced(std::string text, std::string_view from, std::string_view to) {
    const std::size_t found = text.find(from);
    EXPECT_NE(found, std::string::npos) << from;
    return text.replace(found, from.size(), to);
}

TEST(Config, the_factory_document_is_what_a_new_user_gets) {
    const Config& config = Config::default_();
    EXPECT_EQ(config.schemaVersion, 1);
    EXPECT_TRUE(config.isEnabled);
    ASSERT_EQ(config.profiles.size(), 2U);
    const Profile& standard = config.profiles[0];
    EXPECT_EQ(standard.id, "default");
    EXPECT_EQ(standard.name, "Default");
    EXPECT_EQ(standard.scroll, ScrollSettings{});
    EXPECT_EQ(standard.pointer, PointerSettings{});
    EXPECT_EQ(standard.buttons,
              (std::vector{ButtonBinding{.button = 5, .action = DPIShiftAction{400}}}));
    Profile canvas = standard;
    canvas.id = "canvas";
    canvas.name = "Canvas & Design Apps";
    canvas.scroll.easing = Easing::easeInOut;
    EXPECT_EQ(config.profiles[1], canvas);

    EXPECT_EQ(config.activeProfile("com.adobe.illustrator").id, "canvas");
    EXPECT_EQ(config.activeProfile("com.figma.desktop").id, "canvas");
    EXPECT_EQ(config.activeProfile("com.electron.realtimeboard").id, "canvas");
    EXPECT_EQ(config.activeProfile("com.bohemiancoding.sketch3").id, "canvas");
    EXPECT_EQ(config.activeProfile("org.editor").id, "default");
    EXPECT_EQ(config.activeProfile(std::nullopt).id, "default");
}

TEST(Config, numbers_out_of_range_are_kept_and_unknown_keys_are_passed_over) {
    Config config = Config::default_();
    config.profiles[0].scroll.durationMillis = -1e9;
    config.profiles[0].scroll.enabledAxes = ScrollAxes{std::uint8_t{252}};
    config.profiles[0].pointer.dpi = std::numeric_limits<std::int64_t>::min();
    config.profiles[1].id = "default";
    config.ruleSet.defaultProfileID = "none such";
    const auto text = config.encoded();
    ASSERT_TRUE(text);
    EXPECT_EQ(Config::decoded(*text), config);
    EXPECT_EQ(Config::decoded(replaced(*text, "\"isEnabled\"", R"("later":{"a":[1]},"isEnabled")")),
              config);
}

TEST(Config, a_document_that_cannot_be_used_is_refused_with_the_reason) {
    const std::string valid = encodedDefault();
    const std::string version = R"("schemaVersion": 1)";
    struct Case {
        const char* name;
        std::string text;
        std::string error;
    };
    const std::string noStep = "no migration registered from schema version ";
    const auto newer = [](const char* found) {
        return std::string("schema version ") + found + " is newer than 1, the newest supported";
    };
    const Case cases[] = {
        {"newer", R"({"schemaVersion": 2, "profiles": 7})", newer("2")},
        {"newer and huge", R"({"schemaVersion": 1e300})", newer("9223372036854775807")},
        {"newer than an integer", R"({"schemaVersion": 9223372036854775808})",
         newer("9223372036854775807")},
        {"newer, with a fraction", R"({"schemaVersion": 2.9})", newer("2")},
        {"older", R"({"schemaVersion": 0})", noStep + "0"},
        {"older beyond measure", R"({"schemaVersion": -1e300})", noStep + "-9223372036854775808"},
        {"older, cut off", R"({"schemaVersion": 0.9})", noStep + "0"},
        {"a boolean that stands for 0", R"({"schemaVersion": false})", noStep + "0"},
        {"a boolean that stands for 1", replaced(valid, version, R"("schemaVersion": true)"),
         "schemaVersion: expected an integer, found a boolean"},
        {"a fraction above 1", replaced(valid, version, R"("schemaVersion": 1.5)"),
         "schemaVersion: expected an integer, found the number 1.5"},
        {"a whole number with a point", replaced(valid, version, R"("schemaVersion": 1.0)"),
         "decoded"},
        {"a text", R"({"schemaVersion": "1"})", "missing or non-numeric schemaVersion"},
        {"null", R"({"schemaVersion": null})", "missing or non-numeric schemaVersion"},
        {"none", "{}", "missing or non-numeric schemaVersion"},
        {"two", replaced(valid, version, R"("schemaVersion": 1, "schemaVersion": 1)"),
         "schemaVersion: the key appears twice"},
        {"an array", "[]", "root of the config must be a JSON object"},
        {"a bad easing", replaced(valid, "easeInOut", "bouncy"),
         R"(profiles[1].scroll.easing: "bouncy" is none of "linear", "easeOut", "easeInOut")"},
        {"an unknown action", replaced(valid, "dpiShift", "teleport"),
         "profiles[0].buttons[0].action: Invalid number of keys found, expected one."},
        {"an unknown pattern", replaced(valid, "exact", "regex"),
         "ruleSet.rules[1].pattern: Invalid number of keys found, expected one."}};
    for (const auto& [name, text, error] : cases)
        EXPECT_EQ(errorOf(text), error) << name;
    EXPECT_TRUE(errorOf("").starts_with("not valid JSON"));
}

TEST(Config, each_key_of_the_document_is_required_but_one) {
    // Renaming a key takes it away: an unknown key in its place is passed over.
    const std::string valid = encodedDefault();
    int keys = 0;
    for (std::size_t colon = valid.find(R"(":)"); colon != std::string::npos;
         colon = valid.find(R"(":)", colon + 1)) {
        std::string text = valid;
        text.insert(colon, "?");
        EXPECT_NE(errorOf(text), "decoded") << text.substr(colon - 20, 30);
        ++keys;
    }
    EXPECT_EQ(keys, 2 * 32 + 4 * 7 + 6);
}

TEST(ConfigMigrator, a_current_document_is_returned_byte_for_byte) {
    const std::string odd = " {\"schemaVersion\" : 1.0, \"x\":1e2}\n";
    EXPECT_EQ(ConfigMigrator::migrate(odd), odd);
    EXPECT_EQ(ConfigMigrator::migrate(R"({"schemaVersion": 0})"),
              std::unexpected(
                  ConfigError{MalformedConfig{"no migration registered from schema version 0"}}));
}

TEST(Config, a_rule_that_points_nowhere_still_ends_in_a_profile) {
    const auto named = [](std::string id) {
        Profile profile = Profile::default_();
        profile.name = "profile " + id;
        profile.id = std::move(id);
        return profile;
    };
    struct Case {
        const char* name;
        std::vector<Profile> profiles;
        const char* ruleProfile;
        const char* defaultProfile;
        const char* expected;
    };
    const Case cases[] = {
        {"the rule's", {named("a"), named("b")}, "b", "a", "profile b"},
        {"the default", {named("a"), named("b")}, "gone", "b", "profile b"},
        {"the first", {named("a"), named("b")}, "gone", "gone too", "profile a"},
        {"case matters in ids", {named("a"), named("b")}, "B", "B", "profile a"},
        {"the factory's", {}, "gone", "gone too", "Default"},
        {"the first of two alike", {named("a"), named("b"), named("b")}, "b", "a", "profile b"}};
    for (const auto& [name, profiles, ruleProfile, defaultProfile, expected] : cases) {
        const Config config{.profiles = profiles,
                            .ruleSet = {.rules = {{.id = "r", .profileID = ruleProfile}},
                                        .defaultProfileID = defaultProfile}};
        EXPECT_EQ(config.activeProfile("org.a").name, expected) << name;
        EXPECT_EQ(config.resolve("org.a").profileID, ruleProfile) << name;
    }
}

/// A document that holds every case of every union.
Config fullConfig() {
    Config config = Config::default_();
    config.profiles[0].scroll.activationModifiers = ModifierFlags::command;
    config.profiles[1].pointer.curve = PointerCurve::linear;
    config.profiles.push_back(Profile::untouched());
    const std::vector<MacroStep> steps{KeyStep{1, ModifierFlags::shift}, KeyDownStep{2},
                                       KeyUpStep{2}, DelayStep{12.75}, MouseButtonStep{3}};
    std::int64_t button = 3;
    for (const Action& action :
         {Action{PassThroughAction{}}, Action{KeyStrokeAction{8, ModifierFlags::command}},
          Action{SequenceAction{steps}}, Action{HoldAction{9}},
          Action{RepeatWhileHeldAction{steps[3], 33.3}}, Action{LaunchAppAction{R"(org."é"\)"}},
          Action{RunShortcutAction{"Größer\n👩‍👩‍👧"}}}) {
        config.profiles[0].buttons.push_back(
            {.button = button++, .modifiers = ModifierFlags{~0U}, .action = action});
    }
    config.ruleSet.rules.push_back({.id = "any", .priority = -5, .isEnabled = false});
    return config;
}

TEST(Config, whatever_happens_to_a_file_reading_it_never_fails_but_with_an_error) {
    const Config config = fullConfig();
    // Without its white space, so that a mutation is likely to hit something that matters.
    const std::string valid = std::regex_replace(*config.encoded(), std::regex("\n *"), "");
    ASSERT_EQ(Config::decoded(valid), config);

    std::mt19937 random(42);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    const std::string_view alphabet = "{}[]\",:0123456789-+.eEtruefalsn\\ \n\xC3\xA9\xFF";
    int decodedCount = 0;
    for (int i = 0; i < 10'000; ++i) {
        std::string text = valid;
        for (std::size_t n = 1 + below(3); n > 0; --n) {
            const std::size_t at = below(text.size());
            const std::size_t length = 1 + below(std::min<std::size_t>(12, text.size() - at));
            switch (below(5)) {
                case 0:
                    text[at] = alphabet[below(alphabet.size())];
                    break;
                case 1:
                    text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
                    break;
                case 2:
                    text.erase(at, length);
                    break;
                case 3:
                    text.insert(below(text.size()), text.substr(at, length));
                    break;
                default:
                    text.resize(std::max<std::size_t>(1, text.size() - below(3)));
                    break;
            }
        }
        const auto decoded = Config::decoded(text);
        if (!decoded) {
            EXPECT_FALSE(description(decoded.error()).empty());
            continue;
        }
        ++decodedCount;
        const auto encoded = decoded->encoded();
        ASSERT_TRUE(encoded) << text;
        ASSERT_EQ(Config::decoded(*encoded), *decoded) << text;
    }
    // Changed numbers, names and white space leave some of the documents readable.
    EXPECT_GT(decodedCount, 100);
    EXPECT_LT(decodedCount, 9500);
}

}  // namespace
}  // namespace tessara
