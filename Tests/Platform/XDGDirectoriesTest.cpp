#include <map>

#include <gtest/gtest.h>

#include "Platform/Linux/XDGDirectories.h"

namespace tessara {
namespace {

std::expected<XDGDirectories, std::string> directories(
    const std::map<std::string, std::string>& variables,
    const std::optional<std::string>& homeInUserDatabase = std::nullopt) {
    return XDGDirectories::from(
        [&](const char* name) -> std::optional<std::string> {
            const auto found = variables.find(name);
            if (found == variables.end()) return std::nullopt;
            return found->second;
        },
        homeInUserDatabase);
}

TEST(XDGDirectories, variables_lead_and_whatever_is_not_absolute_counts_as_not_set) {
    const auto set = directories({{"HOME", "/home/ada"},
                                  {"XDG_CONFIG_HOME", "/etc/ada/"},
                                  {"XDG_DATA_HOME", "/srv/data"},
                                  {"XDG_STATE_HOME", "/srv/state"},
                                  {"XDG_CACHE_HOME", "/srv/cache"},
                                  {"XDG_RUNTIME_DIR", "/run/user/7"}});
    ASSERT_TRUE(set);
    EXPECT_EQ(set->config(), "/etc/ada/tessara");
    EXPECT_EQ(set->data(), "/srv/data/tessara");
    EXPECT_EQ(set->state(), "/srv/state/tessara");
    EXPECT_EQ(set->cache(), "/srv/cache/tessara");
    EXPECT_EQ(set->runtime(), "/run/user/7/tessara");

    const auto unset = directories({{"HOME", "/home/ada"},
                                    {"XDG_CONFIG_HOME", ""},
                                    {"XDG_DATA_HOME", "data"},
                                    {"XDG_RUNTIME_DIR", "./run"}});
    ASSERT_TRUE(unset);
    EXPECT_EQ(unset->config(), "/home/ada/.config/tessara");
    EXPECT_EQ(unset->data(), "/home/ada/.local/share/tessara");
    EXPECT_EQ(unset->state(), "/home/ada/.local/state/tessara");
    EXPECT_EQ(unset->cache(), "/home/ada/.cache/tessara");
    EXPECT_EQ(unset->runtime(), std::nullopt);
}

TEST(XDGDirectories, the_user_database_stands_in_for_HOME_and_without_either_there_is_an_error) {
    EXPECT_EQ(directories({{"HOME", "ada"}}, "/home/grace").value().home, "/home/grace");
    const auto neither = directories({}, "");
    ASSERT_FALSE(neither);
    EXPECT_NE(neither.error().find("home folder"), std::string::npos);
}

}  // namespace
}  // namespace tessara
