// Loads and saves whose stream fails at any character, in any way, whatever its
// state and its exceptions: nobody can tell the library from a loop of
// std::getline or a series of insertions, and a second try works.
#include <korvan/ini_file.h>

#include <cstddef>
#include <ios>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "ini/hostile_buffers.h"
#include "ini/odd_areas.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/campaign.h"
#include "support/folder.h"
#include "support/settings.h"

namespace korvan::test {
namespace {

std::vector<std::ios_base::iostate> AllStates() {
  const auto bad = std::ios_base::badbit;
  const auto eof = std::ios_base::eofbit;
  const auto fail = std::ios_base::failbit;
  return {
      std::ios_base::goodbit, bad, eof, fail, bad | eof, bad | fail, eof | fail,
      bad | eof | fail};
}

const std::vector<FaultKind> kAllKinds = {
    FaultKind::kThrows,         FaultKind::kThrowsFailure,
    FaultKind::kThrowsBadAlloc, FaultKind::kThrowsNumber,
    FaultKind::kEnds,           FaultKind::kEndsOnce};

// With a run of keys in no order, which are entered at once, and lines of every
// kind.
std::string LongText() {
  std::string text = "# note\n[Main]\r\n";
  for (int i = 0; i < 18; ++i) {
    text += "[k" + std::to_string(10 + i * 7 % 18) + "=v\n";
  }
  return text + "k=v\n [ b ] \n[l= w \r\n[m";
}

// Every `step`th of the settings, in scripts/test; all in a campaign.
template <class Settings>
std::vector<Settings> Some(const std::vector<Settings>& all, std::size_t step) {
  std::vector<Settings> some;
  for (std::size_t i = 0; i < all.size(); i += Rounds(step, 1)) {
    some.push_back(all[i]);
  }
  return some;
}

std::string Described(const LoadCase& load) {
  return "fault " + std::to_string(static_cast<int>(load.kind)) + " at " +
         std::to_string(load.fault) + ", mask" + Shown(load.exceptions) +
         ", state" + Shown(load.state) + ", first piece " +
         (load.pieces.empty() ? "whole" : std::to_string(load.pieces.front()));
}

TEST(IniStreamFaults, ALoadLooksLikeGetlineHoweverItsStreamFails) {
  std::size_t tried = 0;
  for (const std::string& text :
       {std::string("[a]\r\n [k = v \r\n\n#x\n[l=w]\n[m=]x"),
        std::string("[a]\n[=\n[==\n[k=\r\n[l"), LongText()}) {
    std::vector<LoadCase> all = {{}};
    all.front().text = Text(text);
    Vary(all, &LoadCase::fault, NumbersUpTo(text.size()));
    Vary(all, &LoadCase::kind, kAllKinds);
    Vary(all, &LoadCase::pieces, {{}, {1}, {0}, {5}, {1, 0, 9}});
    Vary(all, &LoadCase::exceptions, AllStates());
    Vary(all, &LoadCase::merge, {false, true});
    for (const LoadCase& load : Some(all, 29)) {
      File file;
      PlainFile plain;
      file.SetKeyValue("A"_t, "[old"_t, "v"_t);
      plain.Set("A"_t, "[old"_t, "v"_t);
      ASSERT_EQ(Load(load, file), Load(load, plain)) << text << '\n'
                                                     << Described(load);
      ++tried;
    }
  }
  Figures(tried, " loads from streams that fail at some character");
}

TEST(IniStreamFaults, ALoadLooksLikeGetlineWhateverTheStateOfItsStream) {
  std::size_t tried = 0;
  const std::string text = "[a]\n[k=v\n[b]\n[l=w";
  std::vector<LoadCase> all = {{}};
  all.front().text = Text(text);
  Vary(all, &LoadCase::state, AllStates());
  Vary(all, &LoadCase::exceptions, AllStates());
  Vary(all, &LoadCase::pieces, {{}, {1}, {0}, {5}});
  Vary(all, &LoadCase::tied, {false, true});
  Vary(all, &LoadCase::merge, {false, true});
  for (const LoadCase& load : all) {
    File file;
    PlainFile plain;
    file.AddSection("Old"_t);
    plain.AddSection("Old"_t);
    ASSERT_EQ(Load(load, file), Load(load, plain)) << Described(load);
    ++tried;
  }
  Figures(tried, " loads from streams in some state");
}

TEST(IniStreamFaults, ATextThatEndsAnywhereIsReadUpToThere) {
  const std::string text = LongText();
  std::size_t tried = 0;
  for (std::size_t size = 0; size <= text.size(); ++size) {
    std::vector<LoadCase> all = {{}};
    all.front().text = Text(text.substr(0, size));
    Vary(all, &LoadCase::pieces, {{}, {1}, {0}, {7}});
    Vary(all, &LoadCase::exceptions, AllStates());
    for (const LoadCase& load : Some(all, 3)) {
      File file;
      PlainFile plain;
      ASSERT_EQ(Load(load, file), Load(load, plain))
          << size << ' ' << Described(load);
      ++tried;
    }
  }
  Figures(tried, " loads of texts that end somewhere");
}

// After a load that failed, the same document takes the text once more.
TEST(IniStreamFaults, ALoadThatFailedCanBeTriedAgain) {
  const std::string text = LongText();
  PlainFile whole;
  StringInput whole_input(Text(text));
  whole.Load(whole_input, false);
  for (const FaultKind kind : kAllKinds) {
    for (std::size_t fault = 0; fault <= text.size(); ++fault) {
      File file;
      LoadCase load;
      load.text = Text(text);
      load.fault = fault;
      load.kind = kind;
      load.exceptions = std::ios_base::badbit;
      Load(load, file);
      StringInput input(Text(text));
      input >> file;
      ASSERT_EQ(ContentOf(file), ContentOf(whole)) << Described(load);
    }
  }
}

TEST(IniStreamFaults, AStreamWithoutABufferGivesNothing) {
  for (const bool merge : {false, true}) {
    File file;
    file.AddSection("Old"_t);
    InputStream input(nullptr);
    file.Load(input, merge);
    EXPECT_EQ(ContentOf(file), merge ? "Old{}" : "");
    EXPECT_TRUE(input.bad());
  }
}

// Saves.

// What was written to the stream before the document.
enum class Before { kNothing, kFailedWrite, kFailedWriteThatIsCleared };

struct SaveCase {
  std::size_t room = 1000;
  std::size_t capacity = kNever;
  FaultKind kind = FaultKind::kEnds;
  std::ios_base::iostate exceptions = std::ios_base::goodbit;
  Before before = Before::kNothing;
  int width = 0;
};

// Saves and tells all that can be seen after.
template <class AnyFile>
std::string Save(const SaveCase& save, AnyFile& file) {
  LimitedOutput buffer(save.room, save.capacity, save.kind);
  OutputStream output(&buffer);
  if (save.before != Before::kNothing) {
    LimitedOutput full(0, 0);
    output.rdbuf(&full);
    output << Char{'x'};
    const auto failed = output.rdstate();
    output.rdbuf(&buffer);  // clears, too
    if (save.before == Before::kFailedWrite) {
      output.setstate(failed);
    }
  }
  output.width(save.width);
  const std::string first = Thrown([&] { output.exceptions(save.exceptions); });
  const std::string thrown = Thrown([&] { file.Save(output); });
  std::ostringstream seen;
  seen << Shown(buffer.Written()) << " thrown:" << first << ' ' << thrown
       << " state:" << Shown(output.rdstate()) << " width:" << output.width()
       << " flushes:" << buffer.flushes();
  return seen.str();
}

template <class AnyFile>
void Fill(AnyFile& file,
          void (*set)(AnyFile&, const char*, const char*, const char*)) {
  set(file, "", "", "");
  set(file, "a", "k", "v");
  set(file, "a", "l", "");
  set(file, "b", "a longer name", "a value of some length");
}

struct Documents {
  Documents() {
    Fill<File>(file, [](File& filled, const char* section, const char* key,
                        const char* value) {
      filled.SetKeyValue(Text(section), Text(key), Text(value));
    });
    Fill<PlainFile>(plain, [](PlainFile& filled, const char* section,
                              const char* key, const char* value) {
      filled.Set(Text(section), Text(key), Text(value));
    });
  }

  File file;
  PlainFile plain;
};

TEST(IniStreamFaults, ASaveLooksLikeInsertionsHoweverItsStreamFails) {
  Documents documents;
  StringOutput whole;
  whole << documents.file;
  std::vector<SaveCase> all = {{}};
  Vary(all, &SaveCase::capacity, NumbersUpTo(whole.str().size()));
  Vary(all, &SaveCase::kind, kAllKinds);
  Vary(all, &SaveCase::room, {0, 1, 7, 1000});
  Vary(all, &SaveCase::exceptions, AllStates());
  Vary(all, &SaveCase::before,
       {Before::kNothing, Before::kFailedWrite,
        Before::kFailedWriteThatIsCleared});
  Vary(all, &SaveCase::width, {0, 6});
  const std::vector<SaveCase> tried = Some(all, 29);
  for (const SaveCase& save : tried) {
    ASSERT_EQ(Save(save, documents.file), Save(save, documents.plain))
        << "fault " << static_cast<int>(save.kind) << " at " << save.capacity
        << ", room " << save.room << ", mask" << Shown(save.exceptions)
        << ", before " << static_cast<int>(save.before) << ", width "
        << save.width;
  }
  StringOutput again;
  again << documents.file;
  EXPECT_EQ(Shown(again.str()), Shown(whole.str()));
  Figures(tried.size(), " saves to streams that fail at some character");
}

// A file on a disk that is full after so many bytes.
struct DiskCase {
  std::size_t block = 4096;  // of the file's buffer
  std::size_t capacity = 0;
  std::ios_base::iostate exceptions = std::ios_base::goodbit;
  std::ios_base::iostate state = std::ios_base::goodbit;  // before the save
};

template <class AnyFile>
std::string Save(const DiskCase& save, const std::string& path, AnyFile& file) {
  GuardedFile guarded(path, save.block);
  OutputStream output(&guarded.buffer());
  output << Char{'.'};  // now the buffer has its room
  output.setstate(save.state);
  const std::string first = Thrown([&] { output.exceptions(save.exceptions); });
  const FullDisk full(save.capacity);
  const std::string thrown = Thrown([&] { file.Save(output); });
  std::string seen = first + ' ' + thrown + Shown(output.rdstate());
  output.exceptions(std::ios_base::goodbit);
  output.flush();
  seen += " flushed:" + Shown(output.rdstate());
  return seen + ' ' + BytesOf(path);
}

TEST(IniStreamFaults, ASaveToAFileOnAFullDiskLooksLikeInsertions) {
  Documents documents;
  StringOutput whole;
  whole << documents.file;
  const Folder folder;
  const std::string path = folder / "a.ini";
  std::vector<DiskCase> all = {{}};
  Vary(all, &DiskCase::block, {4096, 64, 20});
  Vary(all, &DiskCase::capacity, NumbersUpTo(whole.str().size()));
  Vary(all, &DiskCase::exceptions, AllStates());
  Vary(all, &DiskCase::state,
       {std::ios_base::goodbit, std::ios_base::badbit, std::ios_base::failbit,
        std::ios_base::eofbit});
  const std::vector<DiskCase> tried = Some(all, 29);
  for (const DiskCase& save : tried) {
    ASSERT_EQ(Save(save, path, documents.file),
              Save(save, path, documents.plain))
        << "block of " << save.block << ", disk of " << save.capacity
        << ", mask" << Shown(save.exceptions) << ", state" << Shown(save.state);
  }
  Figures(tried.size(), " saves to files on full disks");
}

}  // namespace
}  // namespace korvan::test
