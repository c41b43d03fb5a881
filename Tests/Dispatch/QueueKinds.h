#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara::testing {

/// One of the kinds of queue, driven so that one test can be told of all: in virtual time by moving
/// the clock, otherwise by waiting for the queue to reach a moment.
class QueueKind {
  public:
    virtual ~QueueKind() = default;

    [[nodiscard]] virtual std::shared_ptr<DispatchQueue> makeQueue(const std::string& label) = 0;

    /// Returns when everything that the queue has to run until `moment` has run.
    virtual void runUntil(DispatchQueue& queue, TimePoint moment) = 0;

    /// Returns when everything that is runnable on the queue now has run.
    virtual void runReady(DispatchQueue& queue) = 0;

    /// Says that blocks of this test are not meant to run.
    virtual void discard() = 0;

    /// Ends the dispatcher.
    virtual void end() = 0;
};

struct NamedKind {
    std::string name;
    std::function<std::unique_ptr<QueueKind>()> make;
};

[[nodiscard]] std::vector<NamedKind> allKinds();
[[nodiscard]] std::string nameOfKind(const ::testing::TestParamInfo<NamedKind>& kind);

/// A test that all kinds of queue pass: `queue` is one of the kind under test.
class AllKindsTest : public ::testing::TestWithParam<NamedKind> {
  protected:
    void runUntil(TimePoint moment) { kind->runUntil(*queue, moment); }
    void runReady() { kind->runReady(*queue); }
    [[nodiscard]] TimePoint now() const { return queue->clock().now(); }

    const std::unique_ptr<QueueKind> kind = GetParam().make();
    std::shared_ptr<DispatchQueue> queue = kind->makeQueue("ai.tessara.test");
};

}  // namespace tessara::testing

#define TESSARA_TEST_ALL_KINDS(Suite)                                                           \
    INSTANTIATE_TEST_SUITE_P(Kinds, Suite, ::testing::ValuesIn(::tessara::testing::allKinds()), \
                             ::tessara::testing::nameOfKind)
