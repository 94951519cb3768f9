// Reads and edits INI files from the command line, and loses nothing unasked:
// parses the command line, and has a command done for narrow or wide text.

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

#include "tools/command_line.h"
#include "tools/ini_commands.h"
#include "tools/ini_lint.h"
#include "tools/ini_source.h"
#include "tools/ini_text.h"
#include "tools/program.h"

namespace korvan::tools {

namespace {

struct Command {
  const char* name;
  const char* usage;  // its arguments
  const char* what;
  const char* more;
  std::size_t names_needed;  // how many arguments after FILE
  // What messages call them.
  std::array<const char*, 3> names = {};
  bool is_change = false;
  bool has_table = false;  // for --json and --tsv
};

constexpr Command kCommands[] = {
    {.name = "get",
     .usage = "FILE SECTION KEY",
     .what = "Print the value of a key",
     .more =
         R"(The "[" that a key line begins with belongs to the name of the key:
  initool get f.ini Main '[key'
)",
     .names_needed = 2,
     .names = {"SECTION", "KEY"},
     .has_table = true},
    {.name = "list",
     .usage = "FILE [SECTION]",
     .what = "Print all keys and values, or those of a section",
     .more = "Standard error tells how many lines the reader skipped.\n",
     .names_needed = 0,
     .names = {"SECTION"},
     .has_table = true},
    {.name = "lint",
     .usage = "FILE",
     .what = "Tell what the reader does with each line, and why",
     .more =
         R"(The exit status is 3 where a change of FILE would be refused, because lines
would be lost.
)",
     .names_needed = 0,
     .has_table = true},
    {.name = "set",
     .usage = "FILE SECTION KEY VALUE",
     .what = "Give a key a value",
     .more =
         R"(FILE, section and key are made where there are none. Names and values that
begin with "-" stand after "--":
  initool set f.ini Main -- '[key' --value
)",
     .names_needed = 3,
     .names = {"SECTION", "KEY", "VALUE"},
     .is_change = true},
    {.name = "rename",
     .usage = "FILE SECTION [KEY] NEW-NAME",
     .what = "Rename a section or a key",
     .more =
         R"(A name is taken if there is the same in any case: "k" can't become "K".
)",
     .names_needed = 2,
     .names = {"SECTION", "NEW-NAME", "KEY"},
     .is_change = true},
    {.name = "remove",
     .usage = "FILE SECTION [KEY]",
     .what = "Remove a section or a key",
     .more = "A section goes with all its keys.\n",
     .names_needed = 1,
     .names = {"SECTION", "KEY"},
     .is_change = true},
    {.name = "merge",
     .usage = "FILE OTHER-FILE",
     .what = "Add the sections and keys of another file",
     .more =
         R"(FILE is made where there is none. Of a key that both files have, FILE gets
the value of OTHER-FILE, which may be "-" for standard input.
)",
     .names_needed = 1,
     .names = {"OTHER-FILE"},
     .is_change = true},
};

constexpr char kFooter[] =
    R"(The reader takes [Section] and, below that, lines '[key=value'. It skips all
else: comments, and key=value too. A change is refused if it would lose lines.
)";

const Command* FindCommand(const std::string& name) {
  const auto* const found = std::ranges::find(kCommands, name, &Command::name);
  return found == std::end(kCommands) ? nullptr : found;
}

// The help of a command. Its usage shows which argument in the middle may be
// left out, and says all that there is to say of the arguments.
class CommandHelp : public CLI::Formatter {
 public:
  CommandHelp() { column_width(22); }

  std::string make_usage(const CLI::App* app, std::string) const override {
    const Command& command = *FindCommand(app->get_name());
    return std::string("Usage: initool [OPTIONS] ") + command.name + " " +
           command.usage + "\n";
  }
  std::string make_positionals(const CLI::App*) const override { return ""; }
};

std::string FooterOf(const Command& command) {
  std::string footer = command.more;
  footer += "\nOptions: --wide";
  footer += command.is_change ? ", --lossy" : "";
  footer += command.has_table ? ", --json, --tsv; FILE may be \"-\"" : "";
  return footer + "; see initool --help.";
}

[[noreturn]] void FailByUsage(const std::string& why) {
  throw Failure(Status::kUsage, why);
}

// The program's options and commands.
class CommandLine {
 public:
  explicit CommandLine(CLI::App& app) : app_(app) {
    AddCommonOptions(app, call_.format);
    app.add_flag("--wide", is_wide_,
                 "FILE is text in the encoding of the locale, not bytes");
    app.add_flag("--lossy", call_.is_lossy,
                 "Change FILE even where lines are lost by it");
    app.fallthrough();
    app.require_subcommand(1);
    app.footer(kFooter + app.get_footer());
    for (const Command& command : kCommands) {
      AddCommand(command);
    }
  }

  Status Execute() {
    const CLI::App& used = *app_.get_subcommands().front();
    TakeNames(used);
    Check(*FindCommand(used.get_name()));
    return is_wide_ ? ExecuteFor<Wide>() : ExecuteFor<Narrow>();
  }

 private:
  void AddCommand(const Command& command) {
    CLI::App* const added = app_.add_subcommand(command.name, command.what);
    added->formatter(std::make_shared<CommandHelp>());
    added->footer(FooterOf(command));
    added->add_option("FILE", call_.path)->required();
    for (std::size_t i = 0; i < command.names.size(); ++i) {
      if (command.names[i] != nullptr) {
        added->add_option(command.names[i], names_[i])
            ->required(i < command.names_needed);
      }
    }
  }

  void TakeNames(const CLI::App& used) {
    call_.command = used.get_name();
    for (std::size_t i = 0; i < names_.size(); ++i) {
      const char* const name = FindCommand(call_.command)->names[i];
      if (name != nullptr && used.count(name) != 0) {
        call_.names.push_back(names_[i]);
      }
    }
  }

  void Check(const Command& command) const {
    if (command.is_change && call_.path == "-") {
      FailByUsage("standard input can't be changed");
    }
    if (!command.is_change && call_.is_lossy) {
      FailByUsage(std::string("'") + command.name + "' has no --lossy");
    }
    if (!command.has_table && call_.format != Format::kColumns) {
      FailByUsage(std::string("'") + command.name +
                  "' has no --json and --tsv");
    }
  }

  template <class Twin>
  Status ExecuteFor() {
    if (call_.command == "lint") {
      return Lint<Twin>(call_).Run();
    }
    Commands<Twin>(call_).Run();
    return Status::kDone;
  }

  CLI::App& app_;
  Call call_;
  bool is_wide_ = false;
  std::array<std::string, 3> names_;
};

}  // namespace

}  // namespace korvan::tools

// What CLI11 throws where options are declared wrongly ends the program, as it
// should. NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
  CLI::App app("Reads and edits INI files, and loses nothing unasked.",
               "initool");
  korvan::tools::CommandLine command_line(app);
  return korvan::tools::Run(app, argc, argv,
                            [&] { return command_line.Execute(); });
}
