#include "Platform/Simulated/SimulatedMouse.h"

#include <deque>
#include <optional>
#include <utility>
#include <variant>

#include "Platform/Dispatch/Mutex.h"
#include "SimulatedFeatureIDs.h"
#include "SimulatedFirmware.h"

namespace tessara {
namespace {

constexpr std::uint8_t shortReportID = 0x10;
constexpr std::uint8_t longReportID = 0x11;
constexpr std::size_t shortReportSize = 7;
constexpr std::size_t longReportSize = 20;
constexpr std::size_t headerSize = 4;
constexpr std::uint8_t errorMark20 = 0xFF;
constexpr std::uint8_t errorMark10 = 0x8F;
constexpr std::uint8_t ratchetEvent = 1;

SimulatedMouse::Bytes makeReport(std::uint8_t reportID, std::initializer_list<std::uint8_t> header,
                                 std::span<const std::uint8_t> payload) {
    SimulatedMouse::Bytes bytes{reportID};
    bytes.insert(bytes.end(), header);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    bytes.resize(reportID == shortReportID ? shortReportSize : longReportSize);
    return bytes;
}

}  // namespace

std::vector<SimulatedFeature> SimulatedMouseDescription::defaultFeatures() {
    constexpr std::uint8_t hidden = 0x40;
    constexpr std::uint8_t engineering = 0x20;
    using namespace SimulatedFeatureID;
    // Those that are numbers here are there and answer nothing; the program does not know them all.
    return {
        {.id = root, .version = 2},
        {.id = featureSet, .version = 2},
        {.id = deviceInformation, .version = 4},
        {.id = deviceName, .version = 0},
        {.id = 0x1D4B, .version = 0},
        {.id = 0x0020, .version = 0},
        {.id = adjustableDPI, .version = 1},
        {.id = 0x1300, .version = 0},
        {.id = reportRate, .version = 0},
        {.id = wheel, .version = 1},
        {.id = onboardProfiles, .version = 0},
        {.id = 0x1802, .type = hidden | engineering, .version = 0},
    };
}

/// The lock, and what it guards.
struct SimulatedMouse::State {
    explicit State(SimulatedMouseDescription description) : firmware(std::move(description)) {}

    [[nodiscard]] std::optional<Fault> takeFault() TESSARA_REQUIRES(mutex);
    /// What the mouse sends when the fault is about what it says.
    [[nodiscard]] Bytes replyTo(const SimulatedRequest& request, std::optional<Fault> fault)
        TESSARA_REQUIRES(mutex);

    Mutex mutex;
    SimulatedFirmware firmware TESSARA_GUARDED_BY(mutex);
    Output output TESSARA_GUARDED_BY(mutex);
    std::function<void()> onVanish TESSARA_GUARDED_BY(mutex);
    std::deque<Fault> faults TESSARA_GUARDED_BY(mutex);
    std::uint8_t errorCode TESSARA_GUARDED_BY(mutex) = 8;
    std::chrono::nanoseconds lateness TESSARA_GUARDED_BY(mutex) = std::chrono::seconds(2);
    std::size_t requestCount TESSARA_GUARDED_BY(mutex) = 0;
};

std::optional<SimulatedMouse::Fault> SimulatedMouse::State::takeFault() {
    if (faults.empty()) return std::nullopt;
    const auto fault = faults.front();
    faults.pop_front();
    return fault;
}

SimulatedMouse::Bytes SimulatedMouse::State::replyTo(const SimulatedRequest& request,
                                                     std::optional<Fault> fault) {
    const auto refusal = [&](std::uint8_t mark, std::uint8_t code) {
        return makeReport(
            request.reportID,
            {request.deviceIndex, mark, request.featureIndex, request.functionByte, code}, {});
    };
    if (fault == Fault::error10) return refusal(errorMark10, errorCode);
    if (fault == Fault::error20) return refusal(errorMark20, errorCode);

    const auto answer = firmware.answer(request);
    if (const auto* code = std::get_if<std::uint8_t>(&answer)) return refusal(errorMark20, *code);
    const auto& payload = std::get<Bytes>(answer);
    const bool fitsShort = payload.size() <= shortReportSize - headerSize;
    const auto reportID =
        request.reportID == shortReportID && fitsShort ? shortReportID : longReportID;
    const auto answeredIndex = static_cast<std::uint8_t>(
        fault == Fault::wrongFeatureIndex ? request.featureIndex + 1 : request.featureIndex);
    Bytes reply =
        makeReport(reportID, {request.deviceIndex, answeredIndex, request.functionByte}, payload);
    if (fault == Fault::shortReply) reply.resize(headerSize);
    return reply;
}

SimulatedMouse::SimulatedMouse(SimulatedMouseDescription description)
    : state_(std::make_unique<State>(std::move(description))) {}

SimulatedMouse::~SimulatedMouse() = default;

void SimulatedMouse::connect(Output output, std::function<void()> onVanish) {
    MutexLock lock(state_->mutex);
    state_->output = std::move(output);
    state_->onVanish = std::move(onVanish);
}

void SimulatedMouse::disconnect() {
    connect({}, {});
}

void SimulatedMouse::receive(std::span<const std::uint8_t> report) {
    const bool isShort = report.size() == shortReportSize && report[0] == shortReportID;
    const bool isLong = report.size() == longReportSize && report[0] == longReportID;
    if (!isShort && !isLong) return;
    const SimulatedRequest request{.reportID = report[0],
                                   .deviceIndex = report[1],
                                   .featureIndex = report[2],
                                   .functionByte = report[3],
                                   .parameters = report.subspan(headerSize)};
    Output output;
    std::function<void()> vanish;
    Bytes reply;
    std::size_t copies = 1;
    std::chrono::nanoseconds delay{0};
    {
        MutexLock lock(state_->mutex);
        ++state_->requestCount;
        const auto fault = state_->takeFault();
        if (fault == Fault::vanish) {
            vanish = state_->onVanish;
        } else {
            output = state_->output;
            reply = state_->replyTo(request, fault);
        }
        if (fault == Fault::noReply) copies = 0;
        if (fault == Fault::replyTwice) copies = 2;
        if (fault == Fault::lateReply) delay = state_->lateness;
    }
    if (vanish) vanish();
    if (!output) return;
    for (; copies > 0; --copies)
        output(reply, delay);
}

void SimulatedMouse::powerCycle() {
    MutexLock lock(state_->mutex);
    state_->firmware.powerCycle();
}

void SimulatedMouse::notify(std::uint8_t featureIndex, std::uint8_t function,
                            std::span<const std::uint8_t> payload) {
    constexpr std::uint8_t wiredIndex = 0xFF;
    send(makeReport(longReportID,
                    {wiredIndex, featureIndex, static_cast<std::uint8_t>(function << 4U)},
                    payload));
}

void SimulatedMouse::setRatchet(bool isEngaged) {
    {
        MutexLock lock(state_->mutex);
        state_->firmware.isRatchetEngaged = isEngaged;
    }
    const std::array<std::uint8_t, 1> payload{static_cast<std::uint8_t>(isEngaged)};
    if (const auto index = featureIndex(SimulatedFeatureID::wheel)) {
        notify(*index, ratchetEvent, payload);
    }
}

void SimulatedMouse::setDPIByHand(std::uint16_t dpi) {
    MutexLock lock(state_->mutex);
    state_->firmware.settings.dpi = dpi;
}

void SimulatedMouse::send(const Bytes& report) {
    Output output;
    {
        MutexLock lock(state_->mutex);
        output = state_->output;
    }
    if (output) output(report, std::chrono::nanoseconds{0});
}

void SimulatedMouse::injectFault(Fault fault, std::size_t count) {
    MutexLock lock(state_->mutex);
    state_->faults.insert(state_->faults.end(), count, fault);
}

void SimulatedMouse::clearFaults() {
    MutexLock lock(state_->mutex);
    state_->faults.clear();
}

void SimulatedMouse::setErrorCode(std::uint8_t code) {
    MutexLock lock(state_->mutex);
    state_->errorCode = code;
}

void SimulatedMouse::setLateness(std::chrono::nanoseconds lateness) {
    MutexLock lock(state_->mutex);
    state_->lateness = lateness;
}

std::uint16_t SimulatedMouse::dpi() const {
    MutexLock lock(state_->mutex);
    return state_->firmware.settings.dpi;
}

std::uint8_t SimulatedMouse::reportInterval() const {
    MutexLock lock(state_->mutex);
    return state_->firmware.settings.reportInterval;
}

std::uint8_t SimulatedMouse::wheelMode() const {
    MutexLock lock(state_->mutex);
    return state_->firmware.settings.wheelMode;
}

std::uint8_t SimulatedMouse::onboardMode() const {
    MutexLock lock(state_->mutex);
    return state_->firmware.settings.onboardMode;
}

std::size_t SimulatedMouse::requestCount() const {
    MutexLock lock(state_->mutex);
    return state_->requestCount;
}

std::optional<std::uint8_t> SimulatedMouse::featureIndex(std::uint16_t id) const {
    MutexLock lock(state_->mutex);
    return state_->firmware.featureIndex(id);
}

}  // namespace tessara
