#pragma once

#include "simulated_module.h"

class QCommandLineParser;

namespace simulator {

/// Of the running program, whose own options the parser has already. Help ends it, and so does,
/// with exit code 2, what makes no sense.
Options processOptions(QCommandLineParser &parser);

/// For main to return: says on the standard error output why the program does not start.
int refuseToStart(const QString &reason, int exitCode);

} // namespace simulator
