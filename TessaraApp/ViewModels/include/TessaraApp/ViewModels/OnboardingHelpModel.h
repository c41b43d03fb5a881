#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Platform/PermissionHelp.h"

namespace tessara {

/// One thing that is needed, in a sentence that tells how it stands.
struct OnboardingFinding {
    Q_GADGET
    QML_VALUE_TYPE(onboardingFinding)
    Q_PROPERTY(QString text MEMBER text CONSTANT)
    Q_PROPERTY(bool isGranted MEMBER isGranted CONSTANT)

  public:
    /// What it is, and what is wrong with it if something is.
    QString text;
    bool isGranted = false;
};

/// Where the system's settings have no page for what the program needs: what is missing, and the
/// one command that puts it right.
///
/// Main thread. Findings that stay equal tell nobody.
class OnboardingHelpModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the onboarding")
    Q_PROPERTY(QVariantList findings READ findings NOTIFY findingsChanged)
    Q_PROPERTY(QString commandTitle READ commandTitle CONSTANT)
    Q_PROPERTY(QString command READ command CONSTANT)
    Q_PROPERTY(QString commandHelp READ commandHelp CONSTANT)
    Q_PROPERTY(QString grantText READ grantText CONSTANT)

  public:
    /// Null where the system's settings have pages; there is nothing to show then. The help
    /// outlives this.
    OnboardingHelpModel(PermissionHelp* help, QObject* parent);

    /// Whether there is anything to show. Without, the findings and the command are empty.
    [[nodiscard]] bool isAvailable() const { return help_ != nullptr; }

    /// An `OnboardingFinding` for each thing that is needed.
    [[nodiscard]] QVariantList findings() const;
    /// The command as it is typed into a terminal, what it is called, and what it does.
    [[nodiscard]] QString commandTitle() const;
    [[nodiscard]] QString command() const;
    [[nodiscard]] QString commandHelp() const;
    [[nodiscard]] QString grantText() const;

    /// Lets the system ask for an administrator's password and run the command. Returns at once;
    /// what came of it shows in the findings.
    Q_INVOKABLE void grant();

    /// Looks again how everything stands, and tells what differs. Cheap enough for a watch.
    void refresh();

  Q_SIGNALS:
    void findingsChanged();

  private:
    PermissionHelp* const help_;
    std::vector<PermissionFinding> findings_;
};

}  // namespace tessara
