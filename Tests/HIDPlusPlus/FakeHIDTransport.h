#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "FakeHIDInterface.h"
#include "Platform/HIDTransport.h"

namespace tessara {

/// A platform whose plugged-in interfaces are a list that the test edits. Used on the link queue,
/// and by a test in virtual time also from outside.
class FakeHIDTransport final : public HIDTransport {
  public:
    HIDListenEventAccess access = HIDListenEventAccess::granted;
    bool canWatch = true;

    /// Plugs these interfaces in, with new registry ids, as one hit.
    void plug(const std::vector<std::shared_ptr<FakeHIDInterface>>& interfaces) {
        for (const auto& interface : interfaces) {
            interface->id = nextID_++;
            present_.push_back(interface);
        }
        announce([](HIDHotplugHandlers& handlers) { handlers.arrived(); });
    }

    /// Pulls all interfaces out.
    void unplug() {
        for (const auto& interface : std::exchange(present_, {})) {
            interface->isGone = true;
            announceDeparture(interface->id);
        }
    }

    void announceDeparture(std::uint64_t id) {
        announce([id](HIDHotplugHandlers& handlers) { handlers.departed(id); });
    }

    std::size_t watchCount() const {
        return static_cast<std::size_t>(
            std::ranges::count_if(watches_, [](const auto& watch) { return !watch.expired(); }));
    }

    std::vector<std::shared_ptr<HIDInterface>> interfaces(std::int64_t vendorID,
                                                          std::int64_t productID) override {
        std::vector<std::shared_ptr<HIDInterface>> found;
        for (const auto& interface : present_) {
            const auto& described = interface->described;
            if (described.vendorID == vendorID && described.productID == productID) {
                found.push_back(interface);
            }
        }
        return found;
    }

    std::unique_ptr<HIDHotplugWatch> watch(std::int64_t, std::int64_t,
                                           std::shared_ptr<DispatchQueue> queue,
                                           HIDHotplugHandlers handlers) override {
        if (!canWatch) return nullptr;
        const auto state = std::make_shared<WatchState>(std::move(queue), std::move(handlers));
        watches_.push_back(state);
        return std::make_unique<Watch>(state);
    }

    HIDListenEventAccess listenEventAccess() const override { return access; }

  private:
    struct WatchState {
        WatchState(std::shared_ptr<DispatchQueue> onQueue, HIDHotplugHandlers toHandlers)
            : queue(std::move(onQueue)), handlers(std::move(toHandlers)) {}

        const std::shared_ptr<DispatchQueue> queue;
        HIDHotplugHandlers handlers;
    };

    class Watch final : public HIDHotplugWatch {
      public:
        explicit Watch(std::shared_ptr<WatchState> state) : state_(std::move(state)) {}

      private:
        const std::shared_ptr<WatchState> state_;
    };

    template <typename Call>
    void announce(Call call) {
        for (const auto& weakWatch : watches_) {
            const auto watch = weakWatch.lock();
            if (!watch) continue;
            watch->queue->post([weakWatch, call] {
                if (const auto alive = weakWatch.lock()) call(alive->handlers);
            });
        }
    }

    std::uint64_t nextID_ = 100;
    std::vector<std::shared_ptr<FakeHIDInterface>> present_;
    std::vector<std::weak_ptr<WatchState>> watches_;
};

}  // namespace tessara
