// Reads of a narrow file that fail, or that end and go on, and a file whose
// size can't be asked for: this program has a `read` and an `fstat` of its own,
// which take the place of the C library's.
#include <fcntl.h>
#include <korvan/ini_file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "ini/fortified_read.h"
#include "ini/key_lines.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/folder.h"

namespace korvan::test {
namespace {

constexpr char kFails[] = "fails";
constexpr char kIsForbidden[] = "is forbidden";
constexpr char kIsInterrupted[] = "is interrupted";
constexpr char kEnds[] = "";

// What the next reads give: a text, the end, or an error. When there is nothing
// here, reads are the system's.
std::vector<std::string> next_reads;

bool fstat_fails = false;

// Of the descriptor that was read last.
int last_flags = 0;

ssize_t GiveNextRead(void* place, std::size_t size) {
  const std::string text = next_reads.front();
  next_reads.erase(next_reads.begin());
  for (const auto& [fault, error] : {std::pair(kFails, EIO),
                                     {kIsForbidden, EPERM},
                                     {kIsInterrupted, EINTR}}) {
    if (text == fault) {
      errno = error;
      return -1;
    }
  }
  std::memcpy(place, text.data(), std::min(size, text.size()));
  return static_cast<ssize_t>(std::min(size, text.size()));
}

}  // namespace
}  // namespace korvan::test

ssize_t read(int descriptor, void* place, std::size_t size) {
  korvan::test::last_flags = fcntl(descriptor, F_GETFD);
  return korvan::test::next_reads.empty()
             ? syscall(SYS_read, descriptor, place, size)
             : korvan::test::GiveNextRead(place, size);
}

int fstat(int descriptor, struct stat* status) noexcept {
  if (korvan::test::fstat_fails) {
    errno = EIO;
    return -1;
  }
  return fstatat(descriptor, "", status, AT_EMPTY_PATH);
}

namespace korvan::test {
namespace {

// Not a regular file, so nothing but the reads tells how much there is of it.
const char* const kFile = "/dev/null";

std::size_t reads_left = 0;

std::string Loaded(const std::vector<std::string>& reads) {
  next_reads = reads;
  File file;
  EXPECT_TRUE(file.Load(kFile));
  reads_left = next_reads.size();
  next_reads.clear();
  return ContentOf(file);
}

// Enough keys in no order to be entered at once, and to be read ahead for.
std::string ARun() { return "[Main]\n" + KeyLines(40, "v"); }

TEST(IniReadError, AFileWhoseSizeIsNotToldIsReadToItsEnd) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  const std::string text = ARun() + "[long=" + std::string(300000, 'v') + '\n';
  std::ofstream(path, std::ios::binary) << text;
  PlainFile plain;
  StringInput input(text);
  plain.Load(input, false);
  fstat_fails = true;
  File file;
  EXPECT_TRUE(file.Load(path));
  fstat_fails = false;
  EXPECT_EQ(ContentOf(file), ContentOf(plain));
}

TEST(IniReadError, AProgramThatIsStartedMeanwhileIsNotGivenTheFile) {
  last_flags = 0;
  File file;
  EXPECT_TRUE(file.Load(kFile));
  EXPECT_EQ(last_flags & FD_CLOEXEC, FD_CLOEXEC);
}

// The files of libc++ read by other means, which this program does not replace.
#ifdef __GLIBCXX__

std::string PlainLoaded(const std::vector<std::string>& reads) {
  next_reads = reads;
  std::ifstream input(kFile, std::ios::binary);
  PlainFile plain;
  plain.Load(input, false);
  next_reads.clear();
  return ContentOf(plain);
}

void ExpectAsPlain(const std::vector<std::string>& reads) {
  EXPECT_EQ(Loaded(reads), PlainLoaded(reads));
}

TEST(IniReadError, ALineThatAnErrorCutsIsDroppedAsGetlineDropsIt) {
  ExpectAsPlain({"[Main]\n[k=v\n[path=/usr/lo", kFails});
}

TEST(IniReadError, ALineBehindARunThatAnErrorCutsIsDropped) {
  ExpectAsPlain({ARun() + "[path=/usr/lo", kFails});
}

TEST(IniReadError, WhatComesBehindTheEndIsForTheNextLoad) {
  ExpectAsPlain({ARun(), kEnds, "[late=v\n", kEnds});
  EXPECT_EQ(reads_left, 2u);
}

#endif

TEST(IniReadError, ALineThatAnErrorCutsIsDropped) {
  for (const char* const fault : {kFails, kIsForbidden}) {
    EXPECT_EQ(Loaded({"[Main]\n[k=v\n[path=/usr/lo", fault, "cal\n", kEnds}),
              "Main{[k=v}");
  }
}

TEST(IniReadError, AReadThatASignalInterruptsIsRepeated) {
  EXPECT_EQ(Loaded({"[Main]\n", kIsInterrupted, "[k=v\n", kEnds}),
            "Main{[k=v}");
}

}  // namespace
}  // namespace korvan::test
