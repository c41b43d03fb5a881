#include "HIDPlusPlus/HIDPPRunLoop.h"

#include <utility>

#include "HIDPPSendQueue.h"

namespace tessara {

HIDPPRunLoop::HIDPPRunLoop(Dispatcher& dispatcher, HIDTransport& transport)
    : dispatcher_(dispatcher),
      transport_(transport),
      queue_(dispatcher.makeQueue("ai.corvane.tessara.hidpp", QualityOfService::userInitiated)) {}

HIDPPRunLoop::~HIDPPRunLoop() = default;

std::unique_ptr<HIDPPSendQueue> HIDPPRunLoop::makeSendQueue() const {
    return std::make_unique<HIDPPSendQueue>(
        dispatcher_.makeQueue("ai.corvane.tessara.hidpp.send", QualityOfService::userInitiated));
}

void HIDPPRunLoop::retire(std::unique_ptr<HIDPPSendQueue> sendQueue) const {
    retired_.push_back(std::move(sendQueue));
    std::erase_if(retired_, [](const auto& queue) { return queue->isIdle(); });
}

}  // namespace tessara
