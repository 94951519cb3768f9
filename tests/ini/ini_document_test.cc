// The three levels: what they are made of, and who owns what.
#include <korvan/ini_file.h>

#include <map>
#include <type_traits>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/failing_new.h"

namespace korvan::test {
namespace {

// What users were built against. A member more, less or elsewhere breaks them.
struct KeyLayout {
  String name;
  String value;
  void* owner;
};
struct SectionLayout {
  void* owner;
  String name;
  std::map<String, Key*, Less> keys;
};
struct FileLayout {
  std::map<String, Section*, Less> sections;
};

template <class Class, class Layout>
constexpr bool kIsPlain =
    sizeof(Class) == sizeof(Layout) && alignof(Class) == alignof(Layout) &&
    !std::is_polymorphic_v<Class> && !std::is_copy_constructible_v<Class> &&
    !std::is_copy_assignable_v<Class> && !std::is_move_constructible_v<Class> &&
    !std::is_move_assignable_v<Class> && std::is_nothrow_destructible_v<Class>;
static_assert(kIsPlain<File, FileLayout>);
static_assert(kIsPlain<Section, SectionLayout>);
static_assert(kIsPlain<Key, KeyLayout>);
static_assert(std::is_empty_v<Less>);
static_assert(sizeof(Merge) == sizeof(void*));
static_assert(std::is_copy_constructible_v<Merge>);
static_assert(!std::is_convertible_v<File&, Merge>);

// Whether `value` stands at the place of `member` in a layout.
template <class Value, class Member>
bool StandsAt(const void* object, const Member* member, const void* layout,
              const Value& value) {
  const auto offset =
      reinterpret_cast<const char*>(member) - static_cast<const char*>(layout);
  return *reinterpret_cast<const Value*>(static_cast<const char*>(object) +
                                         offset) == value;
}

TEST(IniDocument, LevelsHaveTheirMembersInOrder) {
  File file;
  Section* const section = file.AddSection("Main"_t);
  Key* const key = section->AddKey("k"_t);
  key->SetValue("v"_t);

  const SectionLayout s{};
  EXPECT_TRUE(StandsAt(section, &s.owner, &s, &file));
  EXPECT_TRUE(StandsAt(section, &s.name, &s, "Main"_t));
  EXPECT_TRUE(StandsAt(section, &s.keys, &s, section->GetKeys()));
  EXPECT_EQ(static_cast<const void*>(&file.GetSections()), &file);

  const KeyLayout k{};
  EXPECT_TRUE(StandsAt(key, &k.name, &k, "k"_t));
  EXPECT_TRUE(StandsAt(key, &k.value, &k, "v"_t));
  EXPECT_TRUE(StandsAt(key, &k.owner, &k, section));
}

TEST(IniDocument, LevelsAreEmptyAtFirst) {
  File file;
  EXPECT_TRUE(file.GetSections().empty());
  Section* const section = file.AddSection("Main"_t);
  EXPECT_TRUE(section->GetKeys().empty());
  EXPECT_EQ(Shown(section->AddKey("k"_t)->GetValue()), "");
}

TEST(IniDocument, ConstructorsTakeNamesAsTheyAre) {
  File file;
  Section section(&file, " Main\t"_t);
  EXPECT_EQ(Shown(section.GetSectionName()), " Main\\9;");
  Key key(&section, " k "_t);
  EXPECT_EQ(Shown(key.GetKeyName()), " k ");
  EXPECT_EQ(Shown(key.GetValue()), "");
  EXPECT_EQ(ContentOf(file), "");
}

TEST(IniDocument, TheMapsAreBorrowedNotCopied) {
  File file;
  const auto& sections = file.GetSections();
  Section* const section = file.AddSection("Main"_t);
  const auto& keys = section->GetKeys();
  Key* const key = section->AddKey("k"_t);
  ASSERT_EQ(sections.size(), 1u);
  EXPECT_EQ(sections.begin()->second, section);
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_EQ(keys.begin()->second, key);
}

TEST(IniDocument, NamesAndValuesComeAsCopies) {
  File file;
  Key* const key = file.AddSection("Main"_t)->AddKey("k"_t);
  key->SetValue("v"_t);
  key->GetKeyName() += Char{'x'};
  key->GetValue() += Char{'x'};
  file.GetSection("Main"_t)->GetSectionName().clear();
  EXPECT_EQ(ContentOf(file), "Main{k=v}");
}

TEST(IniDocument, ValuesAreKeptAsTheyAre) {
  File file;
  Key* const key = file.AddSection("Main"_t)->AddKey("k"_t);
  for (const std::string_view value :
       {std::string_view(" x "), std::string_view(""),
        std::string_view("\t\"quoted\" # ; =\r\n"),
        std::string_view("a\0b", 3)}) {
    key->SetValue(Text(value));
    EXPECT_EQ(Shown(key->GetValue()), Shown(std::string(value)));
  }
}

TEST(IniDocument, TheLineTerminatorIsOneLineFeed) {
  EXPECT_EQ(String(File::LF), Text("\n"));
}

TEST(IniDocument, NamesAreInCaseInsensitiveOrder) {
  File file;
  for (const String& name : {"beta"_t, "GAMMA"_t, "Alpha"_t, ""_t}) {
    file.AddSection(name);
  }
  EXPECT_EQ(ContentOf(file), "{} Alpha{} beta{} GAMMA{}");
}

TEST(IniDocument, TheComparatorIsWhatTheCLibrarySays) {
  const Less less;
  EXPECT_TRUE(less("a"_t, "B"_t));
  EXPECT_TRUE(less("A"_t, "b"_t));
  EXPECT_FALSE(less("b"_t, "A"_t));
  EXPECT_FALSE(less("base"_t, "BASE"_t));
  EXPECT_FALSE(less("BASE"_t, "base"_t));
  EXPECT_TRUE(less("bas"_t, "BASE"_t));
  EXPECT_TRUE(less(""_t, "a"_t));
  EXPECT_FALSE(less(""_t, ""_t));
  // In lower case '_' comes before the letters.
  EXPECT_TRUE(less("_"_t, "A"_t));
}

TEST(IniDocument, ComparingNamesAllocatesNothing) {
  const String left = String(100, 'n') + "a"_t;
  const String right = String(100, 'N') + "B"_t;
  const FailingNew none(0);
  EXPECT_TRUE(Less()(left, right));
  EXPECT_FALSE(Less()(right, left));
}

TEST(IniDocument, NamesCompareUpToTheirFirstNul) {
  const Less less;
  EXPECT_FALSE(less("a\0b"_t, "a"_t));
  EXPECT_FALSE(less("a"_t, "a\0b"_t));
  EXPECT_FALSE(less("A\0b"_t, "a\0c"_t));
  EXPECT_TRUE(less("a\0z"_t, "b\0a"_t));
  File file;
  Section* const section = file.AddSection("a\0b"_t);
  EXPECT_EQ(file.AddSection("A"_t), section);
  EXPECT_EQ(file.GetSection("a\0c"_t), section);
  EXPECT_EQ(ContentOf(file), "a\\0;b{}");
}

TEST(IniDocument, ADocumentFreesAllItOwns) {
  const long live = LiveBlocks();
  {
    File file;
    for (const String& section : {"one"_t, "two"_t, "three"_t}) {
      file.SetKeyValue(section, "a key with a name too long to be inline"_t,
                       "a value with a text too long to be inline"_t);
      file.SetKeyValue(section, "k"_t, "v"_t);
    }
    EXPECT_GT(LiveBlocks(), live);
  }
  EXPECT_EQ(LiveBlocks(), live);
}

TEST(IniDocument, ASectionFreesItsKeysAndAKeyItsTexts) {
  File file;
  const long live = LiveBlocks();
  {
    Section section(&file, "by hand"_t);
    section.SetKeyValue("k"_t, "v"_t);
    Key key(&section, "a key with a name too long to be inline"_t);
  }
  EXPECT_EQ(LiveBlocks(), live);
}

TEST(IniDocument, AnEntryTakesTwoBlocksAndOneForEachLongText) {
  File file;
  Section* const section = file.AddSection("Main"_t);
  const long live = LiveBlocks();
  section->SetKeyValue("k"_t, "v"_t);
  EXPECT_EQ(LiveBlocks() - live, 2);
  section->SetKeyValue("a key with a name too long to be inline"_t,
                       "a value with a text too long to be inline"_t);
  EXPECT_EQ(LiveBlocks() - live, 2 + 5);
}

}  // namespace
}  // namespace korvan::test
