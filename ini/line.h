// What a line of INI text is: a header, a key line, or a line to skip. The
// rules stand here and nowhere else in the code; docs/ini_format.md explains
// them, and the examples at the end are those of its tables.
#ifndef KORVAN_INI_LINE_H_
#define KORVAN_INI_LINE_H_

#include <cstddef>
#include <string_view>

#include "ini/trim.h"

namespace korvan::ini {

enum class LineKind { kSkipped, kHeader, kKey };

// A line that has been parsed. The views point into its text.
template <class Char>
struct Line {
  LineKind kind = LineKind::kSkipped;
  // The name of the section or the key. It keeps the blanks at its ends: the
  // document trims every name that it is given.
  std::basic_string_view<Char> name = {};
  // The value of the key; empty for a header.
  std::basic_string_view<Char> value = {};

  bool operator==(const Line&) const = default;
};

// Begins every header and every key line: a line without it is skipped.
inline constexpr char kLineOpening = '[';

// Whether a line that begins with kLineOpening is a header. Only the end of the
// line decides, so what follows a "=" in it gives the same answer.
template <class Char>
constexpr bool EndsHeader(std::basic_string_view<Char> line) {
  return WithoutTrailing(IsBlankOrLineEnd<Char>, line).ends_with(']');
}

// The value of a key line, from what follows the first "=" of the line.
template <class Char>
constexpr std::basic_string_view<Char> ValueOf(
    std::basic_string_view<Char> after_equals) {
  return WithoutTrailing(IsLineEnd<Char>, after_equals);
}

// Parses a whole line, with or without the line feed that ends it.
template <class Char>
constexpr Line<Char> ParseLine(std::basic_string_view<Char> line) {
  line = WithoutLeading(IsBlank<Char>, line);
  if (!line.starts_with(kLineOpening)) {
    return {};
  }
  if (EndsHeader(line)) {
    const auto header = WithoutTrailing(IsLineEnd<Char>, line);
    // The last character goes whatever it is: "[Main] " names "Main]".
    // Existing files have such names.
    return {LineKind::kHeader, header.substr(1, header.size() - 2)};
  }
  const std::size_t equals = line.find('=');
  if (equals == line.npos) {
    return {};
  }
  return {LineKind::kKey, line.substr(0, equals),
          ValueOf(line.substr(equals + 1))};
}

// Whether `piece`, the beginning of a line, holds a key's name, the "=" and at
// least one character more. The end of the line may still make it a header.
template <class Char>
constexpr bool HoldsNameAndMore(std::basic_string_view<Char> piece) {
  const std::size_t equals = piece.find('=');
  return WithoutLeading(IsBlank<Char>, piece).starts_with(kLineOpening) &&
         equals != piece.npos && !piece.substr(equals + 1).empty();
}

// The kinds of lines.
static_assert(ParseLine<char>("") == Line<char>{});
static_assert(ParseLine<char>(" \t\r\n") == Line<char>{});
static_assert(ParseLine<char>("k=v") == Line<char>{});
static_assert(ParseLine<char>("# note") == Line<char>{});
static_assert(ParseLine<char>("; note") == Line<char>{});
static_assert(ParseLine<char>("[Main] ; note") == Line<char>{});
static_assert(ParseLine<char>("[k") == Line<char>{});
static_assert(ParseLine<char>("[") == Line<char>{});

// Headers.
static_assert(ParseLine<char>("[]") == Line<char>{LineKind::kHeader, ""});
static_assert(ParseLine<char>("\t [Main]\r\n") ==
              Line<char>{LineKind::kHeader, "Main"});
static_assert(ParseLine<char>("[ Main ]") ==
              Line<char>{LineKind::kHeader, " Main "});
static_assert(ParseLine<char>("[Main] ") ==
              Line<char>{LineKind::kHeader, "Main]"});
static_assert(ParseLine<char>("[k=v]") == Line<char>{LineKind::kHeader, "k=v"});

// Key lines.
static_assert(ParseLine<char>("[k=v") == Line<char>{LineKind::kKey, "[k", "v"});
static_assert(ParseLine<char>(" [k = v \r") ==
              Line<char>{LineKind::kKey, "[k ", " v "});
static_assert(ParseLine<char>("[a=b=c") ==
              Line<char>{LineKind::kKey, "[a", "b=c"});
static_assert(ParseLine<char>("[k=") == Line<char>{LineKind::kKey, "[k", ""});
static_assert(ParseLine<char>("[k]=") == Line<char>{LineKind::kKey, "[k]", ""});

static_assert(ParseLine<wchar_t>(L"[k=v") ==
              Line<wchar_t>{LineKind::kKey, L"[k", L"v"});

// Parts of lines.
static_assert(HoldsNameAndMore<char>(" [k=v"));
static_assert(!HoldsNameAndMore<char>("[k="));
static_assert(!HoldsNameAndMore<char>("[k"));
static_assert(!HoldsNameAndMore<char>("k=v"));
static_assert(!HoldsNameAndMore<char>(""));
static_assert(EndsHeader<char>("v] \r"));
static_assert(!EndsHeader<char>(" v \r"));
static_assert(!EndsHeader<char>(" \r"));
static_assert(ValueOf<char>(" v \r") == " v ");

}  // namespace korvan::ini

#endif  // KORVAN_INI_LINE_H_
