#include "TrayHost.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>

namespace tessara {
namespace {

constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";

/// The watcher's name on the bus.
QString watcherName() {
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

QDBusMessage callOf(const QString& service, const QString& path, const char* interface,
                    const char* method, const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, QLatin1String(interface),
                                                       QLatin1String(method));
    call.setArguments(arguments);
    return call;
}

QString textOf(const QVariantMap& properties) {
    if (properties.value(QStringLiteral("type")) == QLatin1String("separator")) return "-";
    QString text = properties.value(QStringLiteral("label")).toString();
    text.remove(QLatin1Char('_'));
    if (properties.contains(QStringLiteral("toggle-type"))) {
        const bool isOn = properties.value(QStringLiteral("toggle-state")).toInt() == 1;
        text.prepend(isOn ? "[x] " : "[ ] ");
    }
    return text;
}

}  // namespace

TrayHost::TrayHost() : bus_(QDBusConnection::sessionBus()) {
    bus_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                        QDBusConnection::ExportAllContents);
    bus_.registerService(watcherName());
}

TrayHost::~TrayHost() {
    bus_.unregisterService(watcherName());
    bus_.unregisterObject(QStringLiteral("/StatusNotifierWatcher"));
}

void TrayHost::open() {
    isOpen_ = true;
    Q_EMIT StatusNotifierHostRegistered();
}

void TrayHost::RegisterStatusNotifierItem(const QString& service) {
    items_.append(service);
    Q_EMIT StatusNotifierItemRegistered(service);
}

void TrayHost::RegisterStatusNotifierHost(const QString& /*service*/) {
    Q_EMIT StatusNotifierHostRegistered();
}

QVariant TrayHost::itemProperty(const QString& name) const {
    if (items_.isEmpty()) return {};
    const QDBusMessage answer =
        bus_.call(callOf(items_.last(), QLatin1String(itemPath), "org.freedesktop.DBus.Properties",
                         "Get", {QLatin1String(itemInterface), name}));
    if (answer.arguments().isEmpty()) return {};
    return answer.arguments().constFirst().value<QDBusVariant>().variant();
}

QString TrayHost::title() const {
    // (icon's name, icon's pixels, title, text)
    const auto toolTip = itemProperty(QStringLiteral("ToolTip")).value<QDBusArgument>();
    if (toolTip.currentType() != QDBusArgument::StructureType) return {};
    QString icon;
    QString title;
    toolTip.beginStructure();
    toolTip >> icon;
    toolTip.beginArray();
    while (!toolTip.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray pixels;
        toolTip.beginStructure();
        toolTip >> width >> height >> pixels;
        toolTip.endStructure();
    }
    toolTip.endArray();
    QString text;
    toolTip >> title >> text;
    toolTip.endStructure();
    return title;
}

std::vector<TrayHost::Line> TrayHost::lines() const {
    const QString path = itemProperty(QStringLiteral("Menu")).value<QDBusObjectPath>().path();
    if (path.isEmpty()) return {};
    constexpr int root = 0;
    constexpr int direct = 1;
    const QDBusMessage answer = bus_.call(
        callOf(items_.last(), path, menuInterface, "GetLayout", {root, direct, QStringList()}));
    if (answer.arguments().size() < 2) return {};
    // (id, properties, children), and each child is the same in a variant
    const auto layout = answer.arguments().at(1).value<QDBusArgument>();
    std::vector<Line> lines;
    int id = 0;
    QVariantMap properties;
    layout.beginStructure();
    layout >> id >> properties;
    layout.beginArray();
    while (!layout.atEnd()) {
        QDBusVariant variant;
        layout >> variant;
        const auto child = variant.variant().value<QDBusArgument>();
        child.beginStructure();
        QVariantList ofSubmenu;
        child >> id >> properties >> ofSubmenu;
        child.endStructure();
        if (properties.value(QStringLiteral("visible"), true).toBool())
            lines.push_back({.id = id, .text = textOf(properties)});
    }
    layout.endArray();
    layout.endStructure();
    return lines;
}

QStringList TrayHost::menu() const {
    QStringList texts;
    for (const Line& line : lines())
        texts.append(line.text);
    return texts;
}

bool TrayHost::click(const QString& text) const {
    for (const Line& line : lines()) {
        if (!line.text.endsWith(text)) continue;
        const QString path = itemProperty(QStringLiteral("Menu")).value<QDBusObjectPath>().path();
        const QVariant nothing = QVariant::fromValue(QDBusVariant(QString()));
        const QDBusMessage answer =
            bus_.call(callOf(items_.last(), path, menuInterface, "Event",
                             {line.id, QStringLiteral("clicked"), nothing, 0U}));
        return answer.type() == QDBusMessage::ReplyMessage;
    }
    return false;
}

}  // namespace tessara
