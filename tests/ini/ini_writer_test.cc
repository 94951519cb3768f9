// What the writer puts out, that its insertions look like insertions, and what
// the reader takes back.
#include <korvan/ini_file.h>

#include <fstream>
#include <iomanip>
#include <tuple>
#include <utility>

#include "ini/hostile_buffers.h"
#include "ini/ini_twins.h"

namespace {

template <class Twin>
class IniWriter : public testing::Test {
 protected:
  std::string Saved() {
    std::basic_ostringstream<typename Twin::Char> output;
    file_.Save(output);
    EXPECT_TRUE(output.good());
    return Shown(output.str());
  }

  // What a document has after it was saved and loaded again.
  std::string TakenBack() {
    std::basic_stringstream<typename Twin::Char> stream;
    typename Twin::File file;
    stream << file_;
    stream >> file;
    return ContentOf(file);
  }

  void Set(std::string_view section, std::string_view key,
           std::string_view value) {
    file_.SetKeyValue(Ascii(section), Ascii(key), Ascii(value));
  }

  typename Twin::File file_;
};
TYPED_TEST_SUITE(IniWriter, Twins, TwinNames);

TYPED_TEST(IniWriter, WritesNothingForAnEmptyDocument) {
  EXPECT_EQ(this->Saved(), "");
}

TYPED_TEST(IniWriter, WritesHeadersAndKeysAndNothingElse) {
  this->Set("Main", "k", "12");
  this->Set("Main", "l", "");
  this->Set("Main", "m", " v ");
  this->Set("Other", "[x]", "\"#;=");
  EXPECT_EQ(this->Saved(),
            "[Main]\\a;k=12\\a;l=\\a;m= v \\a;[Other]\\a;[x]=\"#;=\\a;");
}

TYPED_TEST(IniWriter, WritesInCaseInsensitiveOrder) {
  for (const auto name : {"Zeta", "alpha", "", "BETA"}) {
    this->Set(name, "b", "1");
    this->Set(name, "A", "2");
  }
  EXPECT_EQ(this->Saved(),
            "[]\\a;A=2\\a;b=1\\a;[alpha]\\a;A=2\\a;b=1\\a;"
            "[BETA]\\a;A=2\\a;b=1\\a;[Zeta]\\a;A=2\\a;b=1\\a;");
}

TYPED_TEST(IniWriter, WritesOnlyTheHeaderOfASectionWithoutKeys) {
  this->file_.AddSection("a"_t);
  this->file_.AddSection("b"_t);
  EXPECT_EQ(this->Saved(), "[a]\\a;[b]\\a;");
}

TYPED_TEST(IniWriter, WritesTextsAsTheyAre) {
  this->Set("]\r\n[", "a\nb", std::string_view("\0\r\n", 3));
  EXPECT_EQ(this->Saved(), "[]\\d;\\a;[]\\a;a\\a;b=\\0;\\d;\\a;\\a;");
}

TYPED_TEST(IniWriter, TheOperatorGivesTheStreamBack) {
  this->file_.AddSection("a"_t);
  std::basic_ostringstream<typename TypeParam::Char> output;
  EXPECT_EQ(&(output << this->file_), &output);
  EXPECT_EQ(Shown(output.str()), "[a]\\a;");
}

TYPED_TEST(IniWriter, DoesNotFlush) {
  this->Set("Main", "k", "v");
  for (const std::size_t room : {0u, 1u, 5u, 1000u}) {
    LimitedOutput<typename TypeParam::Char> buffer(room);
    std::basic_ostream<typename TypeParam::Char> output(&buffer);
    output << this->file_;
    EXPECT_EQ(buffer.flushes(), 0);
  }
}

TYPED_TEST(IniWriter, TheFirstInsertionTakesTheWidth) {
  this->Set("a", "k", "v");
  std::basic_ostringstream<typename TypeParam::Char> output;
  output << std::setw(6) << std::setfill(typename TypeParam::Char{'.'})
         << this->file_;
  EXPECT_EQ(Shown(output.str()), "...[a]\\a;k=v\\a;");
  EXPECT_EQ(output.width(), 0);
}

TYPED_TEST(IniWriter, AnEmptyDocumentLeavesTheWidth) {
  std::basic_ostringstream<typename TypeParam::Char> output;
  output << std::setw(6) << this->file_;
  EXPECT_EQ(output.width(), 6);
}

// Everything that a stream can be, beside one insertion after another.

template <class Char, class File>
std::string Seen(File& file, std::size_t room, std::size_t capacity,
                 bool throws, std::ios_base::iostate exceptions, bool tied,
                 std::ios_base::fmtflags flags, int width,
                 std::ios_base::iostate state) {
  LimitedOutput<Char> buffer(room, capacity, throws);
  std::basic_ostream<Char> output(&buffer);
  LimitedOutput<Char> tied_buffer;
  std::basic_ostream<Char> tied_output(&tied_buffer);
  if (tied) {
    output.tie(&tied_output);
  }
  output.fill('*');
  output.width(width);
  output.setf(flags);
  output.setstate(state);
  const std::string first = Thrown([&] { output.exceptions(exceptions); });
  const std::string thrown = Thrown([&] { file.Save(output); });
  std::ostringstream seen;
  seen << Shown(buffer.Written()) << " thrown:" << first << ' ' << thrown
       << " state:" << Shown(output.rdstate()) << " width:" << output.width()
       << " flushes:" << buffer.flushes() << ' ' << tied_buffer.flushes();
  return seen.str();
}

TYPED_TEST(IniWriter, CannotBeToldFromInsertionsWhateverTheStream) {
  using Char = typename TypeParam::Char;
  constexpr auto kNone = std::ios_base::fmtflags{};
  PlainIni<Char> plain;
  for (const auto& [section, key, value] :
       {std::tuple{"a", "k", "v"},
        {"a", "l", ""},
        {"", "", ""},
        {"b", "a longer name", "a value of some length"}}) {
    this->Set(section, key, value);
    plain.Set(Ascii(section), Ascii(key), Ascii(value));
  }
  const std::size_t whole = this->Saved().size();
  for (const std::size_t room : {0u, 7u, 1000u}) {
    for (std::size_t capacity = 0; capacity <= whole; ++capacity) {
      for (const bool throws : {false, true}) {
        for (const auto exceptions :
             {std::ios_base::goodbit, std::ios_base::badbit,
              std::ios_base::failbit,
              std::ios_base::failbit | std::ios_base::badbit}) {
          for (const bool tied : {false, true}) {
            for (const auto flags :
                 {kNone, std::ios_base::unitbuf, std::ios_base::left}) {
              for (const int width : {0, 6}) {
                ASSERT_EQ(
                    Seen<Char>(this->file_, room, capacity, throws, exceptions,
                               tied, flags, width, std::ios_base::goodbit),
                    Seen<Char>(plain, room, capacity, throws, exceptions, tied,
                               flags, width, std::ios_base::goodbit))
                    << "room " << room << ", capacity " << capacity;
              }
            }
          }
        }
      }
    }
  }
  for (const auto state : {std::ios_base::goodbit, std::ios_base::badbit,
                           std::ios_base::failbit, std::ios_base::eofbit}) {
    for (const int width : {0, 6, -1}) {
      for (const auto exceptions :
           {std::ios_base::goodbit, std::ios_base::failbit}) {
        EXPECT_EQ(Seen<Char>(this->file_, 1000, kNever, false, exceptions,
                             false, kNone, width, state),
                  Seen<Char>(plain, 1000, kNever, false, exceptions, false,
                             kNone, width, state));
      }
    }
  }
}

TYPED_TEST(IniWriter, AStreamWithoutABufferFails) {
  this->file_.AddSection("a"_t);
  std::basic_ostream<typename TypeParam::Char> output(nullptr);
  output << this->file_;
  EXPECT_EQ(Shown(output.rdstate()), " bad fail");
}

// A buffer of the caller's own may watch how it is given its text: a tee, a
// counter, one that takes a text whole or not at all.

// Tells each text that `Buffer` is given, and refuses those that go beyond
// `capacity`.
template <class Buffer>
class Watched : public Buffer {
 public:
  using Char = typename Buffer::char_type;

  explicit Watched(std::size_t capacity = kNever) : capacity_(capacity) {}

  // The characters that a caller may put here without a word.
  void SetArea(std::basic_string<Char>& area) {
    this->setp(area.data(), area.data() + area.size());
  }
  std::string Seen() const {
    return seen_ + " unseen:" + std::to_string(this->pptr() - this->pbase());
  }

 protected:
  std::streamsize xsputn(const Char* text, std::streamsize size) override {
    const std::basic_string<Char> given(text, static_cast<std::size_t>(size));
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

template <class Char, class Buffer, class File>
std::string SeenBy(Buffer& buffer, File& file) {
  std::basic_ostream<Char> output(&buffer);
  file.Save(output);
  return buffer.Seen() + Shown(output.rdstate());
}

TYPED_TEST(IniWriter, ACallersBufferIsGivenEachLineAndEachLineFeedWhole) {
  using Char = typename TypeParam::Char;
  this->Set("a", "k", "v");
  this->Set("a", "l", "");
  Watched<std::basic_streambuf<Char>> buffer;
  EXPECT_EQ(SeenBy<Char>(buffer, this->file_),
            "([a])(\\a;)(k=v)(\\a;)(l=)(\\a;) unseen:0");
}

TYPED_TEST(IniWriter, NothingPassesByACallersBufferThatHasRoom) {
  using Char = typename TypeParam::Char;
  this->Set("a", "k", "v");
  std::basic_string<Char> area(1000, Char{});
  Watched<std::basic_streambuf<Char>> buffer;
  buffer.SetArea(area);
  EXPECT_EQ(SeenBy<Char>(buffer, this->file_),
            "([a])(\\a;)(k=v)(\\a;) unseen:0");
}

TYPED_TEST(IniWriter, NothingPassesByAnHeirOfAStandardBuffer) {
  using Char = typename TypeParam::Char;
  this->Set("a", "k", "v");
  std::basic_string<Char> area(1000, Char{});
  Watched<std::basic_stringbuf<Char>> string_buffer;
  string_buffer.SetArea(area);
  EXPECT_EQ(SeenBy<Char>(string_buffer, this->file_),
            "([a])(\\a;)(k=v)(\\a;) unseen:0");
  Watched<std::basic_filebuf<Char>> file_buffer;
  file_buffer.SetArea(area);
  EXPECT_EQ(SeenBy<Char>(file_buffer, this->file_),
            "([a])(\\a;)(k=v)(\\a;) unseen:0");
}

TYPED_TEST(IniWriter, ABufferThatTakesAllOrNothingHoldsWhatInsertionsLeave) {
  using Char = typename TypeParam::Char;
  PlainIni<Char> plain;
  for (const auto& [key, value] :
       {std::pair{"k", "v"}, {"a longer name", "a longer value"}, {"z", ""}}) {
    this->Set("a", key, value);
    plain.Set("a"_t, Ascii(key), Ascii(value));
  }
  const std::size_t whole = this->Saved().size();
  for (std::size_t capacity = 0; capacity <= whole; ++capacity) {
    Watched<std::basic_streambuf<Char>> buffer(capacity);
    Watched<std::basic_streambuf<Char>> plain_buffer(capacity);
    EXPECT_EQ(SeenBy<Char>(buffer, this->file_),
              SeenBy<Char>(plain_buffer, plain));
  }
}

// The standard library's own buffers, at whose room the writer helps itself.

struct Settings {
  std::size_t block = 1000;
  int width = 0;
  bool tied = false;
  std::ios_base::fmtflags flags{};
  std::ios_base::iostate state = std::ios_base::goodbit;
};

// Saves to a file and tells what the file has before the buffer is flushed, and
// after.
template <class Char, class File>
std::string SeenInFile(File& file, const std::string& path,
                       const Settings& settings) {
  std::basic_string<Char> block(settings.block, Char{});
  std::basic_filebuf<Char> buffer;
  buffer.pubsetbuf(block.data(), static_cast<std::streamsize>(block.size()));
  EXPECT_NE(buffer.open(path, std::ios_base::out | std::ios_base::binary),
            nullptr);
  std::basic_ostream<Char> output(&buffer);
  output << Char{'.'};  // now the buffer has its room
  LimitedOutput<Char> tied_buffer;
  std::basic_ostream<Char> tied(&tied_buffer);
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

TYPED_TEST(IniWriter, AFileGetsAndTellsWhatItDoesOfInsertions) {
  using Char = typename TypeParam::Char;
  const Folder folder;
  PlainIni<Char> plain;
  for (const auto& [section, key, value] :
       {std::tuple{"a", "k", "v"},
        {"a", "l", ""},
        {"", "", ""},
        {"b", "a longer name", "a value of some length"}}) {
    this->Set(section, key, value);
    plain.Set(Ascii(section), Ascii(key), Ascii(value));
  }
  for (const std::string& path : {folder / "a.ini", std::string("/dev/full")}) {
    for (std::size_t block = 0; block < 80; ++block) {
      ASSERT_EQ(SeenInFile<Char>(this->file_, path, {block}),
                SeenInFile<Char>(plain, path, {block}))
          << path << ", block of " << block;
    }
    for (const Settings& settings :
         {Settings{1000, 6},
          {1000, 0, true},
          {1000, 0, false, std::ios_base::unitbuf},
          {1000, 0, false, {}, std::ios_base::eofbit},
          {1000, 0, false, {}, std::ios_base::failbit},
          {1000, 0, false, {}, std::ios_base::badbit}}) {
      EXPECT_EQ(SeenInFile<Char>(this->file_, path, settings),
                SeenInFile<Char>(plain, path, settings));
    }
  }
}

// A file's buffer hands long texts to the file at once.
TYPED_TEST(IniWriter, LongLinesReachAFileWhenInsertionsWould) {
  using Char = typename TypeParam::Char;
  const Folder folder;
  for (std::size_t size = 1015; size < 1030; ++size) {
    const std::string value(size, 'v');
    PlainIni<Char> plain;
    this->Set("a", "k", value);
    plain.Set("a"_t, "k"_t, Ascii(value));
    for (const std::string& path :
         {folder / "a.ini", std::string("/dev/full")}) {
      ASSERT_EQ(SeenInFile<Char>(this->file_, path, {5000}),
                SeenInFile<Char>(plain, path, {5000}))
          << path << ", value of " << size;
    }
  }
}

TYPED_TEST(IniWriter, AStringStreamGetsWhatItDoesOfInsertions) {
  using Char = typename TypeParam::Char;
  PlainIni<Char> plain;
  for (int i = 0; i < 100; ++i) {
    const std::string text(static_cast<std::size_t>(i * 37 % 90), 'x');
    this->Set(text, std::to_string(i), text);
    plain.Set(Ascii(text), Ascii(std::to_string(i)), Ascii(text));
  }
  const auto written = [](auto& file, std::ios_base::openmode mode,
                          std::string_view before) {
    std::basic_ostringstream<Char> output(Text<Char>(before), mode);
    file.Save(output);
    return Shown(output.str()) + Shown(output.rdstate());
  };
  for (const std::string_view before :
       {"", "longer than the first lines are"}) {
    for (const auto mode :
         {std::ios_base::out, std::ios_base::out | std::ios_base::ate,
          std::ios_base::out | std::ios_base::in}) {
      EXPECT_EQ(written(this->file_, mode, before),
                written(plain, mode, before));
    }
  }
}

TYPED_TEST(IniWriter, LongTextsAreWrittenWhole) {
  const std::string name(70000, 'n');
  const std::string value(300000, 'v');
  this->Set(name, name, value);
  EXPECT_EQ(this->Saved(), "[" + name + "]\\a;" + name + "=" + value + "\\a;");
}

TYPED_TEST(IniWriter, SectionsComeBackAndOrdinaryKeysDoNot) {
  this->Set("Main", "k", "v");
  this->Set("  x y\t", "k", "v");
  this->Set("", "k", "v");
  this->Set("a]b", "k", "v");
  EXPECT_EQ(this->TakenBack(), "{} a]b{} Main{} x y{}");
}

TYPED_TEST(IniWriter, KeysThatBeginWithABracketComeBack) {
  this->Set("Main", "[k", "v");
  this->Set("Main", "[l", "\t v \t");
  this->Set("Main", "[m", "");
  this->Set("Main", "[n]", "v");
  EXPECT_EQ(this->TakenBack(), "Main{[k=v|[l=\\9; v \\9;|[m=|[n]=v}");
}

TYPED_TEST(IniWriter, AKeyLineThatEndsInABracketComesBackAsAHeader) {
  this->Set("Main", "[k", "v]");
  this->Set("Main", "[l", "w");
  EXPECT_EQ(this->TakenBack(), "k=v{[l=w} Main{}");
}

TYPED_TEST(IniWriter, AKeyNameIsCutAtItsFirstEqualsSign) {
  this->Set("Main", "[a=b", "c");
  EXPECT_EQ(this->TakenBack(), "Main{[a=b=c}");
  this->Set("Main", "[n]=", "");
  EXPECT_EQ(this->TakenBack(), "Main{[a=b=c|[n]==}");
}

TYPED_TEST(IniWriter, ASectionNameWithALineFeedIsLostAndItsKeysGoToTheFormer) {
  this->Set("a", "[k", "1");
  this->Set("b\nc", "[l", "2");
  EXPECT_EQ(this->TakenBack(), "a{[k=1|[l=2}");
}

TYPED_TEST(IniWriter, LineEndsInValuesCutOrGetLost) {
  this->Set("a", "[k", "v\r\n\r");
  this->Set("a", "[l", "v\nw");
  this->Set("a", "[m", "v\n[n=w");
  EXPECT_EQ(this->TakenBack(), "a{[k=v|[l=v|[m=v|[n=w}");
}

}  // namespace
