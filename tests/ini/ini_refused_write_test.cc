// Narrow documents saved to a file that has refused a character: the file gets
// exactly what insertions would give it. For wide, padded or converted text
// that can't be compared: there the standard library's own insertion writes
// beyond the block.
#include <korvan/ini_file.h>

#include <cwchar>
#include <locale>
#include <string>

#include "ini/odd_areas.h"

namespace korvan::test {
namespace {

TEST_F(OddAreas, AFileThatRefusedACharacterGetsWhatInsertionsGiveIt) {
  for (const bool cleared : {false, true}) {
    for (const bool takes_again : {false, true}) {
      EXPECT_EQ(SavedAfterARefusal(file, {cleared, takes_again}),
                SavedAfterARefusal(plain, {cleared, takes_again}))
          << "cleared " << cleared << ", takes again " << takes_again;
    }
  }
}

TEST_F(OddAreas, AFileThatTakesAPartAgainGetsWhatInsertionsGiveIt) {
  const std::string path = folder / "a.ini";
  const auto saved = [&](auto& document, std::size_t capacity) {
    GuardedFile guarded(path, kBlock);
    OutputStream output(&guarded.buffer());
    {
      const FullDisk full;
      Overfill(guarded.buffer(), kBlock);
    }
    const FullDisk full(capacity);
    document.Save(output);
    return Shown(output.rdstate()) + " " + BytesOf(path);
  };
  // A text so short that the buffer could hold it.
  File short_file;
  PlainFile short_plain;
  short_file.AddSection("a");
  short_plain.AddSection("a");
  for (std::size_t capacity = 0; capacity < kBlock + 6; ++capacity) {
    EXPECT_EQ(saved(short_file, capacity), saved(short_plain, capacity))
        << capacity << " bytes are taken";
  }
}

#ifdef __GLIBCXX__

// Converts each character to itself, which it does not tell before.
class Converting : public std::codecvt<char, char, std::mbstate_t> {
 protected:
  bool do_always_noconv() const noexcept override { return false; }
};

TEST_F(OddAreas, AConvertedFileThatTakesAgainGetsAllThatItRefusedAndTheLines) {
  const std::locale converting(std::locale(), new Converting);
  for (const bool cleared : {false, true}) {
    EXPECT_EQ(SavedAfterARefusal(file, {cleared, true, 0, converting}),
              " flushed: " + std::string(kBlock, 'x') +
                  "[a]\na longer name than the block=v\nk=v\nl=v\n");
  }
}

#endif

}  // namespace
}  // namespace korvan::test
