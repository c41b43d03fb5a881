#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Linux/InputDevices.h"

namespace tessara {
namespace {

TEST(CapabilityBits, are_words_with_the_highest_first) {
    const CapabilityBits keys("1f0000 0 0 8000000000000001");
    for (const unsigned bit : {0U, 63U, 3 * 64 + 16U, 3 * 64 + 20U})
        EXPECT_TRUE(keys.has(bit)) << bit;
    for (const unsigned bit : {1U, 62U, 64U, 3 * 64 + 15U, 3 * 64 + 21U, 1000U})
        EXPECT_FALSE(keys.has(bit)) << bit;
    EXPECT_FALSE(CapabilityBits("1f0000 0 0 0").hasOutside(208, 212));
    EXPECT_TRUE(CapabilityBits("1f0000 0 0 0").hasOutside(209, 212));
    EXPECT_TRUE(CapabilityBits("1f0000 0 0 0").hasOutside(208, 211));
    for (const char* broken : {"", "x", "1 g", "11111111111111111"})
        EXPECT_FALSE(CapabilityBits(broken).has(0)) << broken;
}

TEST(InputDevices, an_identifier_is_the_kernels_number_of_the_input_device) {
    const std::vector<std::pair<std::string, std::optional<std::uint64_t>>> cases{
        {"/sys/devices/virtual/input/input0/event0", 1},
        {"/sys/devices/pci0000:00/usb1/1-1/0003:1234:5678.0001/input/input37/event5", 38},
        {"/sys/devices/virtual/input/input37/mouse0", std::nullopt},
        {"/sys/devices/virtual/input/input37", std::nullopt},
        {"/sys/devices/virtual/input/inputx/event0", std::nullopt},
        {"/event0", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [path, id] : cases)
        EXPECT_EQ(inputDeviceID(path), id) << path;
}

}  // namespace
}  // namespace tessara
