#include <cstdlib>

#include <fmt/format.h>

#include "DemoSession.h"

int main() {
    fmt::print("Tessara on a simulated desktop with a simulated mouse, on real threads\n");
    tessara::DemoSession session;
    if (session.play()) return EXIT_SUCCESS;
    fmt::print("The session did not end as it should.\n");
    return EXIT_FAILURE;
}
