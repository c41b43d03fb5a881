#include "Platform/Linux/LinuxShortcutsRunner.h"

#include <array>
#include <utility>

#include <glib.h>

#include "DetachedChild.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

LinuxShortcutsRunner::LinuxShortcutsRunner(std::string folder, std::shared_ptr<DispatchQueue> queue)
    : folder_(std::move(folder)), queue_(std::move(queue)) {}

bool LinuxShortcutsRunner::isName(const std::string& name) {
    return !name.empty() && !name.starts_with('.') && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

void LinuxShortcutsRunner::runShortcut(const std::string& name) {
    if (!isName(name)) return;
    queue_->post([program = folder_ + '/' + name]() mutable {
        std::array<char*, 2> arguments{program.data(), nullptr};
        g_spawn_async(/*working_directory=*/nullptr, arguments.data(), /*envp=*/nullptr,
                      static_cast<GSpawnFlags>(detachedSpawnFlags()), detachChild,
                      /*user_data=*/nullptr, /*child_pid=*/nullptr, /*error=*/nullptr);
    });
}

}  // namespace tessara
