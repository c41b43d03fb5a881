// Whatever reports a device sends and whenever it sends them, every request of a link completes
// exactly once, and only by a report that echoes it.
//
// The input is a script: each step is an opcode, its operands, and for reports their bytes.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "FakeHIDInterface.h"
#include "FakeHIDTransport.h"
#include "HIDPlusPlus/HIDPPLink.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "TessaraCore/Precondition.h"

namespace tessara {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Takes the script apart; at its end everything reads as 0.
class Script {
  public:
    explicit Script(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    bool isAtEnd() const { return rest_.empty(); }

    std::uint8_t byte() {
        if (rest_.empty()) return 0;
        const auto value = rest_.front();
        rest_ = rest_.subspan(1);
        return value;
    }

    Bytes bytes(std::size_t wanted) {
        const auto taken = rest_.first(std::min(wanted, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return {taken.begin(), taken.end()};
    }

  private:
    std::span<const std::uint8_t> rest_;
};

class Session {
  public:
    Session() {
        TESSARA_PRECONDITION(link_->open().has_value(), "the fake refuses to open");
        link_->setNotificationHandler([](std::uint8_t, std::uint8_t function, const Bytes&) {
            TESSARA_PRECONDITION((function & 0x0F) == 0, "a notification with a software id");
        });
    }

    void step(Script& script) {
        switch (script.byte() % 8) {
            case 0:
                request(script);
                break;
            case 1: {
                const auto reportID = script.byte();
                deliver(reportID, script.bytes(script.byte() % 32));
                break;
            }
            case 2:
                echo(script);
                break;
            case 3:
                refuse(script);
                break;
            case 4:
                dispatcher_.advance(std::chrono::milliseconds(script.byte()));
                break;
            case 5:
                interface_->writeResult =
                    script.byte() % 4 == 0 ? IOReturn::busy : IOReturn::success;
                break;
            case 6:
                dispatcher_.runReady();
                break;
            default:
                if (script.byte() == 0xED)
                    script.byte() % 2 == 0 ? link_->close() : link_->invalidate();
                break;
        }
    }

    void end() {
        dispatcher_.advance(std::chrono::seconds(1));
        link_->close();
        dispatcher_.runReady();
        TESSARA_PRECONDITION(std::ranges::all_of(completions_, [](int n) { return n == 1; }),
                             "a request that did not complete exactly once");
        const auto& counted = link_->statistics();
        TESSARA_PRECONDITION(counted.repliesMatched <= counted.requestsSent,
                             "more replies than requests");
        TESSARA_PRECONDITION(dispatcher_.pendingCount() == 0, "something is left on a queue");
    }

  private:
    void request(Script& script) {
        const auto number = completions_.size();
        completions_.push_back(0);
        const bool isLong = script.byte() % 2 == 0;
        const auto feature = script.byte();
        const auto function = static_cast<std::uint8_t>(script.byte() % 16);
        link_->enqueue({.deviceIndex = 0xFF,
                        .featureIndex = feature,
                        .function = function,
                        .parameters = script.bytes(script.byte() % 20),
                        .isLong = isLong,
                        .timeout = script.byte() * 0.001,
                        .label = "request"},
                       [this, number, feature, function](const HIDPPLink::Reply& reply) {
                           completions_[number] += 1;
                           if (reply) {
                               TESSARA_PRECONDITION(isEcho(feature, function),
                                                    "a reply that nobody sent");
                           }
                       });
    }

    /// Delivers a report as the script has it, whole or with its id stripped.
    void deliver(std::uint8_t reportID, const Bytes& bytes) {
        delivered_ = bytes;
        if (bytes.empty() || bytes.front() != reportID)
            delivered_.insert(delivered_.begin(), reportID);
        interface_->deliver(reportID, bytes);
        delivered_.clear();
    }

    /// Whether the report that is being delivered repeats the address of a request. A reply may
    /// overtake the end of the write that asked for it, so what was written is no measure.
    bool isEcho(std::uint8_t feature, std::uint8_t function) const {
        return delivered_.size() >= 4 && delivered_[1] == 0xFF && delivered_[2] == feature &&
               delivered_[3] >> 4 == function;
    }

    /// Answers one of the last requests, the latest or an earlier one.
    void echo(Script& script) {
        auto report = pastRequest(script);
        report.resize(std::min(report.size(), std::size_t{4}));
        const auto payload = script.bytes(script.byte() % 20);
        report.insert(report.end(), payload.begin(), payload.end());
        if (!report.empty()) deliver(report.front(), report);
    }

    /// Refuses one of the last requests.
    void refuse(Script& script) {
        const auto request = pastRequest(script);
        if (request.empty()) return;
        Bytes report{0x11,
                     request[1],
                     script.byte() % 2 == 0 ? std::uint8_t{0xFF} : std::uint8_t{0x8F},
                     request[2],
                     request[3],
                     script.byte()};
        deliver(0x11, report);
    }

    Bytes pastRequest(Script& script) const {
        const auto& written = interface_->written;
        const auto back = std::size_t{script.byte()} % 24;
        return back < written.size() ? written[written.size() - 1 - back] : Bytes();
    }

    ManualDispatcher dispatcher_{TimePoint(), [](const std::string&) {}};
    FakeHIDTransport transport_;
    std::shared_ptr<HIDPPRunLoop> runLoop_ =
        std::make_shared<HIDPPRunLoop>(dispatcher_, transport_);
    std::shared_ptr<FakeHIDInterface> interface_ = std::make_shared<FakeHIDInterface>();
    std::shared_ptr<HIDPPLink> link_ = std::make_shared<HIDPPLink>(runLoop_, interface_);
    std::vector<int> completions_;
    /// The report that is being delivered, its id in front; empty between deliveries.
    Bytes delivered_;
};

}  // namespace
}  // namespace tessara

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessara;
    Script script(std::span(data, size));
    Session session;
    while (!script.isAtEnd())
        session.step(script);
    session.end();
    return 0;
}
