// What the library's reader does with each line of an INI text. The reader is
// asked itself, line by line: a parser of its own could disagree with it.
#ifndef KORVAN_TOOLS_INI_LINES_H_
#define KORVAN_TOOLS_INI_LINES_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/ini_text.h"

namespace korvan::tools {

// What can stand at the beginning of a file and is no text.
struct ByteOrderMark {
  std::string_view bytes;
  const char* encoding;
  bool is_readable;  // the lines after the first can be read
};

// The mark that `bytes` begin with, or null.
inline const ByteOrderMark* FindByteOrderMark(std::string_view bytes) {
  using std::string_view_literals::operator""sv;
  // The mark of UTF-32 begins with one of UTF-16.
  static constexpr std::array<ByteOrderMark, 5> kMarks = {{
      {"\xEF\xBB\xBF"sv, "UTF-8", true},
      {"\xFF\xFE\0\0"sv, "UTF-32", false},
      {"\0\0\xFE\xFF"sv, "UTF-32", false},
      {"\xFF\xFE"sv, "UTF-16", false},
      {"\xFE\xFF"sv, "UTF-16", false},
  }};
  const auto* const mark =
      std::ranges::find_if(kMarks, [&](const ByteOrderMark& candidate) {
        return bytes.starts_with(candidate.bytes);
      });
  return mark == kMarks.end() ? nullptr : mark;
}

// Why a line is skipped, or what surprises about one that is not. The names are
// those of the JSON.
enum class Remark {
  kBlank,
  kByteOrderMark,   // the first line begins with it
  kComment,         // begins with "#" or ";"
  kPlainKey,        // would be a key line if it began with "["
  kNoBracket,       // any other line that does not begin with "["
  kIncomplete,      // begins with "[", has no "=" and does not end with "]"
  kNoHeader,        // a key line before the first header
  kOtherCase,       // the name was spelled otherwise before
  kTrailingBlank,   // the last character of a header is a blank, and no "]"
  kEqualsInHeader,  // would be a key line if it did not end with "]"
  kCarriageReturn,  // at the end of the line
  kNul,
};

constexpr std::string_view NameOf(Remark remark) {
  constexpr std::array<std::string_view, 12> kNames = {
      "blank",          "byte_order_mark",  "comment",         "plain_key",
      "no_bracket",     "incomplete",       "no_header",       "other_case",
      "trailing_blank", "equals_in_header", "carriage_return", "nul",
  };
  return kNames[static_cast<std::size_t>(remark)];
}

enum class LineKind { kHeader, kKey, kSkipped };

// A line, as the reader takes it.
template <class Twin>
struct IniLine {
  using String = typename Twin::String;

  bool Has(Remark remark) const {
    return std::ranges::find(remarks, remark) != remarks.end();
  }
  // Blank lines are no loss.
  bool IsLost() const {
    return kind == LineKind::kSkipped && !Has(Remark::kBlank);
  }

  std::size_t number = 0;
  LineKind kind = LineKind::kSkipped;
  String section;  // of a header, and of a key
  String key;
  String value;
  std::vector<Remark> remarks;
};

// Reads one line after the other.
template <class Twin>
class LineReader {
 public:
  using Line = IniLine<Twin>;
  using String = typename Twin::String;
  using Char = typename String::value_type;

  // `mark` is the byte-order mark that the text begins with, or empty.
  explicit LineReader(String mark) : mark_(std::move(mark)) {}

  // Reads the next line of the text, without the line feed at its end. Gives
  // no remarks, but for blank lines.
  Line Read(const String& text) {
    Line line;
    line.number = ++number_;
    if (text.find_first_not_of(Blanks()) == String::npos) {
      line.remarks.push_back(Remark::kBlank);
    } else if (std::optional<String> section = HeaderIn(text)) {
      line.kind = LineKind::kHeader;
      line.section = section_ = *section;
      has_header_ = true;
    } else if (has_header_ && FindKeyIn(text, line)) {
      line.kind = LineKind::kKey;
      line.section = section_;
    }
    return line;
  }

  // Adds the remarks to a line that was read from `text`.
  void Explain(const String& text, Line& line) {
    if (line.kind == LineKind::kHeader) {
      ExplainHeader(text, line);
    } else if (line.IsLost()) {
      ExplainLoss(text, line);
    }
    if (text.ends_with(Char{'\r'})) {
      line.remarks.push_back(Remark::kCarriageReturn);
    }
    if (text.find(Char{}) != String::npos) {
      line.remarks.push_back(Remark::kNul);
    }
  }

  // The name of the key that a skipped line would give if it began with "[".
  std::optional<String> KeyWithBracket(const String& text) {
    Line line;
    if (HeaderIn(text) || FindKeyIn(text, line) ||
        !FindKeyIn(Char{'['} + text, line)) {
      return std::nullopt;
    }
    return line.key;
  }

 private:
  static constexpr std::array<Char, 3> kBlanks = {' ', '\t', '\r'};
  static constexpr std::basic_string_view<Char> Blanks() {
    return {kBlanks.data(), kBlanks.size()};
  }

  static String WithoutBlankEnd(const String& text) {
    return text.substr(0, text.find_last_not_of(Blanks()) + 1);
  }

  const auto& Load(const String& text) {
    stream_.clear();
    stream_.str(text);
    file_.Load(stream_);
    return file_.GetSections();
  }

  std::optional<String> HeaderIn(const String& text) {
    const auto& sections = Load(text);
    if (sections.empty()) {
      return std::nullopt;
    }
    return sections.begin()->second->GetSectionName();
  }

  // Below a header the reader takes key lines.
  bool FindKeyIn(const String& text, Line& line) {
    static const String kAnyHeader = {Char{'['}, Char{']'}, Char{'\n'}};
    const auto& keys = Load(kAnyHeader + text).begin()->second->GetKeys();
    if (keys.empty()) {
      return false;
    }
    line.key = keys.begin()->second->GetKeyName();
    line.value = keys.begin()->second->GetValue();
    return true;
  }

  void ExplainHeader(const String& text, Line& line) {
    if (HeaderIn(WithoutBlankEnd(text)) != line.section) {
      line.remarks.push_back(Remark::kTrailingBlank);
    }
    Line ignored;
    if (FindKeyIn(text + Char{'x'}, ignored)) {
      line.remarks.push_back(Remark::kEqualsInHeader);
    }
  }

  // Why the reader skips a line. What it says of a changed line shows most of
  // the reasons.
  void ExplainLoss(const String& text, Line& line) {
    const std::size_t start = text.find_first_not_of(Blanks());
    const std::optional<String> key = KeyWithBracket(text.substr(start));
    if (line.number == 1 && !mark_.empty() && text.starts_with(mark_)) {
      line.remarks.push_back(Remark::kByteOrderMark);
    } else if (FindKeyIn(text, line)) {
      line.remarks.push_back(Remark::kNoHeader);
    } else if (text[start] == Char{'#'} || text[start] == Char{';'}) {
      line.remarks.push_back(Remark::kComment);
    } else if (key) {
      line.key = *key;
      line.remarks.push_back(Remark::kPlainKey);
    } else {
      line.remarks.push_back(text[start] == Char{'['} ? Remark::kIncomplete
                                                      : Remark::kNoBracket);
    }
  }

  const String mark_;
  std::size_t number_ = 0;
  bool has_header_ = false;
  String section_;
  typename Twin::File file_;
  std::basic_istringstream<Char> stream_;
};

// Gives each line of a text to `use`, with the reader that it was read by. A
// line feed ends a line; the last line needs none.
template <class Twin, class Use>
void ForEachLine(const typename Twin::String& text,
                 const typename Twin::String& mark, Use use) {
  LineReader<Twin> reader(mark);
  std::basic_istringstream<typename Twin::String::value_type> lines(text);
  typename Twin::String line_text;
  while (std::getline(lines, line_text)) {
    auto line = reader.Read(line_text);
    use(line, line_text, reader);
  }
}

// Remembers which line gave a name first, and which gave a key its value.
template <class Twin>
class LinesOfNames {
 public:
  using String = typename Twin::String;

  // The line that a line goes on from: of a repeated header, the first one; of
  // a repeated key, the one whose value it replaces. 0 where there is none.
  // Notes if the name was spelled otherwise by then.
  std::size_t Enter(IniLine<Twin>& line) {
    if (line.kind == LineKind::kSkipped) {
      return 0;
    }
    const auto [section, is_new] =
        sections_.try_emplace(line.section, OfSection{line.number, {}});
    if (line.kind == LineKind::kHeader) {
      NoteCase(section->first, line.section, line);
      return is_new ? 0 : section->second.header;
    }
    const auto [key, is_new_key] =
        section->second.keys.try_emplace(line.key, line.number);
    NoteCase(key->first, line.key, line);
    const std::size_t earlier = is_new_key ? 0 : key->second;
    key->second = line.number;
    return earlier;
  }

 private:
  using Less = typename Twin::File::Sections::key_compare;
  struct OfSection {
    std::size_t header;
    std::map<String, std::size_t, Less> keys;
  };

  static void NoteCase(const String& first, const String& now,
                       IniLine<Twin>& line) {
    if (first != now) {
      line.remarks.push_back(Remark::kOtherCase);
    }
  }

  std::map<String, OfSection, Less> sections_;
};

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_INI_LINES_H_
