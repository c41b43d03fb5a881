#include <QWheelEvent>

#include <gmock/gmock.h>

#include "Desk/DeskModel.h"
#include "Desk/DeskProgram.h"
#include "InterfaceTest.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using enum QAccessible::Role;

class DeskWindowTest : public InterfaceTest {
  protected:
    DeskWindowTest() {
        registerDeskTypes();
        launch();
        show("DeskWindow", "desk", desk, "Tessara.Desk");
    }
    ~DeskWindowTest() override { window.reset(); }

    /// What the log says since the last time.
    std::vector<std::string> log() {
        settle();
        std::ignore = window->grabWindow();  // lays out the list
        std::vector<std::string> lines;
        for (int row = 0; row < desk.log()->rowCount(); ++row) {
            const QString line =
                desk.log()->data(desk.log()->index(row), Qt::DisplayRole).toString();
            EXPECT_TRUE(driver->shows(line, StaticText)) << line.toStdString();
            lines.push_back(line.toStdString());
        }
        driver->press("Clear");
        return lines;
    }

    DeskModel desk{host};
};

TEST_F(DeskWindowTest, pointer_and_keys_work_the_mouse_and_the_log_tells_what_arrives) {
    driver->turnWheel("Mouse", Client, -2);
    settle();
    for (int half = 0; half < 2; ++half)
        desk.turn({0, QWheelEvent::DefaultDeltasPerStep / 2});
    EXPECT_THAT(log(), ElementsAre("Editor: a glide of -100 px, in 25 steps",
                                   "Editor: a glide of 50 px, in 22 steps"));
    driver->drag("Button 3", Button, {});
    driver->drag("Mouse", Client, {7, -5});
    EXPECT_THAT(log(), ElementsAre("Editor: button 3 pressed", "Editor: button 3 released",
                                   "Editor: the pointer moved by 7, -5"));
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_4, Qt::Key_Right, Qt::Key_D})
        driver->key("Mouse", Client, key);
    EXPECT_THAT(log(), ElementsAre("Editor: button 4 pressed", "Editor: button 4 released",
                                   "Editor: the pointer moved by 12, 0",
                                   "Editor: a glide of 50 px and -50 px sideways, in 44 steps"));
}

TEST_F(DeskWindowTest, the_switches_take_things_from_the_program_and_give_them_back) {
    driver->key("In front", ComboBox, Qt::Key_Down);
    driver->key("Accessibility granted", CheckBox, Qt::Key_Return);
    settle();
    EXPECT_FALSE(model->status().isTapEnabled);
    driver->key("Mouse", Client, Qt::Key_Up);
    EXPECT_THAT(log(), ElementsAre("Canvas: the wheel as it is, 1 lines"));
    driver->act("Accessibility granted", CheckBox, QAccessibleActionInterface::toggleAction());
    settle();
    EXPECT_TRUE(model->status().isTapEnabled);

    driver->press("Interrupt the Event Tap");
    settle();
    EXPECT_EQ(model->status().tap.reEnables, 1);
    driver->drag("Mouse plugged in", CheckBox, {});
    driver->key("Mouse", Client, Qt::Key_Up);
    EXPECT_THAT(log(), ElementsAre());
    EXPECT_FALSE(model->status().targetDeviceAttached);
}

}  // namespace
}  // namespace tessara
