#pragma once

#include <QObject>
#include <QStringList>

#include <QtQml/qqmlregistration.h>

namespace tessara {

class AppModel;
class ProfileBinding;

/// The row above a page that says which profile it edits, and how that one relates to the profile
/// in use.
///
/// Main thread. A property that stays equal tells nobody.
class ProfileScopeModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to the settings window")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QStringList names READ names NOTIFY namesChanged)
    Q_PROPERTY(int currentIndex READ currentIndex NOTIFY currentIndexChanged)
    Q_PROPERTY(bool isInUse READ isInUse NOTIFY useChanged)
    Q_PROPERTY(QString useText READ useText NOTIFY useChanged)

  public:
    /// Both outlive this.
    ProfileScopeModel(AppModel& model, ProfileBinding& binding, QObject* parent = nullptr);

    /// What the picker is called.
    [[nodiscard]] QString title() const;
    /// The profiles in the order of the document. Names can stand twice; the index tells.
    [[nodiscard]] const QStringList& names() const { return names_; }
    /// The profile that the pages show, -1 when the document has none.
    [[nodiscard]] int currentIndex() const { return currentIndex_; }
    /// Picks the profile at that index of `names`; another index is ignored.
    Q_INVOKABLE void choose(int index);

    /// Whether the picked profile is the one in use; the text says so, or which one is, or nothing.
    [[nodiscard]] bool isInUse() const { return isInUse_; }
    [[nodiscard]] const QString& useText() const { return useText_; }

  Q_SIGNALS:
    void namesChanged();
    void currentIndexChanged();
    void useChanged();

  private:
    void refreshProfiles();
    void refreshUse();

    AppModel& model_;
    ProfileBinding& binding_;
    QStringList names_;
    int currentIndex_ = -1;
    bool isInUse_ = false;
    QString useText_;
};

}  // namespace tessara
