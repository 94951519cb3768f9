// What names and lines lose at their ends. Names lose blanks wherever they are
// given; what a line loses, and when, stands in ini/line.h.
#ifndef KORVAN_INI_TRIM_H_
#define KORVAN_INI_TRIM_H_

#include <algorithm>
#include <string_view>

namespace korvan::ini {

template <class Char>
constexpr bool IsBlank(Char character) {
  return character == ' ' || character == '\t';
}

template <class Char>
constexpr bool IsLineEnd(Char character) {
  return character == '\n' || character == '\r';
}

template <class Char>
constexpr bool IsBlankOrLineEnd(Char character) {
  return IsBlank(character) || IsLineEnd(character);
}

// `text` from its first character on that is not of the kind `is_dropped`.
template <class Char>
constexpr std::basic_string_view<Char> WithoutLeading(
    bool (&is_dropped)(Char), std::basic_string_view<Char> text) {
  while (!text.empty() && is_dropped(text.front())) {
    text.remove_prefix(1);
  }
  return text;
}

// `text` up to its last character that is not of the kind `is_dropped`.
template <class Char>
constexpr std::basic_string_view<Char> WithoutTrailing(
    bool (&is_dropped)(Char), std::basic_string_view<Char> text) {
  while (!text.empty() && is_dropped(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

// Erases the blanks at both ends of a name.
//
// Most names have none, and then this looks at two characters only. The
// exported Trim would first need a string of the characters to erase.
template <class String>
void TrimName(String& name) {
  while (!name.empty() && IsBlank(name.back())) {
    name.pop_back();
  }
  if (IsBlank(name[0])) {  // a NUL if there is none
    name.erase(name.begin(),
               std::find_if_not(name.begin(), name.end(),
                                IsBlank<typename String::value_type>));
  }
}

}  // namespace korvan::ini

#endif  // KORVAN_INI_TRIM_H_
