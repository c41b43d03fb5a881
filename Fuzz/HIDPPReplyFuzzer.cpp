// Whatever bytes a device answers with, each decoder ends in a value or in an error with words, and
// the values keep what is promised of them.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "HIDPlusPlus/HIDPPReplies.h"
#include "HIDPlusPlus/HIDPPWire.h"
#include "TessaraCore/Precondition.h"

namespace tessara {
namespace {

template <typename T>
void check(const HIDPPResult<T>& result) {
    if (result) return;
    TESSARA_PRECONDITION(result.error().template is<HIDPPError::MalformedResponse>(),
                         "a decoder's error of another kind");
    TESSARA_PRECONDITION(!result.error().description().empty(), "an error without words");
}

/// As `check`, and makes the text of the value.
template <typename T>
void describe(const HIDPPResult<T>& result) {
    check(result);
    if (result) static_cast<void>(result->description());
}

void checkRange(const HIDPPResult<HIDPPDPIRange>& range, std::int64_t wanted) {
    describe(range);
    if (!range) return;
    const auto normalized = range->normalize(wanted);
    TESSARA_PRECONDITION(normalized >= 1 && normalized <= 0xFFFF, "a DPI that cannot be encoded");
    TESSARA_PRECONDITION(range->contains(normalized), "a normalised DPI that is not in the range");
    TESSARA_PRECONDITION(normalized <= range->maximum(), "a DPI above the maximum");
}

}  // namespace
}  // namespace tessara

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessara;
    const std::span bytes(data, size);
    describe(HIDPPReplies::protocolVersion(bytes));
    describe(HIDPPReplies::featureLookup(bytes));
    check(HIDPPReplies::featureCount(bytes));
    describe(HIDPPReplies::featureTableRow(bytes));
    describe(HIDPPReplies::deviceInformation(bytes));
    check(HIDPPReplies::nameLength(bytes));
    check(HIDPPReplies::sensorCount(bytes));
    std::int64_t wanted = 0;
    for (const auto byte : bytes.first(size < 8 ? size : 8))
        wanted = wanted << 8 ^ byte;
    checkRange(HIDPPReplies::dpiRange(bytes), wanted);
    describe(HIDPPReplies::dpi(bytes));
    const auto bitmap = HIDPPReplies::reportRateBitmap(bytes);
    const auto rate = HIDPPReplies::reportRate(bytes);
    check(bitmap);
    describe(rate);
    if (bitmap && rate) static_cast<void>(HIDPPReportRateInfo{*bitmap, *rate}.description());
    describe(HIDPPReplies::wheelCapability(bytes));
    describe(HIDPPReplies::wheelMode(bytes));
    check(HIDPPReplies::ratchetState(bytes));
    describe(HIDPPReplies::onboardProfilesDescriptor(bytes));
    check(HIDPPReplies::onboardMode(bytes));
    describe(HIDPPReplies::currentProfile(bytes));
    check(HIDPPReplies::onboardMemory(bytes));
    if (!bytes.empty()) {
        const auto name = HIDPPReplies::deviceName(bytes.subspan(1), bytes[0]);
        TESSARA_PRECONDITION(name.find('\0') == std::string::npos, "a zero byte in a name");
        TESSARA_PRECONDITION(name.size() <= 3 * std::size_t{bytes[0]}, "a name beyond its length");
    }
    return 0;
}
