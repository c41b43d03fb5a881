#include "ProgramRun.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <sys/wait.h>

namespace tessara {
namespace {

namespace fs = std::filesystem;

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

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "tessara-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
}

std::string readWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tessara
