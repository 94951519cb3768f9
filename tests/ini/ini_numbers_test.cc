// Numbers as values, which narrow documents have.
#include <korvan/ini_file.h>

#include <climits>
#include <cstdio>
#include <new>
#include <string>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/fail_each_allocation.h"
#include "support/failing_new.h"

namespace korvan::test {
namespace {

TEST(IniNumbers, ANumberIsWrittenInDecimalDigitsWithAllItsBits) {
  File file;
  const struct {
    unsigned long number;
    const char* text;
  } cases[] = {{0, "0"},
               {42, "42"},
               {4294967295, "4294967295"},
               {4294967296, "4294967296"},
               {ULONG_MAX, "18446744073709551615"}};
  for (const auto& written : cases) {
    file.SetKeyValueDword(" S ", "\tk", written.number);
    EXPECT_EQ(ContentOf(file), std::string("S{k=") + written.text + '}');
  }
}

TEST(IniNumbers, ANumberIsReadAsTheCLibraryReadsIt) {
  File file;
  const struct {
    const char* text;
    unsigned long number;
  } cases[] = {{"42", 42},          {" 7", 7},
               {"\t\n\v\f\r 7", 7}, {"12abc", 12},
               {"0x10", 0},         {"+5", 5},
               {"-1", 4294967295},  {"-4294967295", 1},
               {"007", 7},          {"4294967295", 4294967295},
               {"4294967296", 0},   {"abc", 4294967295},
               {"", 4294967295},    {" ", 4294967295},
               {"-", 4294967295},   {"- 1", 4294967295}};
  for (const auto& read : cases) {
    file.SetKeyValue("S", "k", read.text);
    EXPECT_EQ(file.GetKeyValueDword(" s ", "K\t"), read.number)
        << '"' << read.text << '"';
  }
}

TEST(IniNumbers, ANumberOfAnyLengthIsReadAsTheCLibraryReadsIt) {
  File file;
  for (const char* const sign : {"", "-"}) {
    std::string digits = sign;
    for (int length = 1; length < 40; ++length) {
      digits += static_cast<char>('0' + length % 10);
      unsigned int expected = 0xFFFFFFFF;
      std::sscanf(digits.c_str(), "%u", &expected);
      file.SetKeyValue("S", "k", digits);
      EXPECT_EQ(file.GetKeyValueDword("S", "k"), expected) << digits;
    }
  }
}

TEST(IniNumbers, ANumberEndsAtANul) {
  File file;
  file.SetKeyValue("S", "k", std::string("1\0002", 3));
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 1u);
  file.SetKeyValue("S", "k", std::string("\0002", 2));
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 4294967295u);
}

TEST(IniNumbers, AMissingNumberIsTheLargestAndCreatesNothing) {
  File file;
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 4294967295u);
  file.AddSection("S");
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 4294967295u);
  EXPECT_EQ(ContentOf(file), "S{}");
}

TEST(IniNumbers, AFailedAllocationSetsNoNumber) {
  FailEachAllocation([](long successes) {
    File file;
    bool failed = false;
    {
      const FailingNew failing(successes);
      try {
        file.SetKeyValueDword("a section with a name too long to be inline",
                              "a key with a name too long to be inline",
                              ULONG_MAX);
      } catch (const std::bad_alloc&) {
      }
      failed = failing.Failed();
    }
    EXPECT_EQ(file.GetSections().size(), failed ? 0u : 1u);
    return failed;
  });
}

}  // namespace
}  // namespace korvan::test
