#include "TessaraApp/Wording/SystemWording.h"

#include <QCoreApplication>

#include "TessaraCore/Precondition.h"

namespace tessara {

SystemWording::SystemWording() {
#ifdef Q_OS_LINUX
    const bool isLoaded = texts_.load(QStringLiteral(":/tessara/wording/tessara_linux.qm"));
    TESSARA_PRECONDITION(isLoaded, "the texts for Linux are a part of the program");
#endif
    QCoreApplication::installTranslator(&texts_);
}

SystemWording::~SystemWording() {
    QCoreApplication::removeTranslator(&texts_);
}

}  // namespace tessara
