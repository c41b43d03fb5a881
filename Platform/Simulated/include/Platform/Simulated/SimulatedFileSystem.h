#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/FileSystem.h"

namespace tessara {

/// A file system in memory that can fail, or "crash", at each step of each operation. An atomic
/// replacement counts as the five steps that it is on a real disk, so that a test can walk through
/// all of them: run the action once, read `stepCount()`, and run it again with each step broken.
///
/// After a crash every operation fails, as for a process that is gone, until `restart()` brings
/// back what the disk holds. One thread only.
class SimulatedFileSystem final : public FileSystem {
  public:
    /// The steps that can fail, a system call each. An atomic replacement takes the five from
    /// `createTemporary` to `syncFolder`, in this order.
    enum class Step {
        lookUp,
        read,
        createTemporary,
        writeTemporary,
        syncTemporary,
        renameIntoPlace,
        syncFolder,  ///< behind a rename and a removal too
        rename,
        remove,
        createFolder,
    };

    /// What a crash leaves of work that was done but not synced.
    enum class UnsyncedWork { lost, kept };

    [[nodiscard]] std::expected<bool, FileError> exists(const std::string& path) const override;
    [[nodiscard]] std::expected<std::string, FileError> read(
        const std::string& path, std::size_t maximumSize) const override;
    [[nodiscard]] std::expected<void, FileError> replaceAtomically(
        const std::string& path, std::string_view contents) override;
    [[nodiscard]] std::expected<void, FileError> rename(const std::string& from,
                                                        const std::string& to) override;
    [[nodiscard]] std::expected<void, FileError> remove(const std::string& path) override;
    [[nodiscard]] std::expected<void, FileError> createFolders(const std::string& path) override;

    /// Puts a file there, with its folders, as another program would. Takes no step.
    void putFile(const std::string& path, std::string contents);

    /// Puts a folder there, with those that lead to it. Takes no step.
    void putFolder(const std::string& path);

    /// The file's bytes as a reader would see them; nothing when there is no file.
    [[nodiscard]] std::optional<std::string> contents(const std::string& path) const;

    /// All files, sorted by path; leftover temporaries included.
    [[nodiscard]] std::vector<std::string> files() const;

    /// Steps begun so far, failed ones included. A restart does not take it back.
    [[nodiscard]] std::size_t stepCount() const { return stepCount_; }

    /// Lets the step with this number, counted from 0 as `stepCount()` counts, fail.
    void failAtStep(std::size_t number, FileError::Kind kind);

    /// Lets every step of this kind fail from now on, or with nothing, succeed again.
    void failEvery(Step step, std::optional<FileError::Kind> kind);

    /// Lets the process die right before the step with this number takes effect.
    void crashAtStep(std::size_t number, UnsyncedWork unsynced);

    /// Whether the process is gone, until the restart.
    [[nodiscard]] bool hasCrashed() const { return hasCrashed_; }

    /// Begins a new process on what the disk holds. No failure or crash is set any more.
    void restart();

  private:
    struct Disk {
        std::map<std::string, std::string> files;
        std::set<std::string> folders{"/"};
    };

    /// Counts the step and says whether it may take effect.
    std::expected<void, FileError> begin(Step step, const std::string& path) const;
    void addFolders(const std::string& path);
    void sync() { durable_ = visible_; }

    Disk visible_;
    Disk durable_;
    std::map<Step, FileError::Kind> everyFailure_;
    std::optional<std::pair<std::size_t, FileError::Kind>> failure_;
    std::optional<std::pair<std::size_t, UnsyncedWork>> crash_;
    mutable std::size_t stepCount_ = 0;
    mutable bool hasCrashed_ = false;
};

}  // namespace tessara
