#include <gmock/gmock.h>

#include "EngineTest.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/MacroExecutor.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ButtonPipelineTest : public EngineTest {
  protected:
    static ButtonBinding bound(std::int64_t button, Action action) {
        return {.button = button, .action = std::move(action)};
    }

    ButtonDisposition press(std::int64_t button) {
        const ButtonDisposition disposition =
            pipeline.handle(ButtonEvent::down(button, nowMillis()));
        dispatcher.runReady();
        return disposition;
    }

    ButtonDisposition release(std::int64_t button) {
        const ButtonDisposition disposition = pipeline.handle(ButtonEvent::up(button, nowMillis()));
        dispatcher.runReady();
        return disposition;
    }

    const std::shared_ptr<MacroExecutor> executor =
        std::make_shared<MacroExecutor>(poster, sideEffects, dispatcher);
    ButtonPipeline pipeline{
        ButtonRouter({bound(3, KeyStrokeAction{.code = 8}), bound(4, HoldAction{.code = 9}),
                      bound(5, DPIShiftAction{.toDPI = 400}),
                      bound(6, SequenceAction{.steps = {KeyDownStep{.code = 10}}})},
                     2000),
        executor};
};

TEST_F(ButtonPipelineTest, a_button_without_a_binding_is_left_to_the_system) {
    EXPECT_EQ(press(0), ButtonDisposition::passThrough);
    EXPECT_EQ(press(0), ButtonDisposition::suppress) << "it is down already";
    EXPECT_EQ(release(0), ButtonDisposition::passThrough);
    EXPECT_EQ(release(0), ButtonDisposition::passThrough) << "a release nobody saw the press of";
    EXPECT_THAT(takePosted(), IsEmpty());
    EXPECT_EQ(executor->snapshotMetrics(), MacroExecutor::Metrics{});
    EXPECT_EQ(pipeline.snapshotMetrics(),
              (ButtonPipeline::Metrics{
                  .eventsSeen = 4, .passedThrough = 3, .suppressed = 1, .intentsProduced = 3}));
}

TEST_F(ButtonPipelineTest, a_bound_button_is_swallowed_at_its_press_and_its_release) {
    EXPECT_EQ(press(3), ButtonDisposition::suppress);
    EXPECT_THAT(takePosted(), ElementsAre("key(8 down mods=0)", "key(8 up mods=0)"));
    EXPECT_EQ(release(3), ButtonDisposition::suppress);
    EXPECT_THAT(takePosted(), IsEmpty());
    EXPECT_EQ(pipeline.snapshotMetrics(),
              (ButtonPipeline::Metrics{.eventsSeen = 2, .suppressed = 2, .intentsProduced = 2}));
}

TEST_F(ButtonPipelineTest, a_reset_releases_by_the_routers_list_and_the_rest_by_force) {
    (void)press(0);
    (void)press(4);
    (void)press(5);
    (void)press(6);
    EXPECT_THAT(pipeline.heldButtons(), ElementsAre(0, 4, 5, 6));
    EXPECT_EQ(pipeline.currentDPI(), 400);
    takePosted();

    pipeline.reset();
    dispatcher.runReady();
    EXPECT_THAT(takePosted(),
                ElementsAre("key(10 up mods=0)", "mouseButton(0 up)", "key(9 up mods=0)"));
    EXPECT_THAT(sideEffects->effects(),
                ElementsAre(SideEffect(DPIRequest{400}), SideEffect(DPIRequest{2000})));
    EXPECT_EQ(executor->snapshotMetrics().keysForceReleased, 1) << "the macro's key alone";
    EXPECT_THAT(pipeline.heldButtons(), IsEmpty());
    EXPECT_EQ(pipeline.currentDPI(), pipeline.baseDPI());
    EXPECT_EQ(pipeline.snapshotMetrics().resets, 1);
    EXPECT_EQ(pipeline.snapshotMetrics().intentsProduced, 4 + 3);

    EXPECT_EQ(release(4), ButtonDisposition::passThrough);
    pipeline.resetMetrics();
    EXPECT_EQ(pipeline.snapshotMetrics(), ButtonPipeline::Metrics{});
}

}  // namespace
}  // namespace tessara
