#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QSslConfiguration>
#include <QSslServer>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tessara::testing {

/// A server of HTTP on this machine that answers each path as a test says, well or badly. It runs
/// on the event loop of the thread that made it.
class TinyServer {
  public:
    using Answer = std::function<void(QTcpSocket& socket)>;

    TinyServer() : TinyServer(std::make_unique<QTcpServer>(), "http") {}
    /// One of HTTPS, with a key and a certificate.
    explicit TinyServer(const QSslConfiguration& identity)
        : TinyServer(std::make_unique<QSslServer>(), "https") {
        static_cast<QSslServer&>(*server_).setSslConfiguration(identity);
    }

    [[nodiscard]] std::string url(const std::string& path) const {
        return scheme_ + "://127.0.0.1:" + std::to_string(server_->serverPort()) + path;
    }

    /// A whole answer; `status` as in "404 Not Found".
    static Answer answer(std::string body, std::string status = "200 OK",
                         std::string headers = "") {
        return [=](QTcpSocket& socket) {
            socket.write(QByteArray::fromStdString(
                "HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Length: " +
                std::to_string(body.size()) + "\r\n" + headers + "\r\n" + body));
            socket.disconnectFromHost();
        };
    }
    static Answer redirect(const std::string& url) {
        return answer("", "302 Found", "Location: " + url + "\r\n");
    }

    /// By path; another path is not found.
    std::map<std::string, Answer> answers;
    /// All requests so far, from their first lines to the ends of their headers.
    std::vector<std::string> requests;

  private:
    TinyServer(std::unique_ptr<QTcpServer> server, std::string scheme)
        : server_(std::move(server)), scheme_(std::move(scheme)) {
        QObject::connect(server_.get(), &QTcpServer::pendingConnectionAvailable, [this] {
            while (QTcpSocket* socket = server_->nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] { read(*socket); });
                if (socket->bytesAvailable() > 0) read(*socket);
            }
        });
        server_->listen(QHostAddress::LocalHost);
    }

    void read(QTcpSocket& socket) {
        const QByteArray request = socket.peek(socket.bytesAvailable());
        if (!request.contains("\r\n\r\n")) return;
        socket.readAll();
        requests.push_back(request.toStdString());
        const auto found = answers.find(request.split(' ').value(1).toStdString());
        (found == answers.end() ? answer("", "404 Not Found") : found->second)(socket);
    }

    const std::unique_ptr<QTcpServer> server_;
    const std::string scheme_;
};

}  // namespace tessara::testing
