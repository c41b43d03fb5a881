#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "FakeHIDInterface.h"
#include "FakeHIDTransport.h"
#include "HIDPlusPlus/HIDPPFeature.h"

namespace tessara {

/// A mouse of a few bytes behind a fake interface: a feature table, and for each function of a
/// feature the payload it answers with. What it does not know it refuses with error 7. Answers
/// and gate run in virtual time, on the queue of the writer.
class ScriptedMouse {
  public:
    using Bytes = std::vector<std::uint8_t>;
    using Answer = std::function<Bytes(const Bytes& parameters)>;

    /// The identifiers of the features, in the order of their indices.
    std::vector<std::uint16_t> table{0x0000, 0x0001, 0x0003, 0x0005, 0x2121,
                                     0x2201, 0x8060, 0x8100, 0x18B1};
    std::map<std::pair<HIDPPFeature, int>, Answer> answers;

    /// Called with each request before it is answered; false swallows the request.
    std::function<bool(const Bytes& request)> gate;
    /// How long each reply takes.
    std::chrono::nanoseconds replyDelay{0};
    /// Every request the mouse saw, over all its plugs, unless it is not to keep them.
    std::vector<Bytes> requests;
    bool keepsRequests = true;

    /// The interface of the present plug that carries the protocol.
    std::shared_ptr<FakeHIDInterface> interface;
    /// Given to each interface at its plug.
    IOReturn openResult = IOReturn::success;

    ScriptedMouse(FakeHIDTransport& transport, std::shared_ptr<DispatchQueue> linkQueue)
        : transport_(transport), linkQueue_(std::move(linkQueue)) {
        using enum HIDPPFeature;
        answers[{root, 0}] = [this](const Bytes& p) { return lookUp(p); };
        answers[{root, 1}] = [](const Bytes& p) { return Bytes{4, 2, p[2]}; };
        answers[{featureSet, 0}] = [this](const Bytes&) {
            return Bytes{static_cast<std::uint8_t>(table.size() - 1)};
        };
        answers[{featureSet, 1}] = [this](const Bytes& p) {
            const auto id = table.at(p[0]);
            return Bytes{static_cast<std::uint8_t>(id >> 8), static_cast<std::uint8_t>(id), 0, 1};
        };
    }

    /// Makes a function always answer with these bytes.
    void answer(HIDPPFeature feature, int function, Bytes payload) {
        answers[{feature, function}] = [payload = std::move(payload)](const Bytes&) {
            return payload;
        };
    }

    /// Plugs the mouse in: a pointer, a keyboard and the vendor interface, as one hit.
    void plug() {
        const auto pointer = std::make_shared<FakeHIDInterface>();
        pointer->described.usagePairs = {{1, 2}};
        const auto keyboard = std::make_shared<FakeHIDInterface>();
        keyboard->described.usagePairs = {{1, 6}, {0xFF00, 9}};
        keyboard->described.maxOutputReportSize = 19;
        interface = std::make_shared<FakeHIDInterface>();
        interface->openResult = openResult;
        interface->onWrite = [this, weakInterface = std::weak_ptr(interface)](
                                 const Bytes& request) { receive(request, weakInterface); };
        transport_.plug({pointer, keyboard, interface});
    }

    void unplug() { transport_.unplug(); }

    /// Sends a report of the mouse's own accord.
    void send(Bytes report) { interface->deliverLater(*linkQueue_, std::move(report)); }

    /// The requests since the last call.
    std::vector<Bytes> takeRequests() { return std::exchange(requests, {}); }

  private:
    Bytes lookUp(const Bytes& parameters) const {
        const auto id = static_cast<std::uint16_t>(parameters[0] << 8 | parameters[1]);
        const auto row = std::ranges::find(table, id);
        if (row == table.end()) return {0, 0, 0};
        return {static_cast<std::uint8_t>(row - table.begin()), 0, 1};
    }

    void receive(const Bytes& request, const std::weak_ptr<FakeHIDInterface>& weakInterface) {
        if (keepsRequests) requests.push_back(request);
        if (gate && !gate(request)) return;
        const auto asked = weakInterface.lock();
        if (!asked) return;
        // A reply does not outlive the opening under which it was asked for.
        linkQueue_->postAt(linkQueue_->clock().now() + replyDelay,
                           [weakInterface, reply = replyTo(request), opening = asked->openCount] {
                               const auto alive = weakInterface.lock();
                               if (alive && !alive->isGone && alive->openCount == opening)
                                   alive->deliver(reply);
                           });
    }

    Bytes replyTo(const Bytes& request) const {
        const auto payload = payloadFor(request);
        if (!payload) {
            Bytes refusal{0x11, request[1], 0xFF, request[2], request[3], 7};
            refusal.resize(20);
            return refusal;
        }
        Bytes reply{0x11, request[1], request[2], request[3]};
        reply.insert(reply.end(), payload->begin(), payload->end());
        return reply;
    }

    std::optional<Bytes> payloadFor(const Bytes& request) const {
        if (request[2] >= table.size()) return std::nullopt;
        const auto feature = static_cast<HIDPPFeature>(table[request[2]]);
        const auto found = answers.find({feature, request[3] >> 4});
        if (found == answers.end()) return std::nullopt;
        return found->second(Bytes(request.begin() + 4, request.end()));
    }

    FakeHIDTransport& transport_;
    const std::shared_ptr<DispatchQueue> linkQueue_;
};

}  // namespace tessara
