#include <QQuickItem>
#include <algorithm>
#include <functional>

#include <gmock/gmock.h>

#include "InterfaceTest.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;

class ScrollTabTest : public InterfaceTest {
  protected:
    const ScrollSettings& scroll() const { return model->config().profiles.front().scroll; }

    void openAdvanced() {
        driver->act("Advanced", QAccessible::CheckBox, QAccessibleActionInterface::toggleAction());
    }

    /// What the application in front receives of a hand that spins the wheel fast and tilts it: the
    /// pixels of each event.
    std::vector<std::pair<std::int64_t, std::int64_t>> spin() {
        settle();
        editor.takeReceived();
        for (int i = 0; i < 10; ++i) {
            host.mouse->spin(1);
            dispatcher.advance(milliseconds(30));
        }
        host.mouse->spinSideways(1);
        settle();
        std::vector<std::pair<std::int64_t, std::int64_t>> pixels;
        for (const CGEvent& event : editor.takeReceived()) {
            pixels.emplace_back(event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis1),
                                event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis2));
        }
        return pixels;
    }
};

/// A control, how it is worked, and what that makes of the settings.
struct Work {
    const char* title;
    QAccessible::Role role;
    Qt::Key key;
    std::function<void(ScrollSettings&)> change;
};

std::vector<Work> everyControl() {
    using enum QAccessible::Role;
    using Scroll = ScrollSettings;
    return {
        {"Smooth the scroll wheel", CheckBox, Qt::Key_Space,
         [](Scroll& s) { s.isEnabled = false; }},
        {"Up and down", CheckBox, Qt::Key_Space,
         [](Scroll& s) { s.enabledAxes.remove(ScrollAxes::vertical); }},
        {"Left and right", CheckBox, Qt::Key_Return,
         [](Scroll& s) { s.enabledAxes.remove(ScrollAxes::horizontal); }},
        {"Smooth scrolling applies", ComboBox, Qt::Key_Down,
         [](Scroll& s) { s.activationModifiers = ModifierFlags::command; }},
        {"Distance per wheel click", Slider, Qt::Key_Right,
         [](Scroll& s) { s.pixelsPerDetent = 55; }},
        {"Distance per wheel click", SpinBox, Qt::Key_Up,
         [](Scroll& s) { s.pixelsPerDetent = 51; }},
        {"Glide length", Slider, Qt::Key_Left, [](Scroll& s) { s.durationMillis = 240; }},
        {"Glide length", SpinBox, Qt::Key_Down, [](Scroll& s) { s.durationMillis = 249; }},
        {"Glide shape", ComboBox, Qt::Key_Down, [](Scroll& s) { s.easing = Easing::linear; }},
        {"Reverse the direction", CheckBox, Qt::Key_Space, [](Scroll& s) { s.isInverted = true; }},
        {"Speed up when you spin the wheel quickly", CheckBox, Qt::Key_Space,
         [](Scroll& s) { s.accelerationEnabled = false; }},
        {"How much faster", Slider, Qt::Key_Left, [](Scroll& s) { s.accelerationGain = 1.15; }},
        {"How much faster", SpinBox, Qt::Key_Up, [](Scroll& s) { s.accelerationGain = 1.21; }},
        {"Speed limit", Slider, Qt::Key_Right,
         [](Scroll& s) { s.maxAccelerationMultiplier = 6.5; }},
        {"Speed limit", SpinBox, Qt::Key_Down,
         [](Scroll& s) { s.maxAccelerationMultiplier = 5.9; }},
        {"Time between steps", Slider, Qt::Key_Right, [](Scroll& s) { s.frameIntervalMillis = 9; }},
        {"Maximum glide in flight", Slider, Qt::Key_Home,
         [](Scroll& s) { s.maxInFlightPixels = 500; }},
    };
}

TEST_F(ScrollTabTest, every_control_changes_the_document_and_the_next_glide_and_can_be_reset) {
    open();
    openAdvanced();
    const auto untouched = spin();
    ASSERT_FALSE(untouched.empty());
    for (const Work& work : everyControl()) {
        SCOPED_TRACE(std::string(work.title) + (work.role == QAccessible::SpinBox ? ", fine" : ""));
        ScrollSettings expected;
        work.change(expected);

        const bool isNumber = work.role == QAccessible::Slider || work.role == QAccessible::SpinBox;
        const double shown = isNumber ? driver->value(work.title, work.role) : 0;

        driver->key(work.title, work.role, work.key);
        EXPECT_EQ(scroll(), expected);
        EXPECT_NE(spin(), untouched);
        EXPECT_EQ(Config::decoded(*host.files.contents(host.configPath)), model->config());

        driver->press(QString("Reset %1 to default").arg(work.title));
        EXPECT_EQ(scroll(), ScrollSettings{});
        EXPECT_EQ(spin(), untouched);
        if (isNumber) {
            EXPECT_EQ(driver->value(work.title, work.role), shown);
        }
    }
}

TEST_F(ScrollTabTest, a_screen_reader_can_work_every_control) {
    open();
    openAdvanced();
    for (const Work& work : everyControl()) {
        SCOPED_TRACE(work.title);
        switch (work.role) {
            case QAccessible::CheckBox:
                driver->act(work.title, work.role, QAccessibleActionInterface::toggleAction());
                break;
            case QAccessible::Slider:
                driver->setValue(work.title, 5);
                break;
            case QAccessible::SpinBox:
                driver->act(work.title, work.role, QAccessibleActionInterface::increaseAction());
                break;
            default:
                driver->act(work.title, work.role, QAccessibleActionInterface::pressAction());
                driver->key(Qt::Key_Down);
                driver->key(Qt::Key_Return);
                break;
        }
        EXPECT_NE(scroll(), ScrollSettings{});
        driver->press(QString("Reset %1 to default").arg(work.title));
        EXPECT_EQ(scroll(), ScrollSettings{});
    }
}

TEST_F(ScrollTabTest, the_keyboard_alone_reaches_every_control_and_shows_where_it_is) {
    open();
    openAdvanced();
    const auto controls = driver->controls();
    std::vector<WindowDriver::Control> reached;
    for (std::size_t i = 0; i < 2 * controls.size(); ++i) {
        driver->key(Qt::Key_Tab);
        reached.push_back(driver->focused());
        const QQuickItem* item = window->activeFocusItem();
        const QRectF seen = item->mapRectToScene(item->boundingRect());
        EXPECT_TRUE(QRectF({}, window->size()).contains(seen))
            << driver->focused().name.toStdString() << " is out of sight";
    }
    for (const auto& control : controls) {
        EXPECT_FALSE(control.name.isEmpty()) << control.role;
        EXPECT_NE(std::ranges::find(reached, control), reached.end())
            << control.role << control.name.toStdString();
    }
}

}  // namespace
}  // namespace tessara
