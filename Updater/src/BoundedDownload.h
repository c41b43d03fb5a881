#pragma once

#include <QByteArray>
#include <QUrl>
#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Dispatch/Clock.h"

class QNetworkAccessManager;
class QNetworkReply;

namespace tessara {

class DispatchQueue;
class DispatchTimer;

/// One request for one resource, which a server can make neither endless nor huge nor less secure
/// than HTTPS. It tells the server nothing about the user: no cookies, no language, no name of
/// the system. Main executor, which runs Qt's event loop.
class BoundedDownload {
  public:
    struct Limits {
        std::uint64_t maximumBytes = 0;
        /// How long nothing may come, and how long all of it may take.
        std::chrono::seconds idle{};
        std::chrono::seconds total{};
    };

    /// Takes the bytes as they come; an error ends the download with its words.
    using Sink = std::function<std::expected<void, std::string>(const QByteArray& bytes)>;
    /// Called once, last of all; the download may be destroyed in it. An error is a sentence.
    using Completion = std::function<void(std::expected<void, std::string> result)>;

    /// Begins, with an address that may be asked. Neither function is called before the constructor
    /// has returned.
    BoundedDownload(std::shared_ptr<DispatchQueue> queue, const QUrl& url, Limits limits, Sink sink,
                    Completion completion);
    /// Ends it without a word.
    ~BoundedDownload();

    BoundedDownload(const BoundedDownload&) = delete;
    BoundedDownload& operator=(const BoundedDownload&) = delete;

  private:
    /// Hands on what has come; false when that ended the download, which may be gone by then.
    bool receive();
    void request(const QUrl& url);
    void follow(const QUrl& url);
    void watch();
    void replyFinished();
    void finish(std::expected<void, std::string> result);
    void fail(std::string words) { finish(std::unexpected(std::move(words))); }
    /// Lets go of the reply; nothing of it is heard any more.
    void letGo();

    const std::shared_ptr<DispatchQueue> queue_;
    const Limits limits_;
    const Sink sink_;
    Completion completion_;
    /// The network's own objects are let go of by way of the event loop: they may be what is
    /// calling.
    QNetworkAccessManager* network_;
    QNetworkReply* reply_ = nullptr;
    std::uint64_t receivedBytes_ = 0;
    int redirects_ = 0;
    const TimePoint began_;
    TimePoint lastProgress_;
    std::unique_ptr<DispatchTimer> watch_;
};

}  // namespace tessara
