#include "ProgramRun.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <sys/wait.h>

#include "Support/TemporaryFolder.h"

namespace tessara {
namespace {

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

}  // namespace

ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments) {
    const TemporaryFolder folder;
    std::string command = quoted(program);
    for (const std::string& argument : arguments)
        command += ' ' + quoted(argument);
    command += " >" + quoted(folder.path("out")) + " 2>" + quoted(folder.path("err"));
    const int status = std::system(command.c_str());
    return {.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            .out = readWhole(folder.path("out")),
            .err = readWhole(folder.path("err"))};
}

std::string readWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tessara
