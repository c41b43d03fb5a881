// Helpers that fail tests are worth nothing unless they do.

#include <memory>

#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Support/ProcessResources.h"
#include "Support/TestDispatcher.h"

namespace tessara::testing {
namespace {

TEST(NoLeakedResources, fails_the_test_that_leaves_a_file_descriptor_open) {
    static int leaked = -1;
    EXPECT_NONFATAL_FAILURE(
        {
            const NoLeakedResources resources;
            leaked = open("/dev/null", O_RDONLY | O_CLOEXEC);
        },
        "file descriptors were leaked");
    close(leaked);
}

TEST(TestDispatcher, fails_the_test_that_ends_with_a_block_that_never_ran) {
    EXPECT_NONFATAL_FAILURE(
        {
            ManualDispatcher dispatcher(TimePoint{}, failOnLeftovers());
            dispatcher.makeQueue("ai.tessara.test", QualityOfService::standard)->post([] {});
        },
        "1 on ai.tessara.test");
}

}  // namespace
}  // namespace tessara::testing
