#pragma once

#include "Platform/FileSystem.h"

namespace tessara {

/// The real file system: for the few small files that the program keeps. It is no stream and
/// watches nothing. Errors are errno's, told in a sentence with the path.
///
/// - `replaceAtomically` writes a temporary file beside the target, `{target}.XXXXXX`, syncs it,
///   renames it over the target and syncs the folder (rename(2), fsync(2)). A target that is a
///   symbolic link is followed, so that a document kept elsewhere stays where its owner put it; a
///   link that leads nowhere is an error, and stays. Permissions, owner and group of an existing
///   file are kept, as far as the user may give a file away; hard links, access lists and extended
///   attributes are not. A new file is readable by its owner alone. A crash may leave the temporary
///   file behind.
/// - `rename` never replaces anything (`RENAME_NOREPLACE` of renameat2(2)), and moves a link rather
///   than what it leads to.
/// - `read` takes regular files alone, links followed: a pipe or a device in the file's place is an
///   error and no wait.
/// - `exists` is also true of a link that leads nowhere.
/// - `createFolders` makes folders that the user alone may enter, as the XDG base directories ask.
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
