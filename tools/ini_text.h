// INI text, narrow and wide. The commands of `initool` have one body for both;
// what differs stands here: how bytes become text, and text bytes.
#ifndef KORVAN_TOOLS_INI_TEXT_H_
#define KORVAN_TOOLS_INI_TEXT_H_

#include <korvan/ini_file.h>

#include <cstddef>
#include <cwchar>
#include <locale>
#include <optional>
#include <string>

#include "tools/text.h"

namespace korvan::tools {

// Bytes, in whatever encoding they are.
struct Narrow {
  using File = CIniFileA;
  using String = std::string;

  static std::optional<String> Decode(const std::string& bytes) {
    return bytes;
  }
  static std::optional<std::string> Encode(const String& text) { return text; }
  // The bytes are taken for UTF-8. Those that are none become U+FFFD.
  static std::string ToUtf8(const String& text) {
    return tools::ToUtf8(FromUtf8(text));
  }
  static constexpr bool kMayBeNoUtf8 = true;
};

// Characters, in the encoding of the user's locale.
struct Wide {
  using File = CIniFileW;
  using String = std::wstring;

  // A wide file stream passes over an undecodable end of a file in silence,
  // which would then be lost.
  static std::optional<String> Decode(const std::string& bytes) {
    const std::locale locale;
    String text(bytes.size(), L'\0');
    std::mbstate_t state = {};
    const char* rest = bytes.data();
    wchar_t* end = text.data();
    const auto result = std::use_facet<Conversion>(locale).in(
        state, rest, bytes.data() + bytes.size(), rest, end,
        text.data() + text.size(), end);
    // A character that the end cuts off is taken in without an error.
    if (result != Conversion::ok || !std::mbsinit(&state)) {
      return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
  }

  static std::optional<std::string> Encode(const String& text) {
    const std::locale locale;
    const auto& conversion = std::use_facet<Conversion>(locale);
    std::string bytes(
        text.size() * static_cast<std::size_t>(conversion.max_length()), '\0');
    std::mbstate_t state = {};
    const wchar_t* rest = text.data();
    char* end = bytes.data();
    const auto result =
        conversion.out(state, rest, text.data() + text.size(), rest, end,
                       bytes.data() + bytes.size(), end);
    if (result != Conversion::ok) {
      return std::nullopt;
    }
    bytes.resize(static_cast<std::size_t>(end - bytes.data()));
    return bytes;
  }

  static std::string ToUtf8(const String& text) { return tools::ToUtf8(text); }
  static constexpr bool kMayBeNoUtf8 = false;

 private:
  using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;
};

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_INI_TEXT_H_
