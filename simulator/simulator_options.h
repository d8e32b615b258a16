#pragma once

#include "simulated_module.h"

class QCommandLineParser;

namespace simulator {

/// What a command line says about the module to be simulated.
struct Options {
    ModuleKind kind = ModuleKind::Universal;
    QString linkPath; ///< empty: a private temporary folder
    SimulatedModule::Faults faults;
    int restartMs = SimulatedModule::defaultRestartMs;
};

void addOptions(QCommandLineParser &parser);

/// False, with a message for the user in error, if an option has a value that makes no sense.
bool readOptions(const QCommandLineParser &parser, Options *options, QString *error);

} // namespace simulator
