// What the writer writes, that its fast paths look like insertions whatever the
// stream, and what the reader takes back.
#include <korvan/ini_file.h>

#include <fstream>
#include <iomanip>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ini/hostile_buffers.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/folder.h"
#include "support/settings.h"

namespace korvan::test {
namespace {

struct IniWriter : testing::Test {
  std::string Saved() {
    StringOutput output;
    file.Save(output);
    EXPECT_TRUE(output.good());
    return Shown(output.str());
  }

  // What a document has after this one was saved and it was loaded from that.
  std::string TakenBack() {
    std::basic_stringstream<Char> stream;
    File loaded;
    stream << file;
    stream >> loaded;
    return ContentOf(loaded);
  }

  // Sets a value in the document and in the plain one.
  void Set(std::string_view section, std::string_view key,
           std::string_view value) {
    file.SetKeyValue(Text(section), Text(key), Text(value));
    plain.Set(Text(section), Text(key), Text(value));
  }

  void SetSomeKeys() {
    Set("a", "k", "v");
    Set("a", "l", "");
    Set("", "", "");
    Set("b", "a longer name", "a value of some length");
  }

  File file;
  PlainFile plain;
};

TEST_F(IniWriter, AnEmptyDocumentIsWrittenAsNothing) { EXPECT_EQ(Saved(), ""); }

TEST_F(IniWriter, HeadersAndKeysAreWrittenAndNothingElse) {
  Set("Main", "k", "12");
  Set("Main", "l", "");
  Set("Main", "m", " v ");
  Set("Other", "[x]", "\"#;=");
  EXPECT_EQ(Saved(),
            "[Main]\\a;k=12\\a;l=\\a;m= v \\a;[Other]\\a;[x]=\"#;=\\a;");
}

TEST_F(IniWriter, NamesAreWrittenInCaseInsensitiveOrder) {
  for (const auto name : {"Zeta", "alpha", "", "BETA"}) {
    Set(name, "b", "1");
    Set(name, "A", "2");
  }
  EXPECT_EQ(Saved(),
            "[]\\a;A=2\\a;b=1\\a;[alpha]\\a;A=2\\a;b=1\\a;"
            "[BETA]\\a;A=2\\a;b=1\\a;[Zeta]\\a;A=2\\a;b=1\\a;");
}

TEST_F(IniWriter, ASectionWithoutKeysIsWrittenAsItsHeader) {
  file.AddSection("a"_t);
  file.AddSection("b"_t);
  EXPECT_EQ(Saved(), "[a]\\a;[b]\\a;");
}

TEST_F(IniWriter, TextsAreWrittenAsTheyAre) {
  Set("]\r\n[", "a\nb", std::string_view("\0\r\n", 3));
  EXPECT_EQ(Saved(), "[]\\d;\\a;[]\\a;a\\a;b=\\0;\\d;\\a;\\a;");
}

TEST_F(IniWriter, TheOperatorGivesTheStreamBack) {
  file.AddSection("a"_t);
  StringOutput output;
  EXPECT_EQ(&(output << file), &output);
  EXPECT_EQ(Shown(output.str()), "[a]\\a;");
}

TEST_F(IniWriter, SavingDoesNotFlush) {
  Set("Main", "k", "v");
  for (const std::size_t room : {0u, 1u, 5u, 1000u}) {
    LimitedOutput buffer(room);
    OutputStream output(&buffer);
    output << file;
    EXPECT_EQ(buffer.flushes(), 0);
  }
}

TEST_F(IniWriter, TheFirstInsertionTakesTheWidth) {
  Set("a", "k", "v");
  StringOutput output;
  output << std::setw(6) << std::setfill(Char{'.'}) << file;
  EXPECT_EQ(Shown(output.str()), "...[a]\\a;k=v\\a;");
  EXPECT_EQ(output.width(), 0);
}

TEST_F(IniWriter, AnEmptyDocumentLeavesTheWidth) {
  StringOutput output;
  output << std::setw(6) << file;
  EXPECT_EQ(output.width(), 6);
}

// What a stream can be set to before a document is saved to it.
struct StreamSettings {
  std::size_t room = 1000;  // of its buffer
  std::size_t capacity = kNever;
  bool throws = false;  // the buffer does, where it is full
  std::ios_base::iostate exceptions = std::ios_base::goodbit;
  bool tied = false;
  std::ios_base::fmtflags flags{};
  int width = 0;
  std::ios_base::iostate state = std::ios_base::goodbit;
};

std::ostream& operator<<(std::ostream& output, const StreamSettings& settings) {
  return output << "room " << settings.room << ", capacity "
                << settings.capacity << ", throws " << settings.throws
                << ", exceptions" << Shown(settings.exceptions) << ", tied "
                << settings.tied << ", flags " << settings.flags << ", width "
                << settings.width << ", state" << Shown(settings.state);
}

// Saves a document of the library or a plain one, and tells all that can be
// seen of it.
template <class AnyFile>
std::string Seen(AnyFile& file, const StreamSettings& settings) {
  LimitedOutput buffer(settings.room, settings.capacity,
                       settings.throws ? FaultKind::kThrows : FaultKind::kEnds);
  OutputStream output(&buffer);
  LimitedOutput tied_buffer;
  OutputStream tied_output(&tied_buffer);
  if (settings.tied) {
    output.tie(&tied_output);
  }
  output.fill('*');
  output.width(settings.width);
  output.setf(settings.flags);
  output.setstate(settings.state);
  const std::string first =
      Thrown([&] { output.exceptions(settings.exceptions); });
  const std::string thrown = Thrown([&] { file.Save(output); });
  std::ostringstream seen;
  seen << Shown(buffer.Written()) << " thrown:" << first << ' ' << thrown
       << " state:" << Shown(output.rdstate()) << " width:" << output.width()
       << " flushes:" << buffer.flushes() << ' ' << tied_buffer.flushes();
  return seen.str();
}

TEST_F(IniWriter, SavingLooksLikeInsertionsHoweverTheBufferFails) {
  SetSomeKeys();
  std::vector<StreamSettings> all = {{}};
  Vary(all, &StreamSettings::room, {0, 7, 1000});
  Vary(all, &StreamSettings::capacity, NumbersUpTo(Saved().size()));
  Vary(all, &StreamSettings::throws, {false, true});
  Vary(all, &StreamSettings::exceptions,
       {std::ios_base::goodbit, std::ios_base::badbit, std::ios_base::failbit,
        std::ios_base::failbit | std::ios_base::badbit});
  Vary(all, &StreamSettings::tied, {false, true});
  Vary(all, &StreamSettings::flags,
       {{}, std::ios_base::unitbuf, std::ios_base::left});
  Vary(all, &StreamSettings::width, {0, 6});
  for (const StreamSettings& settings : all) {
    ASSERT_EQ(Seen(file, settings), Seen(plain, settings)) << settings;
  }
}

TEST_F(IniWriter, SavingLooksLikeInsertionsWhateverTheStateOfTheStream) {
  SetSomeKeys();
  std::vector<StreamSettings> all = {{}};
  Vary(all, &StreamSettings::state,
       {std::ios_base::goodbit, std::ios_base::badbit, std::ios_base::failbit,
        std::ios_base::eofbit});
  Vary(all, &StreamSettings::width, {0, 6, -1});
  Vary(all, &StreamSettings::exceptions,
       {std::ios_base::goodbit, std::ios_base::failbit});
  for (const StreamSettings& settings : all) {
    EXPECT_EQ(Seen(file, settings), Seen(plain, settings)) << settings;
  }
}

TEST_F(IniWriter, AStreamWithoutABufferFails) {
  file.AddSection("a"_t);
  plain.AddSection("a"_t);
  OutputStream output(nullptr);
  OutputStream plain_output(nullptr);
  output << file;
  plain.Save(plain_output);
  EXPECT_TRUE(output.bad());
  EXPECT_EQ(Shown(output.rdstate()), Shown(plain_output.rdstate()));
}

// A buffer of the caller's own may watch how it is given its text: a tee, a
// counter, one that takes a text whole or not at all.

// Tells each text that `Buffer` is given, and refuses those that go beyond
// `capacity`.
template <class Buffer>
class Watched : public Buffer {
 public:
  explicit Watched(std::size_t capacity = kNever) : capacity_(capacity) {}

  // Gives the buffer room that a caller may fill without a call.
  void SetArea(String& area) {
    Buffer::setp(area.data(), area.data() + area.size());
  }
  std::string Seen() const {
    return seen_ +
           " unseen:" + std::to_string(Buffer::pptr() - Buffer::pbase());
  }

 protected:
  std::streamsize xsputn(const Char* text, std::streamsize size) override {
    const String given(text, static_cast<std::size_t>(size));
    if (given.size() > capacity_) {
      seen_ += '!';
      return 0;
    }
    capacity_ -= given.size();
    seen_ += '(' + Shown(given) + ')';
    return size;
  }

 private:
  std::string seen_;
  std::size_t capacity_;
};

template <class Buffer, class AnyFile>
std::string SeenBy(Buffer& buffer, AnyFile& file) {
  OutputStream output(&buffer);
  file.Save(output);
  return buffer.Seen() + Shown(output.rdstate());
}

TEST_F(IniWriter, ACallersBufferIsGivenEachLineAndEachLineFeedWhole) {
  Set("a", "k", "v");
  Set("a", "l", "");
  Watched<StreamBuffer> buffer;
  EXPECT_EQ(SeenBy(buffer, file), "([a])(\\a;)(k=v)(\\a;)(l=)(\\a;) unseen:0");
}

TEST_F(IniWriter, NothingPassesByACallersBufferThatHasRoom) {
  Set("a", "k", "v");
  String area(1000, Char{});
  Watched<StreamBuffer> buffer;
  buffer.SetArea(area);
  EXPECT_EQ(SeenBy(buffer, file), "([a])(\\a;)(k=v)(\\a;) unseen:0");
}

TEST_F(IniWriter, NothingPassesByAClassDerivedFromAStandardBuffer) {
  Set("a", "k", "v");
  String area(1000, Char{});
  Watched<StringBuffer> string_buffer;
  string_buffer.SetArea(area);
  EXPECT_EQ(SeenBy(string_buffer, file), "([a])(\\a;)(k=v)(\\a;) unseen:0");
  Watched<FileBuffer> file_buffer;
  file_buffer.SetArea(area);
  EXPECT_EQ(SeenBy(file_buffer, file), "([a])(\\a;)(k=v)(\\a;) unseen:0");
}

TEST_F(IniWriter, ABufferThatTakesAllOrNothingHoldsWhatInsertionsLeave) {
  for (const auto& [key, value] :
       {std::pair{"k", "v"}, {"a longer name", "a longer value"}, {"z", ""}}) {
    Set("a", key, value);
  }
  const std::size_t whole = Saved().size();
  for (std::size_t capacity = 0; capacity <= whole; ++capacity) {
    Watched<StreamBuffer> buffer(capacity);
    Watched<StreamBuffer> plain_buffer(capacity);
    EXPECT_EQ(SeenBy(buffer, file), SeenBy(plain_buffer, plain));
  }
}

// The standard library's own buffers: the writer fills their room itself.

struct FileSettings {
  std::size_t block = 1000;  // size of the file's buffer
  int width = 0;
  bool tied = false;
  std::ios_base::fmtflags flags{};
  std::ios_base::iostate state = std::ios_base::goodbit;
};

// Saves to a file and tells what the file has before the buffer is flushed, and
// after.
template <class AnyFile>
std::string SeenInFile(AnyFile& file, const std::string& path,
                       const FileSettings& settings) {
  String block(settings.block, Char{});
  FileBuffer buffer;
  buffer.pubsetbuf(block.data(), static_cast<std::streamsize>(block.size()));
  EXPECT_NE(buffer.open(path, std::ios_base::out | std::ios_base::binary),
            nullptr);
  OutputStream output(&buffer);
  output << Char{'.'};  // now the buffer has its room
  LimitedOutput tied_buffer;
  OutputStream tied(&tied_buffer);
  if (settings.tied) {
    output.tie(&tied);
  }
  output.width(settings.width);
  output.setf(settings.flags);
  output.setstate(settings.state);
  file.Save(output);
  const auto bytes = [&] {
    return path == "/dev/full" ? std::string() : BytesOf(path);
  };
  std::string seen = bytes() + Shown(output.rdstate());
  output.flush();
  seen += " flushed: " + bytes() + Shown(output.rdstate());
  return seen + " flushes:" + std::to_string(tied_buffer.flushes());
}

TEST_F(IniWriter, AFileGetsWhatInsertionsWouldGiveIt) {
  const Folder folder;
  SetSomeKeys();
  for (const std::string& path : {folder / "a.ini", std::string("/dev/full")}) {
    for (std::size_t block = 0; block < 80; ++block) {
      ASSERT_EQ(SeenInFile(file, path, {block}),
                SeenInFile(plain, path, {block}))
          << path << ", block of " << block;
    }
    for (const FileSettings& settings :
         {FileSettings{1000, 6},
          {1000, 0, true},
          {1000, 0, false, std::ios_base::unitbuf},
          {1000, 0, false, {}, std::ios_base::eofbit},
          {1000, 0, false, {}, std::ios_base::failbit},
          {1000, 0, false, {}, std::ios_base::badbit}}) {
      EXPECT_EQ(SeenInFile(file, path, settings),
                SeenInFile(plain, path, settings));
    }
  }
}

// A file's buffer hands long texts to the file at once.
TEST_F(IniWriter, LongLinesReachAFileWhenInsertionsWould) {
  const Folder folder;
  for (std::size_t size = 1015; size < 1030; ++size) {
    const std::string value(size, 'v');
    Set("a", "k", value);
    for (const std::string& path :
         {folder / "a.ini", std::string("/dev/full")}) {
      ASSERT_EQ(SeenInFile(file, path, {5000}), SeenInFile(plain, path, {5000}))
          << path << ", value of " << size;
    }
  }
}

TEST_F(IniWriter, AStringStreamGetsWhatInsertionsWouldGiveIt) {
  for (int i = 0; i < 100; ++i) {
    const std::string text(static_cast<std::size_t>(i * 37 % 90), 'x');
    Set(text, std::to_string(i), text);
  }
  const auto written = [](auto& document, std::ios_base::openmode mode,
                          std::string_view before) {
    StringOutput output(Text(before), mode);
    document.Save(output);
    return Shown(output.str()) + Shown(output.rdstate());
  };
  for (const std::string_view before :
       {"", "longer than the first lines are"}) {
    for (const auto mode :
         {std::ios_base::out, std::ios_base::out | std::ios_base::ate,
          std::ios_base::out | std::ios_base::in}) {
      EXPECT_EQ(written(file, mode, before), written(plain, mode, before));
    }
  }
}

TEST_F(IniWriter, LongTextsAreWrittenWhole) {
  const std::string name(70000, 'n');
  const std::string value(300000, 'v');
  Set(name, name, value);
  EXPECT_EQ(Saved(), "[" + name + "]\\a;" + name + "=" + value + "\\a;");
}

TEST_F(IniWriter, SectionsComeBackAndOrdinaryKeysDoNot) {
  Set("Main", "k", "v");
  Set("  x y\t", "k", "v");
  Set("", "k", "v");
  Set("a]b", "k", "v");
  EXPECT_EQ(TakenBack(), "{} a]b{} Main{} x y{}");
}

TEST_F(IniWriter, KeysThatBeginWithABracketComeBack) {
  Set("Main", "[k", "v");
  Set("Main", "[l", "\t v \t");
  Set("Main", "[m", "");
  Set("Main", "[n]", "v");
  EXPECT_EQ(TakenBack(), "Main{[k=v|[l=\\9; v \\9;|[m=|[n]=v}");
}

TEST_F(IniWriter, AKeyLineThatEndsInABracketComesBackAsAHeader) {
  Set("Main", "[k", "v]");
  Set("Main", "[l", "w");
  EXPECT_EQ(TakenBack(), "k=v{[l=w} Main{}");
}

TEST_F(IniWriter, AKeyNameIsCutAtItsFirstEqualsSign) {
  Set("Main", "[a=b", "c");
  EXPECT_EQ(TakenBack(), "Main{[a=b=c}");
  Set("Main", "[n]=", "");
  EXPECT_EQ(TakenBack(), "Main{[a=b=c|[n]==}");
}

TEST_F(IniWriter, ASectionNameWithALineFeedIsLostAndItsKeysGoToTheFormer) {
  Set("a", "[k", "1");
  Set("b\nc", "[l", "2");
  EXPECT_EQ(TakenBack(), "a{[k=1|[l=2}");
}

TEST_F(IniWriter, LineEndsInValuesCutOrGetLost) {
  Set("a", "[k", "v\r\n\r");
  Set("a", "[l", "v\nw");
  Set("a", "[m", "v\n[n=w");
  EXPECT_EQ(TakenBack(), "a{[k=v|[l=v|[m=v|[n=w}");
}

}  // namespace
}  // namespace korvan::test
