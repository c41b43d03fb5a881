#include <QSignalSpy>
#include <functional>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/ViewModels/ProfileBinding.h"
#include "TessaraApp/ViewModels/ScrollPageModel.h"

namespace tessara {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class ScrollPageModelTest : public testing::VirtualTimeTest {
  protected:
    ~ScrollPageModelTest() override { dispatcher.discard(); }

    const ScrollSettings& scroll() const { return model.config().profiles.front().scroll; }
    void set(const ScrollSettings& settings) {
        profile.edit([&](Profile& edited) { edited.scroll = settings; });
    }

    SimulatedAppHost host{dispatcher};
    AppModel model{host.appPlatform()};
    ProfileBinding profile{model};
    ScrollPageModel page{model, profile};
};

TEST_F(ScrollPageModelTest, a_slider_lands_on_its_steps_and_the_stepper_on_every_value_between) {
    struct Case {
        SliderSetting* slider;
        double ScrollSettings::* field;
        double from, to, defaultValue, oneStepUp, slidUp;
        const char *defaultText, *steppedText;
    };
    using S = ScrollSettings;
    const Case cases[] = {
        {page.distance, &S::pixelsPerDetent, 10, 400, 50, 51, 55, "50 pt", "51 pt"},
        {page.length, &S::durationMillis, 40, 600, 250, 251, 260, "250 ms", "251 ms"},
        {page.gain, &S::accelerationGain, 0, 2, 1.2, 1.21, 1.25, "+120% per click",
         "+121% per click"},
        {page.limit, &S::maxAccelerationMultiplier, 1, 10, 6, 6.1, 6.5, "6.0×", "6.1×"},
        {page.interval, &S::frameIntervalMillis, 4, 32, 8, 9, 9, "8 ms", "9 ms"},
        {page.ceiling, &S::maxInFlightPixels, 500, 20000, 4000, 4001, 4500, "4000 pt", "4001 pt"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.slider->title().toStdString());
        QSignalSpy changes(c.slider, &SliderSetting::valueChanged);
        EXPECT_EQ(c.slider->from(), c.from);
        EXPECT_EQ(c.slider->to(), c.to);
        EXPECT_EQ(c.slider->text(), c.defaultText);

        c.slider->reset();
        c.slider->slideTo(c.defaultValue);
        EXPECT_EQ(changes.count(), 0) << "the default was there already";
        c.slider->stepUp();
        EXPECT_EQ(scroll().*c.field, c.oneStepUp);
        EXPECT_EQ(c.slider->text(), c.steppedText);
        EXPECT_EQ(changes.count(), 1);
        c.slider->stepDown();
        EXPECT_EQ(scroll().*c.field, c.defaultValue);
        // Anywhere nearer to the next step than to this one.
        c.slider->slideTo(c.defaultValue + c.slider->step() * 0.6);
        EXPECT_EQ(scroll().*c.field, c.slidUp);

        c.slider->setTo(c.to + 1000);
        EXPECT_EQ(scroll().*c.field, c.to);
        EXPECT_FALSE(c.slider->canStepUp());
        c.slider->stepUp();
        EXPECT_EQ(changes.count(), 4) << "there is nothing above the range";
        c.slider->slideTo(c.from - 1000);
        EXPECT_EQ(scroll().*c.field, c.from);
        EXPECT_FALSE(c.slider->canStepDown());
        c.slider->reset();
        EXPECT_EQ(scroll(), ScrollSettings{});
        EXPECT_EQ(changes.count(), 6);
    }
}

TEST_F(ScrollPageModelTest, a_value_of_the_file_stays_as_it_is_until_it_is_touched) {
    set({.pixelsPerDetent = 52.9, .maxInFlightPixels = 1e300});
    EXPECT_EQ(page.distance->text(), "52 pt");
    EXPECT_EQ(page.distance->position(), 52.9);
    EXPECT_THAT(page.ceiling->text().toStdString(), StartsWith("1000000000"));
    EXPECT_EQ(page.ceiling->position(), 20000);
    page.ceiling->slideTo(20000);
    EXPECT_EQ(scroll().maxInFlightPixels, 1e300) << "the slider was only set to where it stands";
    page.ceiling->stepDown();
    EXPECT_EQ(scroll().maxInFlightPixels, 20000);
    page.distance->stepUp();
    EXPECT_EQ(scroll().pixelsPerDetent, 53.9);
}

TEST_F(ScrollPageModelTest, a_toggle_writes_its_own_bit_and_tells_once) {
    struct Case {
        ToggleSetting* toggle;
        std::function<void(ScrollSettings&)> turned;
    };
    const Case cases[] = {
        {page.smoothing, [](ScrollSettings& s) { s.isEnabled = false; }},
        {page.vertical, [](ScrollSettings& s) { s.enabledAxes = ScrollAxes::horizontal; }},
        {page.horizontal, [](ScrollSettings& s) { s.enabledAxes = ScrollAxes::vertical; }},
        {page.inversion, [](ScrollSettings& s) { s.isInverted = true; }},
        {page.acceleration, [](ScrollSettings& s) { s.accelerationEnabled = false; }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.toggle->title().toStdString());
        QSignalSpy changes(c.toggle, &ToggleSetting::isOnChanged);
        ScrollSettings expected;
        c.turned(expected);
        c.toggle->turn(c.toggle->isOn());
        c.toggle->turn(!c.toggle->isOn());
        EXPECT_EQ(scroll(), expected);
        EXPECT_EQ(changes.count(), 1);
        c.toggle->reset();
        EXPECT_EQ(scroll(), ScrollSettings{});
        EXPECT_EQ(changes.count(), 2);
    }
    page.vertical->turn(false);
    page.horizontal->turn(false);
    EXPECT_TRUE(scroll().enabledAxes.isEmpty());
}

TEST_F(ScrollPageModelTest, a_modifier_is_read_back_as_the_first_choice_that_it_holds) {
    using M = ModifierFlags;
    struct Case {
        std::optional<M> kept;
        int shown;
    };
    const Case cases[] = {{std::nullopt, 0},
                          {M::none, 0},
                          {M::command, 1},
                          {M::option, 2},
                          {M::control, 3},
                          {M::shift, 4},
                          {M{M::option, M::command}, 1},
                          {M{M::shift, M::control}, 3},
                          {M::function, 0}};
    for (const Case& c : cases) {
        set({.activationModifiers = c.kept});
        EXPECT_EQ(page.activation->currentIndex(), c.shown);
        EXPECT_EQ(scroll().activationModifiers, c.kept) << "looking at it has changed it";
    }
    const std::optional<M> choices[] = {std::nullopt, M::command, M::option, M::control, M::shift};
    for (int i = 0; i < 5; ++i) {
        page.activation->choose(i);
        EXPECT_EQ(scroll().activationModifiers, choices[i]);
    }
    page.activation->reset();
    EXPECT_EQ(scroll().activationModifiers, std::nullopt);
}

TEST_F(ScrollPageModelTest, what_cannot_have_an_effect_cannot_be_changed) {
    struct Case {
        bool isSmooth, isAccelerated;
    };
    for (const Case& c :
         {Case{true, true}, Case{true, false}, Case{false, true}, Case{false, false}}) {
        set({.isEnabled = c.isSmooth, .accelerationEnabled = c.isAccelerated});
        EXPECT_TRUE(page.smoothing->isEnabled());
        for (const Setting* setting :
             {static_cast<Setting*>(page.vertical), static_cast<Setting*>(page.horizontal),
              static_cast<Setting*>(page.activation), static_cast<Setting*>(page.distance),
              static_cast<Setting*>(page.length), static_cast<Setting*>(page.shape),
              static_cast<Setting*>(page.inversion), static_cast<Setting*>(page.acceleration),
              static_cast<Setting*>(page.interval), static_cast<Setting*>(page.ceiling)}) {
            EXPECT_EQ(setting->isEnabled(), c.isSmooth) << setting->title().toStdString();
        }
        EXPECT_EQ(page.isAdvancedEnabled(), c.isSmooth);
        EXPECT_EQ(page.gain->isEnabled(), c.isSmooth && c.isAccelerated);
        EXPECT_EQ(page.limit->isEnabled(), c.isSmooth && c.isAccelerated);
    }
    QSignalSpy gainChanges(page.gain, &Setting::isEnabledChanged);
    page.smoothing->turn(true);
    EXPECT_EQ(gainChanges.count(), 0) << "it stays disabled without acceleration";
    page.acceleration->turn(true);
    EXPECT_EQ(gainChanges.count(), 1);
    EXPECT_EQ(page.gain->value(), 1.2);
}

TEST_F(ScrollPageModelTest, resetting_all_reaches_what_has_no_control) {
    set({.isEnabled = false,
         .enabledAxes = ScrollAxes::vertical,
         .easing = Easing::linear,
         .accelerationWindowMillis = 7});
    page.resetAll();
    EXPECT_EQ(scroll(), ScrollSettings{});
}

TEST_F(ScrollPageModelTest, the_preview_tells_what_one_click_becomes) {
    struct Case {
        ScrollSettings settings;
        const char* text;
    };
    const auto off =
        "Smooth scrolling is off for this profile, so a wheel click is passed to macOS "
        "exactly as your mouse sent it.";
    const Case cases[] = {
        {{},
         "One wheel click travels 50 points over 250 ms, in 23 steps. The line above is that "
         "movement — flat means still, steep means fast."},
        {{.isEnabled = false}, off},
        {{.enabledAxes = ScrollAxes{}}, off},
        {{.activationModifiers = ModifierFlags::command}, off},
        {{.pixelsPerDetent = 0}, off},
        {{.pixelsPerDetent = 1, .isInverted = true},
         "One wheel click travels 1 points over 250 ms, in 2 steps. The line above is that "
         "movement — flat means still, steep means fast."},
    };
    for (const Case& c : cases) {
        set(c.settings);
        EXPECT_EQ(page.preview->planText(), c.text);
        EXPECT_EQ(page.preview->plan().has_value(), std::string_view(c.text) != off);
    }
    set({});
    QSignalSpy changes(page.preview, &ScrollPreviewModel::planChanged);
    set({.accelerationGain = 2});
    EXPECT_EQ(changes.count(), 0) << "one click is not accelerated";
    set({.durationMillis = 300});
    EXPECT_EQ(changes.count(), 1);
    const auto rows = page.preview->rows();
    EXPECT_EQ(rows.size(), 60);
    EXPECT_EQ(rows.at(7).value<ScrollPreviewRow>().number, "07");
    EXPECT_FALSE(rows.at(7).value<ScrollPreviewRow>().isEmphasised);
    EXPECT_TRUE(rows.at(55).value<ScrollPreviewRow>().isEmphasised);
}

TEST_F(ScrollPageModelTest, the_live_line_tells_first_what_stands_in_the_way_most) {
    using std::chrono::seconds;
    const auto live = [this] { return page.preview->liveStatus().toStdString(); };
    host.desktop.permissions().revokeInputMonitoring();
    model.start();
    model.setPausedByUser(true);
    dispatcher.advance(seconds(5));
    EXPECT_THAT(live(), StartsWith("Tessara is not allowed to touch your input yet, so the panel"));
    host.desktop.permissions().grantInputMonitoring();
    dispatcher.advance(seconds(5));
    EXPECT_EQ(live(), "Tessara is paused, so this scrolls the way macOS does.");
    model.setPausedByUser(false);
    dispatcher.advance(seconds(5));
    EXPECT_THAT(live(), HasSubstr("mouse is not plugged in."));
    host.plugInMouse();
    dispatcher.advance(seconds(5));
    host.mouse->spin(1);
    dispatcher.advance(seconds(5));
    EXPECT_EQ(live(), "Live — Tessara has reshaped 1 wheel clicks into 23 smooth steps.");
    model.stop();
    dispatcher.advance(seconds(20));
}

}  // namespace
}  // namespace tessara
