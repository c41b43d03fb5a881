#include "Platform/Simulated/SimulatedFileSystem.h"

#include <utility>

namespace tessara {
namespace {

const char* words(FileError::Kind kind) {
    switch (kind) {
        case FileError::Kind::notFound:
            return "No such file or directory";
        case FileError::Kind::notPermitted:
            return "Permission denied";
        case FileError::Kind::isFolder:
            return "Is a directory";
        case FileError::Kind::alreadyExists:
            return "File exists";
        case FileError::Kind::noSpace:
            return "No space left on device";
        case FileError::Kind::tooLarge:
            return "File too large";
        case FileError::Kind::other:
            break;
    }
    return "Input/output error";
}

std::unexpected<FileError> failed(const std::string& path, FileError::Kind kind) {
    return std::unexpected(FileError{kind, "“" + path + "”: " + words(kind) + "."});
}

}  // namespace

std::expected<void, FileError> SimulatedFileSystem::begin(Step step,
                                                          const std::string& path) const {
    const std::size_t number = stepCount_++;
    if (crash_ && crash_->first == number) hasCrashed_ = true;
    if (hasCrashed_) return failed(path, FileError::Kind::other);
    if (failure_ && failure_->first == number) return failed(path, failure_->second);
    if (const auto it = everyFailure_.find(step); it != everyFailure_.end()) {
        return failed(path, it->second);
    }
    return {};
}

std::expected<bool, FileError> SimulatedFileSystem::exists(const std::string& path) const {
    if (auto may = begin(Step::lookUp, path); !may) return std::unexpected(may.error());
    return visible_.files.contains(path) || visible_.folders.contains(path);
}

std::expected<std::string, FileError> SimulatedFileSystem::read(const std::string& path,
                                                                std::size_t maximumSize) const {
    if (auto may = begin(Step::read, path); !may) return std::unexpected(may.error());
    if (visible_.folders.contains(path)) return failed(path, FileError::Kind::isFolder);
    const auto file = visible_.files.find(path);
    if (file == visible_.files.end()) return failed(path, FileError::Kind::notFound);
    if (file->second.size() > maximumSize) return failed(path, FileError::Kind::tooLarge);
    return file->second;
}

std::expected<void, FileError> SimulatedFileSystem::replaceAtomically(const std::string& path,
                                                                      std::string_view contents) {
    const std::string temporary = path + ".temporary";
    if (auto may = begin(Step::createTemporary, path); !may) return may;
    if (visible_.folders.contains(path)) return failed(path, FileError::Kind::isFolder);
    if (!visible_.folders.contains(folderOf(path))) {
        return failed(path, FileError::Kind::notFound);
    }
    visible_.files[temporary];

    // A crash leaves the temporary file behind; a failure takes it away again.
    const auto giveUp = [&](std::expected<void, FileError> why) {
        if (!hasCrashed_) visible_.files.erase(temporary);
        return why;
    };
    if (auto may = begin(Step::writeTemporary, path); !may) return giveUp(may);
    visible_.files[temporary] = contents;
    if (auto may = begin(Step::syncTemporary, path); !may) return giveUp(may);
    durable_.files[temporary] = contents;
    if (auto may = begin(Step::renameIntoPlace, path); !may) return giveUp(may);
    visible_.files.erase(temporary);
    visible_.files[path] = contents;
    if (auto may = begin(Step::syncFolder, path); !may) return may;
    sync();
    return {};
}

std::expected<void, FileError> SimulatedFileSystem::rename(const std::string& from,
                                                           const std::string& to) {
    if (auto may = begin(Step::rename, from); !may) return may;
    const auto file = visible_.files.find(from);
    if (file == visible_.files.end()) return failed(from, FileError::Kind::notFound);
    if (visible_.files.contains(to) || visible_.folders.contains(to)) {
        return failed(to, FileError::Kind::alreadyExists);
    }
    std::string contents = std::move(file->second);
    visible_.files.erase(file);
    visible_.files[to] = std::move(contents);
    if (auto may = begin(Step::syncFolder, from); !may) return may;
    sync();
    return {};
}

std::expected<void, FileError> SimulatedFileSystem::remove(const std::string& path) {
    if (auto may = begin(Step::remove, path); !may) return may;
    if (visible_.folders.contains(path)) return failed(path, FileError::Kind::isFolder);
    if (visible_.files.erase(path) == 0) return failed(path, FileError::Kind::notFound);
    if (auto may = begin(Step::syncFolder, path); !may) return may;
    sync();
    return {};
}

std::expected<void, FileError> SimulatedFileSystem::createFolders(const std::string& path) {
    if (visible_.folders.contains(path)) return {};
    if (auto may = createFolders(folderOf(path)); !may) return may;
    if (auto may = begin(Step::createFolder, path); !may) return may;
    if (visible_.files.contains(path)) return failed(path, FileError::Kind::alreadyExists);
    visible_.folders.insert(path);
    sync();
    return {};
}

void SimulatedFileSystem::addFolders(const std::string& path) {
    if (!visible_.folders.insert(path).second) return;
    addFolders(folderOf(path));
}

void SimulatedFileSystem::putFile(const std::string& path, std::string contents) {
    addFolders(folderOf(path));
    visible_.files[path] = std::move(contents);
    sync();
}

void SimulatedFileSystem::putFolder(const std::string& path) {
    addFolders(path);
    sync();
}

std::optional<std::string> SimulatedFileSystem::contents(const std::string& path) const {
    const auto file = visible_.files.find(path);
    return file == visible_.files.end() ? std::nullopt : std::optional(file->second);
}

std::vector<std::string> SimulatedFileSystem::files() const {
    std::vector<std::string> paths;
    paths.reserve(visible_.files.size());
    for (const auto& [path, contents] : visible_.files)
        paths.push_back(path);
    return paths;
}

void SimulatedFileSystem::failAtStep(std::size_t number, FileError::Kind kind) {
    failure_.emplace(number, kind);
}

void SimulatedFileSystem::failEvery(Step step, std::optional<FileError::Kind> kind) {
    everyFailure_.erase(step);
    if (kind) everyFailure_.emplace(step, *kind);
}

void SimulatedFileSystem::crashAtStep(std::size_t number, UnsyncedWork unsynced) {
    crash_.emplace(number, unsynced);
}

void SimulatedFileSystem::restart() {
    if (hasCrashed_ && crash_->second == UnsyncedWork::lost) {
        visible_ = durable_;
    } else {
        durable_ = visible_;
    }
    hasCrashed_ = false;
    crash_.reset();
    failure_.reset();
    everyFailure_.clear();
}

}  // namespace tessara
