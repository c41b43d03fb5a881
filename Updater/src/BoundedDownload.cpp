#include "BoundedDownload.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <utility>

#include <fmt/core.h>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Updater/UpdateTransport.h"

namespace tessara {
namespace {

constexpr int maximumRedirects = 5;
/// How much may lie between the network and the sink.
constexpr qint64 bufferSizeInBytes = 256 * 1024;
/// How often the time is looked at.
constexpr auto watchInterval = std::chrono::seconds(5);
constexpr auto watchLeeway = std::chrono::seconds(1);

QNetworkRequest requestFor(const QUrl& url) {
    QNetworkRequest request(url);
    // Qt 6.4 loses count of the redirects that it follows by itself.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    for (const auto attribute :
         {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
          QNetworkRequest::AuthenticationReuseAttribute}) {
        request.setAttribute(attribute, QNetworkRequest::Manual);
    }
    // Qt would tell the user's language, and decompress what a length and a signature are about.
    request.setRawHeader("User-Agent", "Tessara");
    request.setRawHeader("Accept-Language", "*");
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

}  // namespace

BoundedDownload::BoundedDownload(std::shared_ptr<DispatchQueue> queue, const QUrl& url,
                                 Limits limits, Sink sink, Completion completion)
    : queue_(std::move(queue)),
      limits_(limits),
      sink_(std::move(sink)),
      completion_(std::move(completion)),
      network_(new QNetworkAccessManager),
      began_(queue_->clock().now()),
      lastProgress_(began_) {
    request(url);
    watch_ =
        queue_->startTimer(began_ + watchInterval, watchInterval, watchLeeway, [this] { watch(); });
}

BoundedDownload::~BoundedDownload() {
    letGo();
}

void BoundedDownload::letGo() {
    watch_ = nullptr;
    if (!network_) return;
    QNetworkAccessManager* network = std::exchange(network_, nullptr);
    QNetworkReply* reply = std::exchange(reply_, nullptr);
    QObject::disconnect(reply, nullptr, network, nullptr);
    reply->abort();
    network->deleteLater();
}

void BoundedDownload::request(const QUrl& url) {
    reply_ = network_->get(requestFor(url));
    reply_->setReadBufferSize(bufferSizeInBytes);
    QObject::connect(reply_, &QNetworkReply::readyRead, network_, [this] { receive(); });
    QObject::connect(reply_, &QNetworkReply::finished, network_, [this] { replyFinished(); });
}

void BoundedDownload::follow(const QUrl& url) {
    if (++redirects_ > maximumRedirects) {
        fail(fmt::format("The server sent Tessara on more than {} times.", maximumRedirects));
        return;
    }
    if (!isSecure(url)) {
        fail(fmt::format("The server sent Tessara on to “{}”, which is not a secure address.",
                         url.toDisplayString().toStdString()));
        return;
    }
    reply_->deleteLater();
    receivedBytes_ = 0;
    request(url);
}

bool BoundedDownload::receive() {
    const QByteArray bytes = reply_->readAll();
    if (bytes.isEmpty()) return true;
    lastProgress_ = queue_->clock().now();
    receivedBytes_ += static_cast<std::uint64_t>(bytes.size());
    if (receivedBytes_ > limits_.maximumBytes) {
        fail(fmt::format("The server sent more than the {} bytes that are allowed.",
                         limits_.maximumBytes));
        return false;
    }
    // What a server says beside sending somebody on is of no interest.
    if (reply_->attribute(QNetworkRequest::RedirectionTargetAttribute).isValid()) return true;
    if (auto taken = sink_(bytes); !taken) {
        fail(std::move(taken.error()));
        return false;
    }
    return true;
}

void BoundedDownload::watch() {
    const TimePoint now = queue_->clock().now();
    if (now - lastProgress_ >= limits_.idle || now - began_ >= limits_.total) {
        fail("The server did not answer in time.");
    }
}

void BoundedDownload::replyFinished() {
    if (reply_->error() != QNetworkReply::NoError) {
        fail(fmt::format("The transfer failed: {}.", reply_->errorString().toStdString()));
        return;
    }
    if (const QVariant target = reply_->attribute(QNetworkRequest::RedirectionTargetAttribute);
        target.isValid()) {
        follow(reply_->url().resolved(target.toUrl()));
        return;
    }
    // A file has no status.
    const QVariant status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() != 200) {
        fail(fmt::format("The server answered with the status {}.", status.toInt()));
        return;
    }
    if (receive()) finish({});
}

void BoundedDownload::finish(std::expected<void, std::string> result) {
    letGo();
    std::exchange(completion_, {})(std::move(result));
}

}  // namespace tessara
