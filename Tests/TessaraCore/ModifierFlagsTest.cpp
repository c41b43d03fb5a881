#include <unordered_set>

#include <gtest/gtest.h>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"

namespace tessara {
namespace {

using enum ScrollAxis;

TEST(ModifierFlags, the_normalized_form_has_no_caps_lock_and_no_nameless_bits) {
    const ModifierFlags shiftWithLock{ModifierFlags::shift, ModifierFlags::capsLock};
    EXPECT_EQ(shiftWithLock.normalized(), ModifierFlags::shift);
    EXPECT_TRUE(ModifierFlags::capsLock.normalized().isEmpty());
    EXPECT_EQ(ModifierFlags(~0U).normalized(), ModifierFlags::bindable);
    EXPECT_EQ(ModifierFlags(~0U).count(), 32);
    EXPECT_EQ(ModifierFlags::bindable.count(), 5);
}

TEST(ModifierFlags, sets_follow_the_algebra_of_sets) {
    const ModifierFlags a{ModifierFlags::shift, ModifierFlags::control};
    const ModifierFlags b{ModifierFlags::control, ModifierFlags::command};
    EXPECT_EQ((a | b).rawValue(), 2U + 4U + 16U);
    EXPECT_EQ(a & b, ModifierFlags::control);
    EXPECT_EQ(a ^ b, (ModifierFlags{ModifierFlags::shift, ModifierFlags::command}));
    EXPECT_EQ(a - b, ModifierFlags::shift);
    EXPECT_TRUE(a.contains(ModifierFlags::shift));
    EXPECT_FALSE(a.contains(b));
    EXPECT_TRUE(ModifierFlags::none.isSubset(a));
    EXPECT_FALSE(a.isSubset(b));
    EXPECT_TRUE(ModifierFlags::shift.isDisjoint(b));

    ModifierFlags changing = a;
    changing.insert(ModifierFlags::command);
    changing.remove(a);
    EXPECT_EQ(changing, ModifierFlags::command);
    EXPECT_EQ((std::unordered_set<ModifierFlags>{a, b, a}.size()), 2U);
}

TEST(ScrollAxes, an_axis_is_in_a_set_when_its_own_bit_is) {
    struct Case {
        std::uint8_t bits;
        bool hasVertical;
        bool hasHorizontal;
    };
    for (const auto& [bits, hasVertical, hasHorizontal] :
         {Case{0, false, false}, Case{1, true, false}, Case{2, false, true}, Case{3, true, true},
          Case{0xFC, false, false}}) {
        EXPECT_EQ(ScrollAxes(bits).contains(vertical), hasVertical) << int{bits};
        EXPECT_EQ(ScrollAxes(bits).contains(horizontal), hasHorizontal) << int{bits};
    }
    EXPECT_EQ(ScrollAxes(horizontal), ScrollAxes::horizontal);
    EXPECT_EQ(ScrollAxes(vertical), ScrollAxes::vertical);
}

TEST(RawValue, names_and_enumerators_lead_to_each_other) {
    EXPECT_EQ(allCases<ScrollAxis>, (std::array{vertical, horizontal}));
    for (const ScrollAxis axis : allCases<ScrollAxis>) {
        EXPECT_EQ(fromRawValue<ScrollAxis>(rawValue(axis)), axis);
    }
    for (const char* other : {"", "Vertical", "vertical ", "diagonal"}) {
        EXPECT_EQ(fromRawValue<ScrollAxis>(other), std::nullopt) << other;
    }
}

TEST(DeviceID, is_described_with_its_number) {
    EXPECT_EQ(DeviceID::unknown.description(), "DeviceID(0)");
    EXPECT_EQ(DeviceID{~std::uint64_t{0}}.description(), "DeviceID(18446744073709551615)");
}

}  // namespace
}  // namespace tessara
