#include "Platform/Linux/LinuxPermissionHelp.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <glib.h>
#include <sys/wait.h>

#include "DetachedChild.h"
#include "Platform/Linux/LinuxPermissionService.h"

namespace tessara {
namespace {

constexpr const char* programName = "tessara-grant-access";

PermissionFinding finding(const std::string& whenGranted,
                          const std::vector<std::string>& problems) {
    if (problems.empty()) return {.description = whenGranted, .isGranted = true};
    return {.description = fmt::format("{}", fmt::join(problems, " ")), .isGranted = false};
}

}  // namespace

LinuxPermissionHelp::LinuxPermissionHelp(const LinuxPermissionService& permissions,
                                         std::string grantProgram)
    : permissions_(permissions), grantProgram_(std::move(grantProgram)) {}

std::string LinuxPermissionHelp::findGrantProgram(const std::string& folder) {
    namespace fs = std::filesystem;
    for (fs::path above = folder; above.has_relative_path(); above = above.parent_path()) {
        for (const char* place : {"libexec/tessara", "Packaging"}) {
            const fs::path program = above / place / programName;
            std::error_code unknown;
            if (fs::is_regular_file(program, unknown)) return program;
        }
    }
    return programName;
}

std::vector<PermissionFinding> LinuxPermissionHelp::findings() const {
    const LinuxPermissionReport report = permissions_.report();
    // What is limited is granted all the same: the command has nothing to add.
    std::vector<std::string> seen = report.limitations();
    seen.insert(seen.begin(), "Tessara can see the mouse's wheel, buttons and movement.");
    return {finding("Tessara can send scrolling, keys and buttons.", report.postingProblems()),
            finding(fmt::format("{}", fmt::join(seen, " ")), report.listeningProblems()),
            finding("Tessara can read and set the mouse's resolution.", report.speakingProblems())};
}

std::string LinuxPermissionHelp::command() const {
    char* const quoted = g_shell_quote(grantProgram_.c_str());
    std::string command = fmt::format("sudo {}", quoted);
    g_free(quoted);
    return command;
}

void LinuxPermissionHelp::grant() {
    const bool isAsking = asker_ != 0 && ::waitpid(asker_, nullptr, WNOHANG) == 0;
    if (isAsking) return;
    asker_ = 0;
    std::string asker = "pkexec";
    std::string program = grantProgram_;
    std::array<char*, 3> arguments{asker.data(), program.data(), nullptr};
    // A child of this process's own: pkexec asks on behalf of its parent, and refuses an orphan.
    const int flags = detachedSpawnFlags() | G_SPAWN_DO_NOT_REAP_CHILD;
    g_spawn_async(/*working_directory=*/nullptr, arguments.data(), /*envp=*/nullptr,
                  static_cast<GSpawnFlags>(flags), detachChild,
                  /*user_data=*/nullptr, &asker_, /*error=*/nullptr);
}

}  // namespace tessara
