#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>
#include <gtest/gtest.h>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/Awaitables.h"
#include "Platform/Dispatch/ManualDispatcher.h"

namespace tessara {

/// A device on a transport of this kind, and a listener, in virtual time.
template <typename Transport>
class HIDPPDeviceFixture : public ::testing::Test {
  protected:
    template <typename T>
    using Outcome = std::shared_ptr<std::optional<T>>;

    HIDPPDeviceFixture() {
        subscription = device->makeEventStream(
            caller, [this](const HIDPPEvent& event) { events.push_back(textOf(event)); });
    }

    void TearDown() override {
        subscription.cancel();
        device = nullptr;
        dispatcher.advance(std::chrono::seconds(5));
    }

    static std::string textOf(const HIDPPEvent& event) {
        struct Text {
            std::string operator()(const HIDPPEvent::DeviceAttached&) const { return "attached"; }
            std::string operator()(const HIDPPEvent::DeviceReady&) const { return "ready"; }
            std::string operator()(const HIDPPEvent::StateChanged& changed) const {
                return changed.state.description();
            }
            std::string operator()(const HIDPPEvent::Notification& notification) const {
                return "notification " + std::to_string(notification.featureIndex);
            }
            std::string operator()(const HIDPPEvent::DeviceRemoved&) const { return "removed"; }
        };
        return std::visit(Text(), event.value);
    }

    /// Begins an operation; its outcome appears when it has one.
    template <typename T>
    Outcome<T> begin(asio::awaitable<T> operation) {
        auto outcome = std::make_shared<std::optional<T>>();
        spawn(keep(std::move(operation), outcome));
        return outcome;
    }

    void spawn(asio::awaitable<void> operation) {
        asio::co_spawn(caller->executor(), std::move(operation), RethrowException());
    }

    /// Runs an operation for as long as it needs, up to ten seconds.
    template <typename T>
    T run(asio::awaitable<T> operation) {
        const auto outcome = begin(std::move(operation));
        dispatcher.runReady();
        for (int i = 0; i < 10'000 && !outcome->has_value(); ++i) {
            dispatcher.advance(std::chrono::milliseconds(1));
        }
        if (!outcome->has_value()) throw std::runtime_error("the operation never completed");
        return std::move(**outcome);
    }

    void disconnect() {
        spawn(device->disconnect());
        dispatcher.runReady();
    }

    /// The text of an outcome that has no value of interest: "ok", or the error's.
    template <typename T>
    static std::string textOf(const HIDPPResult<T>& result) {
        return result ? "ok" : result.error().description();
    }
    template <typename T>
    static std::string textOf(const Outcome<HIDPPResult<T>>& outcome) {
        return outcome->has_value() ? textOf(**outcome) : "waiting";
    }

    std::string state() { return run(device->state()).description(); }
    std::vector<std::string> takeEvents() {
        dispatcher.runReady();
        return std::exchange(events, {});
    }

  private:
    template <typename T>
    static asio::awaitable<void> keep(asio::awaitable<T> operation, Outcome<T> outcome) {
        auto value = co_await std::move(operation);
        EXPECT_FALSE(outcome->has_value()) << "completed twice";
        *outcome = std::move(value);
    }

  protected:
    ManualDispatcher dispatcher;
    Transport transport;
    std::shared_ptr<HIDPPRunLoop> runLoop = std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    std::shared_ptr<DispatchQueue> caller =
        dispatcher.makeQueue("caller", QualityOfService::standard);
    std::unique_ptr<HIDPPDevice> device =
        std::make_unique<HIDPPDevice>(HIDPPDeviceMatch::g502X, runLoop);
    EventSubscription subscription;
    std::vector<std::string> events;
};

}  // namespace tessara
