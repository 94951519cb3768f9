// How the command-line programs parse their options, and how they end. Apart
// from program.h, since CLI11 takes seconds to compile.
#ifndef KORVAN_TOOLS_COMMAND_LINE_H_
#define KORVAN_TOOLS_COMMAND_LINE_H_

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/program.h"

namespace korvan::tools {

// Adds --version, --json and --tsv to the options of a program, and gives its
// help the layout that all have. To be called before subcommands are added,
// which take over the layout. Options name their values by `type_name`,
// positional arguments are named in capitals.
void AddCommonOptions(CLI::App& app, Format& format);

// Sets the user's locale, parses the command line and does `work`. Failures and
// usage errors become one line on standard error. Returns the status for
// `main`, which is kInputOutput where the output could not be written.
int Run(CLI::App& app, int argc, char** argv,
        const std::function<Status()>& work);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_COMMAND_LINE_H_
