// Whatever bytes a device sends as its report descriptor, reading them ends in a description within
// its limits or in an error that names a place in them.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Linux/HIDReportDescriptor.h"
#include "TessaraCore/Precondition.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessara;
    const std::span<const std::uint8_t> bytes(data, size);
    const auto read = HIDReportDescriptor::parse(bytes);
    if (!read) {
        TESSARA_PRECONDITION(read.error().offset <= size, "an error beyond the bytes");
        TESSARA_PRECONDITION(!read.error().what.empty(), "an error without words");
        return 0;
    }
    constexpr auto longest = HIDReportDescriptor::maxReportSize;
    for (const auto reportSize : {read->maxInputReportSize, read->maxOutputReportSize}) {
        TESSARA_PRECONDITION(reportSize >= 0, "a report of less than nothing");
        TESSARA_PRECONDITION(reportSize <= longest + (read->hasReportIDs ? 1 : 0),
                             "a report above the limit");
    }
    TESSARA_PRECONDITION(read->applicationCollections.size() <= size / 2,
                         "more collections than the bytes can open and close");
    for (const auto& [page, usage] : read->applicationCollections) {
        TESSARA_PRECONDITION(page >= 0 && page <= 0xFFFF && usage >= 0 && usage <= 0xFFFF,
                             "a usage of more than 16 bits");
    }
    // A reserved item behind the last one says nothing; a collection has no more to end there.
    std::vector<std::uint8_t> longer(bytes.begin(), bytes.end());
    longer.insert(longer.end(), {0xFE, 0x01, 0x00, 0xC0});
    TESSARA_PRECONDITION(HIDReportDescriptor::parse(longer) == read, "a reserved item was read");
    longer.push_back(0xC0);
    TESSARA_PRECONDITION(!HIDReportDescriptor::parse(longer), "an unbalanced collection passed");
    return 0;
}
