#include "TessaraApp/ViewModels/SettingsViewModel.h"

#include <algorithm>
#include <utility>

#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraApp/ViewModels/Notice.h"

namespace tessara {

SettingsViewModel::SettingsViewModel(AppModel& model, QObject* parent)
    : QObject(parent),
      model_(model),
      profile_(model),
      profileScope_(model, profile_),
      scrollPage_(model, profile_),
      notices_(makeNotices()) {
    const auto refresh = &SettingsViewModel::refreshNotices;
    connect(&model.store(), &ConfigStore::problemChanged, this, refresh);
    connect(&model.store(), &ConfigStore::lastSaveErrorChanged, this, refresh);
    connect(&model, &AppModel::permissionsChanged, this, refresh);
    connect(&model, &AppModel::statusChanged, this, refresh);
    connect(&model.preferences(), &AppPreferences::isPausedByUserChanged, this, refresh);
}

SettingsViewModel::~SettingsViewModel() = default;

QVariantList SettingsViewModel::tabs() const {
    const auto tab = [](const QString& title, const char* symbol) {
        return QVariant::fromValue(
            SettingsTab{.title = title, .symbol = QString::fromLatin1(symbol)});
    };
    return {tab(tr("Scroll"), "arrow.up.and.down"), tab(tr("Buttons"), "cursorarrow.click"),
            tab(tr("Pointer"), "cursorarrow"),      tab(tr("Profiles"), "square.stack.3d.up"),
            tab(tr("Device"), "computermouse"),     tab(tr("Updates"), "arrow.down.circle")};
}

void SettingsViewModel::setSelectedTab(int index) {
    if (index < 0 || index > static_cast<int>(Tab::updates) || index == selectedTab()) return;
    selectedTab_ = static_cast<Tab>(index);
    Q_EMIT selectedTabChanged();
}

QString SettingsViewModel::windowTitle() const {
    return tabs().at(selectedTab()).value<SettingsTab>().title;
}

QString SettingsViewModel::pageSymbol() const {
    return tabs().at(selectedTab()).value<SettingsTab>().symbol;
}

bool SettingsViewModel::isInProfileScope() const {
    return selectedTab_ <= Tab::pointer;
}

QString SettingsViewModel::tabBarLabel() const {
    return tr("Settings pages");
}

QString SettingsViewModel::comingText() const {
    return tr("This page is still being made.");
}

void SettingsViewModel::setHasTray(bool hasTray) {
    if (std::exchange(hasTray_, hasTray) != hasTray) Q_EMIT hasTrayChanged();
}

QString SettingsViewModel::noTrayText() const {
    return tr(
        "This desktop shows no tray, where Tessara's menu would be. Tessara goes on working "
        "while this window is minimised, and closing it only minimises it.");
}

QString SettingsViewModel::quitText() const {
    return tr("Quit Tessara");
}

QVariantList SettingsViewModel::notices() const {
    QVariantList notices;
    for (const auto& notice : notices_)
        notices.append(QVariant::fromValue(notice.get()));
    return notices;
}

void SettingsViewModel::refreshNotices() {
    auto notices = makeNotices();
    const auto looksLike = [](const auto& a, const auto& b) { return a->looksLike(*b); };
    if (std::ranges::equal(notices, notices_, looksLike)) return;
    std::swap(notices, notices_);
    Q_EMIT noticesChanged();
    // One of them may be what the user has just pressed.
    for (auto& gone : notices)
        gone.release()->deleteLater();
}

std::vector<std::unique_ptr<Notice>> SettingsViewModel::makeNotices() {
    std::vector<std::unique_ptr<Notice>> notices;
    for (const auto make :
         {&SettingsViewModel::makeProblemNotice, &SettingsViewModel::makeSaveNotice,
          &SettingsViewModel::makeStateNotice, &SettingsViewModel::makeLimitationNotice}) {
        if (auto notice = (this->*make)()) notices.push_back(std::move(notice));
    }
    return notices;
}

std::unique_ptr<Notice> SettingsViewModel::makeProblemNotice() {
    const ConfigStore& store = model_.store();
    const auto& problem = store.problem();
    if (!problem) return nullptr;
    const QString message =
        tr("%1 Your file is still on disk at %2.")
            .arg(QString::fromStdString(problem->explanation()), store.fileURL().toLocalFile());
    return std::make_unique<Notice>(
        Notice::Kind::problem, QString::fromStdString(problem->headline()), message,
        std::vector<Notice::Action>{
            {tr("Try Reading It Again"), [this] { model_.retryReadingConfig(); }},
            {tr("Move It Aside And Start Fresh"), [this] { model_.startFreshConfig(); }},
            {tr("Show In Finder"), [this] { model_.revealConfigFile(); }}});
}

std::unique_ptr<Notice> SettingsViewModel::makeSaveNotice() {
    const ConfigStore& store = model_.store();
    if (!store.lastSaveError()) return nullptr;
    const QString why = QString::fromStdString(*store.lastSaveError());
    if (store.problem()) {
        return std::make_unique<Notice>(Notice::Kind::problem,
                                        tr("Your settings file could not be moved aside"), why,
                                        std::vector<Notice::Action>{});
    }
    return std::make_unique<Notice>(
        Notice::Kind::problem, tr("Your settings could not be saved"),
        tr("%1 What you changed is in force, and Tessara tries to save it again at your next "
           "change and when it quits.")
            .arg(why),
        std::vector<Notice::Action>{
            {tr("Save Again"), [this] { model_.store().save(model_.config()); }}});
}

std::unique_ptr<Notice> SettingsViewModel::makeStateNotice() {
    const PermissionState& permissions = model_.permissions();
    if (!permissions.accessibility || !permissions.inputMonitoring) {
        return std::make_unique<Notice>(
            Notice::Kind::warning, tr("Tessara is not allowed to touch your input yet"),
            tr("Everything on these pages is saved, but nothing takes effect until macOS grants "
               "Tessara permission."),
            std::vector<Notice::Action>{
                {tr("Finish Setting Up…"), [this] { Q_EMIT onboardingRequested(); }}});
    }
    if (model_.preferences().isPausedByUser()) {
        return std::make_unique<Notice>(
            Notice::Kind::informational, tr("Tessara is paused"),
            tr("Your mouse behaves exactly as macOS ships it. Changes you make here are saved and "
               "take effect the moment you resume."),
            std::vector<Notice::Action>{{tr("Resume"), [this] { model_.setPausedByUser(false); }}});
    }
    return nullptr;
}

std::unique_ptr<Notice> SettingsViewModel::makeLimitationNotice() {
    const auto& limitation = model_.status().workspaceLimitation;
    if (!limitation || limitation == knownLimitation_) return nullptr;
    return std::make_unique<Notice>(
        Notice::Kind::informational, tr("Profiles cannot follow every application here"),
        QString::fromStdString(*limitation),
        std::vector<Notice::Action>{{tr("Got It"), [this, known = *limitation] {
                                         knownLimitation_ = known;
                                         refreshNotices();
                                     }}});
}

}  // namespace tessara
