// Documents, names and texts on many threads at once: what is not shared may be
// changed, what is shared may be read.
#include <gtest/gtest.h>
#include <korvan/text.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

#include "ini/hostile_buffers.h"
#include "ini/width.h"
#include "support/campaign.h"
#include "support/folder.h"
#include "support/together.h"

namespace korvan::test {
namespace {

constexpr int kThreads = 8;
constexpr int kKeys = 40;  // of a section; so many are entered at once

String Number(int number) { return Text(std::to_string(number)); }

// Three sections with keys in no order that the reader takes. Turkish folds the
// names, too: they have no I.
String TextOf(int number) {
  String text;
  for (const int section : {2, 0, 1}) {
    text += "[Part"_t + Number(section) + "]\n"_t;
    for (int key = 0; key < kKeys; ++key) {
      text += "[Key"_t + Number(50 - key * 7 % kKeys) + "="_t + Number(number) +
              "\n"_t;
    }
  }
  return text;
}

String Saved(File& file) {
  StringOutput output;
  file.Save(output);
  return output.str();
}

TEST(IniThreads, ThreadsChangeTheirOwnDocumentsAtOnce) {
  const std::size_t rounds = Rounds(50, 1000);
  std::atomic<int> wrong = 0;
  RunTogether(kThreads, [&](int number) {
    for (std::size_t round = 0; round < rounds; ++round) {
      File file;
      StringInput input(TextOf(number));
      file.Load(input);
      wrong += file.GetKeyValue("Part0"_t, "[Key20"_t) != Number(number);
      file.SetKeyValue("Part1"_t, "[Key99"_t, Number(number));
      wrong += !file.RenameKey("part1"_t, "[key99"_t, "[Key88"_t);
      wrong += file.GetKeyValue("PART1"_t, "[KEY88"_t) != Number(number);
      file.RemoveSection("Part0"_t);
      const String before = Saved(file);
      PiecewiseInput pieces(before, {7});
      InputStream again(&pieces);
      file.Load(again);
      wrong += Saved(file) != before || file.GetSections().size() != 2;
      wrong += file.GetSection("Part1"_t)->GetKeys().size() != kKeys + 1;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(IniThreads, ThreadsReadOneDocumentAtOnce) {
  const std::size_t rounds = Rounds(50, 1000);
  File file;
  StringInput input(TextOf(7));
  file.Load(input);
  const String saved = Saved(file);
  std::atomic<int> wrong = 0;
  RunTogether(kThreads, [&](int number) {
    const String section_name = "PART"_t + Number(number % 3);
    const String key_name = "[KEY"_t + Number(20 + number);
    for (std::size_t round = 0; round < rounds; ++round) {
      Section* const section = file.GetSection(section_name);
      Key* const key = section->GetKey(key_name);
      wrong += key->GetValue() != "7"_t || key->GetKeyName().size() != 6;
      wrong += section->GetSectionName().size() != 5;
      wrong += section->GetKeyValue(key_name) != "7"_t;
      wrong += file.GetKeyValue(section_name, "none"_t) != ""_t;
      wrong += section->GetKeys().size() != kKeys;
      wrong += file.GetSections().size() != 3;
      wrong += Saved(file) != saved;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(IniThreads, ThreadsLoadAndSaveTheirOwnFilesAtOnce) {
  const std::size_t rounds = Rounds(10, 200);
  const Folder folder;
  std::atomic<int> wrong = 0;
  RunTogether(kThreads, [&](int number) {
    const String name =
        Text(folder / ("thread" + std::to_string(number) + ".ini"));
    File file;
    for (int key = 0; key < 20; ++key) {
      file.SetKeyValue("Part"_t, "["_t + Number(key), Number(number));
    }
    for (std::size_t round = 0; round < rounds; ++round) {
      File read;
      wrong += !file.Save(name) || !read.Load(name);
      wrong += Saved(read) != Saved(file);
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(IniThreads, ThreadsTrimAndConvertAndCompareTheirOwnTextsAtOnce) {
  const std::size_t rounds = Rounds(200, 10'000);
  std::atomic<int> wrong = 0;
  RunTogether(kThreads, [&](int number) {
    for (std::size_t round = 0; round < rounds; ++round) {
      const String bare = "Name"_t + Number(number);
      String text = " \t"_t + bare + "\t "_t;
      RTrim(text, " \t"_t);
      LTrim(text, " \t"_t);
      Trim(text, " \t"_t);
      wrong += text != bare;
      wrong += Less()(bare, "nAME"_t + Number(number));
      wrong += !Less()(bare, "nAME"_t + Number(number + 1));
      const std::wstring wide = L"name" + std::to_wstring(number);
      wrong += str_to_wstr(wstr_to_str(wide)) != wide;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace korvan::test
