#include "HIDPPConnection.h"

#include <utility>

#include <fmt/format.h>

#include "AwaitCallback.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"

namespace tessara {

HIDPPConnection::HIDPPConnection(std::shared_ptr<const HIDPPRunLoop> runLoop,
                                 std::shared_ptr<DispatchQueue> queue,
                                 std::shared_ptr<HIDPPLink> link,
                                 std::shared_ptr<const HIDPPRequestSettings> settings)
    : runLoop_(std::move(runLoop)),
      queue_(std::move(queue)),
      link_(std::move(link)),
      settings_(std::move(settings)) {}

HIDPPConnection::~HIDPPConnection() {
    if (hasEnded_) return;
    runLoop_->perform([link = link_] {
        link->setNotificationHandler(nullptr);
        link->close();
    });
}

void HIDPPConnection::setNotificationHandler(HIDPPLink::NotificationHandler handler) {
    runLoop_->perform([link = link_, handler = std::move(handler)]() mutable {
        link->setNotificationHandler(std::move(handler));
    });
}

asio::awaitable<void> HIDPPConnection::close() {
    hasEnded_ = true;
    auto closeLink = [runLoop = runLoop_, link = link_](auto resume) {
        runLoop->perform([link, resume = std::move(resume)]() mutable {
            link->setNotificationHandler(nullptr);
            link->close();
            resume(true);
        });
    };
    co_await awaitCallback<bool>(queue_, std::move(closeLink));
}

void HIDPPConnection::invalidate() {
    hasEnded_ = true;
    runLoop_->perform([link = link_] {
        link->setNotificationHandler(nullptr);
        link->invalidate();
    });
}

asio::awaitable<HIDPPTransportStatistics> HIDPPConnection::statistics() const {
    auto readStatistics = [runLoop = runLoop_, link = link_](auto resume) {
        runLoop->perform(
            [link, resume = std::move(resume)]() mutable { resume(link->statistics()); });
    };
    co_return co_await awaitCallback<HIDPPTransportStatistics>(queue_, std::move(readStatistics));
}

HIDPPTask<HIDPPConnection::Bytes> HIDPPConnection::request(std::uint8_t featureIndex,
                                                           std::uint8_t function, Bytes parameters,
                                                           bool isLong,
                                                           std::optional<double> timeout) {
    if (hasEnded_) co_return std::unexpected(HIDPPError::NotConnected{});
    HIDPPLink::Request asked{
        .deviceIndex = settings_->deviceIndex,
        .featureIndex = featureIndex,
        .function = function,
        .parameters = std::move(parameters),
        .isLong = isLong,
        .timeout = timeout.value_or(settings_->defaultTimeout),
        .label = fmt::format("feature 0x{:02X} fn 0x{:02X}", featureIndex, function),
    };
    auto enqueue = [runLoop = runLoop_, link = link_,
                    asked = std::move(asked)](auto resume) mutable {
        runLoop->perform([link, asked = std::move(asked), resume = std::move(resume)]() mutable {
            link->enqueue(std::move(asked), std::move(resume));
        });
    };
    co_return co_await awaitCallback<HIDPPLink::Reply>(queue_, std::move(enqueue));
}

HIDPPTask<HIDPPConnection::Bytes> HIDPPConnection::get(HIDPPFeature feature, std::uint8_t function,
                                                       Bytes parameters, bool isLong) {
    const auto index = co_await featureIndex(feature);
    if (!index) co_return std::unexpected(index.error());
    co_return co_await request(*index, function, std::move(parameters), isLong);
}

HIDPPTask<void> HIDPPConnection::set(HIDPPFeature feature, std::uint8_t function,
                                     Bytes parameters) {
    const auto reply = co_await get(feature, function, std::move(parameters), true);
    if (!reply) co_return std::unexpected(reply.error());
    co_return HIDPPResult<void>{};
}

}  // namespace tessara
