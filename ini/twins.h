// All that differs between narrow and wide INI files, beside the type of their
// characters and what ini_file_a.cc and ini_file_w.cc hold. ASCII characters
// have the same numbers in both, so narrow literals serve for both.
#ifndef KORVAN_INI_TWINS_H_
#define KORVAN_INI_TWINS_H_

#include <korvan/text.h>
#include <strings.h>

#include <cwchar>
#include <locale>
#include <string>
#include <type_traits>

namespace korvan::ini {

// Compares two names without regard to case. The result is that of strcasecmp
// or wcscasecmp: below, equal to or above 0.
inline int CompareNames(const std::string& left, const std::string& right) {
  return strcasecmp(left.c_str(), right.c_str());
}

inline int CompareNames(const std::wstring& left, const std::wstring& right) {
  // wcscasecmp asks the locale about each character, which costs the most by
  // far. Equal characters are equal in every locale, so the beginning that both
  // names share is passed over.
  const wchar_t* left_rest = left.c_str();
  const wchar_t* right_rest = right.c_str();
  while (*left_rest == *right_rest && *left_rest != L'\0') {
    ++left_rest;
    ++right_rest;
  }
  return wcscasecmp(left_rest, right_rest);
}

// The name of a file as the system takes it.
inline const std::string& FileName(const std::string& name) { return name; }

inline std::string FileName(const std::wstring& name) {
  return wstr_to_str(name);
}

// Whether the characters of a file are its bytes, with no conversion between
// them. Wide files always convert.
template <class Char>
bool IsFileUnconverted(const std::locale& locale) {
  return std::is_same_v<Char, char> &&
         std::use_facet<std::codecvt<Char, char, std::mbstate_t>>(locale)
             .always_noconv();
}

}  // namespace korvan::ini

#endif  // KORVAN_INI_TWINS_H_
