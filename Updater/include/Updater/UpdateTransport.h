#pragma once

class QUrl;

namespace tessara {

/// From where updates may come.
enum class UpdateTransport {
    secureOnly,           ///< HTTPS
    alsoFilesForTesting,  ///< and files of this machine
};

/// Whether it is an address of HTTPS. One with a user's name or password in it is none.
[[nodiscard]] bool isSecure(const QUrl& url);

/// Whether an address may be asked at all.
[[nodiscard]] bool isAllowed(UpdateTransport transport, const QUrl& url);

}  // namespace tessara
