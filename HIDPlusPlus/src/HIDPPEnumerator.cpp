#include "HIDPPEnumerator.h"

#include "HIDPlusPlus/HIDPPLink.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/HIDTransport.h"

namespace tessara::HIDPPEnumerator {

std::vector<std::shared_ptr<HIDPPLink>> links(const std::shared_ptr<const HIDPPRunLoop>& runLoop,
                                              const HIDPPDeviceMatch& match) {
    std::vector<std::shared_ptr<HIDPPLink>> found;
    for (auto& interface : runLoop->transport().interfaces(match.vendorID, match.productID)) {
        found.push_back(std::make_shared<HIDPPLink>(runLoop, std::move(interface)));
    }
    return found;
}

std::shared_ptr<HIDPPLink> hidppLink(const std::shared_ptr<const HIDPPRunLoop>& runLoop,
                                     const HIDPPDeviceMatch& match) {
    for (auto& link : links(runLoop, match)) {
        if (link->identity().carriesHIDPP()) return std::move(link);
    }
    return nullptr;
}

}  // namespace tessara::HIDPPEnumerator
