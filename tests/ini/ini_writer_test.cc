#include <korvan/ini_file.h>

#include <cstdint>
#include <iomanip>

#include "ini/hostile_buffers.h"
#include "ini/ini_twins.h"

// What the writer puts out, that its insertions look like insertions, and what
// the reader takes back.

namespace {

template <class Twin>
class IniWriter : public testing::Test {
 protected:
  std::string Saved() {
    std::basic_ostringstream<typename Twin::Char> output;
    file_.Save(output);
    EXPECT_TRUE(output.good());
    return Shown(output.str());
  }

  // What a document has after it was saved and loaded again.
  std::string TakenBack() {
    std::basic_stringstream<typename Twin::Char> stream;
    typename Twin::File file;
    stream << file_;
    stream >> file;
    return ContentOf(file);
  }

  void Set(std::string_view section, std::string_view key,
           std::string_view value) {
    file_.SetKeyValue(Ascii(section), Ascii(key), Ascii(value));
  }

  typename Twin::File file_;
};
TYPED_TEST_SUITE(IniWriter, Twins, TwinNames);

TYPED_TEST(IniWriter, WritesNothingForAnEmptyDocument) {
  EXPECT_EQ(this->Saved(), "");
}

TYPED_TEST(IniWriter, WritesHeadersAndKeysAndNothingElse) {
  this->Set("Main", "k", "12");
  this->Set("Main", "l", "");
  this->Set("Main", "m", " v ");
  this->Set("Other", "[x]", "\"#;=");
  EXPECT_EQ(this->Saved(),
            "[Main]\\a;k=12\\a;l=\\a;m= v \\a;[Other]\\a;[x]=\"#;=\\a;");
}

TYPED_TEST(IniWriter, WritesInCaseInsensitiveOrder) {
  for (const auto name : {"Zeta", "alpha", "", "BETA"}) {
    this->Set(name, "b", "1");
    this->Set(name, "A", "2");
  }
  EXPECT_EQ(this->Saved(),
            "[]\\a;A=2\\a;b=1\\a;[alpha]\\a;A=2\\a;b=1\\a;"
            "[BETA]\\a;A=2\\a;b=1\\a;[Zeta]\\a;A=2\\a;b=1\\a;");
}

TYPED_TEST(IniWriter, WritesOnlyTheHeaderOfASectionWithoutKeys) {
  this->file_.AddSection("a"_t);
  this->file_.AddSection("b"_t);
  EXPECT_EQ(this->Saved(), "[a]\\a;[b]\\a;");
}

TYPED_TEST(IniWriter, WritesTextsAsTheyAre) {
  this->Set("]\r\n[", "a\nb", std::string_view("\0\r\n", 3));
  EXPECT_EQ(this->Saved(), "[]\\d;\\a;[]\\a;a\\a;b=\\0;\\d;\\a;\\a;");
}

TYPED_TEST(IniWriter, TheOperatorGivesTheStreamBack) {
  this->file_.AddSection("a"_t);
  std::basic_ostringstream<typename TypeParam::Char> output;
  EXPECT_EQ(&(output << this->file_), &output);
  EXPECT_EQ(Shown(output.str()), "[a]\\a;");
}

TYPED_TEST(IniWriter, DoesNotFlush) {
  this->Set("Main", "k", "v");
  for (const std::size_t room : {0u, 1u, 5u, 1000u}) {
    LimitedOutput<typename TypeParam::Char> buffer(room);
    std::basic_ostream<typename TypeParam::Char> output(&buffer);
    output << this->file_;
    EXPECT_EQ(buffer.flushes(), 0);
  }
}

TYPED_TEST(IniWriter, TheFirstInsertionTakesTheWidth) {
  this->Set("a", "k", "v");
  std::basic_ostringstream<typename TypeParam::Char> output;
  output << std::setw(6) << std::setfill(typename TypeParam::Char{'.'})
         << this->file_;
  EXPECT_EQ(Shown(output.str()), "...[a]\\a;k=v\\a;");
  EXPECT_EQ(output.width(), 0);
}

TYPED_TEST(IniWriter, AnEmptyDocumentLeavesTheWidth) {
  std::basic_ostringstream<typename TypeParam::Char> output;
  output << std::setw(6) << this->file_;
  EXPECT_EQ(output.width(), 6);
}

// Everything that a stream can be, beside one insertion after another.

template <class Char, class File>
std::string Seen(File& file, std::size_t room, std::size_t capacity,
                 bool throws, std::ios_base::iostate exceptions, bool tied,
                 std::ios_base::fmtflags flags, int width,
                 std::ios_base::iostate state) {
  LimitedOutput<Char> buffer(room, capacity, throws);
  std::basic_ostream<Char> output(&buffer);
  LimitedOutput<Char> tied_buffer;
  std::basic_ostream<Char> tied_output(&tied_buffer);
  if (tied) output.tie(&tied_output);
  output.fill('*');
  output.width(width);
  output.setf(flags);
  output.setstate(state);
  const std::string first = Thrown([&] { output.exceptions(exceptions); });
  const std::string thrown = Thrown([&] { file.Save(output); });
  std::ostringstream seen;
  seen << Shown(buffer.Written()) << " thrown:" << first << ' ' << thrown
       << " state:" << Shown(output.rdstate()) << " width:" << output.width()
       << " flushes:" << buffer.flushes() << ' ' << tied_buffer.flushes();
  return seen.str();
}

TYPED_TEST(IniWriter, CannotBeToldFromInsertionsWhateverTheStream) {
  using Char = typename TypeParam::Char;
  constexpr auto kNone = std::ios_base::fmtflags{};
  PlainIni<Char> plain;
  for (const auto& [section, key, value] :
       {std::tuple{"a", "k", "v"},
        {"a", "l", ""},
        {"", "", ""},
        {"b", "a longer name", "a value of some length"}}) {
    this->Set(section, key, value);
    plain.Set(Ascii(section), Ascii(key), Ascii(value));
  }
  const std::size_t whole = this->Saved().size();
  for (const std::size_t room : {0u, 7u, 1000u}) {
    for (std::size_t capacity = 0; capacity <= whole; ++capacity) {
      for (const bool throws : {false, true}) {
        for (const auto exceptions :
             {std::ios_base::goodbit, std::ios_base::badbit,
              std::ios_base::failbit,
              std::ios_base::failbit | std::ios_base::badbit}) {
          for (const bool tied : {false, true}) {
            for (const auto flags :
                 {kNone, std::ios_base::unitbuf, std::ios_base::left}) {
              for (const int width : {0, 6}) {
                ASSERT_EQ(
                    Seen<Char>(this->file_, room, capacity, throws, exceptions,
                               tied, flags, width, std::ios_base::goodbit),
                    Seen<Char>(plain, room, capacity, throws, exceptions, tied,
                               flags, width, std::ios_base::goodbit))
                    << "room " << room << ", capacity " << capacity;
              }
            }
          }
        }
      }
    }
  }
  for (const auto state : {std::ios_base::goodbit, std::ios_base::badbit,
                           std::ios_base::failbit, std::ios_base::eofbit}) {
    for (const int width : {0, 6, -1}) {
      for (const auto exceptions :
           {std::ios_base::goodbit, std::ios_base::failbit}) {
        EXPECT_EQ(Seen<Char>(this->file_, 1000, kNever, false, exceptions,
                             false, kNone, width, state),
                  Seen<Char>(plain, 1000, kNever, false, exceptions, false,
                             kNone, width, state));
      }
    }
  }
}

TYPED_TEST(IniWriter, AStreamWithoutABufferFails) {
  this->file_.AddSection("a"_t);
  std::basic_ostream<typename TypeParam::Char> output(nullptr);
  output << this->file_;
  EXPECT_EQ(Shown(output.rdstate()), " bad fail");
}

// Buffers may have more room than an int can count.
TYPED_TEST(IniWriter, RoomBeyondAnIntIsUsedAsFarAsItCounts) {
  using Char = typename TypeParam::Char;
  class Endless : public std::basic_streambuf<Char> {
   public:
    Endless() {
      // Only the first characters are there; nobody gets to the others.
      this->setp(text_, reinterpret_cast<Char*>(
                            reinterpret_cast<std::uintptr_t>(text_) +
                            (std::uintptr_t{1} << 36)));
    }
    std::basic_string<Char> Written() const {
      const Char* const end = this->pptr();
      return {text_, end};
    }

   private:
    Char text_[64];
  };
  this->Set("a", "k", "v");
  Endless buffer;
  std::basic_ostream<Char> output(&buffer);
  output << this->file_;
  EXPECT_EQ(Shown(buffer.Written()), "[a]\\a;k=v\\a;");
}

TYPED_TEST(IniWriter, LongTextsAreWrittenWhole) {
  const std::string name(70000, 'n');
  const std::string value(300000, 'v');
  this->Set(name, name, value);
  EXPECT_EQ(this->Saved(), "[" + name + "]\\a;" + name + "=" + value + "\\a;");
}

TYPED_TEST(IniWriter, SectionsComeBackAndOrdinaryKeysDoNot) {
  this->Set("Main", "k", "v");
  this->Set("  x y\t", "k", "v");
  this->Set("", "k", "v");
  this->Set("a]b", "k", "v");
  EXPECT_EQ(this->TakenBack(), "{} a]b{} Main{} x y{}");
}

TYPED_TEST(IniWriter, KeysThatBeginWithABracketComeBack) {
  this->Set("Main", "[k", "v");
  this->Set("Main", "[l", "\t v \t");
  this->Set("Main", "[m", "");
  this->Set("Main", "[n]", "v");
  EXPECT_EQ(this->TakenBack(), "Main{[k=v|[l=\\9; v \\9;|[m=|[n]=v}");
}

TYPED_TEST(IniWriter, AKeyLineThatEndsInABracketComesBackAsAHeader) {
  this->Set("Main", "[k", "v]");
  this->Set("Main", "[l", "w");
  EXPECT_EQ(this->TakenBack(), "k=v{[l=w} Main{}");
}

TYPED_TEST(IniWriter, AKeyNameIsCutAtItsFirstEqualsSign) {
  this->Set("Main", "[a=b", "c");
  EXPECT_EQ(this->TakenBack(), "Main{[a=b=c}");
  this->Set("Main", "[n]=", "");
  EXPECT_EQ(this->TakenBack(), "Main{[a=b=c|[n]==}");
}

TYPED_TEST(IniWriter, ASectionNameWithALineFeedIsLostAndItsKeysGoToTheFormer) {
  this->Set("a", "[k", "1");
  this->Set("b\nc", "[l", "2");
  EXPECT_EQ(this->TakenBack(), "a{[k=1|[l=2}");
}

TYPED_TEST(IniWriter, LineEndsInValuesCutOrGetLost) {
  this->Set("a", "[k", "v\r\n\r");
  this->Set("a", "[l", "v\nw");
  this->Set("a", "[m", "v\n[n=w");
  EXPECT_EQ(this->TakenBack(), "a{[k=v|[l=v|[m=v|[n=w}");
}

}  // namespace
