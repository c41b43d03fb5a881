#include "HIDPlusPlus/HIDPPWire.h"

#include <algorithm>

#include <fmt/format.h>

namespace tessara::HIDPPWire {

std::uint8_t softwareIDAfter(std::uint8_t last) {
    const auto id = static_cast<std::uint8_t>(last & 0x0F);
    if (id == 0 || id == softwareIDs.last) return softwareIDs.first;
    return static_cast<std::uint8_t>(id + 1);
}

std::uint8_t functionByte(std::uint8_t function, std::uint8_t id) {
    const int usedID = (id & 0x0F) == 0 ? softwareID : id & 0x0F;
    return static_cast<std::uint8_t>(function << 4 | usedID);
}

std::expected<std::vector<std::uint8_t>, HIDPPError> encodeRequest(
    std::uint8_t deviceIndex, std::uint8_t featureIndex, std::uint8_t function,
    std::span<const std::uint8_t> parameters, bool isLong, std::uint8_t id) {
    const std::size_t size = 1 + (isLong ? longPayloadLength : shortPayloadLength);
    if (parameters.size() > size - headerLength) {
        return std::unexpected(
            HIDPPError::InvalidArgument{fmt::format("{} parameter bytes do not fit in a {} report",
                                                    parameters.size(), isLong ? "long" : "short")});
    }
    std::vector<std::uint8_t> report(size, 0);
    report[0] = isLong ? longReportID : shortReportID;
    report[1] = deviceIndex;
    report[2] = featureIndex;
    report[3] = functionByte(function, id);
    std::ranges::copy(parameters, report.begin() + headerLength);
    return report;
}

}  // namespace tessara::HIDPPWire
