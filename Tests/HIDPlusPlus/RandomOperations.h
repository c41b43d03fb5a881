#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "Platform/Dispatch/Awaitables.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

using Random = std::mt19937_64;

inline std::uint64_t below(Random& random, std::uint64_t limit) {
    return random() % limit;
}

/// Begins operations on a device and judges what comes of them.
class RandomOperations : public std::enable_shared_from_this<RandomOperations> {
  public:
    RandomOperations(HIDPPDevice& device, std::shared_ptr<DispatchQueue> caller)
        : device_(device), caller_(std::move(caller)) {}

    std::atomic<int> begun = 0;
    std::atomic<int> completed = 0;
    std::atomic<int> succeeded = 0;
    /// Replies that were not those to their request.
    std::atomic<int> misdelivered = 0;

    int outstanding() const { return begun - completed; }

    void beginAny(Random& random) {
        switch (below(random, 8)) {
            case 0:
                begin(device_.setDPI(static_cast<std::int64_t>(below(random, 30'000))));
                break;
            case 1:
                begin(device_.dpi(), [](const HIDPPDPIState& state) {
                    return state.current >= 100 && state.current <= 25'600 && state.default_ == 800;
                });
                break;
            case 2:
                begin(device_.setWheelHighResolution(below(random, 2) == 0));
                break;
            case 3:
                begin(device_.wheelMode());
                break;
            case 4:
                begin(device_.setReportRate({1 + static_cast<std::int64_t>(below(random, 4))}));
                break;
            case 5:
                begin(device_.reportRate(),
                      [](const HIDPPReportRateInfo& info) { return info.bitmap == 0x8B; });
                break;
            default:
                beginPing(static_cast<std::uint8_t>(random()));
                break;
        }
    }

    template <typename T>
    void begin(HIDPPTask<T> operation) {
        begin(std::move(operation), [](const auto&...) { return true; });
    }

    template <typename T, typename Judge>
    void begin(HIDPPTask<T> operation, Judge isItsOwn) {
        ++begun;
        asio::co_spawn(caller_->executor(),
                       judge(shared_from_this(), std::move(operation), std::move(isItsOwn)),
                       RethrowException());
    }

  private:
    template <typename T, typename Judge>
    static asio::awaitable<void> judge(std::shared_ptr<RandomOperations> self,
                                       HIDPPTask<T> operation, Judge isItsOwn) {
        const auto result = co_await std::move(operation);
        ++self->completed;
        if (!result) co_return;
        ++self->succeeded;
        if constexpr (!std::is_void_v<T>) {
            if (!isItsOwn(*result)) ++self->misdelivered;
        }
    }

    /// The mouse gives back the last byte of a ping.
    void beginPing(std::uint8_t token) {
        begin(device_.rawRequest(0, 1, {0, 0, token}, false),
              [token](const std::vector<std::uint8_t>& payload) {
                  return payload.size() < 3 || payload[2] == token;
              });
    }

    HIDPPDevice& device_;
    const std::shared_ptr<DispatchQueue> caller_;
};

}  // namespace tessara
