// Conversions between UTF-8, UTF-32 and the encoding of the locale, and escapes
// for what would act on a terminal.
#include "tools/text.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iostream>
#include <nlohmann/json.hpp>

namespace korvan::tools {

namespace {

constexpr wchar_t kReplacement = 0xFFFD;

// Most of what JSON is made of.
constexpr std::string_view kPlain =
    " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
    "abcdefghijklmnopqrstuvwxyz{|}~";

bool IsCharacter(std::uint32_t unit) {
  return unit < 0xD800 || (unit >= 0xE000 && unit <= 0x10FFFF);
}

// Controls, and what turns the direction of the text around it or ends a line.
bool ActsOnATerminal(wchar_t character) {
  const auto unit = std::bit_cast<std::uint32_t>(character);
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x61C ||
         unit == 0x200E || unit == 0x200F ||
         (unit >= 0x2028 && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069) || !IsCharacter(unit);
}

// In hexadecimal, with `least` digits at least.
std::string InHex(unsigned int number, int least) {
  char text[9];
  std::snprintf(text, sizeof(text), "%0*X", least, number);
  return text;
}

void AppendPrintable(std::string& text, wchar_t character) {
  char bytes[MB_LEN_MAX];
  std::mbstate_t state{};
  const std::size_t count = ActsOnATerminal(character)
                                ? static_cast<std::size_t>(-1)
                                : std::wcrtomb(bytes, character, &state);
  if (count == static_cast<std::size_t>(-1)) {
    text += "\\u{" + InHex(static_cast<unsigned int>(character), 1) + "}";
  } else {
    text.append(bytes, count);
  }
}

// Gives the characters of `text`, which is in the encoding of the locale, to
// `take`, and each byte that is none to `take_byte`.
template <class Take, class TakeByte>
void DecodeLocale(std::string_view text, Take take, TakeByte take_byte) {
  std::mbstate_t state{};
  while (!text.empty()) {
    wchar_t character = L'\0';
    const std::size_t count =
        std::mbrtowc(&character, text.data(), text.size(), &state);
    if (count > text.size()) {  // no character, or a part of one
      take_byte(static_cast<unsigned char>(text[0]));
      text.remove_prefix(1);
      state = {};
      continue;
    }
    take(character);
    text.remove_prefix(count == 0 ? 1 : count);
  }
}

// A character of a field of TSV.
void AppendEscaped(std::string& field, wchar_t character) {
  switch (character) {
    case L'\t':
      field += "\\t";
      break;
    case L'\n':
      field += "\\n";
      break;
    case L'\r':
      field += "\\r";
      break;
    case L'\\':
      field += "\\\\";
      break;
    default:
      AppendPrintable(field, character);
  }
}

// `text`, which is in the encoding of the locale, with each character as
// `append` gives it. Bytes that are none become \xFF.
template <class Append>
std::string Converted(std::string_view text, Append append) {
  std::string converted;
  DecodeLocale(
      text, [&](wchar_t character) { append(converted, character); },
      [&](unsigned int byte) { converted += "\\x" + InHex(byte, 2); });
  return converted;
}

}  // namespace

std::wstring FromUtf8(std::string_view utf8) {
  std::wstring wide;
  for (std::size_t at = 0; at < utf8.size();) {
    const auto byte = [&](std::size_t i) {
      return at + i < utf8.size() ? static_cast<unsigned char>(utf8[at + i])
                                  : 0U;
    };
    const unsigned int first = byte(0);
    const std::size_t length = first < 0x80             ? 1
                               : (first & 0xE0) == 0xC0 ? 2
                               : (first & 0xF0) == 0xE0 ? 3
                               : (first & 0xF8) == 0xF0 ? 4
                                                        : 0;
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    std::uint32_t unit = length < 2 ? first : first & (0x7FU >> length);
    bool is_whole = length != 0;
    for (std::size_t i = 1; i < length; ++i) {
      is_whole = is_whole && (byte(i) & 0xC0) == 0x80;
      unit = unit << 6 | (byte(i) & 0x3F);
    }
    is_whole = is_whole && unit >= kLeast[length] && IsCharacter(unit);
    wide += is_whole ? static_cast<wchar_t>(unit) : kReplacement;
    at += is_whole ? length : 1;
  }
  return wide;
}

std::string ToUtf8(std::wstring_view wide) {
  std::string utf8;
  for (const wchar_t character : wide) {
    auto unit = std::bit_cast<std::uint32_t>(character);
    if (!IsCharacter(unit)) {
      unit = kReplacement;
    }
    if (unit < 0x80) {
      utf8 += static_cast<char>(unit);
      continue;
    }
    const int more = unit < 0x800 ? 1 : unit < 0x10000 ? 2 : 3;
    utf8 +=
        static_cast<char>((0xFF00U >> (more + 1) & 0xFF) | unit >> (6 * more));
    for (int i = more - 1; i >= 0; --i) {
      utf8 += static_cast<char>(0x80 | (unit >> (6 * i) & 0x3F));
    }
  }
  return utf8;
}

std::optional<std::wstring> FromLocale(std::string_view text) {
  std::wstring wide;
  bool is_text = true;
  DecodeLocale(
      text, [&](wchar_t character) { wide += character; },
      [&](unsigned int) { is_text = false; });
  return is_text ? std::optional(wide) : std::nullopt;
}

std::string Printable(std::wstring_view text) {
  std::string printable;
  for (const wchar_t character : text) {
    AppendPrintable(printable, character);
  }
  return printable;
}

std::string Printable(std::string_view text) {
  return Converted(text, AppendPrintable);
}

std::string TsvField(std::string_view text) {
  return Converted(text, AppendEscaped);
}

void PrintTsv(const std::vector<std::wstring>& fields) {
  std::string line;
  for (const std::wstring& field : fields) {
    if (&field != &fields.front()) {
      line += '\t';
    }
    for (const wchar_t character : field) {
      AppendEscaped(line, character);
    }
  }
  std::cout << line << '\n';
}

void PrintJson(const Json& json) {
  // What the library leaves as it stands is within a string, where an escape
  // means the same. Only the line feeds are layout.
  const std::string dumped =
      json.dump(2, ' ', false, Json::error_handler_t::replace);
  const std::string_view text(dumped);
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t next =
        std::min(text.find_first_not_of(kPlain, at), text.size());
    std::cout << text.substr(at, next - at);
    at = next;
    if (at == text.size()) {
      break;
    }
    const std::wstring character = FromUtf8(text.substr(at, 4)).substr(0, 1);
    const std::string utf8 = ToUtf8(character);
    if (character != L"\n" && ActsOnATerminal(character[0])) {
      char escape[11];
      std::snprintf(escape, sizeof(escape), "\\u%04x",
                    static_cast<unsigned int>(character[0]));
      std::cout << escape;
    } else {
      std::cout << utf8;
    }
    at += utf8.size();
  }
  std::cout << '\n';
}

bool HasColours() {
  const char* const refused = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) != 0 && (refused == nullptr || *refused == '\0');
}

std::string Bold(const std::string& text) {
  return HasColours() ? "\033[1m" + text + "\033[m" : text;
}

}  // namespace korvan::tools
