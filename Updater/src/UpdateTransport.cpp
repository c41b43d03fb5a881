#include "Updater/UpdateTransport.h"

#include <QUrl>

namespace tessara {
namespace {

bool isThisMachine(const QString& host) {
    return host == QLatin1StringView("127.0.0.1") || host == QLatin1StringView("localhost");
}

}  // namespace

bool isRedirectAllowed(UpdateTransport transport, const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty()) return false;
    if (url.scheme() == QLatin1StringView("https")) return true;
    return transport == UpdateTransport::alsoLocalForTesting &&
           url.scheme() == QLatin1StringView("http") && isThisMachine(url.host());
}

bool isAllowed(UpdateTransport transport, const QUrl& url) {
    if (transport == UpdateTransport::alsoLocalForTesting && url.isLocalFile()) return true;
    return isRedirectAllowed(transport, url);
}

}  // namespace tessara
