#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tessara {

/// How a program ended and what it wrote.
struct ProgramRun {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs `program` to its end.
[[nodiscard]] ProgramRun runProgram(const std::string& program,
                                    const std::vector<std::string>& arguments);

/// A folder of its own for a test, removed with everything in it.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string path(const std::string& name) const {
        return (path_ / name).string();
    }
    /// Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& content) const;

  private:
    std::filesystem::path path_;  // constant after construction
};

[[nodiscard]] std::string readWhole(const std::string& path);

}  // namespace tessara
