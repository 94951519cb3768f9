// What the tests of the INI files need to be written once for both twins.
#ifndef KORVAN_TESTS_INI_INI_TWINS_H_
#define KORVAN_TESTS_INI_INI_TWINS_H_

#include <gtest/gtest.h>
#include <korvan/ini_file.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include "ini/plain_ini.h"

struct Narrow {
  using File = korvan::CIniFileA;
  using Section = File::CIniSectionA;
  using Key = Section::CIniKeyA;
  using Merge = File::CIniMergeA;
  using Less = korvan::ci_less_a;
  using Char = char;
};

struct Wide {
  using File = korvan::CIniFileW;
  using Section = File::CIniSectionW;
  using Key = Section::CIniKeyW;
  using Merge = File::CIniMergeW;
  using Less = korvan::ci_less_w;
  using Char = wchar_t;
};

using Twins = testing::Types<Narrow, Wide>;

struct TwinNames {
  template <class Twin>
  static std::string GetName(int /*index*/) {
    return sizeof(typename Twin::Char) == 1 ? "Narrow" : "Wide";
  }
};

// ASCII text that becomes what is asked for. It may hold NULs.
class Ascii {
 public:
  constexpr explicit Ascii(std::string_view text) : text_(text) {}

  template <class Char>
  operator std::basic_string<Char>() const {  // NOLINT: implicit by design
    return std::basic_string<Char>(text_.begin(), text_.end());
  }

 private:
  std::string_view text_;
};

constexpr Ascii operator""_t(const char* text, std::size_t size) {
  return Ascii({text, size});
}

template <class Char>
std::basic_string<Char> Text(std::string_view ascii) {
  return Ascii(ascii);
}

// A text of either kind as a test prints it. What is not printable ASCII, and
// what ContentOf uses itself, stands as its number: "\a;" is a line feed.
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

// "Main{k=v|l=w} Other{}". Every look at a document is a look at its
// invariants too.
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

template <class Char>
std::basic_istringstream<Char> Input(std::string_view ascii) {
  return std::basic_istringstream<Char>(Text<Char>(ascii));
}

// The C library's locale, while it lives.
class CLocale {
 public:
  explicit CLocale(const char* name) {
    EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
  }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;
  ~CLocale() { std::setlocale(LC_ALL, "C"); }
};

// The C++ library's locale, which takes the C library's with it.
class CxxLocale {
 public:
  explicit CxxLocale(const std::locale& locale)
      : former_(std::locale::global(locale)) {}
  explicit CxxLocale(const char* name) : CxxLocale(std::locale(name)) {}
  CxxLocale(const CxxLocale&) = delete;
  CxxLocale& operator=(const CxxLocale&) = delete;
  ~CxxLocale() { std::locale::global(former_); }

 private:
  std::locale former_;
};

// A new empty folder, removed with the files in it.
class Folder {
 public:
  Folder() : path_(testing::TempDir() + "korvan-ini-XXXXXX") {
    EXPECT_NE(mkdtemp(path_.data()), nullptr) << path_;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }

  std::string operator/(std::string_view name) const {
    return path_ + "/" + std::string(name);
  }

 private:
  std::string path_;
};

inline std::string BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

inline void WriteBytes(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  EXPECT_TRUE(file) << path;
}

#endif  // KORVAN_TESTS_INI_INI_TWINS_H_
