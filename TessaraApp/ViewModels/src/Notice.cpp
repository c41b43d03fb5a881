#include "TessaraApp/ViewModels/Notice.h"

#include <utility>

#include "TessaraCore/Precondition.h"

namespace tessara {

Notice::Notice(Kind kind, QString title, QString message, std::vector<Action> actions,
               QObject* parent)
    : QObject(parent),
      kind_(kind),
      title_(std::move(title)),
      message_(std::move(message)),
      actions_(std::move(actions)) {}

QString Notice::symbol() const {
    switch (kind_) {
        case Kind::informational:
            return QStringLiteral("info.circle.fill");
        case Kind::warning:
            return QStringLiteral("exclamationmark.triangle.fill");
        case Kind::problem:
            return QStringLiteral("xmark.octagon.fill");
    }
    preconditionFailed("a notice is of one of three kinds");
}

QStringList Notice::actions() const {
    QStringList texts;
    for (const Action& action : actions_)
        texts.append(action.text);
    return texts;
}

void Notice::perform(int index) {
    TESSARA_PRECONDITION(index >= 0 && std::cmp_less(index, actions_.size()),
                         "a notice has only the actions that it shows");
    const std::function<void()> perform = actions_[static_cast<std::size_t>(index)].perform;
    perform();
}

bool Notice::looksLike(const Notice& other) const {
    return kind_ == other.kind_ && title_ == other.title_ && message_ == other.message_ &&
           actions() == other.actions();
}

}  // namespace tessara
