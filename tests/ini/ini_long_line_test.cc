// Lines of a narrow file that are longer than what is read of it at once.
#include <korvan/ini_file.h>
#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "ini/key_lines.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/fail_each_allocation.h"
#include "support/failing_new.h"
#include "support/folder.h"

namespace korvan::test {
namespace {

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * kKiB;

struct IniLongLine : testing::Test {
  // Whether a document holds what the plain one does after it read `text`.
  bool IsReadAsThePlainWay(const std::string& text) {
    WriteBytes(path, text);
    File file;
    EXPECT_TRUE(file.Load(path));
    std::ifstream input(path, std::ios::binary);
    PlainFile plain;
    plain.Load(input, false);
    std::ostringstream saved;
    file.Save(saved);
    std::ostringstream plain_saved;
    plain.Save(plain_saved);
    return saved.str() == plain_saved.str();
  }

  Folder folder;
  const std::string path = folder / "a.ini";
};

// How a line ends, and with it the file.
struct Ending {
  const char* name;
  const char* text;
};

struct IniLongLineEnding : IniLongLine, testing::WithParamInterface<Ending> {};

TEST_P(IniLongLineEnding, IsReadAsThePlainWayWhereverBlocksEnd) {
  for (const std::size_t block : {64 * kKiB, 128 * kKiB, 256 * kKiB}) {
    for (std::size_t size = block - 20; size < block + 3; ++size) {
      for (const char* const before : {"[Main]\n", "[Main]\n[k=v\n# note\n"}) {
        EXPECT_TRUE(IsReadAsThePlainWay(
            before + ("[key=" + std::string(size, 'v')) + GetParam().text))
            << size;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    , IniLongLineEnding,
    testing::Values(Ending{"EndOfFile", ""}, Ending{"LineFeed", "\n"},
                    Ending{"CarriageReturn", "\r\n"},
                    Ending{"BracketOfAHeader", "]\n[k=v\n"},
                    Ending{"AnotherKey", "\n[last=v"}),
    [](const auto& ending) { return std::string(ending.param.name); });

TEST_F(IniLongLine, ANameOfAnyLengthIsReadAsThePlainWay) {
  for (const std::size_t size : {64 * kKiB, 256 * kKiB, kMiB}) {
    const std::string name(size, 'n');
    EXPECT_TRUE(IsReadAsThePlainWay("[Main]\n[" + name + "=v\n[k=v\n")) << size;
    EXPECT_TRUE(IsReadAsThePlainWay("[" + name + "]\n[k=v\n")) << size;
    EXPECT_TRUE(IsReadAsThePlainWay("# " + name + "\n[Main]\n[k=v\n")) << size;
  }
}

// The run is read ahead to its end, and much of the long line with it.
TEST_F(IniLongLine, OneBehindKeysInNoOrderIsReadAsThePlainWay) {
  const std::string keys = "[Main]\n" + KeyLines(10000, "v");
  for (const std::size_t size : {64 * kKiB, 256 * kKiB, kMiB}) {
    for (const char* const ending : {"", "\n", "\n[last=v\n"}) {
      EXPECT_TRUE(IsReadAsThePlainWay(keys + "[long=" + std::string(size, 'v') +
                                      ending))
          << size;
    }
  }
}

TEST_F(IniLongLine, OneFromAPipeIsReadWhole) {
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string value(3 * kMiB, 'v');
  std::thread writer([&] { WriteBytes(pipe, "[Main]\n[k=" + value + "\n"); });
  File file;
  EXPECT_TRUE(file.Load(pipe));
  writer.join();
  EXPECT_TRUE(file.GetKeyValue("Main", "[k") == value);
}

TEST_F(IniLongLine, ItsLoadTakesLittleMoreMemoryThanItsValue) {
  constexpr std::size_t kSize = 16 * kMiB;
  WriteBytes(path, "[Main]\n[k=" + std::string(kSize, 'v') + "\n");
  File file;
  {
    const LimitedNew limited(kSize + kSize / 10);
    EXPECT_TRUE(file.Load(path));
  }
  EXPECT_EQ(file.GetKeyValue("Main", "[k").size(), kSize);
}

TEST_F(IniLongLine, ItsLoadTakesNoMemoryForTheLinesBeforeIt) {
  constexpr std::size_t kSize = 4 * kMiB;
  std::string comments(kSize, 'c');
  for (std::size_t i = 99; i < kSize; i += 100) {
    comments[i] = '\n';
  }
  WriteBytes(path,
             "[Main]\n" + comments + "\n[k=" + std::string(kSize, 'v') + "\n");
  File file;
  {
    const LimitedNew limited(kSize + kSize / 2);
    EXPECT_TRUE(file.Load(path));
  }
  EXPECT_EQ(file.GetKeyValue("Main", "[k").size(), kSize);
}

// A string's memory is a multiple of this.
#ifdef _LIBCPP_VERSION
constexpr std::size_t kRoundedUp = 16;
#else
constexpr std::size_t kRoundedUp = 1;
#endif

// The memory that a document takes for a file with a value of 300 KiB.
std::size_t MemoryKept(const std::string& path, std::size_t size_of_rest) {
  WriteBytes(path, "[Main]\n[k=" + std::string(300 * kKiB, 'v') + "\n" +
                       std::string(size_of_rest, 'c'));
  constexpr long kAll = 64 * kMiB;
  File file;
  const LimitedNew limited(kAll);
  EXPECT_TRUE(file.Load(path));
  return static_cast<std::size_t>(kAll - limited.Left());
}

TEST_F(IniLongLine, ItsKeyKeepsMemoryForNoMoreThanTwiceItsValue) {
  EXPECT_LT(MemoryKept(path, 16 * kMiB), 310 * kKiB);
  EXPECT_LT(MemoryKept(path, 300 * kKiB + 1), 310 * kKiB);
  // Another move of the value would cost more.
  constexpr std::size_t kMost = 300 * kKiB - 2 * (kRoundedUp - 1);
  EXPECT_GT(MemoryKept(path, kMost), 300 * kKiB + kMost);
}

std::size_t limit = 0;
std::size_t first_above_limit = 0;

void LookForFirstAboveLimit() {
  if (first_above_limit == 0 && LastNewSize() > limit) {
    first_above_limit = LastNewSize();
  }
}

// The size of the first block of more than `bytes` that a load takes.
std::size_t FirstBlockOfMoreThan(std::size_t bytes, const std::string& path) {
  limit = bytes;
  first_above_limit = 0;
  File file;
  const PausingNew looking(LookForFirstAboveLimit);
  EXPECT_TRUE(file.Load(path));
  return first_above_limit;
}

TEST_F(IniLongLine, UpTo256KiBOfItAreReadAhead) {
  WriteBytes(path, "[Main]\n[k=" + std::string(600 * kKiB, 'v'));
  EXPECT_EQ(FirstBlockOfMoreThan(100 * kKiB, path), 256 * kKiB);
}

TEST_F(IniLongLine, UpTo128MiBAreTakenForItsValueAtOnce) {
  WriteBytes(path, "[Main]\n[k=" + std::string(600 * kKiB, 'v'));
  std::filesystem::resize_file(path, 129 * kMiB);  // takes no disk
  const std::size_t block = FirstBlockOfMoreThan(kMiB, path);
  constexpr std::size_t kWithItsNul = 128 * kMiB + 1;
  EXPECT_GE(block, kWithItsNul);
  EXPECT_LT(block, kWithItsNul + kRoundedUp);
}

TEST_F(IniLongLine, ItsEndIsSoughtIn64MiBBehindKeysInNoOrder) {
  WriteBytes(path, "[Main]\n" + KeyLines(50, "v"));
  std::filesystem::resize_file(path, 65 * kMiB);  // takes no disk
  EXPECT_EQ(FirstBlockOfMoreThan(kMiB, path), 64 * kMiB);
}

// The name, the value and the objects are needed; all else only helps.
TEST_F(IniLongLine, NoFailedAllocationKeepsALineBeforeItFromTheDocument) {
  WriteBytes(path, "[Main]\n[k=v\n[key=" + std::string(600 * kKiB, 'v'));
  const long sites = FailEachAllocation([&](long successes) {
    File file;
    bool failed = false;
    bool was_thrown = false;
    try {
      const FailingNew failing(successes, 1);
      file.Load(path);
      failed = failing.Failed();
    } catch (const std::bad_alloc&) {
      failed = true;
      was_thrown = true;
    }
    if (!was_thrown) {
      EXPECT_EQ(file.GetKeyValue("Main", "[k"), "v") << successes;
      EXPECT_EQ(file.GetKeyValue("Main", "[key").size(), 600 * kKiB)
          << successes;
    }
    return failed;
  });
  EXPECT_GE(sites, 10);
}

TEST_F(IniLongLine, ItIsReadWhereThereIsNoMemoryToReadAhead) {
  WriteBytes(path, "[Main]\n[k=v\n[key=" + std::string(65 * kKiB, 'v') +
                       "\n# " + std::string(kMiB, 'c') + "\n");
  File file;
  {
    const LimitedNew limited(static_cast<long>(300 * kKiB));
    EXPECT_TRUE(file.Load(path));
  }
  EXPECT_EQ(file.GetKeyValue("Main", "[key").size(), 65 * kKiB);
}

TEST_F(IniLongLine, AShortOneTakesLittleWhereThereIsNoMemoryToReadAhead) {
  const std::string comments(kMiB, '\n');
  WriteBytes(path, comments.substr(0, 64 * kKiB - 12) + "[Main]\n[k=value\n" +
                       comments);
  const LimitedNew limited(static_cast<long>(200 * kKiB));
  EXPECT_EQ(FirstBlockOfMoreThan(256 * kKiB, path), 0u);
}

TEST_F(IniLongLine, ItIsReadWhereThereIsNoMemoryForTheRestOfTheFile) {
  WriteBytes(path, "[Main]\n[k=" + std::string(300 * kKiB, 'v') + "\n# " +
                       std::string(16 * kMiB, 'c') + "\n");
  File file;
  {
    const LimitedNew limited(2 * kMiB);
    EXPECT_TRUE(file.Load(path));
  }
  EXPECT_EQ(file.GetKeyValue("Main", "[k").size(), 300 * kKiB);
}

}  // namespace
}  // namespace korvan::test
