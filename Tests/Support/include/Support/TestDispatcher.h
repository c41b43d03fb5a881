#pragma once

#include <gtest/gtest.h>

#include "Platform/Dispatch/ManualDispatcher.h"

namespace tessara::testing {

/// What a test hands to a `ManualDispatcher` as its leftover handler: blocks that are still queued
/// at the dispatcher's end fail the test that is running.
[[nodiscard]] ManualDispatcher::LeftoverHandler failOnLeftovers();

/// Virtual time for one test, starting at one second so that no moment of interest is zero.
/// The test fails if it ends with work queued and did not say `dispatcher.discard()`.
class VirtualTimeTest : public ::testing::Test {
  protected:
    static constexpr TimePoint start{std::chrono::seconds(1)};

    ManualDispatcher dispatcher{start, failOnLeftovers()};
};

}  // namespace tessara::testing
