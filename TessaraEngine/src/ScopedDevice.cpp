#include "TessaraEngine/ScopedDevice.h"

#include <fmt/format.h>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"

namespace tessara {
namespace {

std::string idText(const std::optional<std::int64_t>& id) {
    return id ? fmt::format("0x{:04X}", *id) : "?";
}

}  // namespace

bool ScopedDevice::matches(const HIDPPDeviceMatch& match) const {
    return vendorID == match.vendorID && productID == match.productID;
}

std::string ScopedDevice::label() const {
    return fmt::format("{} [{}:{}] usage {}/{}", product.value_or("(unnamed)"), idText(vendorID),
                       idText(productID), primaryUsagePage.value_or(-1), primaryUsage.value_or(-1));
}

}  // namespace tessara
