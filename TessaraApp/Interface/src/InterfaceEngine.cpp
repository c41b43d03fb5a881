#include "TessaraApp/Interface/InterfaceEngine.h"

#include <QQmlComponent>
#include <QQuickWindow>

#include "TessaraCore/Precondition.h"

// Made by Qt's tools for each module. They are named here so that the linker keeps them.
// NOLINTBEGIN(misc-use-internal-linkage): they are defined in other files.
void qml_register_types_Tessara_Interface();
void qml_register_types_Tessara_Style();
void qml_register_types_Tessara_ViewModels();
// NOLINTEND(misc-use-internal-linkage)

namespace tessara {

InterfaceEngine::InterfaceEngine() {
    void (*volatile kept)() = &qml_register_types_Tessara_ViewModels;
    kept = &qml_register_types_Tessara_Style;
    kept = &qml_register_types_Tessara_Interface;
    static_cast<void>(kept);
    engine_.addImportPath(QStringLiteral("qrc:/qt/qml"));
    // A module has its types only once something imports it.
    QQmlComponent importer(&engine_);
    importer.setData("import QtQuick\nimport Tessara.Style\nItem {}", {});
    const std::unique_ptr<QObject> imported(importer.create());
    if (!imported) preconditionFailed(qUtf8Printable(importer.errorString()));
}

InterfaceEngine::~InterfaceEngine() = default;

std::unique_ptr<QQuickWindow> InterfaceEngine::makeWindow(const QString& name,
                                                          const QVariantMap& properties,
                                                          const QString& module) {
    QString folder = module;
    folder.replace(QLatin1Char('.'), QLatin1Char('/'));
    QQmlComponent component(&engine_,
                            QUrl(QStringLiteral("qrc:/qt/qml/%1/%2.qml").arg(folder, name)));
    if (!component.isReady()) preconditionFailed(qUtf8Printable(component.errorString()));
    std::unique_ptr<QObject> made(component.createWithInitialProperties(properties));
    if (!made) preconditionFailed(qUtf8Printable(component.errorString()));
    auto* window = qobject_cast<QQuickWindow*>(made.get());
    TESSARA_PRECONDITION(window, "the type is no window");
    std::ignore = made.release();
    return std::unique_ptr<QQuickWindow>(window);
}

Theme& InterfaceEngine::theme() {
    const int type = qmlTypeId("Tessara.Style", 1, 0, "Theme");
    auto* theme = engine_.singletonInstance<Theme*>(type);
    TESSARA_PRECONDITION(theme, "the style module has no theme");
    return *theme;
}

}  // namespace tessara
