// What the commands of `initool` print on standard output: text, and tables for
// other programs.
#ifndef KORVAN_TOOLS_INI_TABLE_H_
#define KORVAN_TOOLS_INI_TABLE_H_

#include <unistd.h>

#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/ini_text.h"
#include "tools/program.h"
#include "tools/text.h"

namespace korvan::tools {

// `bytes` for standard output: as they are, or harmless for a terminal.
inline std::string Shown(const std::string& bytes) {
  static const bool is_terminal = isatty(STDOUT_FILENO) != 0;
  return is_terminal ? Printable(bytes) : bytes;
}

// Prints rows as they come, so that they need no memory: as JSON, an object
// with one member that lists them, or as TSV under a line with the fields'
// names.
template <class Twin>
class Table {
 public:
  // `format` is kJson or kTsv.
  Table(Format format, const std::string& member,
        const std::vector<std::string>& fields)
      : is_json_(format == Format::kJson) {
    if (is_json_) {
      std::cout << "{\"" << member << "\": [";
    } else {
      PrintTsvLine(Json(fields));
    }
  }

  // A text of the file as a field.
  Json Field(const typename Twin::String& text) {
    const std::string bytes = Twin::Encode(text).value_or("");
    if (!is_json_) {
      return bytes;
    }
    const std::string utf8 = Twin::ToUtf8(text);
    has_replacements_ =
        has_replacements_ || (Twin::kMayBeNoUtf8 && utf8 != bytes);
    return utf8;
  }

  // A text in the encoding of the locale as a field.
  Json LocaleField(const std::string& text) const {
    return is_json_ ? ToUtf8(FromLocale(text).value_or(L"")) : text;
  }

  // Each member of `row` is a field: a text, a number, a list of texts, null.
  void Add(const Json& row) {
    if (is_json_) {
      std::cout << between_;
      PrintJson(row);
      between_ = ", ";
    } else {
      PrintTsvLine(row);
    }
  }

  void End() const {
    if (is_json_) {
      std::cout << "]}\n";
    }
    if (has_replacements_) {
      Note("the file has bytes that are no UTF-8; in the JSON they are U+FFFD");
    }
  }

 private:
  static void PrintTsvLine(const Json& row) {
    const char* between = "";
    for (const Json& field : row) {
      std::cout << between << Written(field);
      between = "\t";
    }
    std::cout << '\n';
  }

  static std::string Written(const Json& field) {
    if (field.is_string()) {
      return TsvField(field.get_ref<const std::string&>());
    }
    if (field.is_array()) {
      std::string list;
      for (const Json& part : field) {
        list += (list.empty() ? "" : ",") + part.get<std::string>();
      }
      return list;
    }
    return field.is_null() ? "" : field.dump();
  }

  const bool is_json_;
  const char* between_ = "";
  bool has_replacements_ = false;
};

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_INI_TABLE_H_
