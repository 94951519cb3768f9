// The text helpers on any texts, in any locale: the trims beside loops, the
// conversions beside those of one character after the other.
#include <korvan/text.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <string>
#include <string_view>

#include "support/input.h"

namespace korvan::test {
namespace {

template <class String>
bool Holds(const String& set, typename String::value_type character) {
  for (const auto member : set) {
    if (member == character) {
      return true;
    }
  }
  return false;
}

template <class String>
String WithoutRight(String text, const String& set) {
  while (!text.empty() && Holds(set, text.back())) {
    text.pop_back();
  }
  return text;
}

template <class String>
String WithoutLeft(String text, const String& set) {
  while (!text.empty() && Holds(set, text.front())) {
    text.erase(text.begin());
  }
  return text;
}

template <class String>
void ExpectTrims(const String& text, const String& set) {
  String right = text;
  RTrim(right, set);
  Expect(right == WithoutRight(text, set));
  String left = text;
  LTrim(left, set);
  Expect(left == WithoutLeft(text, set));
  String both = text;
  Trim(both, set);
  Expect(both == WithoutLeft(WithoutRight(text, set), set));
  // A text may be its own set, and then nothing is left of it.
  String own = text;
  RTrim(own, own);
  Expect(own.empty());
  own = text;
  LTrim(own, own);
  Expect(own.empty());
  own = text;
  Trim(own, own);
  Expect(own.empty());
}

// The result has as many bytes as the text has characters: those of each whole
// character that fits, then NUL. Of a character that does not fit, the C
// library leaves the first bytes in some locales.
void ExpectNarrowed(const std::wstring& text) {
  const std::string narrowed = wstr_to_str(text);
  Expect(narrowed.size() == text.size());
  std::string_view rest = narrowed;
  std::mbstate_t state{};
  char bytes[MB_LEN_MAX];
  std::size_t partial = 0;
  for (const wchar_t character : text) {
    const std::size_t count = std::wcrtomb(bytes, character, &state);
    if (character == L'\0' || count == static_cast<std::size_t>(-1)) {
      break;
    }
    if (count > rest.size()) {
      partial = rest.size();
      break;
    }
    Expect(rest.substr(0, count) == std::string_view(bytes, count));
    rest.remove_prefix(count);
  }
  for (std::size_t i = 0; i < rest.size(); ++i) {
    Expect(rest[i] == '\0' || (i < partial && rest[i] == bytes[i]));
  }
}

std::wstring Widened(const std::string& text) {
  std::wstring widened(text.size(), L'\0');
  std::size_t filled = 0;
  std::mbstate_t state{};
  const char* const end = text.data() + text.size();
  for (const char* rest = text.data(); rest != end;) {
    wchar_t character = L'\0';
    const std::size_t count = std::mbrtowc(
        &character, rest, static_cast<std::size_t>(end - rest), &state);
    // Errors are the two highest numbers.
    if (count == 0 || count > text.size()) {
      break;
    }
    widened[filled++] = character;
    rest += count;
  }
  return widened;
}

// Bytes below 0x80 stand for themselves, the others for characters of any size,
// also such as are none.
std::wstring WideTextOf(std::string_view bytes) {
  constexpr unsigned kOthers[] = {0xE9,     0x416,      0x436,      0xA5,
                                  0x203E,   0x3042,     0xD800,     0x10FFFF,
                                  0x110000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  std::wstring text;
  for (const char byte : bytes) {
    const auto number = static_cast<unsigned char>(byte);
    text += static_cast<wchar_t>(
        number < 0x80 ? number : kOthers[number % std::size(kOthers)]);
  }
  return text;
}

void ConvertAndTrim(std::string_view bytes, Input& input) {
  const ThreadLocale locale(AnyLocale(input));
  const std::string set = input.ConsumeRandomLengthString(8);
  const std::string text(bytes);
  const std::wstring wide_text = WideTextOf(bytes);
  ExpectTrims(text, set);
  ExpectTrims(wide_text, WideTextOf(set));
  Expect(str_to_wstr(text) == Widened(text));
  ExpectNarrowed(wide_text);
}

}  // namespace
}  // namespace korvan::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::TextAndSettings input(data, size);
  korvan::test::ConvertAndTrim(input.text(), input.settings());
  return 0;
}
