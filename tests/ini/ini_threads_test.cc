// Documents, names and texts on many threads at once: what is not shared may be
// changed, what is shared may be read.
#include <gtest/gtest.h>
#include <korvan/text.h>

#include <atomic>
#include <cstddef>
#include <string>

#include "ini/width.h"
#include "support/campaign.h"
#include "support/folder.h"
#include "support/together.h"

namespace korvan::test {
namespace {

constexpr int kThreads = 8;

String Number(int number) { return Text(std::to_string(number)); }

// Three sections with some keys that the reader takes. Turkish folds the names,
// too: they have no I.
String TextOf(int number) {
  String text;
  for (const int section : {2, 0, 1}) {
    text += "[Part"_t + Number(section) + "]\n"_t;
    for (const int key : {4, 1, 3, 0, 2}) {
      text += "[Key"_t + Number(key) + "="_t + Number(number) + "\n"_t;
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
      file.SetKeyValue("Part1"_t, "[Key9"_t, Number(number));
      wrong += !file.RenameKey("part1"_t, "[key9"_t, "[Key8"_t);
      wrong += file.GetKeyValue("PART1"_t, "[KEY8"_t) != Number(number);
      file.RemoveSection("Part0"_t);
      const String before = Saved(file);
      StringInput again(before);
      file.Load(again);
      wrong += Saved(file) != before || file.GetSections().size() != 2;
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
    const String key_name = "[KEY"_t + Number(number % 5);
    for (std::size_t round = 0; round < rounds; ++round) {
      Section* const section = file.GetSection(section_name);
      Key* const key = section->GetKey(key_name);
      wrong += key->GetValue() != "7"_t || key->GetKeyName().size() != 5;
      wrong += section->GetSectionName().size() != 5;
      wrong += section->GetKeyValue(key_name) != "7"_t;
      wrong += file.GetKeyValue(section_name, "none"_t) != ""_t;
      wrong += section->GetKeys().size() != 5;
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
      wrong += str_to_wstr(wstr_to_str(L"name")) != L"name";
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace korvan::test
