#pragma once

#include <array>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Linux/FileDescriptor.h"

namespace tessara {

/// A pipe with a name, for programs that a test starts: to tell something, or to wait for a word.
class NamedPipe {
  public:
    explicit NamedPipe(const std::string& path) {
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
        // Open at both ends, so that neither side waits for the other to open it.
        if (auto opened = FileDescriptor::open(path, O_RDWR | O_NONBLOCK))
            pipe_ = *std::move(opened);
    }

    /// Everything that comes up to a line "end".
    [[nodiscard]] std::string readToEnd() const {
        std::string text;
        while (!text.ends_with("end\n")) {
            pollfd readable{.fd = pipe_.get(), .events = POLLIN, .revents = 0};
            if (::poll(&readable, 1, 30000) != 1) return text + "(no more came)";
            std::array<char, 512> bytes{};
            const auto count = ::read(pipe_.get(), bytes.data(), bytes.size());
            if (count > 0) text.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

    void writeLine() const { EXPECT_EQ(::write(pipe_.get(), "\n", 1), 1); }

  private:
    FileDescriptor pipe_;
};

}  // namespace tessara
