#include "DetachedChild.h"

#include <csignal>
#include <initializer_list>

#include <glib.h>
#include <unistd.h>

namespace tessara {

void detachChild(void* /*ignored*/) {
    ::setsid();
    sigset_t none{};
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGCHLD})
        ::signal(signal, SIG_DFL);
}

int detachedSpawnFlags() {
    return G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL;
}

}  // namespace tessara
