// Every allocation of every operation fails in turn. Then the document is what
// it was before, or, after a load, what had been read by then; and nothing
// leaks.
#include <korvan/ini_file.h>

#include <fstream>
#include <functional>

#include "ini/hostile_buffers.h"
#include "ini/ini_twins.h"
#include "support/failing_new.h"

namespace {

using korvan::test::FailingNew;
using korvan::test::LiveBlocks;
using korvan::test::NewCalls;

// Long, so that each of them takes an allocation.
constexpr auto kSection = "a section with a name too long to be inline"_t;
constexpr auto kKey = "[a key with a name too long to be inline"_t;
constexpr auto kNew = "a new name that is too long to be kept inline"_t;
constexpr auto kValue = "a value with a text too long to be inline"_t;

template <class Twin>
class IniAllocation : public testing::Test {
 protected:
  using File = typename Twin::File;

  static void Fill(File& file) {
    file.SetKeyValue(kSection, kKey, "v"_t);
    file.SetKeyValue(kSection, "k"_t, kValue);
    file.SetKeyValue("Other"_t, "k"_t, "v"_t);
  }

  // Has `operation` fail at each of its allocations, and tells how many it
  // has. A failure must leave the document alone.
  static int CountFailures(const std::function<void(File&)>& operation) {
    std::string before;
    {
      File file;
      Fill(file);
      before = ContentOf(file);
    }
    const long live = LiveBlocks();
    for (int failures = 0;; ++failures) {
      bool failed = false;
      {
        File file;
        Fill(file);
        std::string thrown;
        {
          FailingNew failing(failures);
          try {
            operation(file);
          } catch (const std::bad_alloc&) {
            thrown = "memory";
          }
          failed = failing.Failed();
        }
        EXPECT_EQ(thrown, failed ? "memory" : "");
        if (failed) {
          EXPECT_EQ(ContentOf(file), before);
        }
      }
      EXPECT_EQ(LiveBlocks(), live);
      if (!failed) {
        return failures;
      }
    }
  }
};
TYPED_TEST_SUITE(IniAllocation, Twins, TwinNames);

TYPED_TEST(IniAllocation, ThatFailsAddsNoSection) {
  EXPECT_GE(this->CountFailures([](auto& file) { file.AddSection(kNew); }), 4);
  EXPECT_GE(this->CountFailures([](auto& file) { file.AddSection(" "_t); }), 2);
}

TYPED_TEST(IniAllocation, ThatFailsAddsNoKey) {
  EXPECT_GE(this->CountFailures([](auto& file) {
    file.GetSections().begin()->second->AddKey(kNew);
  }),
            4);
}

TYPED_TEST(IniAllocation, ThatFailsSetsNoValue) {
  EXPECT_GE(this->CountFailures([](auto& file) {
    file.GetSections().begin()->second->SetKeyValue("k"_t, kNew);
  }),
            1);
  EXPECT_GE(this->CountFailures([](auto& file) {
    file.GetSections().begin()->second->GetKey("k"_t)->SetValue(kNew);
  }),
            1);
  EXPECT_GE(this->CountFailures(
                [](auto& file) { file.SetKeyValue(kSection, kKey, kNew); }),
            3);
}

TYPED_TEST(IniAllocation, ThatFailsLeavesNoSectionWithoutTheKey) {
  EXPECT_GE(this->CountFailures(
                [](auto& file) { file.SetKeyValue(kNew, kKey, kValue); }),
            8);
  EXPECT_GE(this->CountFailures(
                [](auto& file) { file.SetKeyValue(kSection, kNew, kValue); }),
            5);
}

TYPED_TEST(IniAllocation, ThatFailsRenamesNothing) {
  EXPECT_GE(this->CountFailures(
                [](auto& file) { file.RenameSection(kSection, kNew); }),
            4);
  EXPECT_GE(this->CountFailures(
                [](auto& file) { file.RenameKey(kSection, kKey, kNew); }),
            5);
  EXPECT_GE(this->CountFailures(
                [](auto& file) { file.RenameKey(kSection, kKey, "l"_t); }),
            3);
}

TYPED_TEST(IniAllocation, ThatFailsFindsAndRemovesNothing) {
  this->CountFailures([](auto& file) { file.GetSection(kSection); });
  this->CountFailures([](auto& file) { file.GetKeyValue(kSection, kKey); });
  this->CountFailures([](auto& file) { file.RemoveSection(kSection); });
  this->CountFailures(
      [](auto& file) { file.GetSections().begin()->second->RemoveKey(kKey); });
}

TYPED_TEST(IniAllocation, IsNotNeededToRemoveByPointerOrAll) {
  typename TypeParam::File file;
  this->Fill(file);
  auto* const section = file.GetSection(kSection);
  auto* const key = section->GetKey(kKey);
  const long calls = NewCalls();
  section->RemoveKey(key);
  section->RemoveAllKeys();
  file.RemoveSection(section);
  file.RemoveAllSections();
  EXPECT_EQ(NewCalls(), calls);
}

TEST(IniNumberAllocation, ThatFailsSetsNoNumber) {
  const long live = LiveBlocks();
  for (int failures = 0;; ++failures) {
    bool failed = false;
    {
      korvan::CIniFileA file;
      {
        FailingNew failing(failures);
        try {
          file.SetKeyValueDword(kSection, kKey, 18446744073709551615u);
        } catch (const std::bad_alloc&) {
        }
        failed = failing.Failed();
      }
      EXPECT_EQ(file.GetSections().size(), failed ? 0u : 1u);
    }
    EXPECT_EQ(LiveBlocks(), live);
    if (!failed) {
      break;
    }
  }
}

// Inside the line reader a failing allocation makes the stream bad and is not
// thrown; while a line is entered, it is thrown.
TYPED_TEST(IniAllocation, ThatFailsKeepsWhatHadBeenRead) {
  using Char = typename TypeParam::Char;
  const std::string lines[] = {
      "[a section with a name too long to be inline]\n",
      "[a key with a name too long to be inline=and a value too long as well\n",
      "[k=v\n",
      "# a comment that is too long to be kept inline, too\n",
      "[k=another value, this one is too long to be inline\n",
      "[the second section, its name too long to be inline]\n",
      "[k=a value that is too long to be inline, once more"};
  std::vector<std::string> states;    // before each line
  std::vector<std::size_t> consumed;  // after it
  std::string text;
  for (const std::string& line : lines) {
    PlainIni<Char> plain;
    auto input = Input<Char>(text);
    plain.Load(input, false);
    states.push_back(ContentOf(plain));
    text += line;
    consumed.push_back(text.size());
  }
  for (const auto exceptions :
       {std::ios_base::goodbit, std::ios_base::badbit}) {
    for (const std::size_t size : {1000u, 1u, 0u, 20u, 33u}) {
      const long live = LiveBlocks();
      for (int failures = 0;; ++failures) {
        bool failed = false;
        {
          PiecewiseInput<Char> buffer(Ascii(text), {size}, kNever);
          std::basic_istream<Char> input(&buffer);
          input.exceptions(exceptions);
          typename TypeParam::File file;
          bool thrown = false;
          {
            FailingNew failing(failures);
            try {
              file.Load(input);
            } catch (const std::bad_alloc&) {
              thrown = true;
            }
            failed = failing.Failed();
          }
          const std::string content = ContentOf(file);
          if (failed) {
            EXPECT_TRUE(thrown || input.bad());
            EXPECT_EQ(thrown && input.bad(),
                      thrown && input.bad() && exceptions != 0);
            EXPECT_NE(std::find(states.begin(), states.end(), content),
                      states.end())
                << content;
            if (!input.bad()) {
              // The stream stands behind the line that could not be entered.
              const auto line = std::find(consumed.begin(), consumed.end(),
                                          buffer.Consumed());
              ASSERT_NE(line, consumed.end());
              EXPECT_EQ(
                  content,
                  states[static_cast<std::size_t>(line - consumed.begin())]);
            }
          } else {
            EXPECT_FALSE(thrown);
            EXPECT_EQ(Shown(input.rdstate()), " eof fail");
          }
        }
        EXPECT_EQ(LiveBlocks(), live);
        if (!failed) {
          break;
        }
      }
    }
  }
}

TYPED_TEST(IniAllocation, IsNotNeededForSkippedLinesThatTheBufferHolds) {
  auto input = Input<typename TypeParam::Char>(
      "k=a value that is too long to be kept inline\n"
      "# a comment that is too long to be kept inline\n\n"
      "[k=a value before the first header, kept by nobody\n");
  typename TypeParam::File file;
  {
    FailingNew failing(0);
    EXPECT_NO_THROW(input >> file);
  }
  EXPECT_EQ(Shown(input.rdstate()), " eof fail");
}

// A line that a buffer cuts is gathered piece by piece. Gathering a value costs
// no more than gathering a line that is skipped: it is not copied after.
TYPED_TEST(IniAllocation, IsDoneForALongValueOnlyToGatherIt) {
  const auto calls_to_load = [](const std::string& text,
                                std::size_t first_piece) {
    PiecewiseInput<typename TypeParam::Char> buffer(
        Ascii(text), {first_piece, 100, 100, 100, 100}, kNever);
    std::basic_istream<typename TypeParam::Char> input(&buffer);
    typename TypeParam::File file;
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

TYPED_TEST(IniAllocation, IsNotNeededToWriteWhereAStandardBufferHasRoom) {
  using Char = typename TypeParam::Char;
  typename TypeParam::File file;
  this->Fill(file);
  // The longest line that a file's buffer surely keeps, its end included.
  file.SetKeyValue("Other"_t, "l"_t, Ascii(std::string(1020, 'v')));
  std::basic_ostringstream<Char> expected;
  expected << file;
  const std::size_t size = expected.str().size();
  std::basic_ostringstream<Char> output(
      std::basic_string<Char>(size + 1, Char{'.'}));
  const long calls = NewCalls();
  output << file;
  EXPECT_EQ(NewCalls(), calls);
  EXPECT_EQ(Shown(output.str()), Shown(expected.str()) + '.');

  std::basic_string<Char> block(size + 10, Char{});
  std::basic_filebuf<Char> buffer;
  buffer.pubsetbuf(block.data(), static_cast<std::streamsize>(block.size()));
  ASSERT_NE(buffer.open("/dev/null", std::ios_base::out), nullptr);
  std::basic_ostream<Char> file_output(&buffer);
  file_output << Char{'.'};  // now the buffer has its room
  const long calls_before_file = NewCalls();
  file_output << file;
  EXPECT_EQ(NewCalls(), calls_before_file);
}

TYPED_TEST(IniAllocation, ForTheLinesOfOtherBuffersIsDoneOnce) {
  using Char = typename TypeParam::Char;
  typename TypeParam::File file;
  file.SetKeyValue("s"_t, "k"_t, Ascii(std::string(500, 'v')));
  const auto calls_to_write = [&file] {
    LimitedOutput<Char> buffer(100000);
    std::basic_ostream<Char> output(&buffer);
    output << Char{'.'};  // now the buffer has its room
    const long calls = NewCalls();
    output << file;
    return NewCalls() - calls;
  };
  const long calls_for_one = calls_to_write();
  for (int i = 0; i < 100; ++i) {
    file.SetKeyValue("s"_t, Ascii("l" + std::to_string(i)),
                     Ascii(std::string(100, 'v')));
  }
  EXPECT_EQ(calls_to_write(), calls_for_one);
}

TYPED_TEST(IniAllocation, ThatFailsWhileWritingLeavesTheStreamUsable) {
  typename TypeParam::File file;
  this->Fill(file);
  std::basic_ostringstream<typename TypeParam::Char> output;
  output.width(60);  // one insertion must be composed
  {
    FailingNew failing(0);
    EXPECT_THROW(file.Save(output), std::bad_alloc);
  }
  EXPECT_TRUE(output.good());
  EXPECT_EQ(output.width(), 60);
}

TYPED_TEST(IniAllocation, ThatFailsAnywhereInFilesLosesNothing) {
  const Folder folder;
  const auto path = Text<typename TypeParam::Char>(folder / "a.ini");
  typename TypeParam::File file;
  this->Fill(file);
  ASSERT_TRUE(file.Save(path));
  const std::string bytes = BytesOf(folder / "a.ini");
  const std::string before = ContentOf(file);
  const long live = LiveBlocks();
  for (int failures = 0;; ++failures) {
    FailingNew failing(failures);
    try {
      file.Save(path);
    } catch (const std::bad_alloc&) {
    }
    if (!failing.Failed()) {
      break;
    }
    ASSERT_LT(failures, 100);
  }
  EXPECT_EQ(ContentOf(file), before);
  EXPECT_EQ(LiveBlocks(), live);
  EXPECT_EQ(BytesOf(folder / "a.ini"), bytes);
  for (int failures = 0;; ++failures) {
    typename TypeParam::File loaded;
    bool failed = false;
    {
      FailingNew failing(failures);
      try {
        loaded.Load(path);
      } catch (const std::bad_alloc&) {
      }
      failed = failing.Failed();
    }
    ContentOf(loaded);
    if (!failed) {
      EXPECT_EQ(loaded.GetSections().size(), 2u);
      break;
    }
    ASSERT_LT(failures, 1000);
  }
  EXPECT_EQ(LiveBlocks(), live);
}

}  // namespace
