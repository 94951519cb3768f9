// Loading from files and saving to files: names and faults.
#include <fcntl.h>
#include <korvan/ini_file.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/failing_new.h"
#include "support/folder.h"

namespace korvan::test {
namespace {

struct IniFile : testing::Test {
  bool Load(const std::string& path, bool merge = false) {
    return file.Load(Text(path), merge);
  }
  bool Save(const std::string& path) { return file.Save(Text(path)); }

  Folder folder;
  File file;
};

TEST_F(IniFile, ALoadTakesWhatTheFileHolds) {
  const std::string path = folder / "a.ini";
  WriteBytes(path, "[Main]\r\n[k=v\r\n# note\r\n[Other]");
  file.AddSection("Old"_t);
  EXPECT_TRUE(Load(path));
  EXPECT_EQ(ContentOf(file), "Main{[k=v} Other{}");
}

TEST_F(IniFile, ALoadMergesWhenAsked) {
  const std::string path = folder / "a.ini";
  WriteBytes(path, "[Main]\n[k=v\n");
  file.SetKeyValue("main"_t, "l"_t, "w"_t);
  EXPECT_TRUE(Load(path, true));
  EXPECT_EQ(ContentOf(file), "main{[k=v|l=w}");
}

TEST_F(IniFile, ALoadReplacesUnlessAskedToMerge) {
  const std::string path = folder / "a.ini";
  WriteBytes(path, "");
  file.AddSection("Old"_t);
  EXPECT_TRUE(file.Load(Text(path), true));
  EXPECT_EQ(ContentOf(file), "Old{}");
  EXPECT_TRUE(file.Load(Text(path)));
  EXPECT_EQ(ContentOf(file), "");
}

TEST_F(IniFile, CarriageReturnsAreKeptAsInABinaryFile) {
  const std::string path = folder / "a.ini";
  file.SetKeyValue("Main"_t, "[k"_t, "a\rb"_t);
  EXPECT_TRUE(Save(path));
  EXPECT_EQ(BytesOf(path), "[Main]\n[k=a\rb\n");
  file.AddSection("Old"_t);
  EXPECT_TRUE(Load(path));
  EXPECT_EQ(ContentOf(file), "Main{[k=a\\d;b}");
}

TEST_F(IniFile, SavingTruncatesALongerFileInPlace) {
  const std::string path = folder / "a.ini";
  const std::string other_name = folder / "b.ini";
  WriteBytes(path, std::string(1000, 'x'));
  ASSERT_EQ(link(path.c_str(), other_name.c_str()), 0);
  file.SetKeyValue("Main"_t, "k"_t, "v"_t);
  EXPECT_TRUE(Save(path));
  EXPECT_EQ(BytesOf(other_name), "[Main]\nk=v\n");
}

TEST_F(IniFile, SavingAnEmptyDocumentLeavesAnEmptyFile) {
  const std::string path = folder / "a.ini";
  WriteBytes(path, "x");
  EXPECT_TRUE(Save(path));
  EXPECT_EQ(BytesOf(path), "");
}

TEST_F(IniFile, AFileLargerThanABufferIsSavedAndLoaded) {
  const std::string path = folder / "a.ini";
  std::string bytes;
  for (int section = 10; section < 40; ++section) {
    const std::string name = "section " + std::to_string(section);
    bytes += '[' + name + "]\n";
    file.AddSection(Text(name));
    for (int key = 100; key < 300; ++key) {
      const std::string key_name = "[key " + std::to_string(key);
      const std::string value(static_cast<std::size_t>(key % 70), 'v');
      bytes += key_name + '=' + value + '\n';
      file.SetKeyValue(Text(name), Text(key_name), Text(value));
    }
  }
  EXPECT_TRUE(Save(path));
  EXPECT_EQ(BytesOf(path), bytes);
  const std::string content = ContentOf(file);
  file.AddSection("Old"_t);
  EXPECT_TRUE(Load(path));
  EXPECT_EQ(ContentOf(file), content);
}

TEST_F(IniFile, ANameEndsAtItsFirstNul) {
  const std::string path = folder / "a.ini";
  file.AddSection("Main"_t);
  EXPECT_TRUE(Save(path + std::string("\0.bak", 5)));
  EXPECT_EQ(BytesOf(path), "[Main]\n");
  file.AddSection("Old"_t);
  EXPECT_TRUE(Load(path + std::string("\0.bak", 5)));
  EXPECT_EQ(ContentOf(file), "Main{}");
}

TEST_F(IniFile, AFileThatCannotBeOpenedLeavesTheDocument) {
  const std::string other = folder / "other";
  const std::string loop = folder / "loop";
  WriteBytes(other, "[New]\n");
  ASSERT_EQ(symlink("loop", loop.c_str()), 0);
  file.SetKeyValue("Main"_t, "k"_t, "v"_t);
  for (const std::string& path :
       {folder / "missing", folder / "missing/file", other + "/below", loop,
        folder / std::string(300, 'n'), std::string(5000, 'n'),
        std::string()}) {
    EXPECT_FALSE(Load(path)) << path;
    EXPECT_FALSE(Load(path, true)) << path;
    EXPECT_EQ(ContentOf(file), "Main{k=v}");
  }
}

TEST_F(IniFile, AFileThatCannotBeOpenedIsNotWritten) {
  const std::string other = folder / "other";
  const std::string loop = folder / "loop";
  WriteBytes(other, "kept");
  ASSERT_EQ(symlink("loop", loop.c_str()), 0);
  file.AddSection("Main"_t);
  for (const std::string& path :
       {folder / "missing/file", other + "/below", loop, folder / "",
        folder / std::string(300, 'n'), std::string()}) {
    EXPECT_FALSE(Save(path)) << path;
  }
  EXPECT_EQ(BytesOf(other), "kept");
  struct stat missing;
  EXPECT_NE(stat((folder / "missing").c_str(), &missing), 0);
}

TEST_F(IniFile, WhyAFileCannotBeOpenedIsInErrno) {
  const std::string other = folder / "other";
  const std::string loop = folder / "loop";
  WriteBytes(other, "kept");
  ASSERT_EQ(symlink("loop", loop.c_str()), 0);
  const struct {
    std::string path;
    int error;
  } cases[] = {
      {folder / "missing/file", ENOENT},
      {other + "/below", ENOTDIR},
      {loop, ELOOP},
      {folder / std::string(300, 'n'), ENAMETOOLONG},
  };
  for (const auto& [path, error] : cases) {
    SCOPED_TRACE(path);
    errno = 0;
    EXPECT_FALSE(Load(path));
    EXPECT_EQ(errno, error);
    errno = 0;
    EXPECT_FALSE(Save(path));
    EXPECT_EQ(errno, error);
  }
}

TEST_F(IniFile, WithoutAFreeDescriptorNothingIsOpened) {
  const std::string path = folder / "a.ini";
  WriteBytes(path, "[New]\n");
  file.AddSection("Main"_t);
  // UndefinedBehaviorSanitizer needs a descriptor to look at `this`.
  File& document = file;
  const auto name = Text(path);
  const int lowest_free = dup(0);
  ASSERT_GE(lowest_free, 0);
  close(lowest_free);
  rlimit former;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
  rlimit none = former;
  none.rlim_cur = static_cast<rlim_t>(lowest_free);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const bool loaded = document.Load(name);
  const bool saved = document.Save(name);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &former), 0);
  EXPECT_FALSE(loaded);
  EXPECT_FALSE(saved);
  EXPECT_EQ(ContentOf(file), "Main{}");
  EXPECT_EQ(BytesOf(path), "[New]\n");
}

TEST_F(IniFile, ADirectoryOpensAndGivesNoLines) {
  file.AddSection("Main"_t);
  EXPECT_TRUE(Load(folder / "", true));
  EXPECT_EQ(ContentOf(file), "Main{}");
  EXPECT_TRUE(Load(folder / ""));
  EXPECT_EQ(ContentOf(file), "");
}

TEST_F(IniFile, AFullDiskDoesNotMakeASaveFail) {
  for (const std::size_t size : {1u, 20u, 200000u}) {
    file.SetKeyValue("Main"_t, "k"_t, Text(std::string(size, 'v')));
    EXPECT_TRUE(Save("/dev/full"));
  }
}

TEST_F(IniFile, FilesAreClosed) {
  const std::string path = folder / "a.ini";
  const int before = dup(0);
  close(before);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(Save(path));
    EXPECT_TRUE(Load(path));
  }
  const int after = dup(0);
  close(after);
  EXPECT_EQ(after, before);
}

TEST_F(IniFile, ALoadAndASaveLeaveTheThreadAsCancellableAsItWas) {
  const std::string path = folder / "a.ini";
  for (const int state : {PTHREAD_CANCEL_DISABLE, PTHREAD_CANCEL_ENABLE}) {
    pthread_setcancelstate(state, nullptr);
    EXPECT_TRUE(Save(path));
    EXPECT_TRUE(Load(path));
    int found = -1;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &found);
    EXPECT_EQ(found, state);
  }
}

TEST_F(IniFile, AProcessWithoutStandardInputLoadsAndSaves) {
  const std::string path = folder / "a.ini";
  file.SetKeyValue("Main"_t, "[k"_t, "v"_t);
  const int standard_input = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  // The files get its descriptor, 0.
  EXPECT_TRUE(Save(path));
  file.AddSection("Old"_t);
  EXPECT_TRUE(Load(path));
  EXPECT_EQ(ContentOf(file), "Main{[k=v}");
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
  dup2(standard_input, STDIN_FILENO);
  close(standard_input);
}

// AddressSanitizer takes the stack that a cancelled thread unwinds for one that
// is in use.
#if defined(__GLIBCXX__) && !defined(KORVAN_TEST_ADDRESS_SANITIZER)

thread_local int calls_to_cancel = 0;

void CancelAtTheLastCall() {
  if (--calls_to_cancel == 0) {
    pthread_cancel(pthread_self());
  }
}

// A cancelled thread ends at its next system call of many kinds, and ends the
// process where that is in a destructor.
TEST_F(IniFile, AThreadThatIsCancelledWhileItLoadsAFileEndsAlone) {
  const std::string path = folder / "a.ini";
  WriteBytes(path, "[Main]\n[k=a value that is too long to be inline");
  int were_cancelled = 0;
  for (int calls = 1; calls < 15; ++calls) {
    bool has_returned = false;
    std::thread thread([&] {
      File loaded;
      const String name = Text(path);
      calls_to_cancel = calls;
      const PausingNew cancelling(CancelAtTheLastCall);
      loaded.Load(name);
      pthread_testcancel();
      has_returned = true;
    });
    thread.join();
    were_cancelled += !has_returned;
  }
  EXPECT_GE(were_cancelled, 5);
}

#endif

}  // namespace
}  // namespace korvan::test
