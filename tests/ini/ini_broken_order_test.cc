// What stays true where wide names are out of order, since the locale has
// changed or the C library has no order for them: no object is destroyed twice
// or leaks. This program has a `wcscasecmp` of its own, which takes the place
// of the C library's and can take a 9 for an 8, or tell "before" by INT_MIN.
#include <korvan/ini_file.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "ini/key_lines.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/failing_new.h"
#include "support/locales.h"

namespace korvan::test {
namespace {

bool nine_is_eight = false;
bool before_is_the_least_number = false;

String WithoutNines(String name) {
  std::replace(name.begin(), name.end(), L'9', L'8');
  return name;
}

}  // namespace
}  // namespace korvan::test

int wcscasecmp(const wchar_t* left, const wchar_t* right) noexcept {
  using korvan::test::WithoutNines;
  const int difference =
      korvan::test::nine_is_eight
          ? wcsncasecmp(WithoutNines(left).c_str(), WithoutNines(right).c_str(),
                        SIZE_MAX)
          : wcsncasecmp(left, right, SIZE_MAX);
  return korvan::test::before_is_the_least_number && difference < 0
             ? INT_MIN
             : difference;
}

namespace korvan::test {
namespace {

// The locale must not change while a document lives. If it does all the same,
// names are lost or found twice, but nothing is destroyed twice.

TEST(IniEditingUnderAnotherLocale, ARenameLeavesOneEntryToAnObject) {
  const CLocale later("C");
  const long live = LiveBlocks();
  {
    File file;
    Section* section = nullptr;
    {
      const CLocale locale("C.UTF-8");
      // Folded, these are in order; unfolded, the last two are not.
      for (const wchar_t* const name :
           {L"\u0430", L"\u0431", L"\u0432", L"\u0413", L"\u0414"}) {
        section = file.AddSection(name);
      }
    }
    EXPECT_EQ(file.GetSection(L"\u0414"), nullptr);
    EXPECT_TRUE(section->SetSectionName(L"zz"));
    EXPECT_EQ(file.GetSections().size(), 5u);
    EXPECT_EQ(Shown(section->GetSectionName()), "zz");
  }
  EXPECT_EQ(LiveBlocks(), live);
}

TEST(IniEditingUnderAnotherLocale, ARenameSparesANamesakesEntry) {
  const CLocale earlier("C");
  const long live = LiveBlocks();
  {
    File file;
    file.AddSection(L"\u0416");
    auto* const small = file.AddSection(L"\u0436");
    const CLocale locale("C.UTF-8");  // now both are one name
    EXPECT_TRUE(small->SetSectionName(L"x"));
    auto* const large = file.GetSection(L"\u0416");
    ASSERT_NE(large, nullptr);
    EXPECT_EQ(file.GetSections().size(), 2u);
    EXPECT_TRUE(large->SetSectionName(L"y"));
    EXPECT_EQ(ContentOf(file), "x{} y{}");
  }
  EXPECT_EQ(LiveBlocks(), live);
}

// wcscasecmp is no order for units of 0x80000000 and more:
// 1 < 0x60000000 < 0xC0000000 < 1.
class RandomCharacters {
 public:
  wchar_t operator()() {
    random_ = random_ * 1103515245 + 12345;
    return kCharacters[(random_ >> 16) % std::size(kCharacters)];
  }

 private:
  static constexpr wchar_t kCharacters[] = {
      L'a',       static_cast<wchar_t>(0x80000000),
      0x60000000, static_cast<wchar_t>(0xFFFFFFFF),
      0x7FFFFFFF, static_cast<wchar_t>(0xC0000000),
      L'Z',       1};

  unsigned int random_ = 1;
};

TEST(IniEditingWithoutAnOrder, NothingIsLostOrDestroyedTwice) {
  const long live = LiveBlocks();
  {
    File file;
    RandomCharacters next;
    for (int i = 0; i < 3000; ++i) {
      Section* const section = file.AddSection({next(), next()});
      ASSERT_NE(section, nullptr);
      section->SetKeyValue({next(), next()}, L"v");
      if (i % 3 == 0) {
        section->SetSectionName({next(), next(), next()});
      }
      if (i % 5 == 0) {
        file.RemoveSection({next(), next()});
      }
      if (i % 7 == 0 && !file.GetSections().empty()) {
        file.RemoveSection(file.GetSections().begin()->second);
      }
    }
  }
  EXPECT_EQ(LiveBlocks(), live);
}

// Each of the two names comes before the other, so a search for the second
// misses it.
TEST(IniEditingWithoutAnOrder, AFailedValueLeavesNoSection) {
  bool failed = true;
  for (long successes = 0; failed; ++successes) {
    File file;
    Section* const first = file.AddSection({static_cast<wchar_t>(0x80000001)});
    String name = {1};
    String key(60, L'k');
    String value(60, L'v');
    try {
      const FailingNew failing(successes);
      file.SetKeyValue(std::move(name), std::move(key), std::move(value));
      failed = false;
    } catch (const std::bad_alloc&) {
      ASSERT_EQ(file.GetSections().size(), 1u) << "after " << successes;
      EXPECT_EQ(file.GetSections().begin()->second, first);
    }
  }
}

// The model that fuzzers compare documents with must not leak either.
TEST(IniEditingWithoutAnOrder, ThePlainDocumentLosesNothing) {
  const long live = LiveBlocks();
  {
    PlainFile plain;
    RandomCharacters next;
    for (int i = 0; i < 3000; ++i) {
      plain.Set({next(), next()}, {next(), next()}, L"a value with a block");
      plain.RenameSection({next(), next()}, {next(), next(), next()});
      plain.RemoveSection({next(), next()});
    }
  }
  EXPECT_EQ(LiveBlocks(), live);
}

TEST(IniEditingWithoutAnOrder, KeysLoadedInNoOrderAreNotLostOrDestroyedTwice) {
  const long live = LiveBlocks();
  {
    File file;
    for (const unsigned int odd : {0x80000000, 0x90000000, 0xFFFFFFFE}) {
      String text = L"[Main]\n";
      for (int i = 0; i < 100; ++i) {
        text += L"[k" + std::to_wstring(1000 + i * 7 % 100);
        if (i % 30 == 29) {
          text += static_cast<wchar_t>(odd);
        }
        text += L"=v\n";
      }
      StringInput input(text);
      file.Load(input, true);
    }
    std::size_t plain_keys = 0;
    for (const auto& [name, key] : file.GetSection(L"Main")->GetKeys()) {
      plain_keys += name.size() == 6;
      EXPECT_EQ(key->GetValue(), L"v");
    }
    EXPECT_GE(plain_keys, 97u);  // some are among names without an order
  }
  EXPECT_EQ(LiveBlocks(), live);
}

// 1 < 0x60000000 < 0xC0000000 < 1, and where 1 is entered after 0xC0000000 it
// stands behind it. No sorting of the three would put it there.
TEST(IniEditingWithoutAnOrder, KeysAreNotSorted) {
  const String high = {L'[', L'm', static_cast<wchar_t>(0xC0000000)};
  const String low = {L'[', L'm', 1};
  const String middle = {L'[', L'm', 0x60000000};
  StringInput input(L"[Main]\n[z=\n" + Text(KeyLines(50, "v")) + high + L"=\n" +
                    low + L"=\n" + middle + L"=\n");
  File file;
  file.Load(input);
  std::vector<String> names;
  for (const auto& [name, key] : file.GetSection(L"Main")->GetKeys()) {
    names.push_back(name);
  }
  EXPECT_EQ(names.size(), 54u);
  EXPECT_LT(std::find(names.begin(), names.end(), high),
            std::find(names.begin(), names.end(), low));
}

// What a load of keys in no order allocates whose names end in `character`.
long CallsToLoad(unsigned int character) {
  String text = L"[Main]\n[z=\n";
  for (int i = 0; i < 50; ++i) {
    text += L"[k" + std::to_wstring(1000 + i * 7 % 50) +
            static_cast<wchar_t>(character) + L"=v\n";
  }
  StringInput input(text);
  File file;
  const long calls = NewCalls();
  file.Load(input);
  return NewCalls() - calls;
}

// Names that are compared as C strings may differ behind a NUL.
TEST(IniEditingWithoutAnOrder, KeysWithANulAreNotSortedEither) {
  const long calls_one_by_one = CallsToLoad(0x80000000);
  EXPECT_EQ(CallsToLoad(0), calls_one_by_one);
  for (const unsigned int character : {1u, 2u, 0x7FFFFFFFu}) {
    EXPECT_LT(CallsToLoad(character), calls_one_by_one) << character;
  }
}

// Many keys are sorted by their folded characters before they are entered.
TEST(IniEditingWithoutAnOrder, KeysThatAreNotComparedAsTheyFoldAreEntered) {
  String text = L"[Main]\n[z=\n";
  for (int i = 0; i < 100; ++i) {
    const String number = std::to_wstring(1000 + i * 7 % 100);
    text += L"[k" + number + L"=" + number + L"\n";
  }
  nine_is_eight = true;
  StringInput plain_input(text);
  PlainFile plain;
  plain.Load(plain_input, false);
  const std::string content = ContentOf(plain);
  const long live = LiveBlocks();
  {
    StringInput input(text);
    File file;
    file.Load(input);
    EXPECT_EQ(ContentOf(file), content);
  }
  EXPECT_EQ(LiveBlocks(), live);
  nine_is_eight = false;
}

// A C library may tell "before" by any number below 0. glibc's gives INT_MIN
// for names without an order alone, so such names are inserted without a hint.
TEST(IniEditingWithoutAnOrder, NamesThatComeBeforeByTheLeastNumberAreInOrder) {
  before_is_the_least_number = true;
  const long live = LiveBlocks();
  {
    File file;
    for (const wchar_t* const name : {L"m", L"b", L"x", L"B", L"n", L"a"}) {
      file.SetKeyValue(L"Main", name, name);
    }
    EXPECT_EQ(ContentOf(file), "Main{a=a|b=B|m=m|n=n|x=x}");
  }
  EXPECT_EQ(LiveBlocks(), live);
  before_is_the_least_number = false;
}

}  // namespace
}  // namespace korvan::test
