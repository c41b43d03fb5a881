#pragma once

class QUrl;

namespace tessara {

/// From where updates may come.
enum class UpdateTransport {
    secureOnly,           ///< HTTPS
    alsoLocalForTesting,  ///< and files, and plain HTTP from this machine itself
};

/// Whether an address may be asked at all. One with a user's name or password in it never may.
[[nodiscard]] bool isAllowed(UpdateTransport transport, const QUrl& url);

/// Whether a server may send a request on to this address; never to a file.
[[nodiscard]] bool isRedirectAllowed(UpdateTransport transport, const QUrl& url);

}  // namespace tessara
