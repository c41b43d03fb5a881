#include <QCryptographicHash>
#include <QDir>
#include <QEventLoop>
#include <QTimer>
#include <array>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <sodium.h>

#include "HTTPSServer.h"
#include "Platform/PackageOpener.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestDispatcher.h"
#include "Updater/FeedUpdater.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using testing::HTTPSServer;

constexpr const char* packagePath = "/tessara_1.5_amd64.deb";
/// More than lies between the network and the file at a time.
const std::string packageBytes(1'000'000, 'p');

std::string base64(const auto& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()))
        .toBase64()
        .toStdString();
}

std::string feedOf(const UpdateRelease& release) {
    return "<updates format=\"1\"><release><version>" + release.version.version +
           "</version><build>" + std::to_string(release.version.build) + "</build><length>" +
           std::to_string(release.lengthInBytes) + "</length><url>" + release.url +
           "</url><signature>" + base64(release.signature) + "</signature></release></updates>";
}

/// The system's installer: notes what it was given.
struct Installer final : PackageOpener {
    std::expected<void, std::string> openVerifiedPackage(const std::string& path) override {
        if (!refusal.empty()) return std::unexpected(refusal);
        opened.push_back(path);
        return {};
    }
    std::vector<std::string> opened;
    std::string refusal;
};

class FeedUpdaterTest : public testing::VirtualTimeTest, private UpdaterDelegate {
  protected:
    FeedUpdaterTest() {
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(publicKey.data(), secretKey.data());
        settings = {.current = {"1.4", 100},
                    .feedURL = server.url("/feed.xml"),
                    .publicKey = base64(publicKey),
                    .downloadFolder = folder.path("updates")};
        release = {.version = {"1.5", 101},
                   .lengthInBytes = packageBytes.size(),
                   .url = server.url(packagePath),
                   .fileName = std::string(packagePath).substr(1),
                   .signature = {}};
        sign();
        offer(packageBytes);
    }
    ~FeedUpdaterTest() override {
        updater = nullptr;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void sign() {
        const auto digest = QCryptographicHash::hash(QByteArray::fromStdString(packageBytes),
                                                     QCryptographicHash::Sha512);
        const std::string statement = signedStatement(release, digest.toHex().toStdString());
        crypto_sign_detached(release.signature.data(), nullptr,
                             reinterpret_cast<const std::uint8_t*>(statement.data()),
                             statement.size(), secretKey.data());
    }
    void offer(const std::string& bytes) {
        server.answers["/feed.xml"] = HTTPSServer::answer(feedOf(release));
        server.answers[packagePath] = HTTPSServer::answer(bytes);
    }

    /// An updater that checks only when it is told to, unless it is automatic.
    void start(bool isAutomatic = false) {
        updater = std::make_unique<FeedUpdater>(settings, main, wallClock, defaults, installer);
        updater->setDelegate(this);
        updater->setAutomaticallyChecksForUpdates(isAutomatic);
        updater->start();
    }
    /// Lets the network come to rest.
    UpdaterState settle() {
        const auto isBusy = [this] {
            return updater->state().is<UpdaterState::Checking>() ||
                   updater->state().is<UpdaterState::Downloading>();
        };
        QEventLoop loop;
        onChange = [&] {
            if (!isBusy()) loop.quit();
        };
        QTimer::singleShot(30s, &loop, &QEventLoop::quit);
        if (isBusy()) loop.exec();
        onChange = {};
        EXPECT_FALSE(isBusy()) << "the network came to no end";
        return updater->state();
    }
    UpdaterState check() {
        updater->checkForUpdates();
        return settle();
    }
    UpdaterState download() {
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
    /// Whether the last thing failed, with words that begin so.
    ::testing::AssertionResult failed(const std::string& words) const {
        const UpdaterState state = updater->state();
        const auto* failure = std::get_if<UpdaterState::Failed>(&state.value);
        if (failure && failure->text.starts_with(words)) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << (failure ? failure->text : "no failure");
    }
    QStringList downloaded() const {
        return QDir(QString::fromStdString(settings.downloadFolder)).entryList(QDir::Files);
    }

    const TemporaryFolder folder;
    HTTPSServer server;
    std::array<std::uint8_t, crypto_sign_PUBLICKEYBYTES> publicKey{};
    std::array<std::uint8_t, crypto_sign_SECRETKEYBYTES> secretKey{};
    UpdateRelease release;
    FeedUpdater::Settings settings;
    std::shared_ptr<DispatchQueue> main = dispatcher.makeQueue("main", QualityOfService::standard);
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
};

TEST_F(FeedUpdaterTest, an_update_goes_as_far_as_the_user_wants_and_no_further) {
    start();
    EXPECT_EQ(updater->lastUpdateCheckDate(), std::nullopt);
    EXPECT_TRUE(check().is<UpdaterState::Available>()) << failed("");
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(updater->lastUpdateCheckDate(), wallClock.moment);
    ASSERT_EQ(server.requests.size(), 1U) << "nothing is fetched before the user wants it";
    EXPECT_NE(server.requests[0].find("User-Agent: Tessara\r\n"), std::string::npos);
    EXPECT_NE(server.requests[0].find("Accept-Language: *\r\n"), std::string::npos);

    server.answers[packagePath] = HTTPSServer::redirect("/elsewhere");
    server.answers["/elsewhere"] = HTTPSServer::answer(packageBytes);
    EXPECT_EQ(download(), UpdaterState{UpdaterState::Verified{release.version}}) << failed("");
    updater->checkForUpdates();
    EXPECT_EQ(questions, 3) << "what is there already is asked about again";
    EXPECT_TRUE(installer.opened.empty());

    updater->installUpdate();
    EXPECT_EQ(updater->state(), UpdaterState{UpdaterState::HandedOver{release.version}});
    EXPECT_EQ(installer.opened, std::vector{settings.downloadFolder + packagePath});
    EXPECT_EQ(downloaded().size(), 1);

    settings.current = release.version;
    start();
    EXPECT_TRUE(downloaded().isEmpty()) << "what an earlier run left is cleared away";
    EXPECT_TRUE(check().is<UpdaterState::UpToDate>());
}

TEST_F(FeedUpdaterTest, what_is_off_by_one_anywhere_is_refused_deleted_and_told) {
    const std::string noSignature =
        "The download does not bear Tessara's signature for this version, so it was deleted.";
    const std::string tooShort = "The download has 999999 bytes and should have 1000000, so it was";
    const std::string tooLong = "The server sent more than the 1000000 bytes that are allowed.";
    std::string bytes;
    const auto rename = [&] {
        release.url = server.url("/tessara_1.5_amd64.sh");
        server.answers["/tessara_1.5_amd64.sh"] = HTTPSServer::answer(packageBytes);
    };
    const std::vector<std::pair<std::function<void()>, std::string>> cases{
        {[&] { bytes.front() ^= 1; }, noSignature},
        {[&] { bytes.back() ^= 1; }, noSignature},
        {[&] { bytes.pop_back(); }, tooShort},
        {[&] { bytes += 'p'; }, tooLong},
        {[&] { bytes += 'p', ++release.lengthInBytes; }, noSignature},
        {[&] { release.signature[40] ^= 1; }, noSignature},
        {[&] { release.version.version = "1.6"; }, noSignature},
        {[&] { ++release.version.build; }, noSignature},
        {rename, noSignature},
        {[&] { crypto_sign_keypair(publicKey.data(), secretKey.data()), sign(); }, noSignature},
    };
    const UpdateRelease good = release;
    for (std::size_t index = 0; index < cases.size(); ++index) {
        SCOPED_TRACE(index);
        release = good;
        bytes = packageBytes;
        cases[index].first();
        offer(bytes);
        start();
        ASSERT_TRUE(check().is<UpdaterState::Available>()) << failed("");
        download();
        EXPECT_TRUE(failed("Tessara could not download the update. " + cases[index].second));
        updater->installUpdate();
        EXPECT_TRUE(downloaded().isEmpty() && installer.opened.empty());
    }
}

TEST_F(FeedUpdaterTest, what_is_not_verified_stored_or_wanted_leaves_nothing_behind) {
    start();
    check();
    ASSERT_TRUE(download().is<UpdaterState::Verified>()) << failed("");
    folder.write("updates" + std::string(packagePath), std::string(packageBytes.size(), 'q'));
    updater->installUpdate();
    EXPECT_TRUE(failed("Tessara could not hand over the update. The download does not bear"));
    EXPECT_TRUE(downloaded().isEmpty() && installer.opened.empty()) << "it changed meanwhile";

    installer.refusal = "No application opens it.";
    check();
    download();
    updater->installUpdate();
    EXPECT_TRUE(failed("Tessara could not hand over the update. No application opens it."));
    updater->dismissUpdate();
    EXPECT_EQ(downloaded().size(), 1) << "a good package is left for the user to open";

    check();
    updater->downloadUpdate();
    EXPECT_FALSE(updater->canCheckForUpdates());
    EXPECT_EQ(downloaded().size(), 1);
    updater->dismissUpdate();
    EXPECT_TRUE(updater->state().is<UpdaterState::Idle>() && downloaded().isEmpty());

    // A folder that cannot be made, and one that is somebody else's.
    const std::string others = folder.write("others/file", "");
    std::filesystem::create_symlink("others", folder.path("link"));
    for (const std::string& bad : {others + "/updates", folder.path("link")}) {
        settings.downloadFolder = bad;
        start();
        check();
        download();
        EXPECT_TRUE(failed("Tessara could not download the update. “" + bad)) << bad;
    }
    EXPECT_EQ(downloaded(), QStringList{QStringLiteral("file")});
}

TEST_F(FeedUpdaterTest, a_bad_server_is_an_error_and_nothing_else) {
    const auto endless = [](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + QByteArray(1 << 20, ' '));
    };
    const auto silent = [this](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n<updates");
        QTimer::singleShot(0ms, &socket, [this] { dispatcher.advance(30s); });
    };
    const auto cutOff = [](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n<updates");
        socket.disconnectFromHost();
    };
    const auto other = [this](ProgramVersion version, std::string url = "https://a.example/a.deb") {
        UpdateRelease changed = release;
        changed.version = std::move(version);
        changed.url = std::move(url);
        return HTTPSServer::answer(feedOf(changed));
    };
    const std::string plain = "http://updates.example/a.deb";
    const std::string sentOn = "The server sent Tessara on to “";
    const std::string offers = "The feed offers version ";
    const std::vector<std::pair<HTTPSServer::Answer, std::string>> answers{
        {endless, "The server sent more than the 65536 bytes that are allowed."},
        {silent, "The server did not answer in time."},
        {cutOff, "The transfer failed: "},
        {HTTPSServer::answer("", "404 Not Found"), "The transfer failed: "},
        {HTTPSServer::answer(feedOf(release), "203 Changed"),
         "The server answered with the status"},
        {HTTPSServer::answer("<html></html>"), "The update feed is not in order: "},
        {HTTPSServer::redirect(plain), sentOn + plain + "”, which is not a secure address."},
        {HTTPSServer::redirect("file:///etc/passwd"), sentOn + "file:"},
        {HTTPSServer::redirect("/feed.xml"), "The server sent Tessara on more than 5 times."},
        {other({"1.4", 99}), offers + "1.4 (build 99), which is not newer than this one."},
        {other({"1.5", 100}), offers + "1.5 (build 100), which is not newer than this one."},
        {other({"1.3", 101}), offers + "1.3 (build 101), which is not newer than this one."},
        {other({"1.5", 101}, plain), "The update's address is not a secure one."},
        {other({"1.5", 101}, "file:///bin/sh"), "The update's address is not a secure one."},
    };
    start();
    for (const auto& [answer, words] : answers) {
        server.answers["/feed.xml"] = answer;
        check();
        EXPECT_TRUE(failed("Tessara could not check for updates. " + words)) << words;
    }
    const std::size_t asked = server.requests.size();
    server.setTrusted(false);
    check();
    EXPECT_TRUE(failed("Tessara could not check for updates. The transfer failed: "));
    EXPECT_EQ(server.requests.size(), asked) << "one that does not prove its name is told nothing";
    server.setTrusted(true);

    offer(packageBytes);
    EXPECT_TRUE(check().is<UpdaterState::Available>()) << failed("");
    server.answers[packagePath] = HTTPSServer::redirect(plain);
    download();
    EXPECT_TRUE(failed("Tessara could not download the update. " + sentOn));
    EXPECT_TRUE(downloaded().isEmpty());
}

TEST_F(FeedUpdaterTest, a_server_that_sends_little_by_little_is_not_waited_for_without_end) {
    server.answers["/feed.xml"] = [this](QTcpSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n");
        const auto drip = [this, &socket] {
            socket.write("<");
            socket.flush();
            dispatcher.advance(15s);
        };
        for (int drop = 1; drop <= 4; ++drop)
            QTimer::singleShot(drop * 50ms, &socket, drip);
    };
    start();
    check();
    EXPECT_TRUE(failed("Tessara could not check for updates. The server did not answer in time."));
}

TEST_F(FeedUpdaterTest, looks_once_a_day_and_an_hour_after_a_failure_while_it_is_switched_on) {
    const std::string feed = folder.write("feed.xml", feedOf(release));
    settings.feedURL = "file://" + feed;
    settings.transport = UpdateTransport::alsoFilesForTesting;
    settings.current = release.version;
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
    wallClock.moment += 20h;
    EXPECT_EQ(hoursUntilCheck(30), 4) << "the computer slept";

    folder.write("feed.xml", "");
    EXPECT_EQ(hoursUntilCheck(24), -1);
    EXPECT_TRUE(failed("Tessara could not check for updates. "));
    folder.write("feed.xml", feedOf(release));
    EXPECT_LE(hoursUntilCheck(2), 1);

    updater->setAutomaticallyChecksForUpdates(false);
    EXPECT_EQ(hoursUntilCheck(48), -1);
    updater->setAutomaticallyChecksForUpdates(true);
    EXPECT_EQ(hoursUntilCheck(1), 0);
    wallClock.moment -= 24h * 365;
    start(true);
    EXPECT_EQ(hoursUntilCheck(1), 0) << "the clock was put right meanwhile";

    defaults.set("updates.lastCheck", std::numeric_limits<std::int64_t>::min());
    start(true);
    EXPECT_EQ(hoursUntilCheck(1), 0) << "no clock shows that moment";

    settings.current = {"1.0", 1};
    start();
    ASSERT_TRUE(check().is<UpdaterState::Available>()) << failed("");
    updater->setAutomaticallyChecksForUpdates(true);
    EXPECT_EQ(hoursUntilCheck(48), -1) << "what waits for an answer is left to wait";
    updater->dismissUpdate();
    EXPECT_EQ(hoursUntilCheck(30), 24) << "what was answered is not asked at once again";
}

TEST_F(FeedUpdaterTest, a_copy_without_a_feed_a_key_or_a_secure_address_asks_nobody) {
    const std::string sentence = "Tessara could not check for updates. ";
    settings.feedURL = "file://" + folder.write("feed.xml", feedOf(release));
    start();
    check();
    EXPECT_TRUE(failed(sentence + "The feed's address is not a secure one."));
    settings.publicKey = "none";
    start();
    check();
    EXPECT_TRUE(failed(sentence + "This copy of Tessara has no key to verify them."));

    settings.feedURL.clear();
    start(true);
    updater->checkForUpdates();
    updater->dismissUpdate();
    EXPECT_TRUE(updater->state().is<UpdaterState::NotConfigured>());
    EXPECT_FALSE(updater->canCheckForUpdates() || updater->feedURL());
}

TEST_F(FeedUpdaterTest, a_release_signed_with_the_script_verifies) {
    const QString key = QString::fromStdString(folder.path("key.pem"));
    const QString package = QString::fromStdString(folder.write("package", packageBytes));
    testing::outputOf("openssl", {"genpkey", "-algorithm", "ed25519", "-out", key});
    const QByteArray encoded =
        testing::outputOf("openssl", {"pkey", "-in", key, "-pubout", "-outform", "DER"});
    settings.publicKey = encoded.right(32).toBase64().toStdString();
    const QByteArray element = testing::outputOf(
        SIGN_UPDATE, {key, "1.5", "101", QString::fromStdString(release.url), package});
    server.answers["/feed.xml"] =
        HTTPSServer::answer("<updates format=\"1\">" + element.toStdString() + "</updates>");
    start();
    EXPECT_TRUE(check().is<UpdaterState::Available>()) << failed("");
    EXPECT_TRUE(download().is<UpdaterState::Verified>()) << failed("");
}

}  // namespace
}  // namespace tessara
