#include "Platform/CGEvent.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace tessara {
namespace {

constexpr std::size_t fieldNumberLimit = 172;
constexpr std::uint8_t noSlot = 0xFF;

/// From field number to slot, so that the tap thread finds a field without a search.
constexpr auto slotOfField = [] {
    std::array<std::uint8_t, fieldNumberLimit> table{};
    table.fill(noSlot);
    for (std::size_t slot = 0; slot < CGEvent::allFields.size(); ++slot) {
        table[static_cast<std::size_t>(CGEvent::allFields[slot])] = static_cast<std::uint8_t>(slot);
    }
    return table;
}();

std::int64_t integerPart(double value) {
    constexpr double bound = 9223372036854775808.0;  // 2^63
    if (std::isnan(value)) return 0;
    if (value >= bound) return std::numeric_limits<std::int64_t>::max();
    if (value < -bound) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

}  // namespace

std::size_t CGEvent::slotIndex(CGEventField field) {
    const auto number = static_cast<std::size_t>(field);
    if (number >= fieldNumberLimit || slotOfField[number] == noSlot) {
        std::fprintf(stderr, "CGEvent: field %zu is not one that the program knows\n", number);
        std::abort();
    }
    return slotOfField[number];
}

std::int64_t CGEvent::integerValue(CGEventField field) const {
    const Slot& slot = slots_[slotIndex(field)];
    return slot.isDouble ? integerPart(slot.real) : slot.integer;
}

double CGEvent::doubleValue(CGEventField field) const {
    const Slot& slot = slots_[slotIndex(field)];
    return slot.isDouble ? slot.real : static_cast<double>(slot.integer);
}

void CGEvent::setIntegerValue(CGEventField field, std::int64_t value) {
    slots_[slotIndex(field)] = Slot{.isDouble = false, .integer = value, .real = 0};
}

void CGEvent::setDoubleValue(CGEventField field, double value) {
    slots_[slotIndex(field)] = Slot{.isDouble = true, .integer = 0, .real = value};
}

}  // namespace tessara
