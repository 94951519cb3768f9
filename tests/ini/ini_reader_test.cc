// What the reader makes of a text, and how it leaves the stream.
#include <korvan/ini_file.h>
#include <pthread.h>

#include <locale>
#include <thread>

#include "ini/hostile_buffers.h"
#include "ini/ini_twins.h"

namespace {

template <class Twin>
class IniReader : public testing::Test {
 protected:
  std::string Loaded(std::string_view text, bool merge = false) {
    auto input = Input<typename Twin::Char>(text);
    file_.Load(input, merge);
    EXPECT_TRUE(input.fail());
    return ContentOf(file_);
  }

  typename Twin::File file_;
};
TYPED_TEST_SUITE(IniReader, Twins, TwinNames);

struct LineCase {
  std::string_view line;
  const char* content;  // after the header [s] and this line
};

constexpr LineCase kLines[] = {
    {"", "s{}"},
    {"Main=1", "s{}"},
    {"k=[v", "s{}"},
    {"# note", "s{}"},
    {"; note", "s{}"},
    {"#[k=v", "s{}"},
    {"\xEF\xBB\xBF[Main]", "s{}"},  // no mark of an encoding is known
    {"[Main]", "Main{} s{}"},
    {"[ Main ]", "Main{} s{}"},
    {"[\tMain\t]", "Main{} s{}"},
    {"[ Ma in ]", "Ma in{} s{}"},
    {"  [Main]", "Main{} s{}"},
    {" \t [Main]", "Main{} s{}"},
    {"[Main] ", "Main]{} s{}"},
    {"[Main]  ", "Main]{} s{}"},
    {"[Main]\t", "Main]{} s{}"},
    {"[Main] \r", "Main]{} s{}"},
    {"[Main]\r \r", "Main]\\d;{} s{}"},
    {"[Main]\r", "Main{} s{}"},
    {"[Main]\r\r", "Main{} s{}"},
    {"[Main]\v", "s{}"},
    {"\r[Main]", "s{}"},
    {"\v[Main]", "s{}"},
    {"[]", "{} s{}"},
    {"[ ]", "{} s{}"},
    {"[] ", "]{} s{}"},
    {"[]]", "]{} s{}"},
    {"[[]]", "[]{} s{}"},
    {"[Main] ; note", "s{}"},
    {"[Main] ; [note]", "Main] ; [note{} s{}"},
    {"[Main]=1", "s{[Main]=1}"},
    {"[k=v", "s{[k=v}"},
    {"[k = v ", "s{[k= v }"},
    {" \t[ k\t=\tv\t", "s{[ k=\\9;v\\9;}"},
    {"[a=b=c", "s{[a=b=c}"},
    {"[a==", "s{[a==}"},
    {"[=", "s{[=}"},
    {"[=v", "s{[=v}"},
    {"[k=", "s{[k=}"},
    {"[k]=", "s{[k]=}"},
    {"[k= ", "s{[k= }"},
    {"[k=\r", "s{[k=}"},
    {"[k=v\r\r", "s{[k=v}"},
    {"[k=v\rw\r", "s{[k=v\\d;w}"},
    {"[k=v \r \r", "s{[k=v \\d; }"},
    {"[k=\"v\" # note ; note", "s{[k=\"v\" # note ; note}"},
    {"[k=v]", "k=v{} s{}"},
    {"[k=v] ", "k=v]{} s{}"},
    {"[k=]", "k={} s{}"},
    {"[k", "s{}"},
    {"[", "s{}"},
    {"[ ", "s{}"},
    {"]", "s{}"},
    {" ", "s{}"},
    {"\r", "s{}"},
    {" \r", "s{}"},
    {"=", "s{}"},
    {"=v", "s{}"},
    {std::string_view("[a\0b]", 5), "a\\0;b{} s{}"},
    {std::string_view("[k\0l=v\0w\0", 9), "s{[k\\0;l=v\\0;w\\0;}"},
    {std::string_view("\0[k=v", 6), "s{}"},
};

TYPED_TEST(IniReader, ReadsLinesByTheirKinds) {
  for (const LineCase& line : kLines) {
    // With and without a line feed; whole in the buffer and cut by it.
    for (const std::string_view end : {"", "\n", "\r\n", "\n\n"}) {
      const std::string text =
          "[s]\n" + std::string(line.line) + std::string(end);
      for (const std::size_t size : {kNever / 2, std::size_t{1}, std::size_t{0},
                                     std::size_t{7}, text.size() - 1}) {
        LoadCase<typename TypeParam::Char> load;
        // Not by Text: bytes of 0x80 and more are to stay what they are.
        for (const char byte : text) {
          load.text += static_cast<typename TypeParam::Char>(
              sizeof(typename TypeParam::Char) == 1
                  ? byte
                  : static_cast<unsigned char>(byte));
        }
        load.pieces = {size};
        typename TypeParam::File file;
        const std::string seen = Load(load, file);
        EXPECT_EQ(ContentOf(file), line.content)
            << '"' << line.line << "\", pieces of " << size << ": " << seen;
      }
    }
  }
}

TYPED_TEST(IniReader, NothingGivesAnEmptyDocument) {
  EXPECT_EQ(this->Loaded(""), "");
  EXPECT_EQ(this->Loaded("\n\n \n\r\n"), "");
}

TYPED_TEST(IniReader, KeysGoToTheSectionOfTheLastHeader) {
  EXPECT_EQ(this->Loaded("[b]\n[x=1\n[a]\n[y=2\n[z=3\n[B]\n[w=4\n"),
            "a{[y=2|[z=3} b{[w=4|[x=1}");
}

TYPED_TEST(IniReader, KeysBeforeTheFirstHeaderAreDropped) {
  EXPECT_EQ(this->Loaded("[k=v\n[Main]\n[l=w\n"), "Main{[l=w}");
  EXPECT_EQ(this->Loaded("[k=v\n[Main]=1\n", true), "Main{[l=w}");
}

TYPED_TEST(IniReader, TheSectionOfAnEarlierLoadIsNoCurrentSection) {
  this->Loaded("[Main]\n");
  EXPECT_EQ(this->Loaded("[k=v\n", true), "Main{}");
}

TYPED_TEST(IniReader, ARepeatedHeaderContinuesItsSection) {
  EXPECT_EQ(this->Loaded("[Main]\n[a=1\n[Other]\n[MAIN]\n[b=2\n"),
            "Main{[a=1|[b=2} Other{}");
}

TYPED_TEST(IniReader, TheLastValueOfAKeyWinsAndTheFirstSpelling) {
  EXPECT_EQ(this->Loaded("[Main]\n[k=1\n[K=2\n"), "Main{[k=2}");
}

TYPED_TEST(IniReader, EveryLineEndsAtALineFeedAndNothingElse) {
  EXPECT_EQ(this->Loaded("[a]\r[b]\n"), "a]\\d;[b{}");
  EXPECT_EQ(this->Loaded("[a]\n\r[b]\n[c]"), "a{} c{}");
  EXPECT_EQ(this->Loaded("[a]\v[b]\f\n"), "");
}

TYPED_TEST(IniReader, ReplacingDestroysWhatWasThere) {
  this->file_.SetKeyValue("Old"_t, "k"_t, "v"_t);
  EXPECT_EQ(this->Loaded("[New]\n"), "New{}");
  EXPECT_EQ(this->Loaded(""), "");
}

TYPED_TEST(IniReader, MergingKeepsObjectsAndReplacesValues) {
  auto* const section = this->file_.AddSection("Main"_t);
  section->SetKeyValue("[k"_t, "1"_t);
  section->SetKeyValue("l"_t, "2"_t);
  auto* const key = section->GetKey("[k"_t);
  this->file_.AddSection("Other"_t);
  EXPECT_EQ(this->Loaded("[MAIN]\n[K=3\n[m=4\n[New]\n", true),
            "Main{[k=3|[m=4|l=2} New{} Other{}");
  EXPECT_EQ(this->file_.GetSection("Main"_t), section);
  EXPECT_EQ(section->GetKey("[k"_t), key);
}

TYPED_TEST(IniReader, MergingNothingChangesNothing) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  EXPECT_EQ(this->Loaded("", true), "Main{k=v}");
}

TYPED_TEST(IniReader, MergeIsFalseUnlessAskedFor) {
  this->file_.AddSection("Old"_t);
  auto input = Input<typename TypeParam::Char>("[New]\n");
  this->file_.Load(input);
  EXPECT_EQ(ContentOf(this->file_), "New{}");
}

TYPED_TEST(IniReader, TheOperatorReplacesAndGivesTheStreamBack) {
  this->file_.AddSection("Old"_t);
  auto input = Input<typename TypeParam::Char>("[New]\n");
  EXPECT_EQ(&(input >> this->file_), &input);
  EXPECT_EQ(ContentOf(this->file_), "New{}");
}

TYPED_TEST(IniReader, TheOperatorMergesWithASelector) {
  this->file_.AddSection("Old"_t);
  auto input = Input<typename TypeParam::Char>("[New]\n");
  const typename TypeParam::Merge merge(this->file_);
  EXPECT_EQ(&(input >> merge), &input);
  EXPECT_EQ(ContentOf(this->file_), "New{} Old{}");
}

TYPED_TEST(IniReader, TheStreamIsLeftFailedAtItsEnd) {
  for (const std::string_view text : {"", "[a]", "[a]\n", "x\n\n"}) {
    auto input = Input<typename TypeParam::Char>(text);
    input >> this->file_;
    EXPECT_EQ(Shown(input.rdstate()), " eof fail") << text;
  }
}

TYPED_TEST(IniReader, AFailedStreamGivesNothingAndStaysAsItIs) {
  for (const auto state : {std::ios_base::failbit, std::ios_base::badbit,
                           std::ios_base::failbit | std::ios_base::badbit}) {
    auto input = Input<typename TypeParam::Char>("[New]\n");
    input.setstate(state);
    this->file_.AddSection("Old"_t);
    input >> typename TypeParam::Merge(this->file_);
    EXPECT_EQ(ContentOf(this->file_), "Old{}");
    input >> this->file_;
    EXPECT_EQ(ContentOf(this->file_), "");
    EXPECT_EQ(Shown(input.rdstate()), Shown(state | std::ios_base::failbit));
    input.clear();
    EXPECT_EQ(input.tellg(), std::streampos(0));
  }
}

TYPED_TEST(IniReader, AStreamAtItsEndGivesNothing) {
  auto input = Input<typename TypeParam::Char>("[New]\n");
  input.setstate(std::ios_base::eofbit);
  this->file_.AddSection("Old"_t);
  input >> this->file_;
  EXPECT_EQ(ContentOf(this->file_), "");
  EXPECT_EQ(Shown(input.rdstate()), " eof fail");
}

TYPED_TEST(IniReader, AStreamWithoutABufferGivesNothing) {
  std::basic_istream<typename TypeParam::Char> input(nullptr);
  this->file_.AddSection("Old"_t);
  input >> this->file_;
  EXPECT_EQ(ContentOf(this->file_), "");
  EXPECT_EQ(Shown(input.rdstate()), " bad fail");
}

TYPED_TEST(IniReader, TheStreamsGcountIsNotTouched) {
  auto input = Input<typename TypeParam::Char>("#[a]\n[b]\n");
  input.get();
  input >> this->file_;
  EXPECT_EQ(ContentOf(this->file_), "a{} b{}");
  EXPECT_EQ(input.gcount(), 1);
}

TYPED_TEST(IniReader, TheWidthOfAStreamDoesNotMatter) {
  auto input = Input<typename TypeParam::Char>("[Main]\n[k=v\n");
  input.width(2);
  input >> this->file_;
  EXPECT_EQ(ContentOf(this->file_), "Main{[k=v}");
  EXPECT_EQ(input.width(), 2);
}

TYPED_TEST(IniReader, AStreamThatThrowsAtItsEndLeavesWhatWasRead) {
  for (const auto exceptions :
       {std::ios_base::eofbit, std::ios_base::failbit,
        std::ios_base::eofbit | std::ios_base::failbit}) {
    auto input = Input<typename TypeParam::Char>("[Main]\n[k=v\n");
    input.exceptions(exceptions);
    EXPECT_THROW(input >> this->file_, std::ios_base::failure);
    EXPECT_EQ(ContentOf(this->file_), "Main{[k=v}");
  }
}

TYPED_TEST(IniReader, WhatComesAfterATerminalsEndIsReadByTheNextLoad) {
  // A buffer may give its end and then go on, as a terminal does.
  class Pausing : public std::basic_streambuf<typename TypeParam::Char> {
   protected:
    typename std::char_traits<typename TypeParam::Char>::int_type underflow()
        override {
      paused_ = !paused_;
      if (!paused_) {
        return std::char_traits<typename TypeParam::Char>::eof();
      }
      this->setg(text_.data(), text_.data(), text_.data() + text_.size());
      return std::char_traits<typename TypeParam::Char>::to_int_type(text_[0]);
    }

   private:
    std::basic_string<typename TypeParam::Char> text_ = "[Main]\n[k=v"_t;
    bool paused_ = false;
  };
  Pausing buffer;
  std::basic_istream<typename TypeParam::Char> input(&buffer);
  input >> this->file_;
  EXPECT_EQ(ContentOf(this->file_), "Main{[k=v}");
  EXPECT_EQ(Shown(input.rdstate()), " eof fail");
  this->file_.RemoveAllSections();
  input.clear();
  input >> this->file_;
  EXPECT_EQ(ContentOf(this->file_), "Main{[k=v}");
}

// A stream may widen the line feed to any character.
template <class Char>
class Semicolon : public std::ctype<Char> {
 protected:
  Char do_widen(char character) const override {
    return character == '\n' ? Char{';'}
                             : std::ctype<Char>::do_widen(character);
  }
  const char* do_widen(const char* low, const char* high,
                       Char* to) const override {
    for (; low != high; ++low, ++to) {
      *to = do_widen(*low);
    }
    return high;
  }
};

TYPED_TEST(IniReader, LinesEndAtTheStreamsOwnLineFeed) {
  using Char = typename TypeParam::Char;
  for (const std::size_t size : {std::size_t{100}, std::size_t{3}}) {
    PiecewiseInput<Char> buffer("[a];[b]\n;[k=1\n2\n;[c]"_t, {size}, kNever);
    std::basic_istream<Char> input(&buffer);
    input.imbue(std::locale(std::locale::classic(), new Semicolon<Char>));
    input >> this->file_;
    EXPECT_EQ(ContentOf(this->file_), "a{} b{[k=1\\a;2} c{}");
  }
}

TYPED_TEST(IniReader, ALineFeedThatEndsNoLineIsStillBlankAfterAHeader) {
  using Char = typename TypeParam::Char;
  for (const std::size_t size : {100u, 6u, 1u}) {
    PiecewiseInput<Char> buffer("[a]\n ;[k=1\n ;[l=2]\n ;"_t, {size}, kNever);
    std::basic_istream<Char> input(&buffer);
    input.imbue(std::locale(std::locale::classic(), new Semicolon<Char>));
    input >> this->file_;
    EXPECT_EQ(ContentOf(this->file_), "a]\\a;{[k=1\\a; } l=2]\\a;{}") << size;
  }
}

TYPED_TEST(IniReader, ATiedStreamIsFlushedBeforeEachLine) {
  auto input = Input<typename TypeParam::Char>("[a]\n[k=v\n#\n");
  LimitedOutput<typename TypeParam::Char> buffer;
  std::basic_ostream<typename TypeParam::Char> tied(&buffer);
  input.tie(&tied);
  input >> this->file_;
  EXPECT_EQ(buffer.flushes(), 4);  // for the end, too
  EXPECT_EQ(ContentOf(this->file_), "a{[k=v}");
}

TYPED_TEST(IniReader, LongLinesAreReadWhole) {
  const std::string name(70000, 'n');
  const std::string value(300000, 'v');
  EXPECT_EQ(this->Loaded("[" + name + "]\n[" + name + "=" + value + "\n"),
            name + "{[" + name + "=" + value + "}");
  LoadCase<typename TypeParam::Char> load;
  load.text = Ascii("[" + name + "]\n" + value + "\n[" + name + "=" + value +
                    "\n[k=" + value + "]");
  load.pieces = {4096, 1, 0, 8191};
  typename TypeParam::File file;
  Load(load, file);
  EXPECT_EQ(ContentOf(file),
            "k=" + value + "{} " + name + "{[" + name + "=" + value + "}");
}

TEST(IniReaderWide, ACharacterThatEqualsTheEndOfTextIsTakenAsGetlineTakesIt) {
  const auto end = static_cast<wchar_t>(WEOF);
  for (std::size_t size = 0; size < 16; ++size) {
    for (const std::wstring& text :
         {std::wstring(L"[a]\n") + end + L"[b]\n[c]\n",
          std::wstring(L"[a]\n[b") + end + L"]\n[c]\n",
          std::wstring(L"[a]\n[k=") + end + L"v\n[c]\n",
          std::wstring(L"[a]\n[k=v") + end + L"\n[c]\n",
          std::wstring(L"[a]\n[k=vwxyzvwxyz") + end + L"v\n[c]\n"}) {
      LoadCase<wchar_t> load;
      load.text = text;
      load.pieces = {size};
      korvan::CIniFileW file;
      PlainIni<wchar_t> plain;
      EXPECT_EQ(Load(load, file), Load(load, plain))
          << Shown(text) << ", pieces of " << size;
    }
  }
}

// Cancelling a thread runs through the reader like an exception that nobody
// may keep.
TYPED_TEST(IniReader, AThreadThatEndsWhileItReadsEnds) {
  class Ending : public std::basic_streambuf<typename TypeParam::Char> {
   protected:
    typename std::char_traits<typename TypeParam::Char>::int_type underflow()
        override {
      pthread_exit(nullptr);
    }
  };
  bool returned = false;
  std::thread thread([&] {
    Ending buffer;
    std::basic_istream<typename TypeParam::Char> input(&buffer);
    this->file_.Load(input, true);
    returned = true;
  });
  thread.join();
  EXPECT_FALSE(returned);
}

}  // namespace
