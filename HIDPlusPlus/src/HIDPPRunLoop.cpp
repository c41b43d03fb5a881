#include "HIDPlusPlus/HIDPPRunLoop.h"

namespace tessara {

HIDPPRunLoop::HIDPPRunLoop(Dispatcher& dispatcher, HIDTransport& transport)
    : dispatcher_(dispatcher),
      transport_(transport),
      queue_(dispatcher.makeQueue("ai.corvane.tessara.hidpp", QualityOfService::userInitiated)) {}

std::shared_ptr<DispatchQueue> HIDPPRunLoop::makeSendQueue() const {
    return dispatcher_.makeQueue("ai.corvane.tessara.hidpp.send", QualityOfService::userInitiated);
}

}  // namespace tessara
