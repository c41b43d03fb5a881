#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace tessara {

/// A folder of its own for a test, removed with everything in it. The process stops when there is
/// no room for one.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "tessara-test-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) std::abort();
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The path of a name in the folder; an empty name gives the folder, with a slash at its end.
    [[nodiscard]] std::string path(const std::string& name) const {
        return (path_ / name).string();
    }

    /// Writes a file, with the folders on the way to it, and returns its path.
    std::string write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

  private:
    std::filesystem::path path_;  // constant after construction
};

}  // namespace tessara
