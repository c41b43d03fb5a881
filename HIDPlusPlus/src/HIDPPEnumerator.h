#pragma once

#include <memory>
#include <vector>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"

namespace tessara {

class HIDPPLink;
class HIDPPRunLoop;

/// Finds the interface of a mouse that carries the protocol among all that it has. On the run
/// loop's queue.
namespace HIDPPEnumerator {

/// One unopened link for each interface with these ids, in the platform's order.
std::vector<std::shared_ptr<HIDPPLink>> links(const std::shared_ptr<const HIDPPRunLoop>& runLoop,
                                              const HIDPPDeviceMatch& match);

/// The first of them that carries the protocol, unopened, or null.
std::shared_ptr<HIDPPLink> hidppLink(const std::shared_ptr<const HIDPPRunLoop>& runLoop,
                                     const HIDPPDeviceMatch& match);

}  // namespace HIDPPEnumerator

}  // namespace tessara
