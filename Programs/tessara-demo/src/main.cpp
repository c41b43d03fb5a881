#include <cstdlib>
#include <span>
#include <string_view>

#include <fmt/format.h>

#include "DemoSession.h"
#include "Desk/DeskProgram.h"

namespace {

bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool hasDisplay() {
    return isSet("WAYLAND_DISPLAY") || isSet("DISPLAY") || isSet("QT_QPA_PLATFORM");
}

int playSession() {
    fmt::print("Tessara on a simulated desktop with a simulated mouse, on real threads\n");
    tessara::DemoSession session;
    if (session.play()) return EXIT_SUCCESS;
    fmt::print("The session did not end as it should.\n");
    return EXIT_FAILURE;
}

}  // namespace

/// tessara-demo [--console]: the program on a simulated computer, with its windows; without a
/// display, or when told so, a session that plays by itself in the terminal.
int main(int argc, char** argv) {
    const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
    if (argc > 2 || (argc == 2 && std::string_view(arguments[1]) != "--console")) {
        fmt::print(stderr, "usage: tessara-demo [--console]\n");
        return 2;
    }
    if (argc == 2 || !hasDisplay()) return playSession();
    return tessara::runDesk(argc, argv);
}
