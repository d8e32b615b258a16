#pragma once

#include "simulated_module.h"

class QCommandLineParser;

namespace simulator {

/// Parses the program's command line. The parser may have further options of its own. Exits with 0
/// if help is requested, and with 2 and a message if the options are invalid.
Options processOptions(QCommandLineParser &parser);

/// Prints the reason to stderr and returns exitCode, for use in main().
int reportStartupError(const QString &reason, int exitCode);

} // namespace simulator
