#include "program.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <locale>
#include <new>
#include <system_error>

namespace korvan::tools {

namespace {

std::string program_name;  // stands in front of every message

int Number(Status status) { return static_cast<int>(status); }

// CLI11's own messages speak of arguments that were not expected.
std::string UsageError(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App* used = &app;
  for (const CLI::App* const command : app.get_subcommands()) {
    used = command;
  }
  for (const std::string& word : used->remaining()) {
    return (word.size() > 1 && word[0] == '-' ? "unknown option '"
                                              : "unexpected argument '") +
           word + "'";
  }
  return error.what();
}

// A descriptor, closed at the end unless it is standard input.
class Input {
 public:
  explicit Input(const std::string& path)
      : number_(path == "-" ? STDIN_FILENO
                            : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input() {
    if (number_ > STDIN_FILENO) {
      close(number_);
    }
  }

  // Returns a negative number, with errno set, where it fails.
  ssize_t Read(char* place, std::size_t size) const {
    ssize_t count = 0;
    do {
      count = read(number_, place, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }

 private:
  int number_;
};

}  // namespace

void AddCommonOptions(CLI::App& app, Format& format) {
  app.set_version_flag("--version",
                       app.get_name() + " (korvan) " KORVAN_TOOLS_VERSION);
  auto* const json =
      app.add_flag_callback("--json", [&] { format = Format::kJson; })
          ->description("Print JSON");
  app.add_flag_callback("--tsv", [&] { format = Format::kTsv; })
      ->description("Print fields with tabs between them")
      ->excludes(json);
}

int Run(CLI::App& app, int argc, char** argv,
        const std::function<Status()>& work) {
  program_name = app.get_name();
  try {
    std::locale::global(std::locale(""));
  } catch (const std::runtime_error&) {
    Note("the locale of the environment is unknown; ASCII it is");
  }
  Status status = Status::kDone;
  try {
    app.parse(argc, argv);
    status = work();
  } catch (const CLI::Success& asked) {  // --help or --version
    app.exit(asked);
  } catch (const CLI::ParseError& error) {
    Note(UsageError(app, error) + " (try --help)");
    return Number(Status::kUsage);
  } catch (const Failure& failure) {
    std::cout << std::flush;
    Note(failure.what());
    status = failure.status();
  } catch (const std::bad_alloc&) {
    Note("out of memory");
    status = Status::kInputOutput;
  }
  // What was printed may only now fail to be written.
  if (!std::cout.flush()) {
    Note("the output can't be written");
    return Number(Status::kInputOutput);
  }
  return Number(status);
}

void Note(const std::string& text) {
  std::cerr << program_name << ": " << text << '\n';
}

std::string ReadAll(const std::string& path, std::size_t most_bytes) {
  const auto fail = [&] {
    throw Failure(Status::kInputOutput,
                  NameOf(path) + ": can't be read: " +
                      std::generic_category().message(errno));
  };
  const Input input(path);
  std::string bytes;
  std::array<char, std::size_t{1} << 16> block;
  for (ssize_t count = 1; count > 0;) {
    count = input.Read(block.data(), block.size());
    if (count < 0) {
      fail();
    }
    bytes.append(block.data(), static_cast<std::size_t>(count));
    if (bytes.size() > most_bytes) {
      throw Failure(Status::kRefused, NameOf(path) + ": is larger than " +
                                          std::to_string(most_bytes >> 20) +
                                          " MiB, the most that is taken");
    }
  }
  return bytes;
}

std::string NameOf(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

}  // namespace korvan::tools
