#include "Updater/UpdateSignature.h"

#include <QByteArray>
#include <QFile>

#include <fmt/core.h>
#include <sodium.h>

#include "FixedBase64.h"
#include "TessaraCore/Precondition.h"

namespace tessara {
namespace {

static_assert(sizeof(UpdatePublicKey) == crypto_sign_PUBLICKEYBYTES);
static_assert(sizeof(UpdateRelease::Signature) == crypto_sign_BYTES);

const unsigned char* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

void initializeSodium() {
    TESSARA_PRECONDITION(sodium_init() >= 0, "the cryptographic library cannot be used");
}

/// The digest of the whole file, if it has just this length.
std::expected<std::string, std::string> sha512Of(const std::string& path, std::uint64_t length) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::unexpected(
            fmt::format("The download could not be read: {}.", file.errorString().toStdString()));
    }
    crypto_hash_sha512_state state;
    crypto_hash_sha512_init(&state);
    std::uint64_t total = 0;
    for (;;) {
        constexpr qint64 step = 64 * 1024;
        const QByteArray chunk = file.read(step);
        if (chunk.isEmpty()) break;
        total += static_cast<std::uint64_t>(chunk.size());
        crypto_hash_sha512_update(&state, bytesOf(chunk),
                                  static_cast<unsigned long long>(chunk.size()));
    }
    if (file.error() != QFileDevice::NoError) {
        return std::unexpected(
            fmt::format("The download could not be read: {}.", file.errorString().toStdString()));
    }
    if (total != length) {
        return std::unexpected(fmt::format(
            "The download has {} bytes and should have {}, so it was deleted.", total, length));
    }
    QByteArray digest(crypto_hash_sha512_BYTES, '\0');
    crypto_hash_sha512_final(&state, reinterpret_cast<unsigned char*>(digest.data()));
    return digest.toHex().toStdString();
}

}  // namespace

std::optional<UpdatePublicKey> updatePublicKey(std::string_view base64) {
    return fixedBase64<sizeof(UpdatePublicKey)>(base64);
}

std::string signedStatement(const UpdateRelease& release, std::string_view packageSHA512) {
    return fmt::format("tessara-update 1\nversion {}\nbuild {}\nlength {}\nfile {}\nsha512 {}\n",
                       release.version.version, release.version.build, release.lengthInBytes,
                       release.fileName, packageSHA512);
}

std::expected<void, std::string> verifyPackage(const std::string& path,
                                               const UpdateRelease& release,
                                               const UpdatePublicKey& key) {
    initializeSodium();
    const auto digest = sha512Of(path, release.lengthInBytes);
    if (!digest) return std::unexpected(digest.error());
    const std::string statement = signedStatement(release, *digest);
    if (crypto_sign_verify_detached(release.signature.data(),
                                    reinterpret_cast<const unsigned char*>(statement.data()),
                                    statement.size(), key.data()) != 0) {
        return std::unexpected(
            "The download does not bear Tessara's signature for this version, so it was deleted.");
    }
    return {};
}

}  // namespace tessara
