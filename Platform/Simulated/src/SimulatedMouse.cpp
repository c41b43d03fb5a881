#include "Platform/Simulated/SimulatedMouse.h"

#include <algorithm>
#include <utility>

namespace tessara {
namespace {

constexpr std::uint8_t shortReportID = 0x10;
constexpr std::uint8_t longReportID = 0x11;
constexpr std::size_t shortReportSize = 7;
constexpr std::size_t longReportSize = 20;
constexpr std::size_t headerSize = 4;
constexpr std::uint8_t errorMark20 = 0xFF;
constexpr std::uint8_t errorMark10 = 0x8F;
constexpr std::uint8_t wheelFeatureRatchetEvent = 1;
constexpr std::uint16_t wheelFeature = 0x2121;

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
    return {
        {.id = 0x0000, .version = 2}, {.id = 0x0001, .version = 2},
        {.id = 0x0003, .version = 4}, {.id = 0x0005, .version = 0},
        {.id = 0x1D4B, .version = 0}, {.id = 0x0020, .version = 0},
        {.id = 0x2201, .version = 1}, {.id = 0x1300, .version = 0},
        {.id = 0x8060, .version = 0}, {.id = 0x2121, .version = 1},
        {.id = 0x8100, .version = 0}, {.id = 0x1802, .type = hidden | engineering, .version = 0}};
}

SimulatedMouse::SimulatedMouse(SimulatedMouseDescription description)
    : description_(std::move(description)), settings_(defaults()) {}

SimulatedMouse::Settings SimulatedMouse::defaults() const {
    return {.dpi = description_.defaultDPI, .reportInterval = description_.defaultReportInterval};
}

void SimulatedMouse::connect(Output output, std::function<void()> onVanish) {
    MutexLock lock(mutex_);
    output_ = std::move(output);
    onVanish_ = std::move(onVanish);
}

void SimulatedMouse::disconnect() {
    connect({}, {});
}

void SimulatedMouse::receive(std::span<const std::uint8_t> report) {
    const bool isShort = report.size() == shortReportSize && report[0] == shortReportID;
    const bool isLong = report.size() == longReportSize && report[0] == longReportID;
    if (!isShort && !isLong) return;
    const Request request{.reportID = report[0],
                          .deviceIndex = report[1],
                          .featureIndex = report[2],
                          .functionByte = report[3],
                          .parameters = report.subspan(headerSize)};
    Sending sending;
    {
        MutexLock lock(mutex_);
        ++requestCount_;
        sending.output = output_;
        sending.onVanish = onVanish_;
        reply(request, sending);
    }
    if (sending.vanishes && sending.onVanish) sending.onVanish();
    if (!sending.output) return;
    for (const auto& [out, delay] : sending.reports)
        sending.output(out, delay);
}

void SimulatedMouse::reply(const Request& request, Sending& sending) {
    std::optional<Fault> fault;
    if (!faults_.empty()) {
        fault = faults_.front();
        faults_.pop_front();
    }
    const auto sendError = [&](std::uint8_t mark, std::uint8_t code) {
        sending.reports.emplace_back(
            makeReport(
                request.reportID,
                {request.deviceIndex, mark, request.featureIndex, request.functionByte, code}, {}),
            std::chrono::nanoseconds{0});
    };
    if (fault == Fault::vanish) {
        sending.vanishes = true;
        return;
    }
    if (fault == Fault::error10 || fault == Fault::error20) {
        sendError(fault == Fault::error10 ? errorMark10 : errorMark20, errorCode_);
        return;
    }

    const Answer answered = answer(request);
    if (fault == Fault::noReply) return;
    if (const auto* code = std::get_if<std::uint8_t>(&answered)) {
        sendError(errorMark20, *code);
        return;
    }
    const auto& payload = std::get<Bytes>(answered);
    const bool fitsShort = payload.size() <= shortReportSize - headerSize;
    const auto reportID =
        request.reportID == shortReportID && fitsShort ? shortReportID : longReportID;
    const auto answeredIndex = static_cast<std::uint8_t>(
        fault == Fault::wrongFeatureIndex ? request.featureIndex + 1 : request.featureIndex);
    Bytes out =
        makeReport(reportID, {request.deviceIndex, answeredIndex, request.functionByte}, payload);
    if (fault == Fault::shortReply) out.resize(headerSize);
    const auto delay = fault == Fault::lateReply ? lateness_ : std::chrono::nanoseconds{0};
    if (fault == Fault::replyTwice) sending.reports.emplace_back(out, delay);
    sending.reports.emplace_back(std::move(out), delay);
}

void SimulatedMouse::powerCycle() {
    MutexLock lock(mutex_);
    settings_ = defaults();
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
        MutexLock lock(mutex_);
        isRatchetEngaged_ = isEngaged;
    }
    const std::array<std::uint8_t, 1> payload{static_cast<std::uint8_t>(isEngaged)};
    if (const auto index = featureIndex(wheelFeature)) {
        notify(*index, wheelFeatureRatchetEvent, payload);
    }
}

void SimulatedMouse::setDPIByHand(std::uint16_t dpi) {
    MutexLock lock(mutex_);
    settings_.dpi = dpi;
}

void SimulatedMouse::send(const Bytes& report) {
    Output output;
    {
        MutexLock lock(mutex_);
        output = output_;
    }
    if (output) output(report, std::chrono::nanoseconds{0});
}

void SimulatedMouse::injectFault(Fault fault, std::size_t count) {
    MutexLock lock(mutex_);
    faults_.insert(faults_.end(), count, fault);
}

void SimulatedMouse::clearFaults() {
    MutexLock lock(mutex_);
    faults_.clear();
}

void SimulatedMouse::setErrorCode(std::uint8_t code) {
    MutexLock lock(mutex_);
    errorCode_ = code;
}

void SimulatedMouse::setLateness(std::chrono::nanoseconds lateness) {
    MutexLock lock(mutex_);
    lateness_ = lateness;
}

std::uint16_t SimulatedMouse::dpi() const {
    MutexLock lock(mutex_);
    return settings_.dpi;
}

std::uint8_t SimulatedMouse::reportInterval() const {
    MutexLock lock(mutex_);
    return settings_.reportInterval;
}

std::uint8_t SimulatedMouse::wheelMode() const {
    MutexLock lock(mutex_);
    return settings_.wheelMode;
}

std::uint8_t SimulatedMouse::onboardMode() const {
    MutexLock lock(mutex_);
    return settings_.onboardMode;
}

std::size_t SimulatedMouse::requestCount() const {
    MutexLock lock(mutex_);
    return requestCount_;
}

std::optional<std::uint8_t> SimulatedMouse::featureIndex(std::uint16_t id) const {
    const auto found = std::ranges::find(description_.features, id, &SimulatedFeature::id);
    if (found == description_.features.end()) return std::nullopt;
    return static_cast<std::uint8_t>(found - description_.features.begin());
}

}  // namespace tessara
