// The reader and the writer on buffers whose areas lie oddly: a `gptr` beyond
// `egptr`, a `pptr` beyond `epptr`, blocks that end where memory does.
#include <korvan/ini_file.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "ini/odd_areas.h"

namespace korvan::test {
namespace {

#ifdef __GLIBCXX__

// After a refusal the standard library's own insertion of a wide or a padded
// text writes beyond the block. The library's does not, so that these tests
// state the outcome instead of comparing it.

constexpr char kSaved[] = "[a]\na longer name than the block=v\nk=v\nl=v\n";

TEST_F(OddAreas, AFileThatStillRefusesFailsAsInsertionsDo) {
  for (const bool cleared : {false, true}) {
    for (const int width : {0, 6}) {
      EXPECT_EQ(SavedAfterARefusal(file, {cleared, false, width}),
                " bad fail flushed: bad fail ");
    }
  }
}

TEST_F(OddAreas, AFileThatTakesAgainGetsAllThatItRefusedAndTheLines) {
  const std::string refused(kBlock, 'x');
  for (const bool cleared : {false, true}) {
    EXPECT_EQ(SavedAfterARefusal(file, {cleared, true}),
              " flushed: " + refused + kSaved);
    EXPECT_EQ(SavedAfterARefusal(file, {cleared, true, 6}),
              " flushed: " + refused + "   " + kSaved);
  }
}

#endif

TEST_F(OddAreas, AStringBufferIsWrittenToTheEndOfItsBlockAndNotBeyond) {
  const auto saved = [](auto& document, std::size_t size, std::size_t before,
                        bool cleared) {
    GuardedBlock block(size);
    StringBuffer buffer;
    buffer.pubsetbuf(block.start(), block.size());
    OutputStream output(&buffer);
    output << String(before, Char{'x'});
    if (cleared) {
      output.setstate(std::ios_base::badbit);
      output.clear();
    }
    document.Save(output);
    // A string buffer that outgrows a block that is shorter than a string's
    // own room goes on in that room, and never sets what comes before.
    const bool is_text_set = size >= String().capacity();
    return (is_text_set ? Shown(buffer.str()) : "") + Shown(output.rdstate());
  };
  for (std::size_t size = 1; size < 60; ++size) {
    for (const std::size_t before : {std::size_t{0}, size / 2, size}) {
      for (const bool cleared : {false, true}) {
        EXPECT_EQ(saved(file, size, before, cleared),
                  saved(plain, size, before, cleared))
            << "block of " << size << ", " << before << " before";
      }
    }
  }
}

TEST_F(OddAreas, AFileBufferIsWrittenToTheEndOfItsBlockAndNotBeyond) {
  const std::string path = folder / "a.ini";
  const auto saved = [&](auto& document, std::size_t size, std::size_t before) {
    GuardedFile guarded(path, size);
    OutputStream output(&guarded.buffer());
    output << String(before, Char{'x'});
    document.Save(output);
    const std::string unflushed = BytesOf(path);
    guarded.buffer().close();
    return unflushed + '|' + BytesOf(path) + Shown(output.rdstate());
  };
  for (std::size_t size = 1; size < 60; ++size) {
    for (const std::size_t before : {std::size_t{1}, size / 2, size}) {
      EXPECT_EQ(saved(file, size, before), saved(plain, size, before))
          << "block of " << size << ", " << before << " before";
    }
  }
}

// A caller's own buffer, overfull in its own way, that counts its flushes.
class OverfullOutput : public StreamBuffer {
 public:
  OverfullOutput() {
    setp(area_, area_ + 1);
    pbump(2);
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

TEST_F(OddAreas, ACallersOverfullBufferIsNotFlushed) {
  OverfullOutput buffer;
  OutputStream output(&buffer);
  file.Save(output);
  EXPECT_TRUE(output.good());
  EXPECT_EQ(buffer.flushes(), 0);
}

// The line reader of libc++ takes such an area for a large one.
#ifdef __GLIBCXX__

// Begins and ends with a `gptr` beyond `egptr`, as a buffer may that counts
// its own way.
class PassedInput : public StreamBuffer {
 public:
  explicit PassedInput(String text) : text_(std::move(text)) { Pass(); }

 protected:
  Traits::int_type underflow() override {
    if (given_ || text_.empty()) {
      Pass();
      return Traits::eof();
    }
    given_ = true;
    setg(text_.data(), text_.data(), text_.data() + text_.size());
    return Traits::to_int_type(text_.front());
  }

 private:
  void Pass() { setg(passed_, passed_ + 3, passed_ + 1); }

  String text_;
  Char passed_[3] = {};
  bool given_ = false;
};

TEST_F(OddAreas, ABufferReadBeyondItsEndIsReadAsTheLineReaderReadsIt) {
  const auto loaded = [](auto& document, std::string_view text) {
    PassedInput buffer(Text(text));
    InputStream input(&buffer);
    document.Load(input, false);
    return ContentOf(document) + Shown(input.rdstate());
  };
  for (const std::string_view text :
       {"", "\n", "[a]\n[k=v\n", "[a]\n[k=v", "[a]\n[long=long value"}) {
    EXPECT_EQ(loaded(file, text), loaded(plain, text)) << text;
  }
}

#endif

}  // namespace
}  // namespace korvan::test
