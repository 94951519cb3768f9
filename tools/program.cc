// Messages and files, as all command-line programs treat them.
#include "tools/program.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iostream>
#include <string>
#include <system_error>
#include <utility>

#include "tools/text.h"

namespace korvan::tools {

namespace {

std::string LastError() { return std::generic_category().message(errno); }

// A descriptor, closed at the end unless it is a standard one.
class File {
 public:
  File(const std::string& path, int standard, int flags)
      : number_(path == "-" ? standard
                            : open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { Close(); }

  bool IsOpen() const { return number_ >= 0; }

  // These return a negative number, with errno set, where they fail.
  ssize_t Read(char* place, std::size_t size) const {
    return Again([&] { return read(number_, place, size); });
  }
  ssize_t Write(const char* place, std::size_t size) const {
    return Again([&] { return write(number_, place, size); });
  }
  int Close() {
    const int number = std::exchange(number_, -1);
    return number > STDERR_FILENO ? close(number) : 0;
  }

 private:
  template <class Call>
  static ssize_t Again(Call call) {
    ssize_t count = 0;
    do {
      count = call();
    } while (count < 0 && errno == EINTR);
    return count;
  }

  int number_;
};

}  // namespace

void Note(const std::string& text) {
  std::cerr << program_invocation_short_name << ": " << Printable(text) << '\n';
}

std::string ReadAll(const std::string& path, std::size_t most_bytes) {
  const File input(path, STDIN_FILENO, O_RDONLY);
  std::string bytes;
  std::array<char, std::size_t{1} << 16> block;
  for (ssize_t count = 1; count > 0;) {
    count = input.IsOpen() ? input.Read(block.data(), block.size()) : -1;
    if (count < 0) {
      throw Failure(Status::kInputOutput,
                    NameOf(path) + ": can't be read: " + LastError());
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

void WriteAll(const std::string& path, const std::string& bytes) {
  File output(path, STDOUT_FILENO, O_WRONLY | O_CREAT | O_TRUNC);
  std::size_t written = 0;
  ssize_t count = output.IsOpen() ? 0 : -1;
  while (count >= 0 && written < bytes.size()) {
    count = output.Write(bytes.data() + written, bytes.size() - written);
    written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
  }
  if (count < 0 || output.Close() != 0) {
    throw Failure(Status::kInputOutput,
                  (path == "-" ? "standard output" : NameOf(path)) +
                      ": can't be written: " + LastError());
  }
}

std::string NameOf(const std::string& path) {
  return path == "-" ? "standard input" : path.empty() ? "''" : path;
}

}  // namespace korvan::tools
