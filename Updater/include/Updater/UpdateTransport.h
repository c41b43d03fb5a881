#pragma once

class QUrl;

namespace tessara {

/// From where updates may come. Feeds and packages are held to the same.
enum class UpdateTransport {
    secureOnly,           ///< HTTPS, which is all that a copy for users is given
    alsoFilesForTesting,  ///< and files of this machine
};

/// Whether it is an address of HTTPS, with the name of a server. One with a user's name or password
/// in it is none: it would be sent to whoever is asked. Any thread.
[[nodiscard]] bool isSecure(const QUrl& url);

/// Whether an address of the feed's or the program's own may be asked at all. Where a server sends
/// somebody on to is held to `isSecure` in any case. Any thread.
[[nodiscard]] bool isAllowed(UpdateTransport transport, const QUrl& url);

}  // namespace tessara
