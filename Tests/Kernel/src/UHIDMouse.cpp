#include "Kernel/UHIDMouse.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/Simulated/SimulatedMouse.h"

namespace tessara::testing {
namespace {

constexpr std::uint8_t keyboardReportID = 1;
constexpr std::uint8_t firstModifierUsage = 0xE0;

// clang-format off
const std::vector<std::uint8_t> pointerDescriptor{
    0x05, 0x01, 0x09, 0x02, 0xA1, 0x01,  // Generic Desktop, Mouse: application
    0x09, 0x01, 0xA1, 0x00,              //   Pointer: physical
    0x05, 0x09, 0x19, 0x01, 0x29, 0x10,  //     buttons 1 to 16
    0x15, 0x00, 0x25, 0x01, 0x95, 0x10, 0x75, 0x01, 0x81, 0x02,
    0x05, 0x01, 0x16, 0x01, 0x80, 0x26, 0xFF, 0x7F,  // X and Y, -32767 to 32767, relative
    0x75, 0x10, 0x95, 0x02, 0x09, 0x30, 0x09, 0x31, 0x81, 0x06,
    0x15, 0x81, 0x25, 0x7F, 0x75, 0x08, 0x95, 0x01, 0x09, 0x38, 0x81, 0x06,  // wheel
    0x05, 0x0C, 0x0A, 0x38, 0x02, 0x95, 0x01, 0x81, 0x06,                    // AC Pan
    0xC0, 0xC0};

const std::vector<std::uint8_t> keyboardDescriptor{
    0x05, 0x01, 0x09, 0x06, 0xA1, 0x01, 0x85, keyboardReportID,  // Keyboard: application
    0x05, 0x07, 0x19, 0xE0, 0x29, 0xE7,                          //   modifiers
    0x15, 0x00, 0x25, 0x01, 0x75, 0x01, 0x95, 0x08, 0x81, 0x02,
    0x95, 0x01, 0x75, 0x08, 0x81, 0x01,                          //   reserved
    0x05, 0x07, 0x19, 0x00, 0x2A, 0xFF, 0x00,                    //   six keys
    0x15, 0x00, 0x26, 0xFF, 0x00, 0x95, 0x06, 0x75, 0x08, 0x81, 0x00,
    0xC0,
    0x05, 0x0C, 0x09, 0x01, 0xA1, 0x01, 0x85, 0x03,              // Consumer Control: application
    0x19, 0x01, 0x2A, 0x9C, 0x02,
    0x15, 0x01, 0x26, 0x9C, 0x02, 0x75, 0x10, 0x95, 0x02, 0x81, 0x00,
    0xC0};

const std::vector<std::uint8_t> vendorDescriptor{
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x85, 0x10,  // short reports: 6 bytes
    0x75, 0x08, 0x95, 0x06, 0x15, 0x00, 0x26, 0xFF, 0x00,
    0x09, 0x01, 0x81, 0x00, 0x09, 0x01, 0x91, 0x00, 0xC0,
    0x06, 0x00, 0xFF, 0x09, 0x02, 0xA1, 0x01, 0x85, 0x11,  // long reports: 19 bytes
    0x75, 0x08, 0x95, 0x13, 0x15, 0x00, 0x26, 0xFF, 0x00,
    0x09, 0x02, 0x81, 0x00, 0x09, 0x02, 0x91, 0x00, 0xC0};
// clang-format on

UHIDDescription interfaceOfMouse(const std::string& number,
                                 std::vector<std::uint8_t> reportDescriptor) {
    return {.name = "Gaming Mouse",
            .place = "usb-0000:00:14.0-1/input" + number,
            .serialNumber = "0123456789AB",
            .vendorID = UHIDMouse::vendorID,
            .productID = UHIDMouse::productID,
            .reportDescriptor = std::move(reportDescriptor)};
}

std::uint8_t lowByte(std::int16_t value) {
    return static_cast<std::uint8_t>(static_cast<std::uint16_t>(value) & 0xFFU);
}
std::uint8_t highByte(std::int16_t value) {
    return static_cast<std::uint8_t>(static_cast<std::uint16_t>(value) >> 8U);
}

std::uint16_t bit(unsigned button) {
    return static_cast<std::uint16_t>(1U << button);
}

}  // namespace

UHIDPointer::UHIDPointer(Dispatcher& dispatcher, UHIDDescription description)
    : device_(dispatcher, std::move(description), [](auto) {}) {
    device_.awaitNodes();
}

UHIDDescription UHIDPointer::foreignMouse() {
    return {.name = "Office Mouse",
            .place = "usb-0000:00:14.0-2/input0",
            .vendorID = 0x1234,
            .productID = 0x0001,
            .reportDescriptor = pointerDescriptor};
}

void UHIDPointer::press(unsigned button) {
    sendWithButtons({}, bit(button), 0);
}

void UHIDPointer::release(unsigned button) {
    sendWithButtons({}, 0, bit(button));
}

void UHIDPointer::move(std::int16_t x, std::int16_t y) {
    sendWithButtons({.x = x, .y = y}, 0, 0);
}

void UHIDPointer::spin(std::int8_t clicks) {
    sendWithButtons({.wheel = clicks}, 0, 0);
}

void UHIDPointer::tilt(std::int8_t clicks) {
    sendWithButtons({.pan = clicks}, 0, 0);
}

void UHIDPointer::send(const PointerReport& report) {
    sendWithButtons(report, report.buttons, static_cast<std::uint16_t>(~report.buttons));
}

void UHIDPointer::sendWithButtons(PointerReport report, std::uint16_t pressed,
                                  std::uint16_t released) {
    MutexLock lock(mutex_);  // held over the sending, so that reports go in the order of changes
    buttons_ = static_cast<std::uint16_t>((buttons_ | pressed) & ~released);
    const std::array<std::uint8_t, 8> bytes{static_cast<std::uint8_t>(buttons_ & 0xFFU),
                                            static_cast<std::uint8_t>(buttons_ >> 8U),
                                            lowByte(report.x),
                                            highByte(report.x),
                                            lowByte(report.y),
                                            highByte(report.y),
                                            static_cast<std::uint8_t>(report.wheel),
                                            static_cast<std::uint8_t>(report.pan)};
    device_.send(bytes);
}

UHIDKeyboard::UHIDKeyboard(Dispatcher& dispatcher, UHIDDescription description)
    : device_(dispatcher, std::move(description), [](auto) {}) {
    device_.awaitNodes();
}

UHIDDescription UHIDKeyboard::foreignKeyboard() {
    return {.name = "Keyboard",
            .place = "usb-0000:00:14.0-3/input0",
            .vendorID = 0x1234,
            .productID = 0x0003,
            .reportDescriptor = keyboardDescriptor};
}

void UHIDKeyboard::press(std::uint8_t usage) {
    change(usage, true);
}

void UHIDKeyboard::release(std::uint8_t usage) {
    change(usage, false);
}

void UHIDKeyboard::change(std::uint8_t usage, bool isDown) {
    constexpr std::size_t firstKey = 3;
    MutexLock lock(mutex_);
    std::erase(keys_, usage);
    if (isDown) keys_.push_back(usage);
    std::array<std::uint8_t, 9> bytes{keyboardReportID};
    std::size_t next = firstKey;
    for (const std::uint8_t key : keys_) {
        if (key >= firstModifierUsage) {
            bytes[1] = static_cast<std::uint8_t>(bytes[1] | bit(key - firstModifierUsage));
        } else {
            bytes.at(next++) = key;
        }
    }
    device_.send(bytes);
}

UHIDMouse::UHIDMouse(Dispatcher& dispatcher, SimulatedMouse& firmware)
    : dispatcher_(dispatcher),
      firmware_(firmware),
      queue_(dispatcher.makeQueue("ai.tessara.test.mouse", QualityOfService::standard)) {}

UHIDMouse::~UHIDMouse() {
    unplug();
}

void UHIDMouse::plug() {
    if (isPlugged()) return;
    firmware_.powerCycle();
    vendor_ = std::make_shared<UHIDDevice>(
        dispatcher_, interfaceOfMouse("2", vendorDescriptor),
        [this](std::span<const std::uint8_t> report) { firmware_.receive(report); });
    const std::weak_ptr<UHIDDevice> weakVendor = vendor_;
    firmware_.connect(
        [queue = queue_, weakVendor](const SimulatedMouse::Bytes& report,
                                     std::chrono::nanoseconds delay) {
            queue->postAt(queue->clock().now() + delay, [weakVendor, report] {
                if (const auto vendor = weakVendor.lock()) vendor->send(report);
            });
        },
        {});
    vendor_->awaitNodes();
    keyboard_ =
        std::make_unique<UHIDKeyboard>(dispatcher_, interfaceOfMouse("1", keyboardDescriptor));
    pointer_ = std::make_unique<UHIDPointer>(dispatcher_, interfaceOfMouse("0", pointerDescriptor));
}

void UHIDMouse::unplug() {
    if (!isPlugged()) return;
    firmware_.disconnect();
    // All at once, and only then is their end waited for.
    pointer_->device_.unplug();
    keyboard_->device_.unplug();
    vendor_->unplug();
    pointer_.reset();
    keyboard_.reset();
    vendor_.reset();
    queue_->drain();
}

}  // namespace tessara::testing
