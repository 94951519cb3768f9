// Options and messages about them, as all command-line programs have them.
#include "tools/command_line.h"

#include <fcntl.h>
#include <korvan/version.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <locale>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace korvan::tools {

namespace {

int Number(Status status) { return static_cast<int>(status); }

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

// CLI11's default adds words such as REQUIRED and Excludes, which leave no room
// for the description in 80 columns.
class HelpLayout : public CLI::Formatter {
 public:
  HelpLayout() { column_width(22); }
  std::string make_option_opts(const CLI::Option* option) const override {
    return option->get_type_size() == 0 || option->get_positional()
               ? ""
               : " " + option->get_type_name();
  }
  std::string make_usage(const CLI::App* app, std::string name) const override {
    std::string usage = CLI::Formatter::make_usage(app, std::move(name));
    const std::string shouted = "SUBCOMMAND";
    if (const std::size_t at = usage.find(shouted); at != usage.npos) {
      usage.replace(at, shouted.size(), "COMMAND ...");
    }
    return usage;
  }
};

// The first of the words that nothing was made of, in the terms of a user.
std::string UnknownWord(const CLI::App& app) {
  const std::vector<std::string> words = app.remaining(true);
  if (words.empty()) {
    return "";
  }
  const std::string& word = words.front();
  if (word.size() > 1 && word[0] == '-') {
    return "unknown option " + Quoted(word.substr(0, word.find('=')));
  }
  return (app.get_require_subcommand_min() > 0 && app.get_subcommands().empty()
              ? "unknown command "
              : "unexpected argument ") +
         Quoted(word);
}

// CLI11's own messages speak of required arguments that were received.
std::string UsageError(const CLI::App& app, const CLI::ParseError& error) {
  std::string unknown = UnknownWord(app);
  if (!unknown.empty()) {
    return unknown;
  }
  std::string text = error.what();
  const std::string name = text.substr(0, text.find_first_of(": "));
  const auto says = [&](const char* part) {
    return text.find(part) != std::string::npos;
  };
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
    return Quoted(name) + " and " +
           Quoted(text.substr(text.find_last_of(' ') + 1)) +
           " can't be used together";
  }
  if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
    return Quoted(name) + " needs " +
           Quoted(text.substr(text.find_last_of(' ') + 1));
  }
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
    return name == "A" ? "a command is missing" : name + " is missing";
  }
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    if (says("At Most 1")) {
      return Quoted(name) + " is given twice";
    }
    if (says("missing") || says("At least")) {
      return Quoted(name) + " needs a value";
    }
  }
  if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) {
    // "Could not convert: --width = x", or of a flag its value alone.
    const std::size_t equals = text.find(" = ");
    const std::size_t colon = text.find(": ");
    return equals == text.npos || colon == text.npos
               ? "an option that takes no value has one"
               : Quoted(text.substr(equals + 3)) + " is no value of " +
                     Quoted(text.substr(colon + 2, equals - colon - 2));
  }
  return text;
}

// A file that is opened next must not become a standard one that is closed:
// the program's output would go into it. What takes the place can't be read,
// or written, either.
void OccupyStandardDescriptors() {
  for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(number, F_GETFD) == -1 && errno == EBADF) {
      // The lowest number that is free is this one.
      static_cast<void>(
          open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

// Does `work`; what it throws becomes one line, and the status.
Status StatusOf(const std::function<Status()>& work) {
  const char* const out_of_memory = "out of memory";
  try {
    return work();
  } catch (const Failure& failure) {
    std::cout << std::flush;
    Note(failure.what() + std::string(failure.status() == Status::kUsage
                                          ? " (try --help)"
                                          : ""));
    return failure.status();
  } catch (const std::bad_alloc&) {
    Note(out_of_memory);
  } catch (const std::length_error&) {  // of a string that is too long
    Note(out_of_memory);
  }
  return Status::kInputOutput;
}

}  // namespace

void AddCommonOptions(CLI::App& app, Format& format) {
  app.formatter(std::make_shared<HelpLayout>());
  app.set_help_flag("--help", "Print this, and exit");
  app.set_version_flag("--version",
                       app.get_name() + " (korvan) " KORVAN_VERSION,
                       "Print the version, and exit");
  auto* const json =
      app.add_flag_callback("--json", [&] { format = Format::kJson; })
          ->description("Print JSON");
  app.add_flag_callback("--tsv", [&] { format = Format::kTsv; })
      ->description("Print fields with tabs between them")
      ->excludes(json);
  app.footer(
      "Exit status: 0 done, 1 not found, 2 usage, 3 refused, "
      "4 can't read or write.");
}

int Run(CLI::App& app, int argc, char** argv,
        const std::function<Status()>& work) {
  OccupyStandardDescriptors();
  try {
    std::locale::global(std::locale(""));
  } catch (const std::runtime_error&) {
    Note("the locale of the environment is unknown; ASCII it is");
  }
  const Status status = StatusOf([&] {
    try {
      app.parse(argc, argv);
    } catch (const CLI::Success& asked) {  // --help or --version
      app.exit(asked);
      return Status::kDone;
    } catch (const CLI::ParseError& error) {
      throw Failure(Status::kUsage, UsageError(app, error));
    }
    return work();
  });
  // What was printed may only now fail to be written.
  if (!std::cout.flush()) {
    Note("the output can't be written: " +
         std::generic_category().message(errno));
    return Number(Status::kInputOutput);
  }
  return Number(status);
}

}  // namespace korvan::tools
