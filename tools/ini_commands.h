// The commands of `initool` but for `lint`, for narrow and for wide text.
#ifndef KORVAN_TOOLS_INI_COMMANDS_H_
#define KORVAN_TOOLS_INI_COMMANDS_H_

#include <langinfo.h>

#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "tools/ini_lines.h"
#include "tools/ini_source.h"
#include "tools/ini_table.h"
#include "tools/ini_text.h"
#include "tools/program.h"
#include "tools/replace_file.h"
#include "tools/text.h"

namespace korvan::tools {

template <class Twin>
class Commands {
 public:
  explicit Commands(const Call& call)
      : call_(call),
        source_(call.path, call.command == "set" || call.command == "merge") {}

  void Run() {
    source_.CountLines();
    Load(file_, source_.text, false);
    if (call_.command == "merge") {
      Merge();
      Save();
      return;
    }
    for (const std::string& name : call_.names) {
      names_.push_back(Decode(name));
    }
    if (call_.command == "get") {
      Get();
    } else if (call_.command == "list") {
      List();
    } else {
      if (call_.command == "set") {
        file_.SetKeyValue(names_[0], names_[1], names_[2]);
      } else if (call_.command == "rename") {
        Rename();
      } else {
        Remove();
      }
      Save();
    }
  }

 private:
  using File = typename Twin::File;
  using String = typename Twin::String;
  using Char = typename String::value_type;
  using Section = std::remove_pointer_t<typename File::Sections::mapped_type>;
  using Key = std::remove_pointer_t<typename Section::Keys::mapped_type>;

  // A line of the new text that does not give back what it was written for.
  struct LostLine {
    String text;
    String key;  // empty for a header
  };

  static String Decode(const std::string& bytes) {
    if (std::optional<String> text = Twin::Decode(bytes)) {
      return *text;
    }
    throw Failure(Status::kInputOutput,
                  "argument " + Quoted(bytes) +
                      " isn't text in the encoding of the locale, " +
                      nl_langinfo(CODESET));
  }

  static std::string Encode(const String& text) {
    if (std::optional<std::string> bytes = Twin::Encode(text)) {
      return *bytes;
    }
    throw Failure(Status::kInputOutput,
                  "there is no encoding in the locale for all of the text");
  }

  static void Load(File& file, const String& text, bool is_merged) {
    std::basic_istringstream<Char> stream(text);
    file.Load(stream, is_merged);
  }

  // What to know when something is missing that a look at the file shows.
  std::string Hint() const {
    if (source_.text.empty()) {
      return " (" + NameOf(call_.path) + " is empty)";
    }
    return source_.skipped == 0
               ? ""
               : " (" + source_.OfSkipped() + source_.Advice() + ")";
  }

  Section* FindSection() const {
    Section* const section = file_.GetSection(names_[0]);
    if (section == nullptr) {
      throw Failure(Status::kNotFound,
                    "no section " + Quoted(call_.names[0]) + Hint());
    }
    return section;
  }

  Key* FindKey() const {
    const Section* const section = FindSection();
    Key* const key = section->GetKey(names_[1]);
    if (key == nullptr) {
      const std::string& name = call_.names[1];
      const bool lacks_bracket =
          section->GetKey(Char{'['} + names_[1]) != nullptr;
      throw Failure(
          Status::kNotFound,
          "no key " + Quoted(name) + " in section " + Quoted(call_.names[0]) +
              (lacks_bracket ? ", but " + Quoted("[" + name) + " is there"
                             : Hint()));
    }
    return key;
  }

  void Get() const {
    const Key* const key = FindKey();
    if (call_.format == Format::kColumns) {
      std::cout << Shown(Encode(key->GetValue())) << '\n';
    } else {
      Table<Twin> table = NewTable();
      AddRow(table, *FindSection(), key);
      table.End();
    }
  }

  void List() const {
    std::vector<const Section*> sections;
    if (names_.empty()) {
      for (const auto& [name, section] : file_.GetSections()) {
        sections.push_back(section);
      }
    } else {
      sections.push_back(FindSection());
    }
    if (call_.format == Format::kColumns) {
      ListAsText(sections);
    } else {
      ListAsTable(sections);
    }
    if (source_.text.empty()) {
      Note(NameOf(call_.path) + ": is empty");
    } else if (source_.skipped != 0) {
      Note(source_.OfSkipped() + " and " +
           (source_.skipped == 1 ? "is" : "are") + " not listed" +
           source_.Advice());
    }
  }

  // A section that was asked for needs no header.
  void ListAsText(const std::vector<const Section*>& sections) const {
    for (const Section* const section : sections) {
      if (names_.empty()) {
        const std::string name = Encode(section->GetSectionName());
        std::cout << Bold(Shown("[" + name + "]")) << '\n';
      }
      for (const auto& [name, key] : section->GetKeys()) {
        std::cout << Shown(Encode(name + Char{'='} + key->GetValue())) << '\n';
      }
    }
  }

  void ListAsTable(const std::vector<const Section*>& sections) const {
    Table<Twin> table = NewTable();
    for (const Section* const section : sections) {
      if (section->GetKeys().empty()) {
        AddRow(table, *section, nullptr);
      }
      for (const auto& [name, key] : section->GetKeys()) {
        AddRow(table, *section, key);
      }
    }
    table.End();
  }

  Table<Twin> NewTable() const {
    return {call_.format, "keys", {"section", "key", "value"}};
  }

  static void AddRow(Table<Twin>& table, const Section& section,
                     const Key* key) {
    Json row = {{"section", table.Field(section.GetSectionName())},
                {"key", nullptr},
                {"value", nullptr}};
    if (key != nullptr) {
      row["key"] = table.Field(key->GetKeyName());
      row["value"] = table.Field(key->GetValue());
    }
    table.Add(row);
  }

  void Rename() {
    const bool is_done = names_.size() == 2
                             ? FindSection()->SetSectionName(names_[1])
                             : FindKey()->SetKeyName(names_[2]);
    if (!is_done) {
      throw Failure(Status::kNotFound,
                    "the name " + Quoted(call_.names.back()) + " is taken");
    }
  }

  void Remove() {
    if (names_.size() == 1) {
      file_.RemoveSection(FindSection());
    } else {
      FindSection()->RemoveKey(FindKey());
    }
  }

  void Merge() {
    IniSource<Twin> other(call_.names[0], false);
    other.CountLines();
    Load(file_, other.text, true);
    if (other.skipped != 0) {
      Note(other.OfSkipped() + " and " + (other.skipped == 1 ? "is" : "are") +
           " not merged" + other.Advice());
    }
  }

  std::vector<LostLine> LinesNotReadBack(const String& text) const {
    File read_back;
    Load(read_back, text, false);
    std::vector<LostLine> lines;
    for (const auto& [section_name, section] : file_.GetSections()) {
      const Section* const found = read_back.GetSection(section_name);
      if (found == nullptr || found->GetSectionName() != section_name) {
        lines.push_back({Char{'['} + section_name + Char{']'}, String()});
      }
      for (const auto& [key_name, key] : section->GetKeys()) {
        const Key* const again =
            found == nullptr ? nullptr : found->GetKey(key_name);
        if (again == nullptr || again->GetKeyName() != key_name ||
            again->GetValue() != key->GetValue()) {
          lines.push_back({key_name + Char{'='} + key->GetValue(), key_name});
        }
      }
    }
    return lines;
  }

  // What to do where a "[" is all that a line needs to be read back.
  static std::string BracketAdvice(const LostLine& line) {
    const String name = Char{'['} + line.key;
    const std::optional<String> read =
        LineReader<Twin>({}).KeyWithBracket(line.text);
    const bool is_cut = line.text.find(Char{'\n'}) != String::npos;
    if (line.key.empty() || is_cut || read != name) {
      return "";
    }
    return " (the reader takes only keys that begin with '[': name it " +
           Quoted(Encode(name)) + ")";
  }

  void Save() {
    std::basic_ostringstream<Char> stream;
    file_.Save(stream);
    String text = stream.str();
    if (source_.HasCrLf()) {
      text = WithCrLf(text);
    }
    if (source_.skipped != 0) {
      Lose(source_.skipped, source_.OfSkipped(), source_.Advice());
    }
    if (const auto lines = LinesNotReadBack(text); !lines.empty()) {
      Lose(lines.size(),
           Lines(lines.size()) + " of the new text can't be read back: " +
               Quoted(Encode(lines.front().text)) +
               (lines.size() == 1 ? "" : " and so on"),
           BracketAdvice(lines.front()));
    }
    const std::string bytes = Encode(text);
    if (bytes.size() > kMostBytes) {
      throw Failure(Status::kRefused, call_.path + ": would be larger than " +
                                          std::to_string(kMostBytes >> 20) +
                                          " MiB, and not be read again");
    }
    if (source_.ending_in_cr != 0 && !source_.HasCrLf()) {
      Note(Lines(source_.ending_in_cr) + " of " + call_.path + " " +
           (source_.ending_in_cr == 1 ? "ends" : "end") +
           " with CR, others do not; all lines are written with LF alone");
    }
    ReplaceFile(call_.path, bytes);
  }

  static String WithCrLf(const String& text) {
    String lines;
    for (const Char character : text) {
      if (character == Char{'\n'}) {
        lines += Char{'\r'};
      }
      lines += character;
    }
    return lines;
  }

  void Lose(std::size_t count, const std::string& what,
            const std::string& advice) const {
    if (!call_.is_lossy) {
      throw Failure(Status::kRefused, what +
                                          " and would be lost; nothing is "
                                          "written without --lossy" +
                                          advice);
    }
    Note(what + (count == 1 ? " and is lost" : " and are lost") +
         ", as --lossy allows");
  }

  const Call& call_;
  IniSource<Twin> source_;
  File file_;
  std::vector<String> names_;
};

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_INI_COMMANDS_H_
