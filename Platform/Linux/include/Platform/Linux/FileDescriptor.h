#pragma once

#include <cerrno>
#include <expected>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace tessara {

/// A file descriptor that is closed with its owner. It is no stream and knows nothing of what it
/// stands for: reading, writing and waiting are done with the number.
///
/// Not for concurrent use while it changes hands; a descriptor that threads share is shared as a
/// constant.
class FileDescriptor final {
  public:
    /// None.
    FileDescriptor() noexcept = default;

    /// Owns `number` from here on; a negative one, as failed calls return it, is none.
    explicit FileDescriptor(int number) noexcept : number_(number) {}

    ~FileDescriptor() { reset(); }

    FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    /// Opens a path with open(2)'s `flags`, closed on exec in any case. The error is errno's.
    [[nodiscard]] static std::expected<FileDescriptor, int> open(const std::string& path,
                                                                 int flags) {
        for (;;) {
            FileDescriptor opened(::open(path.c_str(), flags | O_CLOEXEC));
            if (opened) return opened;
            if (errno != EINTR) return std::unexpected(errno);
        }
    }

    /// The number, negative for none. It stays this object's to close, and is not to be kept beyond
    /// it: the kernel gives the same number out again.
    [[nodiscard]] int get() const noexcept { return number_; }

    /// Whether it owns one.
    explicit operator bool() const noexcept { return number_ >= 0; }

    /// Lets go of the descriptor without closing it, and answers with its number.
    [[nodiscard]] int release() noexcept { return std::exchange(number_, none); }

    /// Closes what it owns and owns `number` instead. Leaves errno as it was.
    void reset(int number = none) noexcept {
        const int closing = std::exchange(number_, number);
        if (closing < 0) return;
        const int before = errno;
        ::close(closing);
        errno = before;
    }

  private:
    static constexpr int none = -1;

    int number_ = none;
};

}  // namespace tessara
