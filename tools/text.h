// Text on its way in and out of the command-line programs: between encodings,
// and into columns, TSV and JSON, where nothing of it may act on a terminal.
#ifndef KORVAN_TOOLS_TEXT_H_
#define KORVAN_TOOLS_TEXT_H_

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvan::tools {

// The members stand in the order in which they were added.
using Json = nlohmann::ordered_json;

// Between wide text, which is UTF-32, and UTF-8. What is no character becomes
// U+FFFD.
std::wstring FromUtf8(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);

// Text in the encoding of the locale, such as an argument; nothing where it is
// none.
std::optional<std::wstring> FromLocale(std::string_view text);

// Text for people, in the encoding of the locale. Characters that would act on
// a terminal and those that the locale lacks become \u{1B}.
std::string Printable(std::wstring_view text);

// The same for text in the encoding of the locale. Bytes that are none become
// \xFF.
std::string Printable(std::string_view text);

// A field of TSV, of text in the encoding of the locale. \t, \n and \r stand
// for these characters, \\ for the backslash, \u{1B} for what else can't stand
// there, and \xFF for a byte that is no text.
std::string TsvField(std::string_view text);

// Prints a line of TSV, in the encoding of the locale, with such fields.
void PrintTsv(const std::vector<std::wstring>& fields);

// Prints JSON, in UTF-8.
void PrintJson(const Json& json);

// Whether standard output is a terminal whose user has nothing against colours.
bool HasColours();

// `text` in bold type where there are colours.
std::string Bold(const std::string& text);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_TEXT_H_
