#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

#include <QtQml/qqmlregistration.h>

namespace tessara {

/// Something that the user should know, shown above the pages, with what can be done about it. It
/// never changes; what has changed is another notice.
class Notice : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("notices are made by their view-model")
    Q_PROPERTY(Kind kind READ kind CONSTANT)
    Q_PROPERTY(QString symbol READ symbol CONSTANT)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString message READ message CONSTANT)
    Q_PROPERTY(QStringList actions READ actions CONSTANT)

  public:
    enum class Kind {
        informational,  ///< a state that the user chose
        warning,        ///< something is missing, and the program does less
        problem         ///< something is wrong with the user's data
    };
    Q_ENUM(Kind)

    struct Action {
        /// What its button says.
        QString text;
        std::function<void()> perform;
    };

    /// Title and message are shown as they are; the actions stand in their order beneath.
    Notice(Kind kind, QString title, QString message, std::vector<Action> actions,
           QObject* parent = nullptr);

    [[nodiscard]] Kind kind() const { return kind_; }
    /// The symbol of the kind, by its name in the program's set.
    [[nodiscard]] QString symbol() const;
    [[nodiscard]] const QString& title() const { return title_; }
    [[nodiscard]] const QString& message() const { return message_; }
    /// The texts of the actions, in order.
    [[nodiscard]] QStringList actions() const;
    /// Performs the action at `index`, which may well be the end of this notice. An index that
    /// `actions` does not have stops the process.
    Q_INVOKABLE void perform(int index);

    /// Whether both show the same.
    [[nodiscard]] bool looksLike(const Notice& other) const;

  private:
    const Kind kind_;
    const QString title_;
    const QString message_;
    const std::vector<Action> actions_;
};

}  // namespace tessara
