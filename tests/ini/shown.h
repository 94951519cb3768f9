// Texts, documents and the states of streams as tests print and compare them.
#ifndef KORVAN_TESTS_INI_SHOWN_H_
#define KORVAN_TESTS_INI_SHOWN_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <ios>
#include <string>
#include <string_view>
#include <type_traits>

#include "support/plain_ini.h"

namespace korvan::test {

// A text of either width. What is not printable ASCII, and what ContentOf uses
// itself, stands as its number: "\a;" is a line feed.
template <class Char>
std::string Shown(const std::basic_string<Char>& text) {
  std::string shown;
  for (const Char character : text) {
    const auto number = static_cast<unsigned long>(
        static_cast<std::make_unsigned_t<Char>>(character));
    if (number >= ' ' && number < 0x7F &&
        std::string_view("{}|\\").find(static_cast<char>(number)) ==
            std::string_view::npos) {
      shown += static_cast<char>(number);
    } else {
      char escape[24];
      std::snprintf(escape, sizeof(escape), "\\%lx;", number);
      shown += escape;
    }
  }
  return shown;
}

// " bad eof fail", or those of them that are set.
inline std::string Shown(std::ios_base::iostate state) {
  std::string shown;
  if (state & std::ios_base::badbit) {
    shown += " bad";
  }
  if (state & std::ios_base::eofbit) {
    shown += " eof";
  }
  if (state & std::ios_base::failbit) {
    shown += " fail";
  }
  return shown;
}

// "Main{k=v|l=w} Other{}". Every look at a document is a look at its
// invariants, too.
template <class File>
std::string ContentOf(const File& file) {
  std::string content;
  for (const auto& [section_name, section] : file.GetSections()) {
    EXPECT_NE(section, nullptr);
    EXPECT_EQ(Shown(section->GetSectionName()), Shown(section_name));
    EXPECT_EQ(file.GetSection(section_name), section);
    content += (content.empty() ? "" : " ") + Shown(section_name) + '{';
    bool first = true;
    for (const auto& [key_name, key] : section->GetKeys()) {
      EXPECT_NE(key, nullptr);
      EXPECT_EQ(Shown(key->GetKeyName()), Shown(key_name));
      EXPECT_EQ(section->GetKey(key_name), key);
      content += (first ? "" : "|") + Shown(key_name) + '=';
      content += Shown(key->GetValue());
      first = false;
    }
    content += '}';
  }
  return content;
}

template <class Char>
std::string ContentOf(const PlainIni<Char>& plain) {
  std::string content;
  for (const auto& [section, keys] : plain.sections()) {
    content += (content.empty() ? "" : " ") + Shown(section) + '{';
    bool first = true;
    for (const auto& [key, value] : keys) {
      content += (first ? "" : "|") + Shown(key) + '=' + Shown(value);
      first = false;
    }
    content += '}';
  }
  return content;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_INI_SHOWN_H_
