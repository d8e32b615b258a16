#pragma once

#include "simulated_module.h"

class QCommandLineParser;

namespace simulator {

/// Reads the options that the running program was given; the parser may know some more, its own.
/// Ends the program if they ask for help, with exit code 0, or make no sense, with 2 and a message.
Options processOptions(QCommandLineParser &parser);

/// For main to return: says on the standard error output why the program does not start.
int refuseToStart(const QString &reason, int exitCode);

} // namespace simulator
