// Narrow documents saved to a file that has refused a character: the file gets
// exactly what insertions would give it. For wide or padded text that can't be
// compared: there the standard library's own insertion writes beyond the
// block.
#include <korvan/ini_file.h>

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

}  // namespace
}  // namespace korvan::test
