// The reader and the writer on buffers whose areas lie oddly: a `gptr` beyond
// `egptr`, a `pptr` beyond `epptr`, blocks that end where memory does.
#include <korvan/ini_file.h>
#include <signal.h>
#include <sys/resource.h>

#include <cstddef>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <ostream>
#include <span>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "ini/hostile_buffers.h"
#include "ini/ini_twins.h"
#include "support/guarded_room.h"

namespace {

using korvan::test::GuardedRoom;

// A block of characters that ends where a page begins that nobody may touch.
template <class Char>
class GuardedBlock {
 public:
  explicit GuardedBlock(std::size_t size)
      : size_(size), room_(size * sizeof(Char)) {
    const std::vector<unsigned char> zeros(size * sizeof(Char));
    start_ = reinterpret_cast<Char*>(room_.Place(zeros));
  }

  Char* start() { return start_; }
  std::streamsize size() const { return static_cast<std::streamsize>(size_); }

 private:
  std::size_t size_;
  GuardedRoom room_;
  Char* start_;
};

// While it lives, no file grows beyond `capacity` bytes.
class FullDisk {
 public:
  explicit FullDisk(std::size_t capacity = 0) {
    former_handler_ = signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &former_), 0);
    rlimit full = former_;
    full.rlim_cur = capacity;
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &former_), 0);
    signal(SIGXFSZ, former_handler_);
  }

 private:
  rlimit former_;
  sighandler_t former_handler_;
};

// Fills the buffer of a file that takes nothing, by one character too many,
// which leaves `pptr` one beyond `epptr`. The stream does not notice.
template <class Char>
void Overfill(std::basic_filebuf<Char>& buffer, std::size_t block) {
  std::ostreambuf_iterator<Char> place(&buffer);
  for (std::size_t i = 0; i < block; ++i) {
    *place++ = Char{'x'};
  }
  EXPECT_TRUE(place.failed());
}

template <class Twin>
class IniStreamArea : public testing::Test {
 protected:
  static constexpr std::size_t kBlock = 24;

  IniStreamArea() {
    for (const char* const key : {"k", "l", "a longer name than the block"}) {
      file_.SetKeyValue("a"_t, Ascii(key), "v"_t);
      plain_.Set("a"_t, Ascii(key), "v"_t);
    }
  }

  // Saves to a file that refused a character, and tells what the stream and
  // the file have then, and after a flush. The file refuses all, or takes
  // what it is given again.
  template <class File>
  std::string SavedAfterARefusal(File& file, bool cleared, bool takes_again,
                                 int width = 0) {
    const std::string path = takes_again ? folder_ / "a.ini" : "/dev/full";
    GuardedBlock<typename Twin::Char> block(kBlock);
    std::basic_filebuf<typename Twin::Char> buffer;
    buffer.pubsetbuf(block.start(), block.size());
    EXPECT_NE(buffer.open(path, std::ios_base::out | std::ios_base::binary),
              nullptr);
    std::basic_ostream<typename Twin::Char> output(&buffer);
    {
      const FullDisk full;
      Overfill(buffer, kBlock);
    }
    if (cleared) {
      output.setstate(std::ios_base::badbit);
      output.clear();
    }
    output.width(width);
    file.Save(output);
    std::string seen = Shown(output.rdstate());
    output.flush();
    seen += " flushed:" + Shown(output.rdstate());
    buffer.close();
    return seen + " " + (takes_again ? BytesOf(path) : "");
  }

  const Folder folder_;
  typename Twin::File file_;
  PlainIni<typename Twin::Char> plain_;
};
TYPED_TEST_SUITE(IniStreamArea, Twins, TwinNames);

using NarrowStreamArea = IniStreamArea<Narrow>;

TEST_F(NarrowStreamArea, AFileThatRefusedACharacterGetsWhatInsertionsGiveIt) {
  for (const bool cleared : {false, true}) {
    for (const bool takes_again : {false, true}) {
      EXPECT_EQ(SavedAfterARefusal(file_, cleared, takes_again),
                SavedAfterARefusal(plain_, cleared, takes_again))
          << "cleared " << cleared << ", takes again " << takes_again;
    }
  }
}

TEST_F(NarrowStreamArea, AFileThatTakesAPartAgainGetsWhatInsertionsGiveIt) {
  const std::string path = folder_ / "a.ini";
  const auto saved = [&](auto& file, std::size_t capacity) {
    GuardedBlock<char> block(kBlock);
    std::basic_filebuf<char> buffer;
    buffer.pubsetbuf(block.start(), block.size());
    EXPECT_NE(buffer.open(path, std::ios_base::out | std::ios_base::binary),
              nullptr);
    std::ostream output(&buffer);
    {
      const FullDisk full;
      Overfill(buffer, kBlock);
    }
    const FullDisk full(capacity);
    file.Save(output);
    return Shown(output.rdstate()) + " " + BytesOf(path);
  };
  // A text so short that the buffer could hold it.
  korvan::CIniFileA file;
  PlainIni<char> plain;
  file.AddSection("a");
  plain.AddSection("a");
  for (std::size_t capacity = 0; capacity < kBlock + 6; ++capacity) {
    EXPECT_EQ(saved(file, capacity), saved(plain, capacity))
        << capacity << " bytes are taken";
  }
}

// Here the standard library's own insertion of a wide or a padded text writes
// beyond the block, so only the outcome can be stated.

constexpr char kSaved[] = "[a]\na longer name than the block=v\nk=v\nl=v\n";

TYPED_TEST(IniStreamArea, AFileThatStillRefusesFailsAsInsertionsDo) {
  for (const bool cleared : {false, true}) {
    for (const int width : {0, 6}) {
      EXPECT_EQ(this->SavedAfterARefusal(this->file_, cleared, false, width),
                " bad fail flushed: bad fail ");
    }
  }
}

TYPED_TEST(IniStreamArea, AFileThatTakesAgainGetsAllThatItRefusedAndTheLines) {
  const std::string refused(TestFixture::kBlock, 'x');
  for (const bool cleared : {false, true}) {
    EXPECT_EQ(this->SavedAfterARefusal(this->file_, cleared, true),
              " flushed: " + refused + kSaved);
    EXPECT_EQ(this->SavedAfterARefusal(this->file_, cleared, true, 6),
              " flushed: " + refused + "   " + kSaved);
  }
}

TYPED_TEST(IniStreamArea,
           AStringBufferIsWrittenToTheEndOfItsBlockAndNotBeyond) {
  using Char = typename TypeParam::Char;
  const auto saved = [](auto& file, std::size_t size, std::size_t before,
                        bool cleared) {
    GuardedBlock<Char> block(size);
    std::basic_stringbuf<Char> buffer;
    buffer.pubsetbuf(block.start(), block.size());
    std::basic_ostream<Char> output(&buffer);
    output << std::basic_string<Char>(before, Char{'x'});
    if (cleared) {
      output.setstate(std::ios_base::badbit);
      output.clear();
    }
    file.Save(output);
    return Shown(buffer.str()) + Shown(output.rdstate());
  };
  for (std::size_t size = 1; size < 60; ++size) {
    for (const std::size_t before : {std::size_t{0}, size / 2, size}) {
      for (const bool cleared : {false, true}) {
        EXPECT_EQ(saved(this->file_, size, before, cleared),
                  saved(this->plain_, size, before, cleared))
            << "block of " << size << ", " << before << " before";
      }
    }
  }
}

TYPED_TEST(IniStreamArea, AFileBufferIsWrittenToTheEndOfItsBlockAndNotBeyond) {
  using Char = typename TypeParam::Char;
  const std::string path = this->folder_ / "a.ini";
  const auto saved = [&](auto& file, std::size_t size, std::size_t before) {
    GuardedBlock<Char> block(size);
    std::basic_filebuf<Char> buffer;
    buffer.pubsetbuf(block.start(), block.size());
    EXPECT_NE(buffer.open(path, std::ios_base::out | std::ios_base::binary),
              nullptr);
    std::basic_ostream<Char> output(&buffer);
    output << std::basic_string<Char>(before, Char{'x'});
    file.Save(output);
    const std::string unflushed = BytesOf(path);
    buffer.close();
    return unflushed + '|' + BytesOf(path) + Shown(output.rdstate());
  };
  for (std::size_t size = 1; size < 60; ++size) {
    for (const std::size_t before : {std::size_t{1}, size / 2, size}) {
      EXPECT_EQ(saved(this->file_, size, before),
                saved(this->plain_, size, before))
          << "block of " << size << ", " << before << " before";
    }
  }
}

// A caller's own buffer, overfull in its own way, that counts its flushes.
template <class Char>
class OverfullOutput : public std::basic_streambuf<Char> {
 public:
  OverfullOutput() {
    this->setp(area_, area_ + 1);
    this->pbump(2);
  }

  int flushes() const { return flushes_; }

 protected:
  std::streamsize xsputn(const Char* /*text*/, std::streamsize size) override {
    return size;
  }
  int sync() override {
    ++flushes_;
    return 0;
  }

 private:
  Char area_[3] = {};
  int flushes_ = 0;
};

TYPED_TEST(IniStreamArea, ACallersOverfullBufferIsNotFlushed) {
  using Char = typename TypeParam::Char;
  OverfullOutput<Char> buffer;
  std::basic_ostream<Char> output(&buffer);
  this->file_.Save(output);
  EXPECT_TRUE(output.good());
  EXPECT_EQ(buffer.flushes(), 0);
}

// Begins and ends with a `gptr` beyond `egptr`, as a buffer may that counts
// its own way.
template <class Char>
class PassedInput : public std::basic_streambuf<Char> {
 public:
  using Traits = std::char_traits<Char>;

  explicit PassedInput(std::basic_string<Char> text) : text_(std::move(text)) {
    Pass();
  }

 protected:
  typename Traits::int_type underflow() override {
    if (given_ || text_.empty()) {
      Pass();
      return Traits::eof();
    }
    given_ = true;
    this->setg(text_.data(), text_.data(), text_.data() + text_.size());
    return Traits::to_int_type(text_.front());
  }

 private:
  void Pass() { this->setg(passed_, passed_ + 3, passed_ + 1); }

  std::basic_string<Char> text_;
  Char passed_[3] = {};
  bool given_ = false;
};

TYPED_TEST(IniStreamArea, ABufferReadBeyondItsEndIsReadAsTheLineReaderReadsIt) {
  using Char = typename TypeParam::Char;
  const auto loaded = [](auto& file, std::string_view text) {
    PassedInput<Char> buffer{std::basic_string<Char>(Ascii(text))};
    std::basic_istream<Char> input(&buffer);
    file.Load(input, false);
    return ContentOf(file) + Shown(input.rdstate());
  };
  for (const std::string_view text :
       {"", "\n", "[a]\n[k=v\n", "[a]\n[k=v", "[a]\n[long=long value"}) {
    EXPECT_EQ(loaded(this->file_, text), loaded(this->plain_, text)) << text;
  }
}

}  // namespace
