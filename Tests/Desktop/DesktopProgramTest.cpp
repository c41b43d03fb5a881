#include <QCoreApplication>
#include <QProcess>
#include <memory>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AccessibleTree.h"
#include "TrayHost.h"
#include "Waiting.h"

namespace tessara {
namespace {

/// The program as a user starts it, on the simulated desktop, with whatever the session has.
class DesktopProgramTest : public testing::Test {
  protected:
    ~DesktopProgramTest() override {
        program.kill();
        program.waitForFinished();
    }

    void start() {
        program.setProcessChannelMode(QProcess::ForwardedChannels);
        program.start(programPath, {});
        ASSERT_TRUE(waitUntil([this] { return tree.shows(QStringLiteral("Set Up Tessara")); }))
            << "a first start shows the onboarding";
    }
    [[nodiscard]] bool hasEnded() {
        return waitUntil([this] { return program.state() == QProcess::NotRunning; });
    }
    /// Acts on the thing of that name, once it is there.
    void press(const char* name) {
        std::optional<AccessibleTree::Thing> thing;
        ASSERT_TRUE(waitUntil([&] {
            thing = tree.find(QString::fromUtf8(name));
            return thing.has_value();
        })) << name;
        EXPECT_TRUE(tree.act(*thing)) << name;
    }

    const QString programPath = QCoreApplication::applicationDirPath() + "/tessara-demo";
    AccessibleTree tree;
    QProcess program;
};

TEST_F(DesktopProgramTest, the_menu_comes_with_the_tray_and_does_what_it_says) {
    TrayHost tray;
    start();
    EXPECT_TRUE(tree.shows(QStringLiteral("Quit Tessara")))
        << "in the window, while nothing shows what the tray is given";

    tray.open();
    ASSERT_TRUE(waitUntil([&] { return !tray.menu().isEmpty(); }));
    EXPECT_TRUE(waitUntil([&] { return !tree.shows(QStringLiteral("Quit Tessara")); }));
    EXPECT_TRUE(waitUntil([&] {
        return tray.menu() == QStringList{"Active",
                                          "-",
                                          "[ ] Pause Tessara",
                                          "Profile: Default",
                                          "-",
                                          "[ ] Start at Login",
                                          "Settings…",
                                          "Check for Updates…",
                                          "-",
                                          "Quit Tessara"};
    })) << tray.menu().join(QStringLiteral(" | ")).toStdString();
    EXPECT_EQ(tray.title(), QStringLiteral("Tessara — Active"));

    ASSERT_TRUE(tray.click(QStringLiteral("Pause Tessara")));
    EXPECT_TRUE(waitUntil([&] { return tray.menu().contains("[x] Pause Tessara"); }));
    EXPECT_EQ(tray.menu().constFirst(), QStringLiteral("Paused"));
    EXPECT_EQ(tray.title(), QStringLiteral("Tessara — Paused"));
    press("Resume");
    EXPECT_TRUE(waitUntil([&] { return tray.menu().contains("[ ] Pause Tessara"); }));

    ASSERT_TRUE(tray.click(QStringLiteral("Quit Tessara")));
    ASSERT_TRUE(hasEnded());
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
}

TEST_F(DesktopProgramTest,
       without_a_tray_a_closed_window_is_minimised_and_a_second_start_shows_it) {
    start();
    press("Continue");
    press("Start Using Tessara");
    const auto xdotool = [](const QStringList& arguments) {
        return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
    };
    const auto isSeen = [&] { return xdotool({"search", "--onlyvisible", "--name", "^Scroll$"}); };
    ASSERT_TRUE(waitUntil(isSeen));
    ASSERT_TRUE(
        xdotool({"search", "--name", "^Scroll$", "windowactivate", "--sync", "key", "Escape"}));
    ASSERT_TRUE(waitUntil([&] { return !isSeen(); }));
    QProcess second;
    second.start(programPath, {});
    ASSERT_TRUE(waitUntil([&] { return second.state() == QProcess::NotRunning; }));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(waitUntil(isSeen));

    TrayHost tray;
    tray.open();
    ASSERT_TRUE(waitUntil([&] { return !tray.menu().isEmpty(); }));
    EXPECT_TRUE(waitUntil([&] { return !tree.shows(QStringLiteral("Quit Tessara")); }));
}

TEST_F(DesktopProgramTest, a_screen_reader_can_go_through_all_of_it) {
    start();
    const QString toggle = QStringLiteral("Smooth the scroll wheel");
    press("Smooth the scroll wheel");
    const auto isOn = [&] {
        const auto thing = tree.find(toggle);
        return thing && tree.isChecked(*thing);
    };
    EXPECT_TRUE(waitUntil([&] { return !isOn(); }));
    press("Reset Smooth the scroll wheel to default");
    EXPECT_TRUE(waitUntil(isOn));

    // The permissions of the simulated desktop are there: the pages pass by themselves.
    press("Continue");
    press("Start Using Tessara");
    EXPECT_TRUE(waitUntil([&] { return !tree.shows(QStringLiteral("Set Up Tessara")); }));
    EXPECT_THAT(tree.namelessControls(), testing::IsEmpty());
}

}  // namespace
}  // namespace tessara

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
