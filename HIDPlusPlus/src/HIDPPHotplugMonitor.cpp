#include "HIDPPHotplugMonitor.h"

#include <utility>

#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/HIDTransport.h"

namespace tessara {

HIDPPHotplugMonitor::HIDPPHotplugMonitor(std::shared_ptr<const HIDPPRunLoop> runLoop,
                                         HIDPPDeviceMatch match, std::function<void()> onMatched,
                                         std::function<void(std::uint64_t registryID)> onTerminated)
    : runLoop_(std::move(runLoop)),
      match_(match),
      onMatched_(std::move(onMatched)),
      onTerminated_(std::move(onTerminated)) {}

HIDPPHotplugMonitor::~HIDPPHotplugMonitor() = default;

void HIDPPHotplugMonitor::start() {
    if (watch_) return;
    auto& transport = runLoop_->transport();
    watch_ = transport.watch(match_.vendorID, match_.productID, runLoop_->queue(),
                             {.arrived =
                                  [weakMonitor = weak_from_this()] {
                                      if (const auto monitor = weakMonitor.lock())
                                          monitor->onMatched_();
                                  },
                              .departed =
                                  [weakMonitor = weak_from_this()](std::uint64_t registryID) {
                                      if (const auto monitor = weakMonitor.lock())
                                          monitor->onTerminated_(registryID);
                                  }});
    if (!watch_) return;
    // Asked for once the watch stands, so that an arrival in between is announced twice, not never.
    if (!transport.interfaces(match_.vendorID, match_.productID).empty()) onMatched_();
}

void HIDPPHotplugMonitor::stop() {
    watch_ = nullptr;
}

}  // namespace tessara
