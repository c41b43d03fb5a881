// What a queue on Qt's loop does beyond what every queue promises.

#include <QCoreApplication>
#include <QEventLoop>
#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/QtDispatch/QtMainQueue.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;

class QtMainQueueTest : public ::testing::Test {
  protected:
    int argc = 0;
    QCoreApplication application{argc, nullptr};
    std::shared_ptr<QtMainQueue> queue = std::make_shared<QtMainQueue>("ai.tessara.main");
};

TEST_F(QtMainQueueTest, a_loop_within_a_block_runs_no_other_block_until_that_one_has_ended) {
    for (const bool isDrained : {false, true}) {
        std::vector<const char*> ran;
        queue->post([&] {
            queue->post([&] { ran.push_back("posted"); });
            QCoreApplication::processEvents();
            ran.push_back("block");
        });
        if (isDrained) queue->drain();
        QCoreApplication::processEvents();
        EXPECT_THAT(ran, ElementsAre("block", "posted")) << isDrained;
    }
}

TEST_F(QtMainQueueTest, may_be_let_go_on_another_thread_while_its_loop_has_yet_to_run_it) {
    const auto token = std::make_shared<int>(0);
    queue->post([token] { FAIL(); });
    std::thread([last = std::move(queue)]() mutable { last.reset(); }).join();
    EXPECT_EQ(token.use_count(), 1);
    QCoreApplication::processEvents();
}

}  // namespace
}  // namespace tessara
