#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "Platform/Dispatch/Awaitables.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "ScriptedMouse.h"

namespace tessara {

using Random = std::mt19937_64;

inline std::uint64_t below(Random& random, std::uint64_t limit) {
    return random() % limit;
}

/// A scripted mouse with settings that are lost at each plug, and with faults of every kind. How
/// often they come is `faultPercent`; which, its own random numbers say.
class RandomMouse {
  public:
    using Bytes = ScriptedMouse::Bytes;

    static constexpr std::int64_t factoryDPI = 800;
    /// Where the mouse echoes the 16 parameters of a long request: feature index and function.
    static constexpr std::uint8_t echoIndex = 7;
    static constexpr std::uint8_t echoFunction = 5;
    /// Replies come after this at the latest, or within `lateWindow` of the timeout.
    static constexpr auto slowestReply = std::chrono::milliseconds(4);

    RandomMouse(FakeHIDTransport& transport, std::shared_ptr<DispatchQueue> linkQueue,
                std::uint64_t seed, std::chrono::milliseconds timeout)
        : mouse(transport, std::move(linkQueue)), random_(seed), timeout_(timeout) {
        using enum HIDPPFeature;
        mouse.keepsRequests = false;
        mouse.answer(adjustableDPI, 1, {0, 0, 0xC8, 0xE0, 0x32, 0x64, 0});
        mouse.answers[{adjustableDPI, 2}] = [this](const Bytes&) {
            const auto now = dpi.load();
            return Bytes{0, static_cast<std::uint8_t>(now >> 8), static_cast<std::uint8_t>(now), 3,
                         0x20};
        };
        mouse.answers[{adjustableDPI, 3}] = [this](const Bytes& p) {
            dpi = p[1] << 8 | p[2];
            return Bytes();
        };
        mouse.answers[{hiResWheel, 1}] = [this](const Bytes&) { return Bytes{wheelMode.load()}; };
        mouse.answers[{hiResWheel, 2}] = [this](const Bytes& p) {
            wheelMode = p[0];
            return Bytes();
        };
        mouse.answer(reportRate, 0, {0x8B});
        mouse.answer(reportRate, 1, {1});
        mouse.answer(reportRate, 2, {});
        mouse.answers[{onboardProfiles, echoFunction}] = [](const Bytes& p) { return p; };
        mouse.meddle = [this](const Bytes&, Bytes reply) { return meddle(std::move(reply)); };
    }

    void plug() {
        dpi = factoryDPI;
        wheelMode = 0;
        mouse.plug();
    }

    ScriptedMouse mouse;
    std::atomic<std::int64_t> dpi = factoryDPI;
    std::atomic<std::uint8_t> wheelMode = 0;
    std::atomic<std::uint64_t> faultPercent = 0;

  private:
    std::vector<ScriptedMouse::Emission> meddle(Bytes reply) {
        using namespace std::chrono_literals;
        const std::chrono::nanoseconds delay = below(random_, 4) * 1ms;
        if (below(random_, 100) >= faultPercent) return {{delay, std::move(reply)}};
        auto refusal = reply;
        refusal.resize(20);
        refusal[3] = reply[2];
        refusal[4] = reply[3];
        refusal[5] = static_cast<std::uint8_t>(below(random_, 12));
        switch (below(random_, 9)) {
            case 0:
                return {};
            // Late, but within the pause that follows a timeout.
            case 1:
                return {{timeout_ + below(random_, 30) * 1ms, std::move(reply)}};
            case 2:
                return {{delay, reply}, {delay + below(random_, 3) * 1ms, reply}};
            case 3:
                refusal[2] = 0xFF;
                return {{delay, std::move(refusal)}};
            case 4:
                refusal[2] = 0x8F;
                return {{delay, std::move(refusal)}};
            case 5:
                reply.resize(1 + below(random_, reply.size()));
                return {{delay, std::move(reply)}};
            case 6:
                reply[2] = static_cast<std::uint8_t>(reply[2] + 1);
                return {{delay, std::move(reply)}};
            case 7:
                return {{delay, noise()}, {delay, std::move(reply)}};
            default:
                return {{delay, {0x11, reply[1], reply[2], 0x10, 1, 2}}, {delay, std::move(reply)}};
        }
    }

    /// Any bytes that no request can be waiting for: the device index is never asked for.
    Bytes noise() {
        Bytes bytes(1 + below(random_, 20));
        for (auto& byte : bytes)
            byte = static_cast<std::uint8_t>(random_());
        if (bytes.size() > 1) bytes[1] = 0x42;
        return bytes;
    }

    /// Owned by the writers, one at a time.
    Random random_;
    const std::chrono::milliseconds timeout_;
};

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
                    return state.current >= 200 && state.current <= 25'600 && state.default_ == 800;
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
                begin(device_.reportRate(), [](const HIDPPReportRateInfo& info) {
                    return info.bitmap == 0x8B && info.current.milliseconds == 1;
                });
                break;
            default:
                beginEcho(random);
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

    void beginEcho(Random& random) {
        std::vector<std::uint8_t> unique(16);
        for (auto& byte : unique)
            byte = static_cast<std::uint8_t>(random());
        // A reply that was cut short brings back a part of what was sent.
        begin(device_.rawRequest(RandomMouse::echoIndex, RandomMouse::echoFunction, unique, true),
              [unique](const std::vector<std::uint8_t>& payload) {
                  return payload.size() <= unique.size() &&
                         std::equal(payload.begin(), payload.end(), unique.begin());
              });
    }

    HIDPPDevice& device_;
    const std::shared_ptr<DispatchQueue> caller_;
};

}  // namespace tessara
