// What the reader makes of a text, and how it leaves the stream.
#include <korvan/ini_file.h>
#include <pthread.h>

#include <locale>
#include <thread>

#include "ini/hostile_buffers.h"
#include "ini/shown.h"
#include "ini/width.h"

namespace korvan::test {
namespace {

struct IniReader : testing::Test {
  std::string Loaded(std::string_view text, bool merge = false) {
    StringInput input(Text(text));
    file.Load(input, merge);
    EXPECT_TRUE(input.fail());
    return ContentOf(file);
  }

  File file;
};

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

// Not by Text: bytes of 0x80 and more stay what they are.
String WithTheNumbersOf(std::string_view bytes) {
  String text;
  for (const char byte : bytes) {
    text += static_cast<Char>(
        sizeof(Char) == 1 ? byte : static_cast<unsigned char>(byte));
  }
  return text;
}

TEST_F(IniReader, EachLineIsReadByItsKind) {
  for (const LineCase& line : kLines) {
    // With and without a line feed; whole in the buffer and cut by it.
    for (const std::string_view end : {"", "\n", "\r\n", "\n\n"}) {
      LoadCase load;
      load.text =
          WithTheNumbersOf("[s]\n" + std::string(line.line) + std::string(end));
      for (const std::size_t size : {kNever / 2, std::size_t{1}, std::size_t{0},
                                     std::size_t{7}, load.text.size() - 1}) {
        load.pieces = {size};
        File loaded;
        const std::string seen = Load(load, loaded);
        EXPECT_EQ(ContentOf(loaded), line.content)
            << '"' << line.line << "\", pieces of " << size << ": " << seen;
      }
    }
  }
}

TEST_F(IniReader, AnEmptyTextGivesAnEmptyDocument) {
  EXPECT_EQ(Loaded(""), "");
  EXPECT_EQ(Loaded("\n\n \n\r\n"), "");
}

TEST_F(IniReader, KeysGoToTheSectionOfTheLastHeader) {
  EXPECT_EQ(Loaded("[b]\n[x=1\n[a]\n[y=2\n[z=3\n[B]\n[w=4\n"),
            "a{[y=2|[z=3} b{[w=4|[x=1}");
}

TEST_F(IniReader, KeysBeforeTheFirstHeaderAreDropped) {
  EXPECT_EQ(Loaded("[k=v\n[Main]\n[l=w\n"), "Main{[l=w}");
  EXPECT_EQ(Loaded("[k=v\n[Main]=1\n", true), "Main{[l=w}");
}

TEST_F(IniReader, TheSectionOfAnEarlierLoadIsNoCurrentSection) {
  Loaded("[Main]\n");
  EXPECT_EQ(Loaded("[k=v\n", true), "Main{}");
}

TEST_F(IniReader, ARepeatedHeaderContinuesItsSection) {
  EXPECT_EQ(Loaded("[Base]\n[a=1\n[Other]\n[BASE]\n[b=2\n"),
            "Base{[a=1|[b=2} Other{}");
}

TEST_F(IniReader, TheLastValueOfAKeyWinsAndTheFirstSpelling) {
  EXPECT_EQ(Loaded("[Main]\n[k=1\n[K=2\n"), "Main{[k=2}");
}

TEST_F(IniReader, EveryLineEndsAtALineFeedAndNothingElse) {
  EXPECT_EQ(Loaded("[a]\r[b]\n"), "a]\\d;[b{}");
  EXPECT_EQ(Loaded("[a]\n\r[b]\n[c]"), "a{} c{}");
  EXPECT_EQ(Loaded("[a]\v[b]\f\n"), "");
}

TEST_F(IniReader, ReplacingDestroysWhatWasThere) {
  file.SetKeyValue("Old"_t, "k"_t, "v"_t);
  EXPECT_EQ(Loaded("[New]\n"), "New{}");
  EXPECT_EQ(Loaded(""), "");
}

TEST_F(IniReader, MergingKeepsObjectsAndReplacesValues) {
  Section* const section = file.AddSection("Base"_t);
  section->SetKeyValue("[k"_t, "1"_t);
  section->SetKeyValue("l"_t, "2"_t);
  Key* const key = section->GetKey("[k"_t);
  file.AddSection("Other"_t);
  EXPECT_EQ(Loaded("[BASE]\n[K=3\n[m=4\n[New]\n", true),
            "Base{[k=3|[m=4|l=2} New{} Other{}");
  EXPECT_EQ(file.GetSection("Base"_t), section);
  EXPECT_EQ(section->GetKey("[k"_t), key);
}

TEST_F(IniReader, MergingNothingChangesNothing) {
  file.SetKeyValue("Main"_t, "k"_t, "v"_t);
  EXPECT_EQ(Loaded("", true), "Main{k=v}");
}

TEST_F(IniReader, ALoadReplacesUnlessAskedToMerge) {
  file.AddSection("Old"_t);
  StringInput input("[New]\n"_t);
  file.Load(input);
  EXPECT_EQ(ContentOf(file), "New{}");
}

TEST_F(IniReader, TheOperatorReplacesAndGivesTheStreamBack) {
  file.AddSection("Old"_t);
  StringInput input("[New]\n"_t);
  EXPECT_EQ(&(input >> file), &input);
  EXPECT_EQ(ContentOf(file), "New{}");
}

TEST_F(IniReader, TheOperatorMergesWithASelector) {
  file.AddSection("Old"_t);
  StringInput input("[New]\n"_t);
  const Merge merge(file);
  EXPECT_EQ(&(input >> merge), &input);
  EXPECT_EQ(ContentOf(file), "New{} Old{}");
}

TEST_F(IniReader, TheStreamIsLeftFailedAtItsEnd) {
  for (const std::string_view text : {"", "[a]", "[a]\n", "x\n\n"}) {
    StringInput input(Text(text));
    input >> file;
    EXPECT_EQ(Shown(input.rdstate()), " eof fail") << text;
  }
}

TEST_F(IniReader, AFailedStreamGivesNothingAndStaysAsItIs) {
  for (const auto state : {std::ios_base::failbit, std::ios_base::badbit,
                           std::ios_base::failbit | std::ios_base::badbit}) {
    StringInput input("[New]\n"_t);
    input.setstate(state);
    file.AddSection("Old"_t);
    input >> Merge(file);
    EXPECT_EQ(ContentOf(file), "Old{}");
    input >> file;
    EXPECT_EQ(ContentOf(file), "");
    EXPECT_EQ(Shown(input.rdstate()), Shown(state | std::ios_base::failbit));
    input.clear();
    EXPECT_EQ(input.tellg(), std::streampos(0));
  }
}

TEST_F(IniReader, AStreamAtItsEndGivesNothing) {
  StringInput input("[New]\n"_t);
  input.setstate(std::ios_base::eofbit);
  file.AddSection("Old"_t);
  input >> file;
  EXPECT_EQ(ContentOf(file), "");
  EXPECT_EQ(Shown(input.rdstate()), " eof fail");
}

TEST_F(IniReader, AStreamWithoutABufferGivesNothing) {
  InputStream input(nullptr);
  file.AddSection("Old"_t);
  input >> file;
  EXPECT_EQ(ContentOf(file), "");
  EXPECT_EQ(Shown(input.rdstate()), " bad fail");
}

TEST_F(IniReader, ALoadLeavesTheGcountOfTheStream) {
  StringInput input("#[a]\n[b]\n"_t);
  input.get();
  input >> file;
  EXPECT_EQ(ContentOf(file), "a{} b{}");
  EXPECT_EQ(input.gcount(), 1);
}

TEST_F(IniReader, ALoadIgnoresTheWidthOfTheStream) {
  StringInput input("[Main]\n[k=v\n"_t);
  input.width(2);
  input >> file;
  EXPECT_EQ(ContentOf(file), "Main{[k=v}");
  EXPECT_EQ(input.width(), 2);
}

TEST_F(IniReader, AStreamThatThrowsAtItsEndLeavesWhatWasRead) {
  for (const auto exceptions :
       {std::ios_base::eofbit, std::ios_base::failbit,
        std::ios_base::eofbit | std::ios_base::failbit}) {
    StringInput input("[Main]\n[k=v\n"_t);
    input.exceptions(exceptions);
    EXPECT_THROW(input >> file, std::ios_base::failure);
    EXPECT_EQ(ContentOf(file), "Main{[k=v}");
  }
}

TEST_F(IniReader, WhatComesAfterATerminalsEndIsReadByTheNextLoad) {
  // A buffer may give its end and then go on, as a terminal does.
  class Pausing : public StreamBuffer {
   protected:
    Traits::int_type underflow() override {
      paused_ = !paused_;
      if (!paused_) {
        return Traits::eof();
      }
      setg(text_.data(), text_.data(), text_.data() + text_.size());
      return Traits::to_int_type(text_[0]);
    }

   private:
    String text_ = "[Main]\n[k=v"_t;
    bool paused_ = false;
  };
  Pausing buffer;
  InputStream input(&buffer);
  input >> file;
  EXPECT_EQ(ContentOf(file), "Main{[k=v}");
  EXPECT_EQ(Shown(input.rdstate()), " eof fail");
  file.RemoveAllSections();
  input.clear();
  input >> file;
  EXPECT_EQ(ContentOf(file), "Main{[k=v}");
}

// A stream may widen the line feed to any character.
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

TEST_F(IniReader, LinesEndAtTheStreamsOwnLineFeed) {
  for (const std::size_t size : {std::size_t{100}, std::size_t{3}}) {
    PiecewiseInput buffer("[a];[b]\n;[k=1\n2\n;[c]"_t, {size}, kNever);
    InputStream input(&buffer);
    input.imbue(std::locale(std::locale::classic(), new Semicolon));
    input >> file;
    EXPECT_EQ(ContentOf(file), "a{} b{[k=1\\a;2} c{}");
  }
}

TEST_F(IniReader, ALineFeedThatEndsNoLineIsStillBlankAfterAHeader) {
  for (const std::size_t size : {100u, 6u, 1u}) {
    PiecewiseInput buffer("[a]\n ;[k=1\n ;[l=2]\n ;"_t, {size}, kNever);
    InputStream input(&buffer);
    input.imbue(std::locale(std::locale::classic(), new Semicolon));
    input >> file;
    EXPECT_EQ(ContentOf(file), "a]\\a;{[k=1\\a; } l=2]\\a;{}") << size;
  }
}

TEST_F(IniReader, ATiedStreamIsFlushedBeforeEachLine) {
  StringInput input("[a]\n[k=v\n#\n"_t);
  LimitedOutput buffer;
  OutputStream tied(&buffer);
  input.tie(&tied);
  input >> file;
  EXPECT_EQ(buffer.flushes(), 4);  // for the end, too
  EXPECT_EQ(ContentOf(file), "a{[k=v}");
}

TEST_F(IniReader, LongLinesAreReadWhole) {
  const std::string name(70000, 'n');
  const std::string value(300000, 'v');
  EXPECT_EQ(Loaded("[" + name + "]\n[" + name + "=" + value + "\n"),
            name + "{[" + name + "=" + value + "}");
  LoadCase load;
  load.text = Text("[" + name + "]\n" + value + "\n[" + name + "=" + value +
                   "\n[k=" + value + "]");
  load.pieces = {4096, 1, 0, 8191};
  File loaded;
  Load(load, loaded);
  EXPECT_EQ(ContentOf(loaded),
            "k=" + value + "{} " + name + "{[" + name + "=" + value + "}");
}

TEST_F(IniReader, ALongLineThatEndsWithTheTextIsReadWhole) {
  const std::string value(300000, 'v');
  EXPECT_EQ(Loaded("[Main]\n[k=" + value), "Main{[k=" + value + "}");
}

// LLVM's unwinder, which libc++ comes with, is not that of the C library, and
// crashes here without korvan, too.
#ifdef __GLIBCXX__

// Cancelling a thread runs through the reader like an exception that nobody
// may keep.
TEST_F(IniReader, AThreadThatEndsWhileItReadsEnds) {
  class Ending : public StreamBuffer {
   protected:
    Traits::int_type underflow() override { pthread_exit(nullptr); }
  };
  bool returned = false;
  std::thread thread([&] {
    Ending buffer;
    InputStream input(&buffer);
    file.Load(input, true);
    returned = true;
  });
  thread.join();
  EXPECT_FALSE(returned);
}

#endif

}  // namespace
}  // namespace korvan::test
