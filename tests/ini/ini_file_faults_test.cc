// Loads and saves by name where the system fails: names that can't be opened,
// files of other kinds, calls that fail, are interrupted or do a part, files
// that change while they are read. This program has `read`, `write` and
// `writev` of its own, which take the place of the C library's.
#include <fcntl.h>
#include <korvan/ini_file.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#ifdef __GLIBCXX__
#include <ext/stdio_filebuf.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ini/fortified_read.h"
#include "ini/key_lines.h"
#include "ini/odd_areas.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/campaign.h"
#include "support/failing_new.h"
#include "support/folder.h"

namespace korvan::test {
namespace {

// What becomes of the calls that move a file's bytes.
struct Calls {
  int fault_at = 0;            // the nth fails; 0 is none
  int error = EIO;             // 0 where it moves a single byte instead
  bool goes_on = false;        // and all after it
  void (*before)() = nullptr;  // called before the nth, which goes on
  int made = 0;                // counted
  std::size_t moved = 0;       // bytes, by those that did not fail
};
thread_local Calls* calls = nullptr;

// Returns whether this call is the one.
bool IsTurn() {
  ++calls->made;
  const bool is_turn =
      calls->made == calls->fault_at ||
      (calls->goes_on && calls->made > calls->fault_at && calls->fault_at != 0);
  if (is_turn && calls->before != nullptr) {
    calls->before();
    return false;
  }
  return is_turn;
}

// Makes the call, or fails, or makes it for a single byte.
template <class Call>
ssize_t Move(std::size_t size, Call call) {
  if (calls == nullptr) {
    return call(size);
  }
  const bool is_turn = IsTurn();
  if (is_turn && calls->error != 0) {
    errno = calls->error;
    return -1;
  }
  const ssize_t moved = call(is_turn ? std::min<std::size_t>(size, 1) : size);
  calls->moved += static_cast<std::size_t>(std::max<ssize_t>(moved, 0));
  return moved;
}

}  // namespace
}  // namespace korvan::test

ssize_t read(int descriptor, void* place, std::size_t size) {
  return korvan::test::Move(size, [&](std::size_t count) {
    return syscall(SYS_read, descriptor, place, count);
  });
}

ssize_t write(int descriptor, const void* place, std::size_t size) {
  return korvan::test::Move(size, [&](std::size_t count) {
    return syscall(SYS_write, descriptor, place, count);
  });
}

ssize_t writev(int descriptor, const iovec* parts, int count) {
  // A part of it is a part of its first text.
  return korvan::test::Move(parts[0].iov_len, [&](std::size_t size) {
    return size == parts[0].iov_len
               ? syscall(SYS_writev, descriptor, parts, count)
               : syscall(SYS_write, descriptor, parts[0].iov_base, size);
  });
}

namespace korvan::test {
namespace {

struct IniFileFaults : testing::Test {
  IniFileFaults() { Fill(file); }

  static void Fill(File& filled) {
    filled.SetKeyValue("Main"_t, "[k"_t, "v"_t);
    filled.SetKeyValue("Main"_t, "[l"_t, Text(std::string(100, 'w')));
  }
  static std::string Saved() {
    return "[Main]\n[k=v\n[l=" + std::string(100, 'w') + "\n";
  }

  Folder folder;
  File file;
};

// Whether the standard library opens a file of that name.
bool OpensToRead(const std::string& path) {
  return std::ifstream(path, std::ios::binary).is_open();
}
bool OpensToWrite(const std::string& path) {
  return std::ofstream(path, std::ios::binary).is_open();
}

TEST_F(IniFileFaults, NamesThatCanNotBeOpenedAreReportedAndNothingIsTouched) {
  const std::string other = folder / "other";
  WriteBytes(other, "kept");
  const std::string loop = folder / "loop";
  ASSERT_EQ(symlink("loop", loop.c_str()), 0);
  const std::string dangling = folder / "dangling";
  ASSERT_EQ(symlink("missing/file", dangling.c_str()), 0);
  const std::string socket_path = folder / "socket";
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(socket_path.size(), sizeof(address.sun_path));
  socket_path.copy(address.sun_path, socket_path.size());
  const int socket_descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(socket_descriptor, reinterpret_cast<sockaddr*>(&address),
                 sizeof(address)),
            0);
  const std::string before = ContentOf(file);
  std::size_t tried = 0;
  for (const std::string& path :
       {std::string(), folder / "missing/file", other + "/below", loop,
        dangling, loop + "/below", socket_path, folder / std::string(256, 'n'),
        std::string(4096, '/'), std::string("/proc/self/fd/999999")}) {
    SCOPED_TRACE(path.substr(0, 100));
    EXPECT_FALSE(OpensToRead(path));
    EXPECT_FALSE(OpensToWrite(path));
    EXPECT_FALSE(file.Load(Text(path)));
    EXPECT_FALSE(file.Load(Text(path), true));
    EXPECT_FALSE(file.Save(Text(path)));
    EXPECT_EQ(ContentOf(file), before);
    tried += 3;
  }
  close(socket_descriptor);
  EXPECT_EQ(BytesOf(other), "kept");
  EXPECT_FALSE(OpensToWrite(folder / ""));
  EXPECT_FALSE(file.Save(Text(folder / "")));
  ++tried;
  Figures(tried, " loads and saves of names that can't be opened");
}

TEST_F(IniFileFaults, FilesThatOpenAndGiveNothingEmptyTheDocument) {
  // A folder; a file whose reads fail; one that is empty.
  for (const std::string& path :
       {folder / "", std::string("/proc/self/mem"), std::string("/dev/null")}) {
    Fill(file);
    const std::string before = ContentOf(file);
    EXPECT_TRUE(file.Load(Text(path), true)) << path;
    EXPECT_EQ(ContentOf(file), before);
    EXPECT_TRUE(file.Load(Text(path))) << path;
    EXPECT_EQ(ContentOf(file), "");
  }
}

TEST_F(IniFileFaults, FilesThatTakeNothingAreSavedTo) {
  for (const std::size_t size : {1u, 5000u, 200000u}) {
    file.SetKeyValue("Main"_t, "[l"_t, Text(std::string(size, 'w')));
    const std::string before = ContentOf(file);
    for (const char* const path : {"/dev/full", "/dev/null"}) {
      EXPECT_TRUE(file.Save(Text(path)));
      EXPECT_EQ(ContentOf(file), before);
    }
  }
}

TEST_F(IniFileFaults, ANamedPipeIsLoadedToTheEndOfItsWriterAndSavedTo) {
  const std::string path = folder / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::thread writer([&] { WriteBytes(path, Saved() + "[Last]\n[m=n"); });
  File loaded;
  EXPECT_TRUE(loaded.Load(Text(path)));
  writer.join();
  File expected;
  Fill(expected);
  expected.SetKeyValue("Last"_t, "[m"_t, "n"_t);
  EXPECT_EQ(ContentOf(loaded), ContentOf(expected));
  std::string bytes;
  std::thread reader([&] { bytes = BytesOf(path); });
  EXPECT_TRUE(file.Save(Text(path)));
  reader.join();
  EXPECT_EQ(bytes, Saved());
}

TEST_F(IniFileFaults, AFullDiskKeepsTheBeginningOfASavedFile) {
  const std::string path = folder / "a.ini";
  const std::string whole = Saved();
  for (std::size_t capacity = 0; capacity <= whole.size(); ++capacity) {
    {
      const FullDisk full(capacity);
      EXPECT_TRUE(file.Save(Text(path)));
    }
    EXPECT_EQ(BytesOf(path), whole.substr(0, capacity));
  }
  Figures(whole.size() + 1, " saves by name to full disks");
}

#ifdef __GLIBCXX__

// How many calls a load or save makes that has no fault.
template <class Use>
int CallsOf(Use use) {
  Calls counted;
  calls = &counted;
  use();
  calls = nullptr;
  return counted.made;
}

// Lines in no order, more than some blocks of a file hold. The last one is
// cut where a read fails instead of telling the end.
std::string ManyLines() {
  std::string lines = "[Main]\n";
  constexpr int kCount = sizeof(Char) == 1 ? 12000 : 600;
  for (int i = 0; i < kCount; ++i) {
    lines += "[k" + std::to_string(10000 + i * 7 % kCount) +
             "=a value of some length, the same for all\n";
  }
  return lines + "[z=v";
}

std::string ContentOfLines(const std::string& lines) {
  PlainFile plain;
  StringInput input(Text(lines));
  plain.Load(input, false);
  return ContentOf(plain);
}

TEST_F(IniFileFaults, ALoadWhoseNthReadFailsKeepsTheLinesBefore) {
  const std::string path = folder / "a.ini";
  const std::string lines = ManyLines();
  WriteBytes(path, lines);
  const std::string whole = ContentOfLines(lines);
  const String name = Text(path);
  const int reads = CallsOf([&] { file.Load(name); });
  EXPECT_GE(reads, 3);
  std::size_t tried = 0;
  for (const int error : {EIO, EINTR, EISDIR, 0}) {
    for (int fault_at = 1; fault_at <= reads; ++fault_at) {
      Calls faulty;
      faulty.fault_at = fault_at;
      faulty.error = error;
      File loaded;
      calls = &faulty;
      const bool opened = loaded.Load(name);
      calls = nullptr;
      EXPECT_TRUE(opened);
      const std::string content = ContentOf(loaded);
      if (error == EINTR || error == 0) {
        EXPECT_EQ(content, whole) << "read " << fault_at;
      } else {
        const std::string read = lines.substr(0, faulty.moved);
        EXPECT_EQ(content, ContentOfLines(read.substr(0, read.rfind('\n') + 1)))
            << "read " << fault_at;
      }
      ++tried;
    }
  }
  Figures(tried, " loads of a file one of whose reads fails");
}

TEST_F(IniFileFaults, ALoadThatReadsByteByByteReadsAll) {
  const std::string path = folder / "a.ini";
  WriteBytes(path, Saved());
  Calls single;
  single.fault_at = 1;
  single.error = 0;
  single.goes_on = true;
  const std::string before = ContentOf(file);
  const String name = Text(path);
  calls = &single;
  file.Load(name);
  calls = nullptr;
  EXPECT_GE(single.made, static_cast<int>(Saved().size()));
  EXPECT_EQ(ContentOf(file), before);
}

TEST_F(IniFileFaults, ASaveWhoseNthWriteFailsIsTrueAndWritesTheBeginning) {
  const std::string path = folder / "a.ini";
  StringInput many(Text(ManyLines()));
  file.Load(many);
  const String name = Text(path);
  const int writes = CallsOf([&] { file.Save(name); });
  EXPECT_GE(writes, 2);
  const std::string whole = BytesOf(path);
  const std::string before = ContentOf(file);
  std::size_t tried = 0;
  for (const int error : {EIO, ENOSPC, EDQUOT, EINTR, EAGAIN, 0}) {
    for (const bool goes_on : {false, true}) {
      if (error == EINTR && goes_on) {
        continue;  // is repeated without end
      }
      for (int fault_at = 1; fault_at <= writes; ++fault_at) {
        Calls faulty;
        faulty.fault_at = fault_at;
        faulty.error = error;
        faulty.goes_on = goes_on;
        calls = &faulty;
        const bool opened = file.Save(name);
        calls = nullptr;
        EXPECT_TRUE(opened);
        EXPECT_EQ(ContentOf(file), before);
        const std::string bytes = BytesOf(path);
        if (error == EINTR || error == 0) {
          EXPECT_TRUE(bytes == whole) << "write " << fault_at;
        } else {
          EXPECT_TRUE(bytes.size() < whole.size() || !goes_on);
          EXPECT_TRUE(whole.starts_with(bytes)) << "write " << fault_at;
          EXPECT_EQ(bytes.size(), faulty.moved) << "write " << fault_at;
        }
        ++tried;
      }
    }
  }
  EXPECT_TRUE(file.Save(name));
  EXPECT_TRUE(BytesOf(path) == whole);
  Figures(tried, " saves to a file one of whose writes fails");
}

// What comes out of a pipe that was full but for `free` bytes, and does not
// wait for its reader.
template <class AnyFile>
std::string SavedToFullPipe(AnyFile& saved, std::size_t free) {
  int ends[2];
  EXPECT_EQ(pipe2(ends, O_NONBLOCK), 0);
  const std::string filler(
      static_cast<std::size_t>(fcntl(ends[1], F_SETPIPE_SZ, 4096)) - free, 'x');
  EXPECT_EQ(write(ends[1], filler.data(), filler.size()),
            static_cast<ssize_t>(filler.size()));
  std::string seen;
  {
    __gnu_cxx::stdio_filebuf<Char> buffer(
        ends[1], std::ios_base::out | std::ios_base::binary);
    OutputStream output(&buffer);
    saved.Save(output);
    seen = Shown(output.rdstate());
    output.flush();
    seen += " flushed:" + Shown(output.rdstate()) + ' ';
  }
  std::string taken(8192, '\0');
  const ssize_t size = read(ends[0], taken.data(), taken.size());
  EXPECT_GE(size, static_cast<ssize_t>(filler.size()));
  taken.resize(static_cast<std::size_t>(size));
  close(ends[0]);
  return seen + taken.substr(filler.size());
}

TEST_F(IniFileFaults, ALargeFileIsWrittenAndReadInFewCalls) {
  // That of wide text is the standard library's own.
  constexpr int kBlock = sizeof(Char) == 1 ? 64 * 1024 : 8 * 1024;
  const std::string lines = KeyLines(1000, std::string(1000, 'v'));
  StringInput input(Text("[Main]\n" + lines));
  File large;
  large.Load(input);
  const String path = Text(folder / "large.ini");
  const int blocks = static_cast<int>(lines.size()) / kBlock + 1;
  Calls of_save;
  calls = &of_save;
  EXPECT_TRUE(large.Save(path));
  Calls of_load;
  calls = &of_load;
  EXPECT_TRUE(large.Load(path));
  calls = nullptr;
  EXPECT_EQ(of_save.moved, lines.size() + 7);  // and the header
  EXPECT_EQ(of_load.moved, of_save.moved);
  EXPECT_LE(of_save.made, blocks + 1);
  EXPECT_LE(of_load.made, blocks + 1);
}

TEST_F(IniFileFaults, AFullPipeTakesWhatItTakesOfInsertions) {
  PlainFile plain;
  plain.Set("Main"_t, "[k"_t, "v"_t);
  plain.Set("Main"_t, "[l"_t, Text(std::string(100, 'w')));
  for (std::size_t free = 0; free <= Saved().size(); ++free) {
    EXPECT_EQ(SavedToFullPipe(file, free), SavedToFullPipe(plain, free));
  }
}

std::string changing_path;

// Returns how many of the key lines that `lines` begins with a load has
// entered. It must have entered no others, and each whole but for the last one.
std::size_t KeysOfTheBeginning(const File& file, const std::string& lines) {
  const Section* const section = file.GetSection("Main"_t);
  const std::size_t count = section == nullptr ? 0 : section->GetKeys().size();
  std::istringstream text(lines);
  std::string line;
  std::getline(text, line);  // the header
  for (std::size_t i = 0; i < count; ++i) {
    EXPECT_TRUE(std::getline(text, line)) << "no more than " << i << " keys";
    const std::size_t equals = line.find('=');
    const auto found = section->GetKeys().find(Text(line.substr(0, equals)));
    if (found == section->GetKeys().end()) {
      ADD_FAILURE() << "not there: " << line;
      return count;
    }
    const String value = Text(line.substr(equals + 1));
    const String entered = found->second->GetValue();
    EXPECT_TRUE(i + 1 < count ? entered == value : value.starts_with(entered))
        << line;
  }
  return count;
}

TEST_F(IniFileFaults, AFileThatShrinksOrGrowsWhileItIsReadIsReadInPart) {
  static constexpr char kMore[] = "\n[z1=v\n[z2=v\n";
  changing_path = folder / "a.ini";
  const std::string lines = ManyLines();
  const auto lines_of_first = [&lines](std::size_t bytes) {
    const std::string first = lines.substr(0, bytes);
    return static_cast<std::size_t>(
        std::count(first.begin(), first.end(), '\n'));
  };
  const String name = Text(changing_path);
  struct Change {
    void (*make)();
    std::size_t fewest;
  };
  const Change changes[] = {
      {[] { EXPECT_EQ(truncate(changing_path.c_str(), 0), 0); }, 0},
      {[] { EXPECT_EQ(truncate(changing_path.c_str(), 3000), 0); },
       lines_of_first(3000) - 1},
      {[] {
         std::ofstream more(changing_path, std::ios::app);
         more << kMore;
         more.flush();
       },
       lines_of_first(lines.size())},
  };
  std::size_t tried = 0;
  for (const Change& change : changes) {
    WriteBytes(changing_path, lines);
    const int reads = CallsOf([&] { file.Load(name); });
    EXPECT_GE(reads, 3);
    for (int at = 1; at <= reads; ++at) {
      WriteBytes(changing_path, lines);
      Calls changing;
      changing.fault_at = at;
      static void (*make)() = nullptr;
      make = change.make;
      static std::size_t read_before = 0;
      changing.before = [] {
        Calls* const former = calls;
        read_before = former->moved;
        calls = nullptr;  // its own writes are none of the load's
        make();
        calls = former;
      };
      File loaded;
      calls = &changing;
      EXPECT_TRUE(loaded.Load(name));
      calls = nullptr;
      const std::size_t keys = KeysOfTheBeginning(loaded, lines + kMore);
      EXPECT_GE(keys, change.fewest);
      EXPECT_GE(keys + 1, lines_of_first(read_before));
      ++tried;
    }
  }
  Figures(tried, " loads of a file that changes meanwhile");
}

// AddressSanitizer takes the stack that a cancelled thread unwinds for one that
// is in use.
#ifndef KORVAN_TEST_ADDRESS_SANITIZER

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

void CancelAndEnd() {
  pthread_cancel(pthread_self());
  pthread_testcancel();
}
void Cancel() { pthread_cancel(pthread_self()); }

// Has a thread do it once for each read or write, in which it is cancelled, and
// ends there or at the next call of the system that allows it.
template <class Use>
void CancelInEachCall(Use use) {
  const int made = CallsOf(use);
  EXPECT_GE(made, 1);
  const std::ptrdiff_t open_before = OpenDescriptors();
  for (void (*const cancel)() : {CancelAndEnd, Cancel}) {
    for (int at = 1; at <= made; ++at) {
      bool has_returned = false;
      std::thread thread([&] {
        Calls cancelled;
        cancelled.fault_at = at;
        cancelled.before = cancel;
        calls = &cancelled;
        use();
        pthread_testcancel();
        has_returned = true;
      });
      thread.join();
      EXPECT_FALSE(has_returned);
      EXPECT_EQ(OpenDescriptors(), open_before);
    }
  }
}

// The exception that ends a cancelled thread would end the process if it came
// from a destructor.
TEST_F(IniFileFaults, AThreadThatIsCancelledInAWriteEndsAlone) {
  const String path = Text(folder / "a.ini");
  CancelInEachCall([&] { file.Save(path); });
  file.SetKeyValue("Main"_t, "[l"_t, Text(std::string(300'000, 'w')));
  CancelInEachCall([&] { file.Save(path); });
}

TEST_F(IniFileFaults, AThreadThatIsCancelledAsASaveFailsEndsAlone) {
  const String path = Text(folder / "a.ini");
  file.SetKeyValue("Main"_t, "[m"_t, Text(std::string(300'000, 'w')));
  CancelInEachCall([&] {
    // Of the long line. What stands before it is written all the same.
    const LimitedNew limited(200'000);
    try {
      file.Save(path);
      ADD_FAILURE() << "was saved";
    } catch (const std::bad_alloc&) {
    }
  });
}

TEST_F(IniFileFaults, AThreadThatIsCancelledInAReadEndsAlone) {
  WriteBytes(folder / "a.ini", ManyLines());
  const String path = Text(folder / "a.ini");
  CancelInEachCall([&] { file.Load(path); });
}

#endif

#endif

}  // namespace
}  // namespace korvan::test
