// What a command of `initool` is given: its arguments, and the file.
#ifndef KORVAN_TOOLS_INI_SOURCE_H_
#define KORVAN_TOOLS_INI_SOURCE_H_

#include <langinfo.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/ini_lines.h"
#include "tools/ini_text.h"
#include "tools/program.h"

namespace korvan::tools {

// What the command line asks for.
struct Call {
  Format format = Format::kColumns;
  bool is_lossy = false;
  std::string command;
  std::string path;                // FILE
  std::vector<std::string> names;  // what follows FILE
};

// More than a settings file has. A line takes several times its size in memory.
inline constexpr std::size_t kMostBytes = std::size_t{64} << 20;

inline std::string Lines(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " line" : " lines");
}

// A text for messages, or its beginning: 60 bytes tell which one it is.
inline std::string Quoted(const std::string& text) {
  std::size_t size = 60;
  if (text.size() <= size) {
    return "'" + text + "'";
  }
  // Not a part of a character of UTF-8.
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) {
    --size;
  }
  return "'" + text.substr(0, size) + "'...";
}

// A file as it was read, and what the reader leaves out of it.
template <class Twin>
struct IniSource {
  using String = typename Twin::String;
  using Char = typename String::value_type;

  // Of a file that may be missing, the text is empty.
  IniSource(const std::string& path_or_dash, bool may_be_missing)
      : path(path_or_dash) {
    struct stat ignored = {};
    if (may_be_missing && stat(path.c_str(), &ignored) != 0 &&
        errno == ENOENT) {
      return;
    }
    const std::string bytes = ReadAll(path, kMostBytes);
    mark = FindByteOrderMark(bytes);
    std::optional<String> decoded = Twin::Decode(bytes);
    if (!decoded) {
      throw Failure(Status::kInputOutput,
                    NameOf(path) + ": isn't text in the encoding of the " +
                        "locale, " + nl_langinfo(CODESET) + OfMark());
    }
    text = std::move(*decoded);
    if (mark != nullptr) {
      mark_text = Twin::Decode(std::string(mark->bytes)).value_or(String());
    }
  }

  // What there is to know of the byte-order mark, if there is one.
  std::string OfMark() const {
    if (mark == nullptr) {
      return "";
    }
    return std::string("; it begins with a ") + mark->encoding +
           " byte-order mark, " +
           (mark->is_readable ? "so its first line is skipped"
                              : "so convert it to UTF-8 first, without a mark");
  }

  void CountLines() {
    ForEachLine<Twin>(
        text, mark_text,
        [&](const IniLine<Twin>& line, const String& line_text, auto&) {
          skipped += line.IsLost() ? 1 : 0;
          ending_in_cr += line_text.ends_with(Char{'\r'}) ? 1 : 0;
        });
  }

  // "3 lines of f.ini can't be read by this format".
  std::string OfSkipped() const {
    return Lines(skipped) + " of " + NameOf(path) +
           " can't be read by this format";
  }

  // Where to see more, after a message on skipped lines.
  std::string Advice() const { return OfMark() + "; 'initool lint' tells why"; }

  // Whether each line ends with one CR and the LF.
  bool HasCrLf() const {
    std::size_t line_feeds = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == Char{'\n'}) {
        ++line_feeds;
        if (i < 1 || text[i - 1] != Char{'\r'} ||
            (i > 1 && text[i - 2] == Char{'\r'})) {
          return false;
        }
      }
    }
    return line_feeds > 0;
  }

  std::string path;
  String text;
  const ByteOrderMark* mark = nullptr;
  String mark_text;
  std::size_t skipped = 0;
  std::size_t ending_in_cr = 0;
};

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_INI_SOURCE_H_
