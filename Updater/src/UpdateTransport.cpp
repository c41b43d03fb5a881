#include "Updater/UpdateTransport.h"

#include <QUrl>

namespace tessara {

bool isSecure(const QUrl& url) {
    return url.isValid() && url.scheme() == QLatin1StringView("https") && !url.host().isEmpty() &&
           url.userInfo().isEmpty();
}

bool isAllowed(UpdateTransport transport, const QUrl& url) {
    return isSecure(url) ||
           (transport == UpdateTransport::alsoFilesForTesting && url.isLocalFile());
}

}  // namespace tessara
