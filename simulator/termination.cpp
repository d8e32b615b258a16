#include "termination.h"

#include <csignal>
#include <initializer_list>

#include <sys/signalfd.h>

namespace simulator {

int openTerminationFd()
{
    // A closed stdout must not end the program before it has removed the link.
    std::signal(SIGPIPE, SIG_IGN);

    // Scripts start background jobs with SIGINT ignored, and signalfd does not report ignored
    // signals.
    std::signal(SIGINT, SIG_DFL);

    sigset_t ends;
    sigemptyset(&ends);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ends, number);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    return signalfd(-1, &ends, SFD_CLOEXEC);
}

} // namespace simulator
