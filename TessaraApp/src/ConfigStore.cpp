#include "TessaraApp/ConfigStore.h"

#include <QCoreApplication>
#include <utility>

#include <fmt/core.h>

#include "Platform/FileSystem.h"
#include "Platform/WallClock.h"
#include "TessaraCore/Config.h"
#include "TessaraCore/Overloaded.h"

namespace tessara {
namespace {

using Problem = ConfigStore::Problem;

/// The texts' context for translators.
class Texts {
    Q_DECLARE_TR_FUNCTIONS(ConfigStore)
};

Problem unreadable(const FileError& error) {
    return {Problem::Unreadable{error.description}};
}

Problem problemOf(const ConfigError& error) {
    if (const auto* newer = std::get_if<UnsupportedSchemaVersion>(&error)) {
        return {Problem::NewerSchema{.found = newer->found, .supported = newer->supported}};
    }
    return {Problem::Corrupt{Texts::tr("The file is not in a shape Tessara recognises (%1).")
                                 .arg(QString::fromStdString(description(error)))
                                 .toStdString()}};
}

QUrl fileURLOf(const std::string& path) {
    return QUrl::fromLocalFile(QString::fromStdString(path));
}

}  // namespace

std::string ConfigStore::Problem::headline() const {
    const QString text =
        std::visit(Overloaded{
                       [](const Corrupt&) {
                           return Texts::tr("Your Tessara settings file could not be read");
                       },
                       [](const NewerSchema& newer) {
                           return Texts::tr(
                                      "Your settings were written by a newer version of Tessara "
                                      "(format %1; this build understands %2)")
                               .arg(newer.found)
                               .arg(newer.supported);
                       },
                       [](const Unreadable&) {
                           return Texts::tr("Your Tessara settings file could not be opened");
                       },
                   },
                   value);
    return text.toStdString();
}

std::string ConfigStore::Problem::explanation() const {
    const auto withDetail = [](const std::string& detail) {
        return Texts::tr(
                   "Tessara is running on its factory defaults for now and will not save "
                   "over the file. %1")
            .arg(QString::fromStdString(detail));
    };
    const QString text = std::visit(
        Overloaded{
            [&](const Corrupt& corrupt) { return withDetail(corrupt.detail); },
            [](const NewerSchema&) {
                return Texts::tr(
                    "Tessara is running on its factory defaults and will not save over the file, "
                    "because writing this build's format would throw away the settings the newer "
                    "version added. Install the newer version again, or start fresh.");
            },
            [&](const Unreadable& unread) { return withDetail(unread.detail); },
        },
        value);
    return text.toStdString();
}

ConfigStore::ConfigStore(FileSystem& files, const WallClock& wallClock, std::string path)
    : files_(files), wallClock_(wallClock), path_(std::move(path)) {}

QUrl ConfigStore::fileURL() const {
    return fileURLOf(path_);
}

Config ConfigStore::load() {
    const auto exists = files_.exists(path_);
    if (exists && !*exists) {
        clearProblem();
        return Config::default_();
    }
    const auto bytes =
        exists ? files_.read(path_, maximumFileSizeInBytes) : std::unexpected(exists.error());
    if (!bytes) {
        setProblem(unreadable(bytes.error()));
        return Config::default_();
    }
    auto config = Config::decoded(*bytes);
    if (!config) {
        setProblem(problemOf(config.error()));
        return Config::default_();
    }
    clearProblem();
    return *std::move(config);
}

void ConfigStore::save(const Config& config) {
    if (problem_) return;
    if (const auto made = files_.createFolders(folderOf(path_)); !made) {
        setLastSaveError(made.error().description);
        return;
    }
    const auto bytes = config.encoded();
    if (!bytes) {
        setLastSaveError(description(bytes.error()));
        return;
    }
    if (bytes->size() > maximumFileSizeInBytes) {
        setLastSaveError(
            fmt::format("The settings would take {} bytes, and Tessara reads no more than {}.",
                        bytes->size(), maximumFileSizeInBytes));
        return;
    }
    if (auto error = keepCurrent(*bytes)) {
        setLastSaveError(std::move(error));
        return;
    }
    const auto written = files_.replaceAtomically(path_, *bytes);
    setLastSaveError(written ? std::nullopt : std::optional(written.error().description));
}

std::optional<std::string> ConfigStore::keepCurrent(std::string_view next) {
    const auto exists = files_.exists(path_);
    if (!exists) return exists.error().description;
    if (!*exists) return std::nullopt;
    const auto current = files_.read(path_, maximumFileSizeInBytes);
    if (!current) return current.error().description;
    if (*current == next) return std::nullopt;

    if (Config::decoded(*current)) {
        // The version before is a courtesy: where it cannot be kept, the settings are still saved.
        const auto previous = folderOf(path_) + "/" + std::string(previousFileName);
        static_cast<void>(files_.replaceAtomically(previous, *current));
        return std::nullopt;
    }
    // Somebody else put there what this program cannot read. It may be all that they have.
    const std::string archive = archivePath();
    const auto isTaken = files_.exists(archive);
    if (!isTaken) return isTaken.error().description;
    if (*isTaken) return fmt::format("“{}” is already there.", archive);
    const auto kept = files_.replaceAtomically(archive, *current);
    if (!kept) return kept.error().description;
    setArchivedPath(archive);
    return std::nullopt;
}

bool ConfigStore::startFresh() {
    const std::string archive = archivePath();
    const auto exists = files_.exists(path_);
    if (!exists) {
        setLastSaveError(exists.error().description);
        return false;
    }
    if (*exists) {
        if (const auto moved = files_.rename(path_, archive); !moved) {
            setLastSaveError(moved.error().description);
            return false;
        }
        setArchivedPath(archive);
    }
    clearProblem();
    return true;
}

std::string ConfigStore::archivePath() const {
    return fmt::format("{}/config-{}.unreadable.json", folderOf(path_),
                       wallClock_.localStamp(wallClock_.now()));
}

void ConfigStore::clearProblem() {
    setProblem(std::nullopt);
}

void ConfigStore::setProblem(std::optional<Problem> problem) {
    if (problem == problem_) return;
    problem_ = std::move(problem);
    Q_EMIT problemChanged();
}

void ConfigStore::setArchivedPath(const std::string& path) {
    const QUrl url = fileURLOf(path);
    if (url == archivedFileURL_) return;
    archivedFileURL_ = url;
    Q_EMIT archivedFileURLChanged();
}

void ConfigStore::setLastSaveError(std::optional<std::string> error) {
    if (error == lastSaveError_) return;
    lastSaveError_ = std::move(error);
    Q_EMIT lastSaveErrorChanged();
}

}  // namespace tessara
