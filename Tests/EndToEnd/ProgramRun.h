#pragma once

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

[[nodiscard]] std::string readWhole(const std::string& path);

}  // namespace tessara
