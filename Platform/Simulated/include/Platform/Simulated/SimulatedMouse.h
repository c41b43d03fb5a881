#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace tessara {

/// One row of the simulated mouse's feature table; its place in the table is its index.
struct SimulatedFeature {
    /// The feature's number in HID++, the same on every device.
    std::uint16_t id = 0;
    /// Bits: 0x80 obsolete, 0x40 hidden, 0x20 for engineers.
    std::uint8_t type = 0;
    std::uint8_t version = 0;
};

/// What a simulated mouse is made to be. The default is a gaming mouse with everything that the
/// program knows, and some features that it does not.
struct SimulatedMouseDescription {
    /// Everything from the smallest to the largest, in steps that it tells and does not insist on.
    struct DPIRange {
        std::uint16_t minimum = 100;
        std::uint16_t maximum = 25600;
        std::uint16_t step = 50;
    };
    /// These and no others; seven at most, for one report has to hold them.
    using DPIList = std::vector<std::uint16_t>;

    /// 255 bytes at most; told in pieces of 16.
    std::string name = "Gaming Mouse With A Long Name";
    /// Major and minor.
    std::array<std::uint8_t, 2> protocolVersion{4, 2};
    // What the device information says.
    std::array<std::uint8_t, 4> unitID{0x12, 0x34, 0x56, 0x78};
    std::array<std::uint8_t, 6> modelIDs{0xC0, 0x99, 0, 0, 0, 0};
    std::variant<DPIRange, DPIList> dpi = DPIRange{};
    /// What it is set to whenever it gets its power.
    std::uint16_t defaultDPI = 800;
    /// Bit i: an interval of i + 1 ms is on offer.
    std::uint8_t reportRates = 0x8B;
    /// In milliseconds, whenever it gets its power.
    std::uint8_t defaultReportInterval = 1;
    /// Multiplier and flags of the wheel.
    std::array<std::uint8_t, 2> wheelCapability{8, 0x0C};
    /// Root first; FeatureSet anywhere behind it.
    std::vector<SimulatedFeature> features = defaultFeatures();

    /// All that the program uses, in another order than their numbers', with others in between.
    [[nodiscard]] static std::vector<SimulatedFeature> defaultFeatures();
};

/// A model of the mouse's firmware that speaks HID++ 2.0 in bytes and nothing else: reports go in,
/// reports come out. It knows no transport, so that it can stand behind a simulated one and behind
/// a kernel device alike. It is no pointing device: what it sends are replies and notifications,
/// not motion and clicks (`SimulatedPointingDevice`).
///
/// Its settings are lost when the power goes, as on the real thing. Each fault that a mouse can
/// have is a switch of its own. All operations may be called from any thread; the output handler is
/// called without a lock held, on the thread that caused the output.
class SimulatedMouse {
  public:
    /// A whole report, its id in front: 7 bytes under 0x10, 20 bytes under 0x11.
    using Bytes = std::vector<std::uint8_t>;

    /// What is wrong with the answer to one request.
    enum class Fault {
        noReply,            ///< it is carried out, and nothing is said
        lateReply,          ///< the answer comes after `lateness`
        replyTwice,         ///< the answer comes two times
        shortReply,         ///< the answer ends right behind its function byte
        wrongFeatureIndex,  ///< the answer names another feature
        error10,            ///< HID++ 1.0 error with `errorCode`; not carried out
        error20,            ///< HID++ 2.0 error with `errorCode`; not carried out
        vanish,             ///< the mouse is unplugged instead of answering
    };

    /// Takes what the mouse sends: a whole report with its id in front, after `delay`.
    using Output = std::function<void(const Bytes& report, std::chrono::nanoseconds delay)>;

    explicit SimulatedMouse(SimulatedMouseDescription description = {});
    ~SimulatedMouse();

    SimulatedMouse(const SimulatedMouse&) = delete;
    SimulatedMouse& operator=(const SimulatedMouse&) = delete;

    // The wire.

    /// Where reports go from now on; one place at a time. `onVanish` is called for that fault, in
    /// place of an answer.
    void connect(Output output, std::function<void()> onVanish);
    /// What it sends goes nowhere from now on. An output that is being called may still run.
    void disconnect();

    /// Takes one output report, whole, and has answered when it returns. What is no request is
    /// ignored, as by the firmware; what it cannot do it refuses with a HID++ 2.0 error.
    void receive(std::span<const std::uint8_t> report);

    /// Takes the power away and gives it back: settings fall to their defaults.
    void powerCycle();

    /// Sends a notification: a report of the mouse's own accord, of a feature by its index.
    /// `payload` is 16 bytes at most.
    void notify(std::uint8_t featureIndex, std::uint8_t function,
                std::span<const std::uint8_t> payload);

    /// The user turns the ratchet on or off at the mouse, which tells of it.
    void setRatchet(bool isEngaged);

    /// The user changes the resolution with the mouse's own button; the mouse says nothing.
    void setDPIByHand(std::uint16_t dpi);

    // Faults.

    /// Each of the next `count` requests meets with `fault`, after those asked for before.
    void injectFault(Fault fault, std::size_t count = 1);
    /// The requests to come meet with none.
    void clearFaults();
    /// With what the error faults refuse; 8, "busy", at first.
    void setErrorCode(std::uint8_t code);
    /// How late `lateReply` is; two seconds at first.
    void setLateness(std::chrono::nanoseconds lateness);

    // What the mouse is set to.

    /// Dots per inch of its one sensor.
    [[nodiscard]] std::uint16_t dpi() const;
    /// Milliseconds between two reports.
    [[nodiscard]] std::uint8_t reportInterval() const;
    /// Bit 0: to the host as events; bit 1: high resolution; bit 2: inverted.
    [[nodiscard]] std::uint8_t wheelMode() const;
    /// 1: the mouse's own profiles; 2: the host's settings.
    [[nodiscard]] std::uint8_t onboardMode() const;

    /// Requests received so far, faulty ones included.
    [[nodiscard]] std::size_t requestCount() const;
    /// The index of a feature in the table; nothing when it has none.
    [[nodiscard]] std::optional<std::uint8_t> featureIndex(std::uint16_t id) const;

  private:
    struct State;

    void send(const Bytes& report);

    const std::unique_ptr<State> state_;
};

}  // namespace tessara
