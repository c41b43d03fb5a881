#pragma once

namespace tessara {

/// Makes the module `Tessara.Desk` known to QML; once, before its window is made.
void registerDeskTypes();

/// Runs the program with its windows on a simulated computer, with the Desk beside them. Needs a
/// display. Answers the process's exit code.
[[nodiscard]] int runDesk(int argc, char** argv);

}  // namespace tessara
