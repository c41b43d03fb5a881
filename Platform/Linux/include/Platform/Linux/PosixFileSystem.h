#pragma once

#include "Platform/FileSystem.h"

namespace tessara {

/// The real file system. `replaceAtomically` writes a temporary file beside the target, syncs it,
/// renames it over the target and syncs the folder (rename(2), fsync(2)). A target that is a
/// symbolic link is followed, so that a document kept elsewhere stays where its owner put it. The
/// permissions of an existing file are kept; a new one is readable by its owner alone.
class PosixFileSystem final : public FileSystem {
  public:
    [[nodiscard]] std::expected<bool, FileError> exists(const std::string& path) const override;
    [[nodiscard]] std::expected<std::string, FileError> read(
        const std::string& path, std::size_t maximumSize) const override;
    [[nodiscard]] std::expected<void, FileError> replaceAtomically(
        const std::string& path, std::string_view contents) override;
    [[nodiscard]] std::expected<void, FileError> rename(const std::string& from,
                                                        const std::string& to) override;
    [[nodiscard]] std::expected<void, FileError> remove(const std::string& path) override;
    [[nodiscard]] std::expected<void, FileError> createFolders(const std::string& path) override;
};

}  // namespace tessara
