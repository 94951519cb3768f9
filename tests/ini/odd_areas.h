// Stream buffers whose areas lie oddly: blocks that end where memory does, and
// files whose buffer holds one character too many.
#ifndef KORVAN_TESTS_INI_ODD_AREAS_H_
#define KORVAN_TESTS_INI_ODD_AREAS_H_

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <cstddef>
#include <ios>
#include <iterator>
#include <locale>
#include <string>
#include <vector>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/folder.h"
#include "support/guarded_room.h"

namespace korvan::test {

// A block of characters that ends where a page begins that nobody may touch.
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

// A file to write to, whose buffer is such a block.
class GuardedFile {
 public:
  GuardedFile(const std::string& path, std::size_t size,
              const std::locale& locale = std::locale())
      : block_(size) {
    buffer_.pubimbue(locale);
    buffer_.pubsetbuf(block_.start(), block_.size());
    EXPECT_NE(buffer_.open(path, std::ios_base::out | std::ios_base::binary),
              nullptr)
        << path;
  }

  FileBuffer& buffer() { return buffer_; }

 private:
  GuardedBlock block_;  // outlives the buffer
  FileBuffer buffer_;
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
// which leaves `pptr` one beyond `epptr`. The stream does not notice. libc++
// keeps that character without a word.
inline void Overfill(FileBuffer& buffer, std::size_t block) {
  std::ostreambuf_iterator<Char> place(&buffer);
  for (std::size_t i = 0; i < block; ++i) {
    *place++ = Char{'x'};
  }
#ifdef __GLIBCXX__
  EXPECT_TRUE(place.failed());
#endif
}

// A document and the plain one alike, with lines of which some are longer than
// a buffer of kBlock characters.
struct OddAreas : testing::Test {
  static constexpr std::size_t kBlock = 24;

  OddAreas() {
    for (const char* const key : {"k", "l", "a longer name than the block"}) {
      file.SetKeyValue("a"_t, Text(key), "v"_t);
      plain.Set("a"_t, Text(key), "v"_t);
    }
  }

  // How the stream is before the document is saved to it, and what becomes of
  // the file that has refused a character.
  struct Refusal {
    bool cleared = false;      // the stream failed and was cleared
    bool takes_again = false;  // the file does; else it refuses all
    int width = 0;
    std::locale locale = std::locale();
  };

  // Saves to a file that refused a character, and tells what the stream and
  // the file have then, and after a flush.
  template <class AnyFile>
  std::string SavedAfterARefusal(AnyFile& saved, const Refusal& refusal) {
    const std::string path =
        refusal.takes_again ? folder / "a.ini" : "/dev/full";
    GuardedFile guarded(path, kBlock, refusal.locale);
    OutputStream output(&guarded.buffer());
    {
      const FullDisk full;
      Overfill(guarded.buffer(), kBlock);
    }
    if (refusal.cleared) {
      output.setstate(std::ios_base::badbit);
      output.clear();
    }
    output.width(refusal.width);
    saved.Save(output);
    std::string seen = Shown(output.rdstate());
    output.flush();
    seen += " flushed:" + Shown(output.rdstate());
    guarded.buffer().close();
    return seen + " " + (refusal.takes_again ? BytesOf(path) : "");
  }

  const Folder folder;
  File file;
  PlainFile plain;
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_INI_ODD_AREAS_H_
