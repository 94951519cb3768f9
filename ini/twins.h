// All that differs between narrow and wide INI files, beside the type of their
// characters and what ini_file_a.cc and ini_file_w.cc hold. ASCII characters
// have the same numbers in both, so narrow literals serve for both.
#ifndef KORVAN_INI_TWINS_H_
#define KORVAN_INI_TWINS_H_

#include <korvan/text.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <locale>
#include <string>
#include <string_view>
#include <type_traits>

namespace korvan::ini {

template <class View>
int CompareSizes(View left, View right) {
  return static_cast<int>(left.size() > right.size()) -
         static_cast<int>(left.size() < right.size());
}

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

// The same for names that need no NUL at their end. Of narrow ones that are one
// up to a NUL, the shorter comes first; wide ones must have no NUL.
inline int CompareNames(std::string_view left, std::string_view right) {
  const int difference = strncasecmp(left.data(), right.data(),
                                     std::min(left.size(), right.size()));
  return difference != 0 ? difference : CompareSizes(left, right);
}

inline int CompareNames(std::wstring_view left, std::wstring_view right) {
  const auto [left_rest, right_rest] = std::ranges::mismatch(left, right);
  const std::wstring_view left_end(left_rest, left.end());
  const std::wstring_view right_end(right_rest, right.end());
  const int difference =
      wcsncasecmp(left_end.data(), right_end.data(),
                  std::min(left_end.size(), right_end.size()));
  return difference != 0 ? difference : CompareSizes(left_end, right_end);
}

// Whether CompareNames makes an order of any names. Not of wide ones, since
// these may have characters of 0x80000000 and more, though UTF-32 has none.
// wcscasecmp subtracts characters, so that 1 < 0x60000000 < 0xC0000000 < 1.
template <class String>
inline constexpr bool kAllNamesAreOrdered =
    std::is_same_v<typename String::value_type, char>;

// Whether a name can be ordered among names of which the same is true: a wide
// one must have UTF-32 alone, and no NUL.
template <class View>
constexpr bool IsOrdered(View name) {
  return kAllNamesAreOrdered<View> ||
         std::ranges::all_of(name, [](auto character) {
           return static_cast<std::int32_t>(character) > 0;
         });
}

// A character without its case, as CompareNames takes it in the locale in which
// this was made.
template <class Char>
class Folding {
 public:
  Folding() {
    std::size_t character = 0;
    for (std::uint32_t& folded : table_) {
      folded = Folded(static_cast<Char>(character++));
    }
  }

  std::uint32_t operator()(Char character) const {
    const std::uint32_t number = NumberOf(character);
    return number < std::size(table_) ? table_[number] : Folded(character);
  }

 private:
  static std::uint32_t NumberOf(char character) {
    return static_cast<unsigned char>(character);
  }
  static std::uint32_t NumberOf(wchar_t character) {
    return static_cast<std::uint32_t>(character);
  }
  static std::uint32_t Folded(char character) {
    return static_cast<unsigned char>(
        std::tolower(static_cast<unsigned char>(character)));
  }
  static std::uint32_t Folded(wchar_t character) {
    return static_cast<std::uint32_t>(
        std::towlower(static_cast<std::wint_t>(character)));
  }

  std::uint32_t table_[256];  // all narrow characters, and as many wide ones
};

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
