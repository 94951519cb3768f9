// The width of the characters that an INI test is compiled for. The tests are
// written as if there were one; CMake compiles them once for each.
#ifndef KORVAN_TESTS_INI_WIDTH_H_
#define KORVAN_TESTS_INI_WIDTH_H_

#include <korvan/ini_file.h>

#include <fstream>
#include <istream>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>

#include "support/plain_ini.h"

namespace korvan::test {

#if KORVAN_TEST_WIDE
using Char = wchar_t;
using File = CIniFileW;
using Section = CIniFileW::CIniSectionW;
using Key = CIniFileW::CIniSectionW::CIniKeyW;
using Merge = CIniFileW::CIniMergeW;
using Less = ci_less_w;
#else
using Char = char;
using File = CIniFileA;
using Section = CIniFileA::CIniSectionA;
using Key = CIniFileA::CIniSectionA::CIniKeyA;
using Merge = CIniFileA::CIniMergeA;
using Less = ci_less_a;
#endif
using PlainFile = PlainIni<Char>;

using String = std::basic_string<Char>;
using Traits = String::traits_type;
using StreamBuffer = std::basic_streambuf<Char>;
using FileBuffer = std::basic_filebuf<Char>;
using StringBuffer = std::basic_stringbuf<Char>;
using InputStream = std::basic_istream<Char>;
using OutputStream = std::basic_ostream<Char>;
using StringInput = std::basic_istringstream<Char>;
using StringOutput = std::basic_ostringstream<Char>;

// ASCII text in the width's characters. It may hold NULs.
inline String Text(std::string_view ascii) {
  return String(ascii.begin(), ascii.end());
}

inline String operator""_t(const char* ascii, std::size_t size) {
  return Text({ascii, size});
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_INI_WIDTH_H_
