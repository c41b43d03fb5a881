#include <limits>

#include <gtest/gtest.h>

#include "TessaraCore/RuleSet.h"

namespace tessara {
namespace {

TEST(BundleIDPattern, what_the_user_types_is_read_and_given_back) {
    struct Case {
        const char* typed;
        BundleIDPattern pattern;
        const char* text;
    };
    const Case cases[] = {{"", AnyBundleID{}, "*"},
                          {"  \t\r\n ", AnyBundleID{}, "*"},
                          {" * ", AnyBundleID{}, "*"},
                          {"\u00A0\u2003*\u2028\u0085", AnyBundleID{}, "*"},
                          {" com.foo.* ", BundleIDPrefix{"com.foo."}, "com.foo.*"},
                          {"**", BundleIDPrefix{"*"}, "**"},
                          {"com.*.app", ExactBundleID{"com.*.app"}, "com.*.app"},
                          {"*com", ExactBundleID{"*com"}, "*com"},
                          {"com.foo. bar\n", ExactBundleID{"com.foo. bar"}, "com.foo. bar"},
                          {"x\u00A0\x80", ExactBundleID{"x\u00A0\x80"}, "x\u00A0\x80"},
                          {"é\xff ", ExactBundleID{"é\xff"}, "é\xff"}};
    for (const auto& [typed, pattern, text] : cases) {
        EXPECT_EQ(parseBundleIDPattern(typed), pattern) << typed;
        EXPECT_EQ(patternString(pattern), text) << typed;
    }
}

TEST(BundleIDPattern, matching_ignores_case_in_every_script) {
    struct Case {
        BundleIDPattern pattern;
        std::optional<std::string_view> bundleID;
        bool matches;
    };
    const std::string longText(600, 'x');
    const std::string longID = longText + "\u0130É";
    const std::string longPattern = longText + "i\u0307e\u0301";
    const Case cases[] = {
        {AnyBundleID{}, std::nullopt, true},
        {AnyBundleID{}, "com.any", true},
        {ExactBundleID{"com.figma.Desktop"}, "COM.FIGMA.desktop", true},
        {ExactBundleID{"com.figma.Desktop"}, "com.figma.Desktop2", false},
        {ExactBundleID{"com.figma.Desktop"}, "com.figma.Deskto", false},
        {ExactBundleID{"com.figma.Desktop"}, std::nullopt, false},
        {ExactBundleID{""}, "", true},
        {ExactBundleID{"@"}, "`", false},  // 32 apart, as letters of two cases are
        {ExactBundleID{"org.straße"}, "ORG.STRASSE", true},
        {ExactBundleID{"org.ΣΊΣΥΦΟΣ"}, "org.σίσυφος", true},
        {ExactBundleID{"cafe\u0301"}, "CAFÉ", true},
        {ExactBundleID{"cafe"}, "CAFÉ", false},
        {ExactBundleID{"\u212A"}, "k", true},  // the sign for kelvin
        {ExactBundleID{longPattern}, longID, true},
        {ExactBundleID{"a\xff"}, "A\xff", true},
        {ExactBundleID{"a\xff"}, "A\xfe", false},
        {BundleIDPrefix{"com.adobe."}, "com.Adobe.Photoshop", true},
        {BundleIDPrefix{"com.adobe."}, "com.adobe.", true},
        {BundleIDPrefix{"com.adobe."}, "com.adobe", false},
        {BundleIDPrefix{"com.adobe."}, "xcom.adobe.app", false},
        {BundleIDPrefix{"com.adobe."}, std::nullopt, false},
        {BundleIDPrefix{""}, "", true},
        {BundleIDPrefix{""}, "com.any", true},
        {BundleIDPrefix{""}, "éa", true},
        {BundleIDPrefix{""}, std::nullopt, false},
        {BundleIDPrefix{"org.É"}, "org.e\u0301cole", true},
        {BundleIDPrefix{"org.e"}, "org.e\u0301cole", false},  // inside a character
        {BundleIDPrefix{"org.É"}, "org.", false},
        {BundleIDPrefix{"org.É"}, "org.xcole", false},
        {BundleIDPrefix{"a\xff"}, "A\xff.b", true}};
    for (const auto& [pattern, bundleID, expected] : cases) {
        EXPECT_EQ(matches(pattern, bundleID), expected)
            << patternString(pattern) << " on " << bundleID.value_or("nothing");
    }
}

TEST(BundleIDPattern, a_prefix_is_as_specific_as_a_reader_would_count_it_long) {
    struct Case {
        BundleIDPattern pattern;
        std::int64_t specificity;
    };
    const Case cases[] = {{AnyBundleID{}, 0},
                          {BundleIDPrefix{""}, 1},
                          {BundleIDPrefix{"com.adobe."}, 11},
                          {BundleIDPrefix{"e\u0301"}, 2},
                          {BundleIDPrefix{"👩‍👩‍👧x"}, 3},
                          {BundleIDPrefix{"🇨🇭🇨🇭"}, 3},
                          {BundleIDPrefix{"🇨🇭\xff🇨🇭"}, 4},
                          {BundleIDPrefix{"\r\n"}, 2},
                          {BundleIDPrefix{"\xff\xff"}, 3},
                          {ExactBundleID{""}, std::numeric_limits<std::int64_t>::max()}};
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(specificity(pattern), expected) << patternString(pattern);
    }
}

Rule rule(std::string id, BundleIDPattern pattern, std::int64_t priority = 0,
          bool isEnabled = true) {
    return {.id = id,
            .pattern = std::move(pattern),
            .profileID = "profile of " + id,
            .priority = priority,
            .isEnabled = isEnabled};
}

TEST(RuleSet, priority_wins_then_the_narrower_pattern_then_the_earlier_rule) {
    struct Case {
        const char* name;
        std::vector<Rule> rules;
        std::optional<std::string_view> bundleID;
        const char* winner;  // null for the default
    };
    const auto any = [](auto... more) { return rule("any", AnyBundleID{}, more...); };
    const auto exact = [](auto... more) { return rule("exact", ExactBundleID{"a.b.c"}, more...); };
    const auto longer = [](auto... more) { return rule("longer", BundleIDPrefix{"a.b"}, more...); };
    const auto shorter = [](auto... more) {
        return rule("shorter", BundleIDPrefix{"a."}, more...);
    };
    const Rule twin = rule("twin", ExactBundleID{"A.B.C"});
    const Case cases[] = {
        {"no rules", {}, "a.b.c", nullptr},
        {"none matches", {exact()}, "x", nullptr},
        {"none is enabled", {exact(0, false)}, "a.b.c", nullptr},
        {"exact over any", {any(), exact()}, "a.b.c", "exact"},
        {"exact over any, other order", {exact(), any()}, "a.b.c", "exact"},
        {"longer over shorter", {shorter(), longer()}, "a.b.c", "longer"},
        {"longer over shorter, other order", {longer(), shorter()}, "a.b.c", "longer"},
        {"priority over all", {exact(10), shorter(20)}, "a.b.c", "shorter"},
        {"priority over all, other order", {shorter(20), exact(10)}, "a.b.c", "shorter"},
        {"negative priority", {any(-2), exact(-3)}, "a.b.c", "any"},
        {"the earlier of two alike", {exact(), twin}, "a.b.c", "exact"},
        {"an empty prefix over any", {any(), rule("empty", BundleIDPrefix{""})}, "x", "empty"},
        {"no application", {exact(), longer(), any()}, std::nullopt, "any"},
        {"no application and no rule for it", {exact(), longer()}, std::nullopt, nullptr}};
    for (const auto& [name, rules, bundleID, winner] : cases) {
        SCOPED_TRACE(name);
        const RuleSet ruleSet{.rules = rules, .defaultProfileID = "none such"};
        const ProfileResolution resolution = ruleSet.resolve(bundleID);
        EXPECT_EQ(resolution.usedFallback(), winner == nullptr);
        if (winner == nullptr) {
            EXPECT_EQ(resolution.profileID, "none such");
        } else {
            EXPECT_EQ(resolution.profileID, std::string("profile of ") + winner);
            ASSERT_TRUE(resolution.matchedRule);
            EXPECT_EQ(resolution.matchedRule->id, winner);
        }
    }
}

}  // namespace
}  // namespace tessara
