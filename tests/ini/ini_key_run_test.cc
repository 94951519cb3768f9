// Many keys of a section at once, in no order: a load enters them as it would
// one by one.
#include <korvan/ini_file.h>
#include <rapidcheck.h>
#include <sys/stat.h>

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "ini/hostile_buffers.h"
#include "ini/key_lines.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/failing_new.h"
#include "support/folder.h"
#include "support/locales.h"

namespace korvan::test {
namespace {

const char* const kLocales[] = {"C",
                                "C.UTF-8",
                                "tr_TR.UTF-8",
                                "ru_RU.KOI8-R",
                                "ru_RU.CP1251",
                                "ja_JP.SHIFT_JIS"};

// Makes random texts. A property of some hundred lines is found by its seed:
// RapidCheck takes a hundred times as long to make them character by character.
class RandomTexts {
 public:
  explicit RandomTexts(unsigned int seed) : random_(seed) {}

  // A section and some lines, most of them keys, so that runs are long.
  String Next() {
    String text = "[Main]\n"_t;
    // Two names are one if they differ behind a NUL only.
    has_nuls_ = Below(4) == 0;
    const std::size_t lines = Below(120);
    for (std::size_t i = 0; i < lines; ++i) {
      text += AnyLine();
    }
    return text;
  }

  std::size_t Below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }

 private:
  String AnyLine() {
    switch (Below(100)) {
      case 0:
        return "# skipped\n"_t;
      case 1:
        return "[Main]\n"_t;
      case 2:
        return "[Other]\n"_t;
      default:
        return "["_t + AnyName() + "="_t + AnyName() + "\n"_t;
    }
  }

  String AnyName() {
    // Characters whose order or case depends on the locale, and blanks.
    static const String characters =
        sizeof(Char) == 1
            ? Text("aAbBzZiI019_-[ \t\xC0\xE0\xD0\x96\xFF\x80")
            : Text("aAbBzZiI019_-[ \t") + static_cast<Char>(0x130) +
                  static_cast<Char>(0x131) + static_cast<Char>(0x416) +
                  static_cast<Char>(0x436) + static_cast<Char>(0x1E9E) +
                  static_cast<Char>(0x7FFFFFFF);
    static const String beginnings[] = {""_t, "a"_t,
                                        "a beginning that is not inline "_t};
    String name = beginnings[Below(std::size(beginnings))];
    for (std::size_t length = Below(6); length != 0; --length) {
      name += has_nuls_ && Below(4) == 0 ? Char{}
                                         : characters[Below(characters.size())];
    }
    return name;
  }

  std::mt19937 random_;
  bool has_nuls_ = false;
};

template <class AnyFile>
std::string LoadTwice(const LoadCase& first, const LoadCase& second,
                      AnyFile& file) {
  return Load(first, file) + Load(second, file);
}

TEST(IniKeyRun, AnyKeysInAnyOrderAreEnteredAsThePlainWayEntersThem) {
  for (const char* const name : kLocales) {
    const CLocale locale(name);
    const bool holds = rc::check([] {
      RandomTexts texts(*rc::gen::arbitrary<unsigned int>());
      LoadCase first;
      first.text = texts.Next();
      first.pieces = *rc::gen::elementOf(
          std::vector<std::vector<std::size_t>>{{}, {}, {1000}, {100, 7}, {0}});
      LoadCase second = first;
      second.text = texts.Next();
      second.merge = *rc::gen::arbitrary<bool>();
      second.fault = *rc::gen::weightedElement<std::size_t>(
          {{3, kNever}, {1, texts.Below(second.text.size())}});
      File file;
      PlainFile plain;
      RC_ASSERT(LoadTwice(first, second, file) ==
                LoadTwice(first, second, plain));
    });
    EXPECT_TRUE(holds) << name;
  }
}

TEST(IniKeyRun, OverAMillionKeysInNoOrderAreAllEntered) {
  constexpr int kCount = (1 << 20) + 100;
  // Behind "[z", no line of the others comes last.
  StringInput input(Text("[Main]\n[z=v\n" + KeyLines(kCount, "v")));
  File file;
  file.Load(input);
  const auto& keys = file.GetSection("Main"_t)->GetKeys();
  EXPECT_EQ(keys.size(), std::size_t{kCount} + 1);
  for (const int i : {0, 1, kCount / 2, kCount - 1}) {
    EXPECT_EQ(keys.count(Text("[k" + std::to_string(1000 + i))), 1u) << i;
  }
}

TEST(IniKeyRun, KeysThatAreThereKeepTheirObjectsAndNames) {
  File file;
  Section* const section = file.AddSection("Main"_t);
  std::vector<Key*> keys;
  for (int i = 0; i < 50; ++i) {
    keys.push_back(section->AddKey(Text("[K" + std::to_string(1000 + i))));
  }
  StringInput input(Text("[Main]\n" + KeyLines(100, "v")));
  file.Load(input, true);
  EXPECT_EQ(section->GetKeys().size(), 100u);
  for (int i = 0; i < 50; ++i) {
    Key* const key = keys[static_cast<std::size_t>(i)];
    const std::string name = "[K" + std::to_string(1000 + i);
    EXPECT_EQ(section->GetKey(Text(name)), key);
    EXPECT_EQ(Shown(key->GetKeyName()), name);
    EXPECT_EQ(Shown(key->GetValue()), "v");
  }
}

TEST(IniKeyRun, NewKeysBelongToTheirSection) {
  File file;
  StringInput input(Text("[Main]\n" + KeyLines(100, "v")));
  file.Load(input);
  Section* const section = file.GetSection("Main"_t);
  // A key is renamed in the map of the section that it belongs to.
  EXPECT_TRUE(section->GetKey("[k1001"_t)->SetKeyName("renamed"_t));
  EXPECT_NE(section->GetKey("renamed"_t), nullptr);
  EXPECT_EQ(section->GetKeys().size(), 100u);
}

// Three characters in the order of a locale, perhaps in another case.
struct Digits {
  const char* locale;
  String digits;
  String same_digits;
};

std::vector<Digits> AllDigits() {
  const auto of = [](char32_t first, char32_t second, char32_t third) {
    return String{static_cast<Char>(first), static_cast<Char>(second),
                  static_cast<Char>(third)};
  };
  std::vector<Digits> all = {
      // Between the cases, and at the ends of what is folded beforehand.
      {"C", "_aZ"_t, "_Az"_t},
      {"C", of('0', 0x7F, 0x80), of('0', 0x7F, 0x80)},
      {"C", of('0', 0xFE, 0xFF), of('0', 0xFE, 0xFF)},
  };
  if (sizeof(Char) == 1) {
#ifndef KORVAN_TEST_ADDRESS_SANITIZER  // its strcasecmp knows only ASCII
    all.push_back({"ru_RU.KOI8-R", of('0', 'a', 0xFF), of('0', 'A', 0xDF)});
#endif
  } else {
    all.push_back({"C.UTF-8", of('0', 0x44F, 0x451), of('0', 0x42F, 0x401)});
    for (const char32_t highest : {U'\u0100', U'\u1001', U'\uFFFF',
                                   U'\U0010FFFF', char32_t{0x7FFFFFFF}}) {
      const String digits = of('0', highest - 1, highest);
      all.push_back({"C", digits, digits});
    }
  }
  return all;
}

constexpr int kFractions = 729;

// The line of a key whose name has the digits of a number, a fraction to the
// base of 3, each twice. They have the order of their numbers, and most differ
// in length.
String LineOfFraction(int numerator, const String& digits) {
  String name = "["_t;
  for (int power = kFractions / 3; numerator != 0; power /= 3) {
    name.append(2, digits[static_cast<std::size_t>(numerator / power)]);
    numerator %= power;
  }
  return name + "=v\n"_t;
}

long CallsToLoad(const String& lines) {
  StringInput input("[Main]\n"_t + lines);
  File file;
  const long calls = NewCalls();
  file.Load(input);
  const long calls_to_load = NewCalls() - calls;
  EXPECT_EQ(file.GetSection("Main"_t)->GetKeys().size(),
            std::size_t{kFractions});
  return calls_to_load;
}

TEST(IniKeyRun, KeysInNoOrderAreEnteredAtOnceWithFewAllocationsMore) {
  for (const Digits& row : AllDigits()) {
    SCOPED_TRACE(row.locale + Shown(row.digits));
    const CLocale locale(row.locale);
    String in_order;
    String in_no_order;
    String of_same_names;
    for (int i = 0; i < kFractions; ++i) {
      const int other = (kFractions - i) * 7 % kFractions;
      in_order += LineOfFraction(i, row.digits);
      in_no_order += LineOfFraction(other, row.digits);
      of_same_names += LineOfFraction(other, row.same_digits);
    }
    const long calls_in_order = CallsToLoad(in_order);
    const long calls_in_no_order = CallsToLoad(in_no_order);
    // The list of the lines grows some times. Without a run there is none.
    EXPECT_GT(calls_in_no_order, calls_in_order);
    EXPECT_LE(calls_in_no_order, calls_in_order + 15);
    EXPECT_LE(CallsToLoad(in_no_order + of_same_names + in_no_order),
              calls_in_order + 15);
  }
}

// What a load of 50 keys into a section allocates. They are there already, and
// so is one more, whose name is so long that the names of all have
// `characters`.
long CallsToLoadAmong(std::size_t characters, const String& text) {
  File file;
  Section* const section = file.AddSection("Main"_t);
  for (int i = 0; i < 50; ++i) {
    const String name = Text("[k" + std::to_string(1000 + i));
    section->AddKey(name);
    characters -= name.size();
  }
  section->AddKey(String(characters, static_cast<Char>('z')));
  StringInput input(text);
  const long calls = NewCalls();
  file.Load(input, true);
  return NewCalls() - calls;
}

// Entered at once, lines need a list of their values.
TEST(IniKeyRun, NamesOfUpToSixteenTimesTheTextAreLookedThroughForIt) {
  const std::string lines = KeyLines(50, "v");
  const String text = Text("[Main]\n" + lines);
  const std::size_t most = 16 * lines.size() - 51;  // each name counts one more
  const long calls_one_by_one = CallsToLoadAmong(10 * most, text);
  EXPECT_GT(CallsToLoadAmong(most, text), calls_one_by_one);
  EXPECT_EQ(CallsToLoadAmong(most + 1, text), calls_one_by_one);
}

std::size_t largest_block = 0;

std::string ContentOfPlain(const std::string& text) {
  StringInput input(Text(text));
  PlainFile plain;
  plain.Load(input, false);
  return ContentOf(plain);
}

void NoteBlock() { largest_block = std::max(largest_block, LastNewSize()); }

TEST(IniKeyRun, ShortLinesAskForNoBlockOfOverFourTimesTheirText) {
  // Names of three letters, each once.
  constexpr int kLetters = 26;
  constexpr int kNames = kLetters * kLetters * kLetters;
  std::string lines;
  for (int i = 0; i < 12000; ++i) {
    int name = i * 7919 % kNames;
    lines += '[';
    for (int letter = 0; letter < 3; ++letter) {
      lines += static_cast<char>('a' + name % kLetters);
      name /= kLetters;
    }
    lines += "=" + std::string(1, static_cast<char>('a' + i % kLetters)) + "\n";
  }
  const String text = Text("[Main]\n" + lines);
  File file;
  for (const bool keys_are_there : {false, true}) {
    SCOPED_TRACE(keys_are_there);
    StringInput input(text);
    largest_block = 0;
    {
      const PausingNew noting(NoteBlock);
      file.Load(input, true);
    }
    EXPECT_EQ(ContentOf(file), ContentOfPlain("[Main]\n" + lines));
    const std::size_t most = 4 * lines.size() * sizeof(Char) + (64 << 10);
    EXPECT_LE(largest_block, most);
    // Fewer lines would be sorted at once. Of wide text the list of all is
    // shorter.
    if (sizeof(Char) == 1 && keys_are_there) {
      EXPECT_GT(largest_block, most - 100);
    }
  }
}

// With a tie, a load reads one line after another.
std::size_t KeysLoadedWith(long bytes, bool one_by_one) {
  StringInput input(Text("[Main]\n" + KeyLines(1000, "v")));
  StringOutput tied;
  if (one_by_one) {
    input.tie(&tied);
  }
  File file;
  {
    const LimitedNew limited(bytes);
    Thrown([&] { file.Load(input); });
  }
  const auto& sections = file.GetSections();
  return sections.empty() ? 0 : sections.begin()->second->GetKeys().size();
}

// One by one a load also needs room for the line.
TEST(IniKeyRun, LittleMemoryHoldsNoFewerKeysThanOneByOne) {
  for (const long bytes : {0L, 20000L, 60000L, 100000L, 150000L, 1000000L}) {
    const std::size_t one_by_one = KeysLoadedWith(bytes, true);
    EXPECT_GE(KeysLoadedWith(bytes, false), one_by_one) << bytes << " bytes";
    EXPECT_GE(one_by_one, bytes == 0 ? 0u : 50u) << bytes << " bytes";
  }
}

// Longer than the blocks in which files are read.
std::string ALongText() {
  return "[Main]\n" + KeyLines(5001, "a value") + "[l";
}

TEST(IniKeyRun, NoKeyOfARunThatIsLongerThanABlockOfItsFileIsLost) {
  const Folder folder;
  WriteBytes(folder / "a.ini", ALongText());
  File file;
  EXPECT_TRUE(file.Load(Text(folder / "a.ini")));
  // Not EXPECT_EQ, which would print some hundred thousand characters.
  EXPECT_TRUE(ContentOf(file) == ContentOfPlain(ALongText()));
}

TEST(IniKeyRun, NoKeyOfARunFromAPipeIsLost) {
  const Folder folder;
  const std::string path = folder / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::thread writer([&] { WriteBytes(path, ALongText()); });
  File file;
  EXPECT_TRUE(file.Load(Text(path)));
  writer.join();
  // Not EXPECT_EQ, which would print some hundred thousand characters.
  EXPECT_TRUE(ContentOf(file) == ContentOfPlain(ALongText()));
}

std::size_t LargestBlockOfALoad(const std::string& path) {
  largest_block = 0;
  File file;
  const PausingNew noting(NoteBlock);
  EXPECT_TRUE(file.Load(Text(path)));
  return largest_block;
}

TEST(IniKeyRun, WhatFollowsInAFileIsNotReadAhead) {
  const Folder folder;
  const std::string rest(1 << 20, '\n');
  WriteBytes(folder / "a.ini",
             "[Main]\n" + KeyLines(50, "v") + "[Other]\n" + rest);
  EXPECT_LE(LargestBlockOfALoad(folder / "a.ini"), std::size_t{1} << 18);
}

TEST(IniKeyRun, OneFromAPipeIsReadAsAWhole) {
  const Folder folder;
  const std::string path = folder / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const std::string lines = KeyLines(1000, std::string(1000, 'v'));
  std::thread writer([&] { WriteBytes(path, "[Main]\n" + lines); });
  const std::size_t largest = LargestBlockOfALoad(path);
  writer.join();
  // Wide text is converted in small pieces.
  if (sizeof(Char) == 1) {
    EXPECT_GT(largest, lines.size() * 3 / 4);
  }
}

TEST(IniKeyRun, AFailedAllocationInALongRunOfAFileLeaksNothing) {
  const Folder folder;
  WriteBytes(folder / "a.ini", ALongText());
  const String path = Text(folder / "a.ini");
  bool failed = true;
  for (long successes = 0; failed; successes += successes < 40 ? 1 : 997) {
    const long live = LiveBlocks();
    {
      File file;
      bool loaded = false;
      {
        const FailingNew failing(successes, 1);
        Thrown([&] { loaded = file.Load(path); });
        failed = failing.Failed();
      }
      if (loaded && !file.GetSections().empty()) {
        EXPECT_EQ(file.GetSections().begin()->second->GetKeys().size(), 5001u);
      }
    }
    EXPECT_EQ(LiveBlocks(), live) << "after " << successes;
  }
}

TEST(IniKeyRun, ADocumentWhoseLocaleChangedLosesNothingAndLeaksNothing) {
  const long live = LiveBlocks();
  {
    File file;
    {
      const CLocale locale("tr_TR.UTF-8");
      StringInput input(Text("[Main]\n[i=1\n[I=2\n[j=3\n" + KeyLines(40, "v")));
      file.Load(input);
    }
    StringInput input(Text("[Main]\n" + KeyLines(100, "w") + "[I=4\n"));
    file.Load(input, true);
    std::set<std::string> names;
    for (const auto& [name, key] : file.GetSection("Main"_t)->GetKeys()) {
      names.insert(Shown(name));
    }
    // AddressSanitizer's strcasecmp takes "[I" for "[i" in any locale.
    std::set<std::string> wanted = {"[i", "[j"};
    for (int i = 0; i < 100; ++i) {
      wanted.insert("[k" + std::to_string(1000 + i));
    }
    EXPECT_TRUE(std::ranges::includes(names, wanted));
  }
  EXPECT_EQ(LiveBlocks(), live);
}

// Gives its text in two pieces, and changes the locale before the second.
class LocaleChangingInput : public PiecewiseInput {
 public:
  LocaleChangingInput(const String& first, const String& second,
                      const char* locale)
      : PiecewiseInput(first + second, {first.size(), second.size()}),
        first_size_(first.size()),
        locale_(locale) {}

 protected:
  Traits::int_type underflow() override {
    if (Consumed() == first_size_) {
      std::setlocale(LC_ALL, locale_);
    }
    return PiecewiseInput::underflow();
  }

 private:
  std::size_t first_size_;
  const char* locale_;
};

TEST(IniKeyRun, ALocaleThatChangesWhileATextIsReadLosesNoValue) {
  const CLocale locale("C");
  for (const char* const changed : {"tr_TR.UTF-8", "C"}) {
    File file;
    {
      const CLocale document_locale(changed);
      for (const char* const name : {"[h", "[I", "[j"}) {
        file.AddSection("Main"_t)->AddKey(Text(name));
      }
    }
    std::string lines;
    for (int i = 0; i < 20; ++i) {
      for (const char* const name : {"[j=", "[h=", "[I="}) {
        lines += name + std::to_string(i) + "\n";
      }
    }
    // In Turkish, "I" stands before "h" as a byte and behind "j" as a
    // character, in the locale of the first run between them.
    LocaleChangingInput buffer(Text("[First]\n[b=1\n[a=2\n"),
                               Text("[Main]\n" + lines), changed);
    InputStream input(&buffer);
    file.Load(input, true);
    EXPECT_EQ(Shown(file.GetKeyValue("Main"_t, "[h"_t)), "19") << changed;
    EXPECT_EQ(Shown(file.GetKeyValue("Main"_t, "[I"_t)), "19") << changed;
    EXPECT_EQ(Shown(file.GetKeyValue("Main"_t, "[j"_t)), "19") << changed;
    EXPECT_EQ(file.GetSection("Main"_t)->GetKeys().size(), 3u) << changed;
  }
}

}  // namespace
}  // namespace korvan::test
