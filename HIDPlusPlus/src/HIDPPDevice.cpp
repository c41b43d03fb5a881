#include "HIDPlusPlus/HIDPPDevice.h"

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/bind_cancellation_slot.hpp>
#include <asio/co_spawn.hpp>
#include <asio/use_awaitable.hpp>

#include "HIDPPDeviceCore.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/HIDTransport.h"

// Each operation goes over to the device's queue and back to its caller's executor; what it does
// there is told in the files of the core and the connection.

namespace tessara {

namespace {

using Core = std::shared_ptr<HIDPPDeviceCore>;
using Work = std::function<asio::awaitable<void>(HIDPPDeviceCore&)>;

/// Does `work` on the device's queue. The core lives until it has ended, and a cancellation of the
/// caller does not reach it. This is the one place where a coroutine is started, and no template:
/// it is Asio's part in this that takes long to compile.
asio::awaitable<void> runOnQueue(Core core, Work work) {
    const auto executor = core->queue()->executor();
    auto run = [core = std::move(core), work = std::move(work)] { return work(*core); };
    co_await asio::co_spawn(
        executor, std::move(run),
        asio::bind_cancellation_slot(asio::cancellation_slot(), asio::use_awaitable));
}

template <typename T>
asio::awaitable<void> keep(asio::awaitable<T> operation, std::shared_ptr<std::optional<T>> result) {
    *result = co_await std::move(operation);
}

/// Runs `operation(core)` on the device's queue and gives its result. The result is shared: the
/// caller may be gone before the operation has ended.
template <typename T>
asio::awaitable<T> onQueue(Core core,
                           std::function<asio::awaitable<T>(HIDPPDeviceCore&)> operation) {
    const auto result = std::make_shared<std::optional<T>>();
    Work work = [operation = std::move(operation), result](HIDPPDeviceCore& device) {
        return keep(operation(device), result);
    };
    co_await runOnQueue(std::move(core), std::move(work));
    co_return std::move(**result);
}

template <typename T>
asio::awaitable<T> ready(T value) {
    co_return value;
}

/// Reads `value(core)` on the device's queue.
template <typename Value>
auto readOnQueue(Core core, Value value) {
    using T = std::invoke_result_t<Value, HIDPPDeviceCore&>;
    return onQueue<T>(std::move(core),
                      [value](HIDPPDeviceCore& device) { return ready<T>(value(device)); });
}

template <typename T>
using ConnectionOperation = std::function<HIDPPTask<T>(HIDPPConnection&)>;

template <typename T>
HIDPPTask<T> runOnConnection(std::shared_ptr<HIDPPConnection> connection,
                             ConnectionOperation<T> operation) {
    if (!connection) co_return std::unexpected(HIDPPError::NotConnected{});
    co_return co_await operation(*connection);
}

/// Runs `operation(connection)` on the device's queue and on the connection that is there by then;
/// without one it fails with `NotConnected`.
template <typename Operation>
auto onConnection(Core core, Operation operation) {
    using Task = std::invoke_result_t<Operation, HIDPPConnection&>;
    using T = typename Task::value_type::value_type;
    return onQueue<HIDPPResult<T>>(std::move(core),
                                   [operation = std::move(operation)](HIDPPDeviceCore& device) {
                                       return runOnConnection<T>(device.connection(), operation);
                                   });
}

asio::awaitable<std::optional<HIDPPTransportStatistics>> statisticsOf(
    std::shared_ptr<HIDPPConnection> connection) {
    if (!connection) co_return std::nullopt;
    co_return co_await connection->statistics();
}

HIDPPTask<std::uint8_t> featureIndexOn(std::shared_ptr<HIDPPConnection> connection,
                                       HIDPPFeature feature) {
    // The root is where it is on every mouse, also on one that is not there.
    if (feature == HIDPPFeature::root) co_return std::uint8_t{0};
    if (!connection) co_return std::unexpected(HIDPPError::NotConnected{});
    co_return co_await connection->featureIndex(feature);
}

asio::awaitable<bool> supportedOn(std::shared_ptr<HIDPPConnection> connection,
                                  HIDPPFeature feature) {
    const auto index = co_await featureIndexOn(std::move(connection), feature);
    co_return index.has_value();
}

}  // namespace

HIDPPDevice::HIDPPDevice(HIDPPDeviceMatch match, std::shared_ptr<const HIDPPRunLoop> runLoop)
    : core_(std::make_shared<HIDPPDeviceCore>(match, std::move(runLoop))) {}

HIDPPDevice::~HIDPPDevice() = default;

HIDPPInputMonitoringAccess HIDPPDevice::inputMonitoringAccess(const HIDTransport& transport) {
    switch (transport.listenEventAccess()) {
        case HIDListenEventAccess::granted:
            return HIDPPInputMonitoringAccess::granted;
        case HIDListenEventAccess::denied:
            return HIDPPInputMonitoringAccess::denied;
        case HIDListenEventAccess::unknown:
            break;
    }
    return HIDPPInputMonitoringAccess::unknown;
}

void HIDPPDevice::setDeviceIndex(std::uint8_t deviceIndex) {
    core_->queue()->post(
        [core = core_, deviceIndex] { core->requestSettings().deviceIndex = deviceIndex; });
}

void HIDPPDevice::setDefaultTimeout(double seconds) {
    core_->queue()->post(
        [core = core_, seconds] { core->requestSettings().defaultTimeout = seconds; });
}

void HIDPPDevice::setAutomaticallyReconnects(bool reconnects) {
    core_->queue()->post(
        [core = core_, reconnects] { core->setAutomaticallyReconnects(reconnects); });
}

EventSubscription HIDPPDevice::makeEventStream(std::shared_ptr<DispatchQueue> queue,
                                               EventStream<HIDPPEvent>::Listener listener) {
    return core_->events().subscribe(std::move(queue), std::move(listener));
}

asio::awaitable<HIDPPConnectionState> HIDPPDevice::state() const {
    return readOnQueue(core_, [](HIDPPDeviceCore& core) { return core.state(); });
}

asio::awaitable<bool> HIDPPDevice::isConnected() const {
    return readOnQueue(core_, [](HIDPPDeviceCore& core) { return core.state().isConnected(); });
}

asio::awaitable<bool> HIDPPDevice::isConnecting() const {
    return readOnQueue(core_, [](HIDPPDeviceCore& core) { return core.isConnecting(); });
}

asio::awaitable<std::optional<HIDPPDeviceIdentity>> HIDPPDevice::identity() const {
    return readOnQueue(core_, [](HIDPPDeviceCore& core) -> std::optional<HIDPPDeviceIdentity> {
        if (!core.connection()) return std::nullopt;
        return core.connection()->identity();
    });
}

HIDPPTask<void> HIDPPDevice::connect() {
    return onQueue<HIDPPResult<void>>(core_, [](HIDPPDeviceCore& core) { return core.connect(); });
}

asio::awaitable<void> HIDPPDevice::disconnect() {
    return runOnQueue(core_, [](HIDPPDeviceCore& core) { return core.disconnect(); });
}

asio::awaitable<std::optional<HIDPPTransportStatistics>> HIDPPDevice::transportStatistics() const {
    return onQueue<std::optional<HIDPPTransportStatistics>>(
        core_, [](HIDPPDeviceCore& core) { return statisticsOf(core.connection()); });
}

HIDPPTask<std::vector<std::uint8_t>> HIDPPDevice::rawRequest(std::uint8_t featureIndex,
                                                             std::uint8_t function,
                                                             std::vector<std::uint8_t> parameters,
                                                             bool isLong,
                                                             std::optional<double> timeout) {
    return onConnection(core_, [=](HIDPPConnection& connection) {
        return connection.request(featureIndex, function, parameters, isLong, timeout);
    });
}

HIDPPTask<HIDPPProtocolVersion> HIDPPDevice::ping() {
    return onConnection(core_, [](HIDPPConnection& connection) { return connection.ping(); });
}

HIDPPTask<HIDPPProtocolVersion> HIDPPDevice::protocolVersion() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.protocolVersion(); });
}

HIDPPTask<std::vector<HIDPPFeatureRecord>> HIDPPDevice::discoverFeatures() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.discoverFeatures(); });
}

asio::awaitable<std::vector<HIDPPFeatureRecord>> HIDPPDevice::features() const {
    return readOnQueue(core_, [](HIDPPDeviceCore& core) {
        return core.connection() ? core.connection()->features()
                                 : std::vector<HIDPPFeatureRecord>();
    });
}

HIDPPTask<std::uint8_t> HIDPPDevice::featureIndex(HIDPPFeature feature) {
    return onQueue<HIDPPResult<std::uint8_t>>(core_, [feature](HIDPPDeviceCore& core) {
        return featureIndexOn(core.connection(), feature);
    });
}

asio::awaitable<bool> HIDPPDevice::supports(HIDPPFeature feature) {
    return onQueue<bool>(core_, [feature](HIDPPDeviceCore& core) {
        return supportedOn(core.connection(), feature);
    });
}

HIDPPTask<HIDPPDeviceInformation> HIDPPDevice::deviceInformation() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.deviceInformation(); });
}

HIDPPTask<std::string> HIDPPDevice::deviceName() {
    return onConnection(core_, [](HIDPPConnection& connection) { return connection.deviceName(); });
}

HIDPPTask<std::uint8_t> HIDPPDevice::sensorCount() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.sensorCount(); });
}

HIDPPTask<HIDPPDPIRange> HIDPPDevice::dpiRange(std::uint8_t sensor) {
    return onConnection(
        core_, [sensor](HIDPPConnection& connection) { return connection.dpiRange(sensor); });
}

HIDPPTask<HIDPPDPIState> HIDPPDevice::dpi(std::uint8_t sensor) {
    return onConnection(core_,
                        [sensor](HIDPPConnection& connection) { return connection.dpi(sensor); });
}

HIDPPTask<std::int64_t> HIDPPDevice::setDPI(std::int64_t dpi, std::uint8_t sensor) {
    return onConnection(core_, [dpi, sensor](HIDPPConnection& connection) {
        return connection.setDPI(dpi, sensor);
    });
}

HIDPPTask<HIDPPReportRateInfo> HIDPPDevice::reportRate() {
    return onConnection(core_, [](HIDPPConnection& connection) { return connection.reportRate(); });
}

HIDPPTask<void> HIDPPDevice::setReportRate(HIDPPReportRate rate) {
    return onConnection(
        core_, [rate](HIDPPConnection& connection) { return connection.setReportRate(rate); });
}

HIDPPTask<HIDPPWheelCapability> HIDPPDevice::wheelCapability() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.wheelCapability(); });
}

HIDPPTask<HIDPPWheelMode> HIDPPDevice::wheelMode() {
    return onConnection(core_, [](HIDPPConnection& connection) { return connection.wheelMode(); });
}

HIDPPTask<void> HIDPPDevice::setWheelMode(HIDPPWheelMode mode) {
    return onConnection(
        core_, [mode](HIDPPConnection& connection) { return connection.setWheelMode(mode); });
}

HIDPPTask<HIDPPWheelMode> HIDPPDevice::setWheelHighResolution(bool enabled) {
    return onConnection(core_, [enabled](HIDPPConnection& connection) {
        return connection.setWheelHighResolution(enabled);
    });
}

HIDPPTask<HIDPPRatchetState> HIDPPDevice::ratchetState() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.ratchetState(); });
}

HIDPPTask<HIDPPOnboardProfilesDescriptor> HIDPPDevice::onboardProfilesDescriptor() {
    return onConnection(
        core_, [](HIDPPConnection& connection) { return connection.onboardProfilesDescriptor(); });
}

HIDPPTask<void> HIDPPDevice::setOnboardMode(HIDPPOnboardMode mode) {
    return onConnection(
        core_, [mode](HIDPPConnection& connection) { return connection.setOnboardMode(mode); });
}

HIDPPTask<HIDPPOnboardMode> HIDPPDevice::onboardMode() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.onboardMode(); });
}

HIDPPTask<HIDPPCurrentProfile> HIDPPDevice::currentProfile() {
    return onConnection(core_,
                        [](HIDPPConnection& connection) { return connection.currentProfile(); });
}

HIDPPTask<std::array<std::uint8_t, 16>> HIDPPDevice::readOnboardMemory(std::uint16_t sector,
                                                                       std::uint16_t offset) {
    return onConnection(core_, [sector, offset](HIDPPConnection& connection) {
        return connection.readOnboardMemory(sector, offset);
    });
}

}  // namespace tessara
