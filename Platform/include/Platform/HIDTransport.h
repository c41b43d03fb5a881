#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/IOReturn.h"

/// The way to a HID device's reports: find its interfaces, open one, write reports, receive
/// reports, hear of plugs and unplugs. This is all the protocol client knows of a platform. It
/// carries bytes and knows nothing of their meaning; the device's normal input (pointer, buttons,
/// wheel) does not come this way and goes on undisturbed whatever is done here.
///
/// One queue, the HID queue, is given by the client wherever callbacks are wanted. Unless an
/// operation says otherwise it is called on that queue only, and callbacks come on it only. A
/// platform with real descriptors waits for them through the queue's executor.

namespace tessara {

/// One entry of a HID interface's list of collections.
struct HIDUsagePair {
    std::int64_t usagePage = 0;
    std::int64_t usage = 0;

    bool operator==(const HIDUsagePair&) const = default;
};

/// What a platform can tell of a HID interface without opening it. Each field may be left out; the
/// client cannot use an interface without ids, usage pairs and the size of output reports.
struct HIDInterfaceProperties {
    std::optional<std::int64_t> vendorID = {};
    std::optional<std::int64_t> productID = {};
    std::optional<std::string> product = {};
    std::optional<std::string> manufacturer = {};
    std::optional<std::string> serialNumber = {};
    /// Where on the bus the device is plugged in.
    std::optional<std::int64_t> locationID = {};
    std::optional<std::int64_t> primaryUsagePage = {};
    std::optional<std::int64_t> primaryUsage = {};
    /// Bytes of the longest report in each direction, the report id included where reports have
    /// one.
    std::optional<std::int64_t> maxInputReportSize = {};
    std::optional<std::int64_t> maxOutputReportSize = {};
    /// All application collections of the report descriptor, in its order.
    std::vector<HIDUsagePair> usagePairs = {};

    bool operator==(const HIDInterfaceProperties&) const = default;
};

/// One HID interface of a plugged-in device, as it was found. It stands for this plug of the device
/// and never for a later one: after an unplug every operation answers `IOReturn::noDevice` (or
/// `notAttached`, `offline`), also when the device has come back meanwhile.
///
/// An object is opened and closed any number of times; two objects of one interface are
/// independent. Destroying it closes it; no callback comes after that.
class HIDInterface {
  public:
    /// A report as it came in: its id, 0 for interfaces without ids, and its bytes, which live for
    /// the call only. Some platforms and interfaces leave the id in as the first byte, others strip
    /// it; the client copes with either, report by report. Never empty bytes.
    using InputHandler =
        std::move_only_function<void(std::uint8_t reportID, std::span<const std::uint8_t> bytes)>;

    virtual ~HIDInterface() = default;

    HIDInterface(const HIDInterface&) = delete;
    HIDInterface& operator=(const HIDInterface&) = delete;

    /// Read once, when the interface was found. Any thread.
    [[nodiscard]] virtual const HIDInterfaceProperties& properties() const noexcept = 0;

    /// Names this interface of this plug within the run: never 0, and new at each plug, so that a
    /// departure can be told from that of an earlier plug. Any thread.
    [[nodiscard]] virtual std::uint64_t registryID() const noexcept = 0;

    /// Opens the interface beside its other users: nothing is seized. Fails with `notPermitted` or
    /// `notPrivileged` when the user has not granted access, `noDevice` when it is gone, and
    /// `exclusiveAccess` or `busy` while another holds it or it is not ready yet, which just after
    /// arrival is normal. An open interface receives reports, heard by nobody until `startInput`.
    [[nodiscard]] virtual IOReturn open() = 0;

    /// Closes the interface; nothing happens when it is not open. Does not wait for a write that is
    /// under way on another thread: that one ends by itself, with any result. Implies `stopInput`.
    virtual void close() = 0;

    /// From here on each input report is given to `handler` on `queue`, the HID queue, in order of
    /// arrival. The interface is open and has no handler yet.
    virtual void startInput(std::shared_ptr<DispatchQueue> queue, InputHandler handler) = 0;

    /// Ends the stream: no report follows, also none that had already come in. The handler is
    /// destroyed. Nothing happens when there is none. May be called from within the handler.
    virtual void stopInput() = 0;

    /// Writes one output report: `report` is the whole of it with `reportID` as its first byte. May
    /// block for as long as the device pleases, and is therefore the one operation that is never
    /// called on the HID queue: any thread, one call at a time. Fails with `notOpen` on an
    /// interface that is not open, `noDevice` and its like when the device is gone, `timeout`,
    /// `busy` or another code when the device did not take it.
    [[nodiscard]] virtual IOReturn writeReport(std::uint8_t reportID,
                                               std::span<const std::uint8_t> report) = 0;

  protected:
    HIDInterface() = default;
};

/// What a hot-plug watch calls.
struct HIDHotplugHandlers {
    /// One or more interfaces came. Called once for each hit, however many interfaces it brings;
    /// one plug of a device may be several hits. The interfaces can be enumerated by then, though
    /// perhaps not yet opened.
    std::move_only_function<void()> arrived;
    /// The interface of this registry id is gone. Called once for each interface of the device.
    std::move_only_function<void(std::uint64_t registryID)> departed;
};

/// A running hot-plug watch. Destroying it on the HID queue ends it: nothing is called after that.
class HIDHotplugWatch {
  public:
    virtual ~HIDHotplugWatch() = default;

    HIDHotplugWatch(const HIDHotplugWatch&) = delete;
    HIDHotplugWatch& operator=(const HIDHotplugWatch&) = delete;

  protected:
    HIDHotplugWatch() = default;
};

/// Whether the user has granted this process to listen to input devices.
enum class HIDListenEventAccess : std::uint32_t { granted = 0, denied = 1, unknown = 2 };

/// The platform's HID devices. Outlives every interface and watch it gave out.
class HIDTransport {
  public:
    virtual ~HIDTransport() = default;

    HIDTransport(const HIDTransport&) = delete;
    HIDTransport& operator=(const HIDTransport&) = delete;

    /// All interfaces that are plugged in with these ids, in an order that is the same each time
    /// for one device. Nothing is opened. Empty when there are none and when the platform cannot
    /// tell.
    [[nodiscard]] virtual std::vector<std::shared_ptr<HIDInterface>> interfaces(
        std::int64_t vendorID, std::int64_t productID) = 0;

    /// Watches for arrivals and departures of interfaces with these ids, with the handlers called
    /// on `queue`, the HID queue. What is plugged in already is not announced: enumerate after the
    /// watch has begun. Never calls a handler inside this call. Null when the platform has no
    /// hot-plug or refuses it; the client then connects when it is told to and at no other time.
    [[nodiscard]] virtual std::unique_ptr<HIDHotplugWatch> watch(
        std::int64_t vendorID, std::int64_t productID, std::shared_ptr<DispatchQueue> queue,
        HIDHotplugHandlers handlers) = 0;

    /// Asks for the user's grant without prompting. `unknown` where the platform has no such thing
    /// or was never asked. Any thread.
    [[nodiscard]] virtual HIDListenEventAccess listenEventAccess() const = 0;

  protected:
    HIDTransport() = default;
};

}  // namespace tessara
