#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "TessaraCore/ScrollAxis.h"
#include "TessaraCore/ScrollPlan.h"

namespace tessara::testing {

/// Watches scroll steps as an application would see them, and notes each one that makes no sense:
/// per axis a gesture begins once, changes, and ends once; every step but the end moves, and the
/// end does not. That the pixels add up is the test's own matter. One thread.
class GestureChecker {
  public:
    /// Takes note of the next step of either axis.
    void step(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase);

    /// What went wrong so far, one sentence each.
    [[nodiscard]] const std::vector<std::string>& faults() const { return faults_; }

    /// The axes whose gesture began and has not ended.
    [[nodiscard]] const std::set<ScrollAxis>& openAxes() const { return open_; }

  private:
    std::set<ScrollAxis> open_;
    std::vector<std::string> faults_;
    std::int64_t steps_ = 0;
};

}  // namespace tessara::testing
