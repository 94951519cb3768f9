// `initool lint`: what the reader does with each line, and why.
#ifndef KORVAN_TOOLS_INI_LINT_H_
#define KORVAN_TOOLS_INI_LINT_H_

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "tools/ini_lines.h"
#include "tools/ini_source.h"
#include "tools/ini_table.h"
#include "tools/ini_text.h"
#include "tools/program.h"
#include "tools/text.h"

namespace korvan::tools {

template <class Twin>
class Lint {
 public:
  using String = typename Twin::String;
  using Char = typename String::value_type;
  using Line = IniLine<Twin>;

  explicit Lint(const Call& call) : call_(call), source_(call.path, false) {
    if (call.format != Format::kColumns) {
      table_.emplace(
          call.format, "lines",
          std::vector<std::string>{"line", "kind", "remarks", "section", "key",
                                   "value", "earlier", "later", "message"});
    }
  }

  // Returns kRefused where a change of the file would be refused.
  Status Run() {
    // The lines are gone through twice, because a line is printed with the
    // number of a later one. Only these numbers are kept in memory.
    ForEachNamedLine(
        [&](Line& line, const String&, auto&, std::size_t earlier) {
          later_.resize(line.number + 1);
          if (line.kind == LineKind::kKey) {
            later_[earlier] = static_cast<std::uint32_t>(line.number);
          }
        });
    ForEachNamedLine(
        [&](Line& line, const String& text, auto& reader, std::size_t earlier) {
          reader.Explain(text, line);
          Print(line, text, earlier);
        });
    if (table_) {
      table_->End();
    } else {
      PrintSummary();
    }
    return lost_ == 0 ? Status::kDone : Status::kRefused;
  }

 private:
  template <class Use>
  void ForEachNamedLine(Use use) const {
    LinesOfNames<Twin> names;
    ForEachLine<Twin>(source_.text, source_.mark_text,
                      [&](Line& line, const String& text, auto& reader) {
                        const std::size_t earlier = names.Enter(line);
                        use(line, text, reader, earlier);
                      });
  }

  static const char* NameOf(LineKind kind) {
    switch (kind) {
      case LineKind::kHeader:
        return "header";
      case LineKind::kKey:
        return "key";
      case LineKind::kSkipped:
        return "skipped";
    }
    return "";
  }

  // Of a text that was decoded there is an encoding.
  static std::string Excerpt(const String& text) {
    return Quoted(Twin::Encode(text).value_or(""));
  }

  void Print(const Line& line, const String& text, std::size_t earlier) {
    lost_ += line.IsLost() ? 1 : 0;
    headers_ += line.kind == LineKind::kHeader ? 1 : 0;
    keys_ += line.kind == LineKind::kKey ? 1 : 0;
    cr_ += line.Has(Remark::kCarriageReturn) ? 1 : 0;
    const std::size_t later =
        line.kind == LineKind::kKey ? later_[line.number] : 0;
    const std::string message = Printable(Message(line, text, earlier, later));
    if (table_) {
      AddRow(line, earlier, later, message);
      return;
    }
    std::string kind = NameOf(line.kind);
    kind.resize(7, ' ');
    std::cout << std::setw(Digits()) << line.number << "  "
              << (line.IsLost() ? Bold(kind) : kind) << "  " << message << '\n';
  }

  int Digits() const {
    return static_cast<int>(std::to_string(later_.size() - 1).size());
  }

  void AddRow(const Line& line, std::size_t earlier, std::size_t later,
              const std::string& message) {
    const auto number = [](std::size_t other) {
      return other == 0 ? Json() : Json(other);
    };
    Json remarks = Json::array();
    for (const Remark remark : line.remarks) {
      remarks.push_back(std::string(tools::NameOf(remark)));
    }
    Json row = {{"line", line.number},
                {"kind", NameOf(line.kind)},
                {"remarks", remarks},
                {"section", nullptr},
                {"key", nullptr},
                {"value", nullptr},
                {"earlier", number(earlier)},
                {"later", number(later)},
                {"message", table_->LocaleField(message)}};
    if (line.kind != LineKind::kSkipped) {
      row["section"] = table_->Field(line.section);
    }
    if (line.kind == LineKind::kKey) {
      row["key"] = table_->Field(line.key);
      row["value"] = table_->Field(line.value);
    }
    table_->Add(row);
  }

  std::string Message(const Line& line, const String& text, std::size_t earlier,
                      std::size_t later) const {
    std::string message;
    if (line.kind == LineKind::kHeader) {
      message = "section " + Excerpt(line.section);
      if (earlier != 0) {
        message += ", which goes on from line " + std::to_string(earlier);
      }
    } else if (line.kind == LineKind::kKey) {
      message = Excerpt(line.key) + " is " + Excerpt(line.value);
      if (earlier != 0) {
        message += "; replaces line " + std::to_string(earlier);
      }
      if (later != 0) {
        message += "; line " + std::to_string(later) + " replaces it";
      }
    }
    for (const Remark remark : line.remarks) {
      message += (message.empty() ? "" : "; ") + Sentence(remark, line, text);
    }
    return message;
  }

  std::string Sentence(Remark remark, const Line& line,
                       const String& text) const {
    switch (remark) {
      case Remark::kBlank:
        return "blank";
      case Remark::kByteOrderMark:
        return std::string("begins with a ") + source_.mark->encoding +
               " byte-order mark, not with \"[\"";
      case Remark::kComment:
        return "a comment";
      case Remark::kPlainKey:
        return Excerpt(text) + " does not begin with \"[\"; " +
               Excerpt(line.key) + " would be a key";
      case Remark::kNoBracket:
        return Excerpt(text) + " does not begin with \"[\"";
      case Remark::kIncomplete:
        return Excerpt(text) + " does not end with \"]\", and has no \"=\"";
      case Remark::kNoHeader:
        return Excerpt(line.key) + " comes before the first header";
      case Remark::kOtherCase:
        return "the first spelling of the name stays";
      case Remark::kTrailingBlank:
        return "the name loses the blank at the end, not the \"]\"";
      case Remark::kEqualsInHeader:
        return "no key line, because it ends with \"]\"";
      case Remark::kCarriageReturn:
        return "the CR at the end is dropped";
      case Remark::kNul:
        return "holds NUL, where names end when they are compared";
    }
    return "";
  }

  void PrintSummary() const {
    const std::string name = tools::NameOf(call_.path);
    if (source_.text.empty()) {
      std::cout << name << ": is empty\n";
      return;
    }
    std::cout << name << ": " << Lines(later_.size() - 1) << ", " << headers_
              << (headers_ == 1 ? " header, " : " headers, ") << keys_
              << (keys_ == 1 ? " key line; " : " key lines; ")
              << (lost_ == 0 ? "a change loses none"
                             : "a change would lose " + Lines(lost_))
              << source_.OfMark() << OfCr() << '\n';
  }

  std::string OfCr() const {
    if (cr_ == 0) {
      return "";
    }
    return source_.HasCrLf()
               ? "; its lines end with CR LF, and will"
               : "; the CR at the end of " + Lines(cr_) + " would go";
  }

  const Call& call_;
  IniSource<Twin> source_;
  std::optional<Table<Twin>> table_;
  std::vector<std::uint32_t> later_;  // by line: the one that replaces it
  std::size_t headers_ = 0;
  std::size_t keys_ = 0;
  std::size_t lost_ = 0;
  std::size_t cr_ = 0;  // lines that end with one
};

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_INI_LINT_H_
