#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "NamedPipe.h"
#include "Platform/Linux/LinuxEventTapService.h"
#include "Platform/Linux/LinuxPermissionHelp.h"
#include "Platform/Linux/LinuxPermissionService.h"
#include "Support/TemporaryFolder.h"

namespace tessara {
namespace {

TEST(LinuxPermissionHelp, the_password_is_asked_for_on_our_behalf_and_once_at_a_time) {
    const TemporaryFolder folder;
    const NamedPipe told(folder.path("told"));
    const NamedPipe answer(folder.path("answer"));
    const std::string pkexec = folder.write(
        "pkexec", "#!/bin/sh\nprintf '%s %s\\nend\\n' $PPID \"$*\" >" + folder.path("told") +
                      "\nread -r answer <" + folder.path("answer") + "\n");
    ASSERT_EQ(::chmod(pkexec.c_str(), 0755), 0);
    ::setenv("PATH", (folder.path("") + ":/usr/bin:/bin").c_str(), 1);
    const auto answerAndWait = [&] {
        answer.writeLine();
        siginfo_t ended{};
        EXPECT_EQ(::waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT), 0);
    };

    const LinuxPermissionService permissions({});
    LinuxPermissionHelp help(permissions, "/opt/grant access");
    const std::string asked = std::to_string(::getpid()) + " /opt/grant access\nend\n";
    help.grant();
    EXPECT_EQ(told.readToEnd(), asked);
    help.grant();
    answerAndWait();
    help.grant();
    EXPECT_EQ(told.readToEnd(), asked) << "again, but not while it was being asked";
    answerAndWait();
    EXPECT_GT(::waitpid(-1, nullptr, 0), 0) << "the last one stays for whoever asks next";
}

}  // namespace
}  // namespace tessara
