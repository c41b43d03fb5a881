#pragma once

#include <QCoreApplication>
#include <QHostAddress>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tessara::testing {

/// What a program of the system prints.
inline QByteArray outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished() && process.exitCode() == 0)
        << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

/// A server of HTTPS on this machine that answers each path as a test says, well or badly, on the
/// event loop of its thread. The test program believes its certificate unless told otherwise.
class HTTPSServer {
  public:
    using Answer = std::function<void(QTcpSocket& socket)>;

    HTTPSServer() {
        QSslConfiguration configuration;
        configuration.setLocalCertificate(certificate_);
        configuration.setPrivateKey(QSslKey(identity_, QSsl::Ec));
        server_.setSslConfiguration(configuration);
        QObject::connect(&server_, &QTcpServer::pendingConnectionAvailable, [this] {
            while (QTcpSocket* socket = server_.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] { read(*socket); });
                if (socket->bytesAvailable() > 0) read(*socket);
            }
        });
        server_.listen(QHostAddress::LocalHost);
        setTrusted(true);
    }
    ~HTTPSServer() { setTrusted(false); }

    void setTrusted(bool isTrusted) const {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setCaCertificates(isTrusted ? QList{certificate_} : QList<QSslCertificate>());
        QSslConfiguration::setDefaultConfiguration(configuration);
    }

    [[nodiscard]] std::string url(const std::string& path) const {
        return "https://127.0.0.1:" + std::to_string(server_.serverPort()) + path;
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
        return answer("moved", "302 Found", "Location: " + url + "\r\n");
    }

    /// By path; another path is not found.
    std::map<std::string, Answer> answers;
    /// All requests so far, from their first lines to the ends of their headers.
    std::vector<std::string> requests;

  private:
    /// Key and certificate, one after the other. What TLS is made of wants an event loop first.
    static QByteArray makeIdentity() {
        static int argumentCount = 0;
        static QCoreApplication application(argumentCount, nullptr);
        static const QByteArray identity = outputOf(
            "openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                        "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1", "-addext",
                        "subjectAltName=IP:127.0.0.1", "-keyout", "/dev/stdout"});
        return identity;
    }
    void read(QTcpSocket& socket) {
        if (!socket.peek(socket.bytesAvailable()).contains("\r\n\r\n")) return;
        const QByteArray request = socket.readAll();
        requests.push_back(request.toStdString());
        const auto found = answers.find(request.split(' ').value(1).toStdString());
        (found == answers.end() ? answer("", "404 Not Found") : found->second)(socket);
    }

    const QByteArray identity_ = makeIdentity();
    const QSslCertificate certificate_{identity_};
    QSslServer server_;
};

}  // namespace tessara::testing
