#ifndef KORVAN_INI_TWINS_H_
#define KORVAN_INI_TWINS_H_

#include <korvan/text.h>
#include <strings.h>

#include <cwchar>
#include <locale>
#include <string>

/// @file
/// All that differs between the narrow INI files and the wide ones, beside
/// the types of their characters. Characters of ASCII have the same numbers in
/// both.

namespace korvan::ini {

/// Compares two names without regard to case, as their order in a map has it.
inline int CompareNames(const std::string& left, const std::string& right) {
  return strcasecmp(left.c_str(), right.c_str());
}

inline int CompareNames(const std::wstring& left, const std::wstring& right) {
  const wchar_t* from_left = left.c_str();
  const wchar_t* from_right = right.c_str();
  // wcscasecmp asks the locale for each character, which is all it costs. A
  // character folds like itself in every locale, so it need not be asked for
  // the part that the two names share.
  while (*from_left == *from_right && *from_left != L'\0') {
    ++from_left;
    ++from_right;
  }
  return wcscasecmp(from_left, from_right);
}

/// The name by which the system knows a file.
inline const std::string& FileName(const std::string& name) { return name; }

inline std::string FileName(const std::wstring& name) {
  return wstr_to_str(name);
}

/// Whether a file of such characters comes out the same however large the
/// blocks are that it is moved in. Where a conversion fails within a block,
/// the block's beginning decides what is lost; wide files always convert.
inline bool AnyBlockWillDo(char /*character*/, const std::locale& locale) {
  return std::use_facet<std::codecvt<char, char, std::mbstate_t>>(locale)
      .always_noconv();
}

inline bool AnyBlockWillDo(wchar_t /*character*/,
                           const std::locale& /*locale*/) {
  return false;
}

}  // namespace korvan::ini

#endif  // KORVAN_INI_TWINS_H_
