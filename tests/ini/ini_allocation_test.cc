// Every allocation of every operation fails in turn. Then the document is what
// it was before, or, after a load, what had been read by then; and nothing
// leaks.
#include <korvan/ini_file.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "ini/hostile_buffers.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/fail_each_allocation.h"
#include "support/failing_new.h"
#include "support/folder.h"

namespace korvan::test {
namespace {

// Long, so that each of them takes an allocation.
const String kSection = "a section with a name too long to be inline"_t;
const String kKey = "[a key with a name too long to be inline"_t;
const String kNew = "a new name that is too long to be kept inline"_t;
const String kValue = "a value with a text too long to be inline"_t;

void Fill(File& file) {
  file.SetKeyValue(kSection, kKey, "v"_t);
  file.SetKeyValue(kSection, "k"_t, kValue);
  file.SetKeyValue("Other"_t, "k"_t, "v"_t);
}

// Runs `operation` with each of its allocations failing in turn, and returns
// how many there are. A failure must leave the document as it was.
long CountFailures(const std::function<void(File&)>& operation) {
  std::string before;
  {
    File file;
    Fill(file);
    before = ContentOf(file);
  }
  return FailEachAllocation([&](long successes) {
    File file;
    Fill(file);
    std::string thrown;
    bool failed = false;
    {
      const FailingNew failing(successes);
      thrown = Thrown([&] { operation(file); });
      failed = failing.Failed();
    }
    EXPECT_EQ(thrown, failed ? "memory" : "");
    if (failed) {
      EXPECT_EQ(ContentOf(file), before);
    }
    return failed;
  });
}

TEST(IniAllocation, AFailedAllocationAddsNoSection) {
  EXPECT_GE(CountFailures([](auto& file) { file.AddSection(kNew); }), 4);
  EXPECT_GE(CountFailures([](auto& file) { file.AddSection(" "_t); }), 2);
}

TEST(IniAllocation, AFailedAllocationAddsNoKey) {
  EXPECT_GE(CountFailures([](auto& file) {
              file.GetSections().begin()->second->AddKey(kNew);
            }),
            4);
}

TEST(IniAllocation, AFailedAllocationSetsNoValue) {
  EXPECT_GE(CountFailures([](auto& file) {
              file.GetSections().begin()->second->SetKeyValue("k"_t, kNew);
            }),
            1);
  EXPECT_GE(CountFailures([](auto& file) {
              file.GetSections().begin()->second->GetKey("k"_t)->SetValue(kNew);
            }),
            1);
  EXPECT_GE(
      CountFailures([](auto& file) { file.SetKeyValue(kSection, kKey, kNew); }),
      3);
}

TEST(IniAllocation, AFailedAllocationLeavesNoSectionWithoutTheKey) {
  EXPECT_GE(
      CountFailures([](auto& file) { file.SetKeyValue(kNew, kKey, kValue); }),
      8);
  EXPECT_GE(CountFailures(
                [](auto& file) { file.SetKeyValue(kSection, kNew, kValue); }),
            5);
}

TEST(IniAllocation, AFailedAllocationRenamesNothing) {
  EXPECT_GE(
      CountFailures([](auto& file) { file.RenameSection(kSection, kNew); }), 4);
  EXPECT_GE(
      CountFailures([](auto& file) { file.RenameKey(kSection, kKey, kNew); }),
      5);
  EXPECT_GE(
      CountFailures([](auto& file) { file.RenameKey(kSection, kKey, "l"_t); }),
      3);
}

TEST(IniAllocation, AFailedAllocationRemovesNothing) {
  CountFailures([](auto& file) { file.GetSection(kSection); });
  CountFailures([](auto& file) { file.GetKeyValue(kSection, kKey); });
  CountFailures([](auto& file) { file.RemoveSection(kSection); });
  CountFailures(
      [](auto& file) { file.GetSections().begin()->second->RemoveKey(kKey); });
}

TEST(IniAllocation, RemovingByPointerOrAllAtOnceAllocatesNothing) {
  File file;
  Fill(file);
  Section* const section = file.GetSection(kSection);
  Key* const key = section->GetKey(kKey);
  const long calls = NewCalls();
  section->RemoveKey(key);
  section->RemoveAllKeys();
  file.RemoveSection(section);
  file.RemoveAllSections();
  EXPECT_EQ(NewCalls(), calls);
}

// Loads `lines` with each of its allocations failing in turn, and `failures -
// 1` after it, too. The document then has what some of the first lines give, or
// what all do, if the library could do without.
//
// Inside the line reader a failing allocation makes the stream bad and is not
// thrown. While a line is entered, it is thrown, and the stream stands behind
// that line.
void ExpectEachFailureKeepsTheLinesBefore(const std::vector<std::string>& lines,
                                          long failures) {
  std::vector<std::string> states;    // before each line
  std::vector<std::size_t> consumed;  // after it
  std::string text;
  const auto content_of_text = [&text] {
    PlainFile plain;
    StringInput input(Text(text));
    plain.Load(input, false);
    return ContentOf(plain);
  };
  for (const std::string& line : lines) {
    states.push_back(content_of_text());
    text += line;
    consumed.push_back(text.size());
  }
  const std::string all = content_of_text();
  const auto load = [&](std::size_t size, std::ios_base::iostate exceptions,
                        long successes) {
    PiecewiseInput buffer(Text(text), {size});
    InputStream input(&buffer);
    input.exceptions(exceptions);
    File file;
    bool thrown = false;
    bool failed = false;
    {
      const FailingNew failing(successes, failures);
      thrown = Thrown([&] { file.Load(input); }) == "memory";
      failed = failing.Failed();
    }
    const std::string content = ContentOf(file);
    if (input.bad()) {
      EXPECT_TRUE(failed);
      EXPECT_EQ(thrown, exceptions != 0);
      // The last line has no end by which it would be known to be read.
      const auto lines_read = std::count_if(
          consumed.begin(), consumed.end() - 1,
          [&](std::size_t end) { return end <= buffer.Consumed(); });
      EXPECT_EQ(content, states[static_cast<std::size_t>(lines_read)]);
    } else if (thrown) {
      EXPECT_TRUE(failed);
      const auto line =
          std::find(consumed.begin(), consumed.end(), buffer.Consumed());
      EXPECT_NE(line, consumed.end());
      if (line != consumed.end()) {
        EXPECT_EQ(content,
                  states[static_cast<std::size_t>(line - consumed.begin())]);
      }
    } else {
      EXPECT_EQ(Shown(input.rdstate()), " eof fail");
      EXPECT_EQ(content, all);
    }
    return failed;
  };
  for (const auto exceptions :
       {std::ios_base::goodbit, std::ios_base::badbit}) {
    for (const std::size_t size : {10000u, 1u, 0u, 20u, 33u, 700u}) {
      FailEachAllocation(
          [&](long successes) { return load(size, exceptions, successes); });
    }
  }
}

TEST(IniAllocation, AFailedAllocationInALoadKeepsTheLinesReadBefore) {
  ExpectEachFailureKeepsTheLinesBefore(
      {"[a section with a name too long to be inline]\n",
       "[a key with a name too long to be inline=and a value too long, too\n",
       "[k=v\n", "# a comment that is too long to be kept inline, too\n",
       "[k=another value, this one is too long to be inline\n",
       "[the second section, its name too long to be inline]\n",
       "[k=a value that is too long to be inline, once more"},
      LONG_MAX);
}

// Keys in no order, some of them twice, enough to be entered at once.
std::vector<std::string> LinesOfARun() {
  std::vector<std::string> lines = {"[a section]\n", "[k09=short\n"};
  for (int i = 0; i < 24; ++i) {
    lines.push_back("[k" + std::to_string(10 + i * 7 % 20) +
                    (i % 3 == 0 ? " with a name too long to be inline=" : "=") +
                    (i % 2 == 0 ? "a value too long to be inline\n" : "v\n"));
  }
  lines.push_back("[another]\n");
  return lines;
}

TEST(IniAllocation, FailedAllocationsInARunOfKeysKeepTheLinesReadBefore) {
  ExpectEachFailureKeepsTheLinesBefore(LinesOfARun(), LONG_MAX);
}

TEST(IniAllocation, OneFailedAllocationInARunOfKeysKeepsTheLinesReadBefore) {
  ExpectEachFailureKeepsTheLinesBefore(LinesOfARun(), 1);
}

TEST(IniAllocation, SkippedLinesThatTheBufferHoldsAllocateNothing) {
  StringInput input(
      "k=a value that is too long to be kept inline\n"
      "# a comment that is too long to be kept inline\n\n"
      "[k=a value before the first header, kept by nobody\n"_t);
  File file;
  {
    FailingNew failing(0);
    EXPECT_NO_THROW(input >> file);
  }
  EXPECT_EQ(Shown(input.rdstate()), " eof fail");
}

// A line that a buffer cuts is gathered piece by piece. Gathering a value costs
// no more than gathering a line that is skipped: it is not copied after.
TEST(IniAllocation, ALongValueIsNotCopiedAfterItIsGathered) {
  const auto calls_to_load = [](const std::string& text,
                                std::size_t first_piece) {
    PiecewiseInput buffer(Text(text), {first_piece, 100, 100, 100, 100},
                          kNever);
    InputStream input(&buffer);
    File file;
    const long calls = NewCalls();
    input >> file;
    return NewCalls() - calls;
  };
  const std::string value(50000, 'v');
  // One character of the value is enough to begin with.
  for (const std::size_t first_piece : {8u, 9u, 100u}) {
    EXPECT_EQ(calls_to_load("[s]\n[k=" + value + "\r\n", first_piece),
              calls_to_load("[s]\n[k=\n#" + value + "\r\n", first_piece))
        << first_piece;
  }
}

// Two libraries have two types for one wide buffer of libc++, and the types
// don't tell that they are the same.
#if defined(__GLIBCXX__) || !KORVAN_TEST_WIDE

TEST(IniAllocation, WritingAllocatesNothingWhereAStandardBufferHasRoom) {
  File file;
  Fill(file);
  // The longest line that a file's buffer surely keeps, its end included.
  file.SetKeyValue("Other"_t, "l"_t, Text(std::string(1020, 'v')));
  StringOutput expected;
  expected << file;
  const std::size_t size = expected.str().size();
  StringOutput output(String(size + 1, Char{'.'}));
  const long calls = NewCalls();
  output << file;
  EXPECT_EQ(NewCalls(), calls);
  EXPECT_EQ(Shown(output.str()), Shown(expected.str()) + '.');

  String block(size + 10, Char{});
  FileBuffer buffer;
  buffer.pubsetbuf(block.data(), static_cast<std::streamsize>(block.size()));
  ASSERT_NE(buffer.open("/dev/null", std::ios_base::out), nullptr);
  OutputStream file_output(&buffer);
  file_output << Char{'.'};  // now the buffer has its room
  const long calls_before_file = NewCalls();
  file_output << file;
  EXPECT_EQ(NewCalls(), calls_before_file);
}

#endif

TEST(IniAllocation, TheLinesForOtherBuffersShareOneAllocation) {
  File file;
  file.SetKeyValue("s"_t, "k"_t, Text(std::string(500, 'v')));
  const auto calls_to_write = [&file] {
    LimitedOutput buffer(100000);
    OutputStream output(&buffer);
    output << Char{'.'};  // now the buffer has its room
    const long calls = NewCalls();
    output << file;
    return NewCalls() - calls;
  };
  EXPECT_EQ(calls_to_write(), 1);
  for (int i = 0; i < 100; ++i) {
    file.SetKeyValue("s"_t, Text("l" + std::to_string(i)),
                     Text(std::string(100, 'v')));
  }
  EXPECT_EQ(calls_to_write(), 1);
}

TEST(IniAllocation, AFailedAllocationWhileWritingLeavesTheStreamUsable) {
  File file;
  Fill(file);
  StringOutput output;
  output.width(60);  // one insertion must be composed
  {
    FailingNew failing(0);
    EXPECT_THROW(file.Save(output), std::bad_alloc);
  }
  EXPECT_TRUE(output.good());
  EXPECT_EQ(output.width(), 60);
}

// A wide file of libc++ leaks a block, or frees it twice, where one more can't
// be had.
#if defined(__GLIBCXX__) || !KORVAN_TEST_WIDE

TEST(IniAllocation, AFailedAllocationWhileAFileIsSavedIsThrown) {
  const Folder folder;
  const String path = Text(folder / "a.ini");
  File file;
  Fill(file);
  ASSERT_TRUE(file.Save(path));
  const std::string bytes = BytesOf(folder / "a.ini");
  const std::string before = ContentOf(file);
  FailEachAllocation([&](long successes) {
    bool saved = false;
    bool failed = false;
    std::string thrown;
    {
      const FailingNew failing(successes);
      thrown = Thrown([&] { saved = file.Save(path); });
      failed = failing.Failed();
    }
    EXPECT_EQ(thrown, failed ? "memory" : "");
    EXPECT_EQ(saved, !failed);
    EXPECT_EQ(ContentOf(file), before);
    return failed;
  });
  EXPECT_EQ(BytesOf(folder / "a.ini"), bytes);
}

TEST(IniAllocation, AFailedAllocationWhileAFileIsLoadedKeepsWhatWasRead) {
  const Folder folder;
  const String path = Text(folder / "a.ini");
  WriteBytes(folder / "a.ini", "[a]\n[k=v\n[b]\n[l=w\n");
  const std::string contents[] = {"", "a{}", "a{[k=v}", "a{[k=v} b{}",
                                  "a{[k=v} b{[l=w}"};
  bool seen[std::size(contents)] = {};
  FailEachAllocation([&](long successes) {
    File loaded;
    bool failed = false;
    std::string thrown;
    {
      const FailingNew failing(successes);
      thrown = Thrown([&] { loaded.Load(path); });
      failed = failing.Failed();
    }
    const std::string content = ContentOf(loaded);
    const auto found = std::ranges::find(contents, content);
    if (found == std::end(contents)) {
      ADD_FAILURE() << content;
      return false;
    }
    seen[found - contents] = true;
    EXPECT_EQ(content == contents[4], !failed);
    // The stream of a wide file takes a failure of its own for an error.
    EXPECT_TRUE(thrown == (failed ? "memory" : "") ||
                (KORVAN_TEST_WIDE && content.empty()));
    return failed;
  });
  EXPECT_TRUE(std::ranges::all_of(seen, std::identity()));
}

#endif

}  // namespace
}  // namespace korvan::test
