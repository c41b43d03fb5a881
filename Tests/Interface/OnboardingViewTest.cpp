#include "InterfaceTest.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ViewModels/OnboardingViewModel.h"

namespace tessara {
namespace {

using enum QAccessible::Role;

class OnboardingViewTest : public InterfaceTest {
  protected:
    OnboardingViewTest() {
        host.desktop.permissions().revokeAccessibility();
        host.desktop.permissions().revokeInputMonitoring();
        launch();
        onboarding = std::make_unique<OnboardingViewModel>(
            *model, host.mainQueue, nullptr, [this](const QString& url) { opened = url; });
        show("OnboardingView", "onboarding", *onboarding);
    }
    ~OnboardingViewTest() override {
        window.reset();
        onboarding.reset();
    }

    void shows(const QString& text) {
        dispatcher.advance(std::chrono::milliseconds(600));
        EXPECT_TRUE(driver->shows(text)) << text.toStdString();
    }

    std::unique_ptr<OnboardingViewModel> onboarding;
    QString opened;
};

TEST_F(OnboardingViewTest, the_pages_pass_as_the_permissions_arrive) {
    shows("Welcome to Tessara");
    EXPECT_FALSE(driver->shows("Back"));
    driver->press("Continue");
    shows("Input Monitoring is not on yet");
    driver->press("Open Input Monitoring Settings");
    EXPECT_TRUE(opened.endsWith("ListenEvent"));
    host.desktop.permissions().grantInputMonitoring();
    shows("Accessibility is not on yet");
    driver->press("Back");
    shows("Accessibility is not on yet");
    host.desktop.permissions().grantAccessibility();
    shows("Both permissions are on.");
    EXPECT_TRUE(model->status().isTapEnabled);
    driver->press("Start Using Tessara");
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(model->preferences().hasCompletedOnboarding());
}

TEST_F(OnboardingViewTest, return_goes_on_and_the_last_page_tells_what_is_missing) {
    for (int i = 0; i < 3; ++i)
        driver->key(Qt::Key_Return);
    shows("One permission is still missing.");

    const QString login = "Start Tessara when I log in";
    const auto turn = [&] {
        driver->act(login, CheckBox, QAccessibleActionInterface::toggleAction());
        return driver->isChecked(login);
    };
    driver->key(login, CheckBox, Qt::Key_Space);
    EXPECT_TRUE(host.loginItem.isRegistered);
    EXPECT_FALSE(turn());
    EXPECT_FALSE(host.loginItem.isRegistered);
    host.loginItem.isApproved = false;
    for (int i = 0; i < 2; ++i)
        EXPECT_FALSE(turn()) << "what is so, and not what was wanted";

    driver->key(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(model->preferences().hasCompletedOnboarding());
}

}  // namespace
}  // namespace tessara
