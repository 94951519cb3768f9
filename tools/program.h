// What the command-line programs have in common: which status a program ends
// with, what a message looks like, how files are read and written.
#ifndef KORVAN_TOOLS_PROGRAM_H_
#define KORVAN_TOOLS_PROGRAM_H_

#include <cstddef>
#include <stdexcept>
#include <string>

namespace korvan::tools {

// What a program ends with. Each man page and docs/tools.md have the same
// table.
enum class Status {
  kDone = 0,
  kNotFound = 1,
  kUsage = 2,
  kRefused = 3,
  kInputOutput = 4,
};

// Ends a program with a status and a sentence that says why.
class Failure : public std::runtime_error {
 public:
  Failure(Status status, const std::string& why)
      : std::runtime_error(why), status_(status) {}
  Status status() const { return status_; }

 private:
  Status status_;
};

// How a program presents its results.
enum class Format { kColumns, kJson, kTsv };

// Prints "PROGRAM: text" on standard error. What `text` quotes may hold
// anything: what is no printable text of the locale is escaped.
void Note(const std::string& text);

// Reads all of a file, or of standard input where `path` is "-". Throws a
// Failure where it can't be read, and kRefused where it has more than
// `most_bytes`, of which no more is then held in memory.
std::string ReadAll(const std::string& path, std::size_t most_bytes);

// Writes a file anew, or standard output where `path` is "-". Throws a Failure
// where it can't.
void WriteAll(const std::string& path, const std::string& bytes);

// `path` as messages name it: "standard input" for "-".
std::string NameOf(const std::string& path);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_PROGRAM_H_
