#include "TessaraApp/ViewModels/OnboardingViewModel.h"

#include <array>
#include <chrono>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/LaunchAtLogin.h"

namespace tessara {
namespace {

constexpr std::chrono::milliseconds watchInterval{600};

constexpr const char* inputMonitoringLink =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_ListenEvent";
constexpr const char* accessibilityLink =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

bool seesInput(const PermissionState& permissions) {
    return permissions.inputMonitoring &&
           permissions.hidInputMonitoring != HIDPPInputMonitoringAccess::denied;
}

bool hasBoth(const PermissionState& permissions) {
    return permissions.inputMonitoring && permissions.accessibility;
}

}  // namespace

OnboardingViewModel::OnboardingViewModel(AppModel& model, std::shared_ptr<DispatchQueue> mainQueue,
                                         PermissionHelp* help, OpenLink openLink)
    : model_(model),
      mainQueue_(std::move(mainQueue)),
      openLink_(std::move(openLink)),
      help_(help, this),
      content_(contentOf(welcome)) {
    connect(&model_, &AppModel::permissionsChanged, this, &OnboardingViewModel::refresh);
    connect(&model_.launchAtLogin(), &LaunchAtLogin::statusChanged, this,
            &OnboardingViewModel::refresh);
    connect(&model_.launchAtLogin(), &LaunchAtLogin::lastErrorChanged, this,
            &OnboardingViewModel::refresh);
}

OnboardingViewModel::~OnboardingViewModel() = default;

void OnboardingViewModel::setWatching(bool isWatching) {
    if (isWatching == (watching_ != nullptr)) return;
    watching_.reset();
    if (!isWatching) return;
    watching_ =
        mainQueue_->startTimer(mainQueue_->clock().now(), watchInterval, {}, [this] { watch(); });
}

void OnboardingViewModel::watch() {
    model_.refreshPermissions();
    help_.refresh();
    const PermissionState& permissions = model_.permissions();
    if (step() == inputMonitoring && permissions.inputMonitoring) setStep(accessibility);
    if (step() == accessibility && permissions.accessibility) {
        setStep(done);
        model_.restartEngineIfNeeded();
    }
}

void OnboardingViewModel::advance() {
    if (step() != done) {
        setStep(static_cast<Step>(step() + 1));
        return;
    }
    model_.preferences().setHasCompletedOnboarding(true);
    model_.restartEngineIfNeeded();
    Q_EMIT finished();
}

void OnboardingViewModel::goBack() {
    if (canGoBack()) setStep(static_cast<Step>(step() - 1));
}

void OnboardingViewModel::openSettings() {
    if (!isPermissionStep()) return;
    if (!help_.isAvailable()) {
        openLink_(QLatin1String(step() == accessibility ? accessibilityLink : inputMonitoringLink));
        return;
    }
    help_.refresh();
    if (!std::exchange(showsHelp_, true)) Q_EMIT showsHelpChanged();
}

void OnboardingViewModel::setStartsAtLogin(bool starts) {
    model_.launchAtLogin().setEnabled(starts);
}

bool OnboardingViewModel::isPermissionStep() const {
    return step() == inputMonitoring || step() == accessibility;
}

void OnboardingViewModel::setStep(Step step) {
    auto content = contentOf(step);
    if (content == content_) return;
    const bool isAnother = step != content_.step;
    content_ = std::move(content);
    Q_EMIT contentChanged();
    if (isAnother) Q_EMIT stepChanged();
}

void OnboardingViewModel::refresh() {
    setStep(step());
}

OnboardingViewModel::Content OnboardingViewModel::contentOf(Step step) const {
    Content content;
    content.step = step;
    content.progressText = tr("Step %1 of 4").arg(step + 1);
    content.primaryText = step == done ? tr("Start Using Tessara") : tr("Continue");
    switch (step) {
        case welcome:
            describeWelcome(content);
            break;
        case inputMonitoring:
            describeInputMonitoring(content);
            break;
        case accessibility:
            describeAccessibility(content);
            break;
        case done:
            describeDone(content);
            break;
    }
    return content;
}

void OnboardingViewModel::describeWelcome(Content& content) const {
    content.symbol = QStringLiteral("computermouse.fill");
    content.title = tr("Welcome to Tessara");
    content.leadText =
        tr("Tessara makes your Logitech mouse behave the way you expected it to when you bought "
           "it.");
    content.bulletTexts = {
        tr("The scroll wheel glides instead of jumping, especially when ⌘ + wheel is zooming a "
           "canvas."),
        tr("Side buttons can type shortcuts, hold keys, play sequences or drop your DPI while "
           "held."),
        tr("Different settings for different apps, chosen automatically as you switch."),
        tr("Nothing leaves your Mac. Tessara has no account, no telemetry and no background "
           "helper.")};
    content.closingText =
        tr("macOS needs to grant Tessara two permissions before any of that can work. The next two "
           "steps explain what each one is for — in plain terms — and take you straight to the "
           "right page in System Settings.");
}

QVariantList OnboardingViewModel::bullets() const {
    constexpr std::array symbols{"arrow.up.and.down", "cursorarrow.click", "square.stack.3d.up",
                                 "checkmark.circle.fill"};
    QVariantList bullets;
    for (const QString& text : content_.bulletTexts) {
        const auto index = static_cast<std::size_t>(bullets.size());
        bullets.append(QVariant::fromValue(
            OnboardingBullet{.text = text, .symbol = QLatin1String(symbols.at(index))}));
    }
    return bullets;
}

void OnboardingViewModel::describeInputMonitoring(Content& content) const {
    content.symbol = QStringLiteral("computermouse");
    content.title = tr("Let Tessara see your mouse");
    content.leadText =
        tr("Your mouse sends one big jump per wheel click, and Tessara's whole job is to replace "
           "that jump with a smooth glide. To do that it has to see the click arrive. Input "
           "Monitoring is the macOS permission that allows an app to watch input devices.");
    content.detailText =
        tr("It is also what lets Tessara talk to the mouse itself to read and set DPI — your "
           "Logitech mouse presents part of itself as a keyboard, so macOS puts that behind the "
           "same permission.");
    content.howToText =
        tr("System Settings will open on the right page. Find Tessara in the list and switch it "
           "on. You may be asked for your password, and macOS may ask you to quit and reopen "
           "Tessara.");
    switch (model_.permissions().hidInputMonitoring) {
        case HIDPPInputMonitoringAccess::granted:
            break;
        case HIDPPInputMonitoringAccess::denied:
            content.extraText =
                tr("macOS is currently refusing Tessara access to the mouse hardware. Switch "
                   "Tessara on in the list, then quit and reopen it.");
            break;
        case HIDPPInputMonitoringAccess::unknown:
            content.extraText =
                tr("macOS has not been asked about the mouse hardware yet. That decision happens "
                   "the first time Tessara opens the mouse, once this permission is on.");
            break;
    }
    describeGrant(content, seesInput(model_.permissions()), tr("Input Monitoring"));
}

void OnboardingViewModel::describeAccessibility(Content& content) const {
    content.symbol = QStringLiteral("cursorarrow.click");
    content.title = tr("Let Tessara press keys for you");
    content.leadText =
        tr("Seeing an event is not the same as changing one. Accessibility is the permission that "
           "lets Tessara replace the wheel click it swallowed with the smooth scroll it built, and "
           "lets a mouse button type the keyboard shortcut you bound to it.");
    content.detailText =
        tr("Without it, Tessara can watch but not act — the wheel stays exactly as it was and no "
           "button binding fires.");
    content.howToText =
        tr("System Settings will open on the right page. Find Tessara in the list and switch it "
           "on.");
    describeGrant(content, model_.permissions().accessibility, tr("Accessibility"));
}

void OnboardingViewModel::describeGrant(Content& content, bool isGranted,
                                        const QString& heading) const {
    content.asksForGrant = !isGranted;
    content.stateLevel = isGranted ? good : notYet;
    content.stateSymbol =
        isGranted ? QStringLiteral("checkmark.circle.fill") : QStringLiteral("circle.dotted");
    content.stateText =
        isGranted ? tr("%1 is on").arg(heading) : tr("%1 is not on yet").arg(heading);
    content.openSettingsText = tr("Open %1 Settings").arg(heading);
}

QString OnboardingViewModel::watchingText() const {
    return tr("Tessara is watching for the switch and will move on by itself.");
}

QString OnboardingViewModel::promiseText() const {
    return tr(
        "Tessara never pops up a permission dialog on its own — that would interrupt "
        "whatever you were doing. It only ever opens the page and waits.");
}

void OnboardingViewModel::describeDone(Content& content) const {
    const bool isReady = hasBoth(model_.permissions());
    const LaunchAtLogin& login = model_.launchAtLogin();
    content.symbol = QStringLiteral("checkmark");
    content.title = tr("You're set");
    content.stateLevel = isReady ? good : missing;
    content.stateSymbol = isReady ? QStringLiteral("checkmark.circle.fill")
                                  : QStringLiteral("exclamationmark.triangle.fill");
    content.stateText =
        isReady ? tr("Both permissions are on.") : tr("One permission is still missing.");
    content.leadText =
        tr("Tessara lives in the menu bar. Click its icon for a quick pause, or open Settings to "
           "tune the wheel, bind your buttons and set up per-app profiles.");
    content.startsAtLogin = login.isEnabled();
    content.loginStatusText = QString::fromStdString(login.statusText());
    if (login.lastError()) {
        content.loginErrorText =
            tr("macOS refused: %1").arg(QString::fromStdString(*login.lastError()));
    }
    if (!isReady) {
        content.closingText =
            tr("You can close this and come back later — the menu bar icon will keep telling you "
               "something is missing.");
    }
}

}  // namespace tessara
