#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>
#include <QTimer>
#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sodium.h>

#include "Platform/PackageOpener.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "Support/TestDispatcher.h"
#include "TinyServer.h"
#include "Updater/FeedUpdater.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using testing::TinyServer;

constexpr const char* packagePath = "/tessara_1.5_amd64.deb";
const std::string packageBytes(100'000, 'p');

std::string base64(const std::uint8_t* bytes, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size))
        .toBase64()
        .toStdString();
}

std::string hexSHA512(const std::string& bytes) {
    std::array<std::uint8_t, crypto_hash_sha512_BYTES> digest{};
    crypto_hash_sha512(digest.data(), reinterpret_cast<const std::uint8_t*>(bytes.data()),
                       bytes.size());
    return QByteArray(reinterpret_cast<const char*>(digest.data()), qsizetype{digest.size()})
        .toHex()
        .toStdString();
}

std::string feedOf(const UpdateRelease& release) {
    return "<updates format=\"1\"><release><version>" + release.version.version +
           "</version><build>" + std::to_string(release.version.build) + "</build><length>" +
           std::to_string(release.lengthInBytes) + "</length><url>" + release.url +
           "</url><signature>" + base64(release.signature.data(), release.signature.size()) +
           "</signature></release></updates>";
}

void write(const QString& path, const std::string& contents) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromStdString(contents));
}

/// The system's installer: notes what it was given.
struct Installer final : PackageOpener {
    std::expected<void, std::string> openVerifiedPackage(const std::string& path) override {
        if (!refusal.empty()) return std::unexpected(refusal);
        QFile file(QString::fromStdString(path));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        opened.push_back(file.readAll().toStdString());
        return {};
    }
    std::vector<std::string> opened;
    std::string refusal;
};

/// The event loop, which sockets must find when they are made.
struct WithEventLoop {
    WithEventLoop() {
        static int argumentCount = 0;
        static QCoreApplication application(argumentCount, nullptr);
    }
};

/// What a program of the system prints.
QByteArray outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished() && process.exitCode() == 0)
        << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

class FeedUpdaterTest : private WithEventLoop,
                        public testing::VirtualTimeTest,
                        private UpdaterDelegate {
  protected:
    FeedUpdaterTest() {
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(publicKey.data(), secretKey.data());
        settings = {.current = {"1.4", 100},
                    .feedURL = server.url("/feed.xml"),
                    .publicKey = base64(publicKey.data(), publicKey.size()),
                    .downloadFolder = downloads().path().toStdString(),
                    .transport = UpdateTransport::alsoLocalForTesting};
        release = {.version = {"1.5", 101},
                   .lengthInBytes = packageBytes.size(),
                   .url = server.url(packagePath),
                   .fileName = std::string(packagePath).substr(1),
                   .signature = {}};
        sign();
        offer();
    }
    ~FeedUpdaterTest() override {
        updater = nullptr;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// Signs the release as it is now.
    void sign(const std::string& bytes = packageBytes) {
        const std::string statement = signedStatement(release, hexSHA512(bytes));
        crypto_sign_detached(release.signature.data(), nullptr,
                             reinterpret_cast<const std::uint8_t*>(statement.data()),
                             statement.size(), secretKey.data());
    }
    void offer(const std::string& bytes = packageBytes) {
        server.answers["/feed.xml"] = TinyServer::answer(feedOf(release));
        server.answers[packagePath] = TinyServer::answer(bytes);
    }

    /// An updater that checks only when it is told to, unless it is automatic.
    void start(bool isAutomatic = false) {
        updater = std::make_unique<FeedUpdater>(settings, main, wallClock, defaults, installer);
        updater->setDelegate(this);
        updater->setAutomaticallyChecksForUpdates(isAutomatic);
        updater->start();
    }
    /// Lets the network come to rest.
    const UpdaterState& settle() {
        const auto isBusy = [this] {
            return updater->state().is<UpdaterState::Checking>() ||
                   updater->state().is<UpdaterState::Downloading>();
        };
        QEventLoop loop;
        onChange = [&] {
            if (!isBusy()) loop.quit();
        };
        QTimer::singleShot(30s, &loop, [&] {
            ADD_FAILURE() << "the network came to no end";
            loop.quit();
        });
        if (isBusy()) loop.exec();
        onChange = {};
        return settled = updater->state();
    }
    const UpdaterState& check() {
        updater->checkForUpdates();
        return settle();
    }
    const UpdaterState& download() {
        updater->downloadUpdate();
        return settle();
    }
    void passHours(int hours) {
        for (int hour = 0; hour < hours; ++hour) {
            wallClock.moment += 1h;
            dispatcher.advance(1h);
            settle();
        }
    }
    std::string failure() const {
        const UpdaterState state = updater->state();
        const auto* failed = std::get_if<UpdaterState::Failed>(&state.value);
        return failed ? failed->text : "no failure";
    }
    QDir downloads() const { return QDir(folder.filePath("updates")); }
    QStringList downloaded() const { return downloads().entryList(QDir::Files | QDir::Hidden); }

    QTemporaryDir folder;
    TinyServer server;
    std::array<std::uint8_t, crypto_sign_PUBLICKEYBYTES> publicKey{};
    std::array<std::uint8_t, crypto_sign_SECRETKEYBYTES> secretKey{};
    UpdateRelease release;
    FeedUpdater::Settings settings;
    std::shared_ptr<DispatchQueue> main =
        dispatcher.makeQueue("main", QualityOfService::userInteractive);
    SimulatedWallClock wallClock;
    SimulatedUserDefaults defaults;
    Installer installer;
    std::unique_ptr<FeedUpdater> updater;
    int questions = 0;

  private:
    void updaterDidChange() override {
        if (onChange) onChange();
    }
    void updaterWillAskUser() override { ++questions; }

    std::function<void()> onChange;
    UpdaterState settled;
};

TEST_F(FeedUpdaterTest, an_update_goes_as_far_as_the_user_wants_and_no_further) {
    start();
    EXPECT_EQ(updater->lastUpdateCheckDate(), std::nullopt);
    const UpdaterState available{UpdaterState::Available{release.version, release.lengthInBytes}};
    EXPECT_EQ(check(), available);
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(updater->lastUpdateCheckDate(), wallClock.moment);
    ASSERT_EQ(server.requests.size(), 1U) << "nothing is fetched before the user wants it";
    EXPECT_NE(server.requests[0].find("User-Agent: Tessara\r\n"), std::string::npos);
    EXPECT_NE(server.requests[0].find("Accept-Language: *\r\n"), std::string::npos);

    server.answers[packagePath] = TinyServer::redirect("/elsewhere");
    server.answers["/elsewhere"] = TinyServer::answer(packageBytes);
    EXPECT_EQ(download(), UpdaterState{UpdaterState::Verified{release.version}}) << failure();
    EXPECT_EQ(questions, 2);
    EXPECT_TRUE(installer.opened.empty());
    EXPECT_EQ(downloaded(), QStringList{"tessara_1.5_amd64.deb"});
    updater->checkForUpdates();
    EXPECT_EQ(questions, 3) << "what is there already is asked about again";

    updater->installUpdate();
    EXPECT_EQ(updater->state(), UpdaterState{UpdaterState::HandedOver{release.version}});
    EXPECT_EQ(installer.opened, std::vector{packageBytes});

    start();
    EXPECT_TRUE(downloaded().isEmpty()) << "what an earlier run left is cleared away";
    settings.current = release.version;
    start();
    EXPECT_EQ(check(), UpdaterState{UpdaterState::UpToDate{}});
}

TEST_F(FeedUpdaterTest, what_is_off_by_one_anywhere_is_refused_deleted_and_told) {
    const std::string noSignature =
        "Tessara could not download the update. The download does not bear Tessara's signature "
        "for this version, so it was deleted.";
    struct Case {
        const char* name;
        std::function<void()> spoil;
        std::string words;
    };
    std::string bytes = packageBytes;
    const std::vector<Case> cases{
        {"first byte", [&] { bytes.front() ^= 1; }, noSignature},
        {"last byte", [&] { bytes.back() ^= 1; }, noSignature},
        {"a byte too few", [&] { bytes.pop_back(); },
         "Tessara could not download the update. The download has 99999 bytes and should have "
         "100000, so it was deleted."},
        {"a byte too many", [&] { bytes += 'p'; },
         "Tessara could not download the update. The server sent more than the 100000 bytes that "
         "are allowed."},
        {"length of feed and bytes", [&] { bytes += 'p', ++release.lengthInBytes; }, noSignature},
        {"signature", [&] { release.signature[40] ^= 1; }, noSignature},
        {"version", [&] { release.version.version = "1.6"; }, noSignature},
        {"build", [&] { ++release.version.build; }, noSignature},
        {"file name",
         [&] {
             release.url = server.url("/tessara_1.5_amd64.sh");
             server.answers["/tessara_1.5_amd64.sh"] = TinyServer::answer(packageBytes);
         },
         noSignature},
        {"key", [&] { crypto_sign_keypair(publicKey.data(), secretKey.data()), sign(); },
         noSignature},
    };
    const UpdateRelease good = release;
    const auto goodKey = secretKey;
    for (const Case& off : cases) {
        SCOPED_TRACE(off.name);
        release = good;
        secretKey = goodKey;
        bytes = packageBytes;
        off.spoil();
        offer(bytes);
        start();
        ASSERT_TRUE(check().is<UpdaterState::Available>()) << failure();
        download();
        EXPECT_EQ(failure(), off.words);
        EXPECT_TRUE(downloaded().isEmpty());
        updater->installUpdate();
        EXPECT_TRUE(installer.opened.empty());
    }
}

TEST_F(FeedUpdaterTest, a_package_that_changes_after_its_verification_is_not_handed_over) {
    start();
    check();
    ASSERT_TRUE(download().is<UpdaterState::Verified>()) << failure();
    write(downloads().filePath(downloaded().value(0)), std::string(packageBytes.size(), 'q'));
    updater->installUpdate();
    EXPECT_TRUE(failure().starts_with("Tessara could not hand over the update. The download does"));
    EXPECT_TRUE(downloaded().isEmpty() && installer.opened.empty());

    installer.refusal = "No application opens it.";
    check();
    download();
    updater->installUpdate();
    EXPECT_EQ(failure(), "Tessara could not hand over the update. No application opens it.");
    EXPECT_TRUE(downloaded().isEmpty());
}

TEST_F(FeedUpdaterTest, a_bad_server_is_an_error_and_nothing_else) {
    const auto endless = [](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        const auto more = [&socket] { socket.write(QByteArray(64 * 1024, ' ')); };
        QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, more);
        more();
    };
    const auto silent = [this](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n<updates");
        QTimer::singleShot(0ms, &socket, [this] { dispatcher.advance(30s); });
    };
    const auto cutOff = [](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n<updates");
        socket.disconnectFromHost();
    };
    const auto older = [this](ProgramVersion version) {
        UpdateRelease old = release;
        old.version = std::move(version);
        return TinyServer::answer(feedOf(old));
    };
    const auto elsewhere = [this](const std::string& url) {
        UpdateRelease moved = release;
        moved.url = url;
        return TinyServer::answer(feedOf(moved));
    };
    const std::vector<std::pair<TinyServer::Answer, std::string>> answers{
        {endless, "The server sent more than the 262144 bytes that are allowed."},
        {silent, "The server did not answer in time."},
        {cutOff, "The transfer failed: "},
        {TinyServer::answer("", "404 Not Found"), "The transfer failed: "},
        {TinyServer::answer(feedOf(release), "203 Changed"),
         "The server answered with the status 203."},
        {TinyServer::answer("<html></html>"), "The update feed is not in order: "},
        {TinyServer::redirect("http://updates.example/feed.xml"),
         "The server sent Tessara on to “http://updates.example/feed.xml”, which is not a secure "
         "address."},
        {TinyServer::redirect("file:///etc/passwd"), "The server sent Tessara on to “file:"},
        {TinyServer::redirect("/feed.xml"), "The server sent Tessara on more than 5 times."},
        {older({"1.4", 99}), "The feed offers version 1.4 (build 99), which is not newer"},
        {older({"1.5", 100}), "The feed offers version 1.5 (build 100), which is not newer"},
        {older({"1.3", 101}), "The feed offers version 1.3 (build 101), which is not newer"},
        {elsewhere("http://updates.example/a.deb"), "The update's address is not a secure one."},
    };
    start();
    for (const auto& [answer, words] : answers) {
        server.answers["/feed.xml"] = answer;
        check();
        EXPECT_TRUE(failure().starts_with("Tessara could not check for updates. " + words))
            << failure() << " instead of " << words;
    }
    offer();
    EXPECT_TRUE(check().is<UpdaterState::Available>());
    server.answers[packagePath] = TinyServer::redirect("http://updates.example/a.deb");
    download();
    EXPECT_TRUE(failure().starts_with("Tessara could not download the update. The server sent"));
    EXPECT_TRUE(downloaded().isEmpty());
}

TEST_F(FeedUpdaterTest,
       only_a_server_that_proves_its_name_is_believed_and_none_less_secure_follows) {
    const QString key = folder.filePath("key.pem");
    const QByteArray certificate = outputOf(
        "openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                    "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1", "-addext",
                    "subjectAltName=IP:127.0.0.1", "-keyout", key});
    QFile keyFile(key);
    ASSERT_TRUE(keyFile.open(QIODevice::ReadOnly));
    QSslConfiguration identity;
    identity.setLocalCertificate(QSslCertificate(certificate));
    identity.setPrivateKey(QSslKey(keyFile.readAll(), QSsl::Ec));
    TinyServer secure(identity);
    secure.answers["/feed.xml"] = TinyServer::redirect("/moved.xml");
    release.url = secure.url(packagePath);
    secure.answers["/moved.xml"] = TinyServer::answer(feedOf(release));
    settings.feedURL = secure.url("/feed.xml");
    settings.transport = UpdateTransport::secureOnly;
    start();
    check();
    EXPECT_TRUE(failure().starts_with("Tessara could not check for updates. The transfer failed: "))
        << failure();
    EXPECT_TRUE(secure.requests.empty());

    const QSslConfiguration untrusting = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = untrusting;
    trusting.addCaCertificate(QSslCertificate(certificate));
    QSslConfiguration::setDefaultConfiguration(trusting);
    EXPECT_TRUE(check().is<UpdaterState::Available>()) << failure();
    secure.answers["/feed.xml"] = TinyServer::redirect(server.url("/feed.xml"));
    check();
    QSslConfiguration::setDefaultConfiguration(untrusting);
    EXPECT_TRUE(failure().ends_with("which is not a secure address.")) << failure();
    EXPECT_TRUE(server.requests.empty());
}

TEST_F(FeedUpdaterTest, looks_once_a_day_and_an_hour_after_a_failure_while_it_is_switched_on) {
    // A feed in a file, as quiet as no server could be.
    const QString feed = folder.filePath("feed.xml");
    settings.feedURL = "file://" + feed.toStdString();
    settings.current = release.version;
    write(feed, feedOf(release));
    const auto hoursUntilCheck = [this](int most) {
        const auto before = updater->lastUpdateCheckDate();
        for (int hours = 0; hours <= most; ++hours) {
            dispatcher.advance(0s);
            settle();
            if (updater->lastUpdateCheckDate() != before) return hours;
            passHours(1);
        }
        return -1;
    };
    start(true);
    EXPECT_EQ(hoursUntilCheck(1), 0) << "none was made yet";
    EXPECT_EQ(hoursUntilCheck(30), 24);
    passHours(20);
    start(true);
    EXPECT_EQ(hoursUntilCheck(30), 4) << "a relaunch remembers";

    ASSERT_TRUE(QFile::remove(feed));
    EXPECT_EQ(hoursUntilCheck(24), -1);
    EXPECT_TRUE(failure().starts_with("Tessara could not check for updates. "));
    write(feed, feedOf(release));
    EXPECT_LE(hoursUntilCheck(2), 1);

    updater->setAutomaticallyChecksForUpdates(false);
    EXPECT_EQ(hoursUntilCheck(48), -1);
    updater->setAutomaticallyChecksForUpdates(true);
    EXPECT_EQ(hoursUntilCheck(1), 0);
    wallClock.moment -= 24h * 365;
    start(true);
    EXPECT_EQ(hoursUntilCheck(1), 0) << "the clock was put right meanwhile";

    // What waits for an answer is left to wait.
    settings.current.build = 1;
    start(false);
    ASSERT_TRUE(check().is<UpdaterState::Available>());
    updater->setAutomaticallyChecksForUpdates(true);
    EXPECT_EQ(hoursUntilCheck(48), -1);
}

TEST_F(FeedUpdaterTest, a_copy_without_a_feed_a_key_or_a_secure_address_asks_nobody) {
    settings.feedURL.clear();
    start(true);
    updater->checkForUpdates();
    updater->dismissUpdate();
    EXPECT_EQ(updater->state(), UpdaterState{UpdaterState::NotConfigured{}});
    EXPECT_FALSE(updater->canCheckForUpdates() || updater->feedURL());

    settings.feedURL = server.url("/feed.xml");
    settings.transport = UpdateTransport::secureOnly;
    start();
    check();
    EXPECT_EQ(failure(),
              "Tessara could not check for updates. The feed's address is not a secure one.");
    settings.publicKey = "none";
    start();
    check();
    EXPECT_EQ(
        failure(),
        "Tessara could not check for updates. This copy of Tessara has no key to verify them.");
    EXPECT_TRUE(server.requests.empty());
}

TEST_F(FeedUpdaterTest, a_download_that_is_dismissed_or_cannot_be_stored_leaves_nothing_behind) {
    start();
    check();
    updater->downloadUpdate();
    EXPECT_FALSE(updater->canCheckForUpdates());
    EXPECT_EQ(downloaded().size(), 1);
    updater->dismissUpdate();
    EXPECT_EQ(updater->state(), UpdaterState{UpdaterState::Idle{}});
    EXPECT_TRUE(downloaded().isEmpty());

    check();
    download();
    updater->dismissUpdate();
    updater->installUpdate();
    EXPECT_TRUE(downloaded().isEmpty() && installer.opened.empty());

    check();
    ASSERT_TRUE(downloads().removeRecursively());
    write(downloads().path(), "a file in the folder's place");
    download();
    EXPECT_TRUE(failure().starts_with("Tessara could not download the update. “")) << failure();
}

TEST_F(FeedUpdaterTest, a_release_signed_with_the_script_verifies) {
    const QString key = folder.filePath("key.pem");
    const QString package = folder.filePath("package");
    write(package, packageBytes);
    outputOf("openssl", {"genpkey", "-algorithm", "ed25519", "-out", key});
    const QByteArray encoded =
        outputOf("openssl", {"pkey", "-in", key, "-pubout", "-outform", "DER"});
    settings.publicKey = encoded.right(32).toBase64().toStdString();
    const QByteArray element =
        outputOf(SIGN_UPDATE, {key, "1.5", "101", QString::fromStdString(release.url), package});
    server.answers["/feed.xml"] =
        TinyServer::answer("<updates format=\"1\">" + element.toStdString() + "</updates>");
    start();
    EXPECT_TRUE(check().is<UpdaterState::Available>()) << failure();
    EXPECT_TRUE(download().is<UpdaterState::Verified>()) << failure();
}

}  // namespace
}  // namespace tessara
