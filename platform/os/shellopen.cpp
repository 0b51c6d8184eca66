#include "quarn/os/ShellOpen.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "qtxt/Text.h"

extern char** environ;

namespace quarn::os {

void ShellOpen(const std::wstring& target) {
    const char* overridden = std::getenv("LATTIX_OPEN_COMMAND");
    const std::string program = (overridden && *overridden) ? overridden : "xdg-open";
    const std::string argument = qtxt::DefaultWideToUTF8(target);

    std::string arg0 = program;
    std::string arg1 = argument;
    char* argv[] = {arg0.data(), arg1.data(), nullptr};
    pid_t child = 0;
    const int error = ::posix_spawnp(&child, program.c_str(), nullptr, nullptr, argv, environ);
    if (error != 0) {
        throw QuarnLog::Exception("quarn::os::ShellOpen", __FILE__,
                                  "posix_spawnp failed for '" + program + "' (opening '" +
                                      argument + "'): " + std::strerror(error));
    }
    QuarnLog::Write(QuarnLog::Level::Debug, "quarn::os::ShellOpen", __FILE__,
                    "opened '" + argument + "' with " + program);
    // The opener usually hands over to a long-lived program; only its exit status is collected so
    // that no zombie is left behind.
    std::thread([child] {
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
    }).detach();
}

}  // namespace quarn::os
