#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

namespace tessara {

/// Why a file operation did not happen.
struct FileError {
    enum class Kind {
        notFound,       ///< nothing of that name, or a folder on the way is missing
        notPermitted,   ///< the user may not, or the volume is read-only
        isFolder,       ///< a folder stands where a file was expected
        alreadyExists,  ///< the new name is taken
        noSpace,        ///< the volume or the user's quota is full
        tooLarge,       ///< the file is larger than the caller wants to read
        other,
    };

    /// What a program can act on.
    Kind kind = Kind::other;
    /// A sentence for the user: what was tried, with which file, and the system's own words.
    std::string description;

    bool operator==(const FileError&) const = default;
};

/// Files, as far as the program keeps any: whole files of modest size, replaced as one. Paths are
/// absolute, UTF-8, with '/' between names.
///
/// Operations are synchronous and may take as long as the disk does; they are called on the main
/// executor and never on the event path.
class FileSystem {
  public:
    virtual ~FileSystem() = default;

    /// Whether anything has this name, a folder included. An error when that cannot be told: a
    /// caller that takes an error for "no" would overwrite what it could not see.
    [[nodiscard]] virtual std::expected<bool, FileError> exists(const std::string& path) const = 0;

    /// All the bytes of a regular file, or `tooLarge` when there are more than `maximumSize`.
    [[nodiscard]] virtual std::expected<std::string, FileError> read(
        const std::string& path, std::size_t maximumSize) const = 0;

    /// Makes `contents` the whole of the file, new or old. After success the contents are on the
    /// disk; after a failure, or a crash at any moment, the file is the old one or the new one,
    /// whole. A file that others may not read stays so.
    [[nodiscard]] virtual std::expected<void, FileError> replaceAtomically(
        const std::string& path, std::string_view contents) = 0;

    /// Renames within a folder; the new name must be free.
    [[nodiscard]] virtual std::expected<void, FileError> rename(const std::string& from,
                                                                const std::string& to) = 0;

    /// Removes a file. One that is not there is an error of kind `notFound`.
    [[nodiscard]] virtual std::expected<void, FileError> remove(const std::string& path) = 0;

    /// Makes the folder with all that lead to it; succeeds when it is there.
    [[nodiscard]] virtual std::expected<void, FileError> createFolders(const std::string& path) = 0;
};

/// The folder part of a path: all before the last '/', "/" for a name in the root.
[[nodiscard]] std::string folderOf(const std::string& path);

}  // namespace tessara
