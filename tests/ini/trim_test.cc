// Trimming a text of the characters of a set.
#include <korvan/text.h>

#include <string>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/failing_new.h"

namespace korvan::test {
namespace {

struct Trim : testing::Test {
  using Trimming = void (*)(String&, const String&);

  static std::string Trimmed(Trimming trim, String text, String set) {
    trim(text, set);
    return Shown(text);
  }
};

TEST_F(Trim, TrimErasesAtBothEndsAndNothingInside) {
  EXPECT_EQ(Trimmed(korvan::Trim, " \t a b \t"_t, " \t"_t), "a b");
  EXPECT_EQ(Trimmed(korvan::Trim, "a \t b"_t, " \t"_t), "a \\9; b");
  EXPECT_EQ(Trimmed(korvan::Trim, "xxaxx"_t, " \t"_t), "xxaxx");
}

TEST_F(Trim, ATextOfNothingButTheSetBecomesEmpty) {
  for (const auto trim : {Trimming{korvan::Trim}, Trimming{korvan::LTrim},
                          Trimming{korvan::RTrim}}) {
    EXPECT_EQ(Trimmed(trim, "   "_t, " \t"_t), "");
    EXPECT_EQ(Trimmed(trim, ""_t, " \t"_t), "");
  }
}

TEST_F(Trim, LTrimErasesAtTheLeftOnly) {
  EXPECT_EQ(Trimmed(korvan::LTrim, "\n\rx\r"_t, "\n\r"_t), "x\\d;");
}

TEST_F(Trim, RTrimErasesAtTheRightOnly) {
  EXPECT_EQ(Trimmed(korvan::RTrim, "\rx\n\r\n"_t, "\n\r"_t), "\\d;x");
}

TEST_F(Trim, AnEmptySetChangesNothing) {
  EXPECT_EQ(Trimmed(korvan::RTrim, "abc "_t, ""_t), "abc ");
  EXPECT_EQ(Trimmed(korvan::LTrim, " abc"_t, ""_t), " abc");
  EXPECT_EQ(Trimmed(korvan::Trim, " abc "_t, ""_t), " abc ");
}

TEST_F(Trim, EveryCharacterOfTheSetStandsForItself) {
  EXPECT_EQ(Trimmed(korvan::Trim, "cabXbac"_t, "abcab"_t), "X");
  EXPECT_EQ(Trimmed(korvan::Trim, "-a-z-"_t, "a-z"_t), "");
}

TEST_F(Trim, NulIsACharacterLikeOthersInTextAndSet) {
  EXPECT_EQ(Trimmed(korvan::Trim, "\0a\0b\0"_t, "\0"_t), "a\\0;b");
  EXPECT_EQ(Trimmed(korvan::Trim, " \0 "_t, " "_t), "\\0;");
}

TEST_F(Trim, TrimmingAllocatesNothing) {
  const String set = " \t"_t;
  for (const auto trim : {Trimming{korvan::Trim}, Trimming{korvan::LTrim},
                          Trimming{korvan::RTrim}}) {
    String text = String(100, ' ') + "name"_t + String(100, '\t');
    const FailingNew none(0);
    EXPECT_NO_THROW(trim(text, set));
  }
}

TEST_F(Trim, TheTextMayBeItsOwnSet) {
  for (const auto trim : {Trimming{korvan::Trim}, Trimming{korvan::LTrim},
                          Trimming{korvan::RTrim}}) {
    String text = "abc"_t;
    trim(text, text);
    EXPECT_EQ(Shown(text), "");
  }
}

}  // namespace
}  // namespace korvan::test
