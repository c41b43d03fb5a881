#include "AccessibleTree.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <cstdlib>

namespace tessara {
namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";

// Numbers of the protocol's enumeration of states.
constexpr unsigned checkedState = 4;
constexpr unsigned focusableState = 11;
constexpr unsigned showingState = 25;

AccessibleTree::Thing registry() {
    return {.service = QStringLiteral("org.a11y.atspi.Registry"),
            .path = QDBusObjectPath(QStringLiteral("/org/a11y/atspi/accessible/root"))};
}

QString addressOfBus() {
    const QDBusReply<QString> address =
        QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
            QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
            QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")));
    return address.value();
}

}  // namespace

AccessibleTree::AccessibleTree()
    : bus_(QDBusConnection::connectToBus(addressOfBus(), QStringLiteral("accessibility"))) {}

QVariantList AccessibleTree::call(const Thing& thing, const char* interface, const char* method,
                                  const QVariantList& arguments) const {
    QDBusMessage call = QDBusMessage::createMethodCall(
        thing.service, thing.path.path(), QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    const QDBusMessage answer = bus_.call(call);
    if (answer.type() != QDBusMessage::ReplyMessage) return {};
    return answer.arguments();
}

std::vector<AccessibleTree::Thing> AccessibleTree::childrenOf(const Thing& thing) const {
    const QVariantList answer = call(thing, accessible, "GetChildren");
    std::vector<Thing> children;
    if (answer.isEmpty()) return children;
    const auto list = answer.constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        Thing child;
        list.beginStructure();
        list >> child.service >> child.path;
        list.endStructure();
        children.push_back(child);
    }
    list.endArray();
    return children;
}

QString AccessibleTree::nameOf(const Thing& thing) const {
    const QVariantList answer = call(thing, "org.freedesktop.DBus.Properties", "Get",
                                     {QLatin1String(accessible), QStringLiteral("Name")});
    if (answer.isEmpty()) return {};
    return answer.constFirst().value<QDBusVariant>().variant().toString();
}

bool AccessibleTree::hasState(const Thing& thing, unsigned state) const {
    const QVariantList answer = call(thing, accessible, "GetState");
    if (answer.isEmpty()) return false;
    constexpr unsigned bitsOfWord = 32;
    QList<quint32> words;
    answer.constFirst().value<QDBusArgument>() >> words;
    const auto word = static_cast<qsizetype>(state / bitsOfWord);
    return word < words.size() && (words.at(word) >> state % bitsOfWord & 1U) != 0;
}

/// Goes through all below a thing; true once the visitor has said so.
template <typename Visit>
bool AccessibleTree::visit(const Thing& thing, Visit visitor) const {
    for (const Thing& child : childrenOf(thing)) {
        if (visitor(child) || visit(child, visitor)) return true;
    }
    return false;
}

std::optional<AccessibleTree::Thing> AccessibleTree::find(const QString& name) const {
    std::optional<Thing> found;
    visit(registry(), [&](const Thing& thing) {
        if (nameOf(thing) != name || !hasState(thing, showingState)) return false;
        found = thing;
        return true;
    });
    return found;
}

bool AccessibleTree::isChecked(const Thing& thing) const {
    return hasState(thing, checkedState);
}

bool AccessibleTree::act(const Thing& thing) const {
    const QVariantList answer = call(thing, "org.a11y.atspi.Action", "DoAction", {0});
    return !answer.isEmpty() && answer.constFirst().toBool();
}

QStringList AccessibleTree::namelessControls() const {
    QStringList roles;
    visit(registry(), [&](const Thing& thing) {
        if (hasState(thing, focusableState) && hasState(thing, showingState) &&
            nameOf(thing).isEmpty())
            roles.append(call(thing, accessible, "GetRoleName").value(0).toString());
        return false;
    });
    return roles;
}

}  // namespace tessara
