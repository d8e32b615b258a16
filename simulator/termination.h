#pragma once

namespace simulator {

/// Returns a descriptor that becomes readable on SIGINT, SIGTERM or SIGHUP. Without it, these
/// signals would end the program before it could remove its link. Call it before any thread starts:
/// a signal ends the program through any thread that does not block it.
int openTerminationFd();

} // namespace simulator
