#include "Platform/Linux/PosixFileSystem.h"

#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Linux/FileDescriptor.h"

namespace tessara {
namespace {

FileError::Kind kindOf(int number) {
    switch (number) {
        case ENOENT:
        case ENOTDIR:
            return FileError::Kind::notFound;
        case EACCES:
        case EPERM:
        case EROFS:
            return FileError::Kind::notPermitted;
        case EISDIR:
            return FileError::Kind::isFolder;
        case EEXIST:
            return FileError::Kind::alreadyExists;
        case ENOSPC:
        case EDQUOT:
            return FileError::Kind::noSpace;
        case EFBIG:
            return FileError::Kind::tooLarge;
        default:
            return FileError::Kind::other;
    }
}

/// `action` reads as in "could not be opened".
FileError failure(const std::string& path, const char* action, int number) {
    return {kindOf(number), "“" + path + "” could not be " + action + ": " +
                                std::system_category().message(number) + "."};
}

std::unexpected<FileError> failed(const std::string& path, const char* action, int number) {
    return std::unexpected(failure(path, action, number));
}

/// A file that is removed again unless it was renamed to its place.
class TemporaryFile {
  public:
    explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
    ~TemporaryFile() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    void keep() { path_.clear(); }

  private:
    std::string path_;
};

int retryInterrupted(auto call) {
    for (;;) {
        const int result = call();
        if (result != -1 || errno != EINTR) return result;
    }
}

/// 0, or the number of the error.
int writeAll(int descriptor, std::string_view contents) {
    while (!contents.empty()) {
        const ssize_t written = ::write(descriptor, contents.data(), contents.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        contents.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

/// Makes a rename or a removal in the folder last. A file system that cannot sync folders answers
/// EINVAL, and has no more to give.
int syncFolder(const std::string& folder) {
    const auto descriptor = FileDescriptor::open(folder, O_RDONLY | O_DIRECTORY);
    if (!descriptor) return descriptor.error();
    if (retryInterrupted([&] { return ::fsync(descriptor->get()); }) != 0 && errno != EINVAL) {
        return errno;
    }
    return 0;
}

/// Where the bytes of a path really are, links followed; the path itself where nothing has its name
/// yet. A link that leads nowhere is an error: its owner may only be waiting for a volume.
std::expected<std::string, int> resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&::free)> real(::realpath(path.c_str(), nullptr), &::free);
    if (real) return std::string(real.get());
    const int number = errno;
    struct stat info{};
    if (number == ENOENT && ::lstat(path.c_str(), &info) != 0 && errno == ENOENT) return path;
    return std::unexpected(number);
}

/// Gives a new file the permissions of the one that it is to replace, and owner and group as far as
/// the user may give them away. What the old group could do is not given to another one.
bool takeOver(int descriptor, const struct stat& old) {
    mode_t mode = old.st_mode & ACCESSPERMS;
    struct stat own{};
    if (::fstat(descriptor, &own) != 0) return false;
    const bool isSame = own.st_uid == old.st_uid && own.st_gid == old.st_gid;
    if (!isSame && ::fchown(descriptor, old.st_uid, old.st_gid) != 0 &&
        ::fchown(descriptor, static_cast<uid_t>(-1), old.st_gid) != 0) {
        mode &= ~static_cast<mode_t>(S_IRWXG);
    }
    return ::fchmod(descriptor, mode) == 0;
}

}  // namespace

std::expected<bool, FileError> PosixFileSystem::exists(const std::string& path) const {
    struct stat info{};
    if (::lstat(path.c_str(), &info) == 0) return true;
    if (errno == ENOENT || errno == ENOTDIR) return false;
    return failed(path, "looked up", errno);
}

std::expected<std::string, FileError> PosixFileSystem::read(const std::string& path,
                                                            std::size_t maximumSize) const {
    // Without O_NONBLOCK a pipe in the file's place would hold up the program for good.
    const auto descriptor = FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (!descriptor) return failed(path, "opened", descriptor.error());

    struct stat info{};
    if (::fstat(descriptor->get(), &info) != 0) return failed(path, "opened", errno);
    if (S_ISDIR(info.st_mode)) return failed(path, "opened", EISDIR);
    if (!S_ISREG(info.st_mode)) return failed(path, "opened", EINVAL);
    if (info.st_size > 0 && static_cast<std::size_t>(info.st_size) > maximumSize) {
        return failed(path, "read", EFBIG);
    }

    std::string contents;
    std::size_t length = 0;
    for (;;) {
        constexpr std::size_t step = 64 * 1024;
        contents.resize(length + step);
        const ssize_t count = ::read(descriptor->get(), contents.data() + length, step);
        if (count < 0) {
            if (errno == EINTR) continue;
            return failed(path, "read", errno);
        }
        length += static_cast<std::size_t>(count);
        if (length > maximumSize) return failed(path, "read", EFBIG);
        if (count == 0) break;
    }
    contents.resize(length);
    return contents;
}

std::expected<void, FileError> PosixFileSystem::replaceAtomically(const std::string& path,
                                                                  std::string_view contents) {
    const auto target = resolved(path);
    if (!target) return failed(path, "written", target.error());
    std::string pattern = *target + ".XXXXXX";
    const FileDescriptor descriptor(::mkostemp(pattern.data(), O_CLOEXEC));
    if (!descriptor) return failed(path, "written", errno);
    TemporaryFile temporary(pattern);

    struct stat old{};
    if (::stat(target->c_str(), &old) == 0) {
        if (S_ISDIR(old.st_mode)) return failed(path, "written", EISDIR);
        if (!takeOver(descriptor.get(), old)) return failed(path, "written", errno);
    }
    if (const int number = writeAll(descriptor.get(), contents)) {
        return failed(path, "written", number);
    }
    if (retryInterrupted([&] { return ::fsync(descriptor.get()); }) != 0) {
        return failed(path, "written", errno);
    }
    if (::rename(temporary.path().c_str(), target->c_str()) != 0) {
        return failed(path, "written", errno);
    }
    temporary.keep();
    if (const int number = syncFolder(folderOf(*target))) return failed(path, "written", number);
    return {};
}

std::expected<void, FileError> PosixFileSystem::rename(const std::string& from,
                                                       const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0) {
        // File systems without that flag say EINVAL; a hard link refuses a taken name as well.
        if (errno != EINVAL) return failed(from, "moved", errno);
        if (::link(from.c_str(), to.c_str()) != 0) return failed(from, "moved", errno);
        if (::unlink(from.c_str()) != 0) return failed(from, "moved", errno);
    }
    if (const int number = syncFolder(folderOf(to))) return failed(from, "moved", number);
    return {};
}

std::expected<void, FileError> PosixFileSystem::remove(const std::string& path) {
    if (::unlink(path.c_str()) != 0) return failed(path, "removed", errno);
    if (const int number = syncFolder(folderOf(path))) return failed(path, "removed", number);
    return {};
}

std::expected<void, FileError> PosixFileSystem::createFolders(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) return {};
    if (const std::string parent = folderOf(path); parent != path && parent != ".") {
        if (auto made = createFolders(parent); !made) return made;
    }
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return failed(path, "created", errno);
    if (!std::filesystem::is_directory(path, error)) return failed(path, "created", ENOTDIR);
    if (const int number = syncFolder(folderOf(path))) return failed(path, "created", number);
    return {};
}

}  // namespace tessara
