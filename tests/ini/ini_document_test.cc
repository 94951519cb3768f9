// The three levels: what they are made of, how names are ordered, who owns
// what.
#include <korvan/ini_file.h>
#include <strings.h>

#include <cstring>
#include <cwchar>
#include <map>
#include <type_traits>

#include "ini/ini_twins.h"
#include "support/failing_new.h"

namespace {

using korvan::test::LiveBlocks;

// What users were built against. A member more, less or elsewhere breaks them.
template <class Twin>
struct Layout {
  using String = std::basic_string<typename Twin::Char>;
  struct Key {
    String name;
    String value;
    void* owner;
  };
  struct Section {
    void* owner;
    String name;
    std::map<String, typename Twin::Key*, typename Twin::Less> keys;
  };
  struct File {
    std::map<String, typename Twin::Section*, typename Twin::Less> sections;
  };
};

template <class Class, class Same>
constexpr bool kIsPlain =
    sizeof(Class) == sizeof(Same) && alignof(Class) == alignof(Same) &&
    !std::is_polymorphic_v<Class> && !std::is_copy_constructible_v<Class> &&
    !std::is_copy_assignable_v<Class> && !std::is_move_constructible_v<Class> &&
    !std::is_move_assignable_v<Class> && std::is_nothrow_destructible_v<Class>;

template <class Twin>
constexpr bool kHasTheLayout =
    kIsPlain<typename Twin::File, typename Layout<Twin>::File>&&
        kIsPlain<typename Twin::Section, typename Layout<Twin>::Section>&&
            kIsPlain<typename Twin::Key, typename Layout<Twin>::Key>&&
                std::is_empty_v<typename Twin::Less> &&
    sizeof(typename Twin::Merge) == sizeof(void*) &&
    std::is_copy_constructible_v<typename Twin::Merge> &&
    !std::is_convertible_v<typename Twin::File&, typename Twin::Merge>;
static_assert(kHasTheLayout<Narrow>);
static_assert(kHasTheLayout<Wide>);

// Widen swaps every narrow type for its twin, so that the compiler keeps the
// two classes alike.
template <class T>
struct WidenType {
  using Type = T;
};
template <class T>
using Widen = typename WidenType<T>::Type;
template <>
struct WidenType<std::string> {
  using Type = std::wstring;
};
template <>
struct WidenType<std::istream> {
  using Type = std::wistream;
};
template <>
struct WidenType<std::ostream> {
  using Type = std::wostream;
};
template <>
struct WidenType<Narrow::File> {
  using Type = Wide::File;
};
template <>
struct WidenType<Narrow::Section> {
  using Type = Wide::Section;
};
template <>
struct WidenType<Narrow::Key> {
  using Type = Wide::Key;
};
template <>
struct WidenType<Narrow::File::Sections> {
  using Type = Wide::File::Sections;
};
template <>
struct WidenType<Narrow::Section::Keys> {
  using Type = Wide::Section::Keys;
};
template <class T>
struct WidenType<T*> {
  using Type = Widen<T>*;
};
template <class T>
struct WidenType<T&> {
  using Type = Widen<T>&;
};
template <class T>
struct WidenType<const T> {
  using Type = const Widen<T>;
};
template <class R, class C, class... A>
struct WidenType<R (C::*)(A...)> {
  using Type = Widen<R> (Widen<C>::*)(Widen<A>...);
};
template <class R, class C, class... A>
struct WidenType<R (C::*)(A...) const> {
  using Type = Widen<R> (Widen<C>::*)(Widen<A>...) const;
};

template <class NarrowMember, class WideMember>
constexpr bool AreTwins(NarrowMember, WideMember) {
  return std::is_same_v<Widen<NarrowMember>, WideMember>;
}

static_assert(AreTwins(&Narrow::File::AddSection, &Wide::File::AddSection));
static_assert(AreTwins(&Narrow::File::GetSection, &Wide::File::GetSection));
static_assert(AreTwins(&Narrow::File::GetSections, &Wide::File::GetSections));
static_assert(AreTwins(&Narrow::File::RemoveAllSections,
                       &Wide::File::RemoveAllSections));
static_assert(AreTwins(&Narrow::File::RenameSection,
                       &Wide::File::RenameSection));
static_assert(AreTwins(&Narrow::File::SetKeyValue, &Wide::File::SetKeyValue));
static_assert(AreTwins(&Narrow::File::GetKeyValue, &Wide::File::GetKeyValue));
static_assert(AreTwins(&Narrow::File::RenameKey, &Wide::File::RenameKey));
static_assert(AreTwins(&Narrow::Section::AddKey, &Wide::Section::AddKey));
static_assert(AreTwins(&Narrow::Section::GetKey, &Wide::Section::GetKey));
static_assert(AreTwins(&Narrow::Section::GetKeys, &Wide::Section::GetKeys));
static_assert(AreTwins(&Narrow::Section::RemoveAllKeys,
                       &Wide::Section::RemoveAllKeys));
static_assert(AreTwins(&Narrow::Section::GetSectionName,
                       &Wide::Section::GetSectionName));
static_assert(AreTwins(&Narrow::Section::SetSectionName,
                       &Wide::Section::SetSectionName));
static_assert(AreTwins(&Narrow::Section::SetKeyValue,
                       &Wide::Section::SetKeyValue));
static_assert(AreTwins(&Narrow::Section::GetKeyValue,
                       &Wide::Section::GetKeyValue));
static_assert(AreTwins(&Narrow::Key::GetKeyName, &Wide::Key::GetKeyName));
static_assert(AreTwins(&Narrow::Key::SetKeyName, &Wide::Key::SetKeyName));
static_assert(AreTwins(&Narrow::Key::GetValue, &Wide::Key::GetValue));
static_assert(AreTwins(&Narrow::Key::SetValue, &Wide::Key::SetValue));
static_assert(std::is_same_v<decltype(Narrow::File::LF), const char* const>);
static_assert(std::is_same_v<decltype(Wide::File::LF), const wchar_t* const>);

// Whether `value` stands at the place of `member` in a layout.
template <class Value, class Member>
bool StandsAt(const void* object, const Member* member, const void* layout,
              const Value& value) {
  const auto offset =
      reinterpret_cast<const char*>(member) - static_cast<const char*>(layout);
  return *reinterpret_cast<const Value*>(static_cast<const char*>(object) +
                                         offset) == value;
}

template <class Twin>
class IniDocument : public testing::Test {};
TYPED_TEST_SUITE(IniDocument, Twins, TwinNames);

TYPED_TEST(IniDocument, LevelsHaveTheirMembersInOrder) {
  using String = std::basic_string<typename TypeParam::Char>;
  typename TypeParam::File file;
  auto* const section = file.AddSection("Main"_t);
  auto* const key = section->AddKey("k"_t);
  key->SetValue("v"_t);

  const typename Layout<TypeParam>::Section s{};
  EXPECT_TRUE(StandsAt(section, &s.owner, &s, &file));
  EXPECT_TRUE(StandsAt(section, &s.name, &s, String("Main"_t)));
  EXPECT_TRUE(StandsAt(section, &s.keys, &s, section->GetKeys()));
  EXPECT_EQ(static_cast<const void*>(&file.GetSections()), &file);

  const typename Layout<TypeParam>::Key k{};
  EXPECT_TRUE(StandsAt(key, &k.name, &k, String("k"_t)));
  EXPECT_TRUE(StandsAt(key, &k.value, &k, String("v"_t)));
  EXPECT_TRUE(StandsAt(key, &k.owner, &k, section));
}

TYPED_TEST(IniDocument, LevelsAreBornEmpty) {
  typename TypeParam::File file;
  EXPECT_TRUE(file.GetSections().empty());
  auto* const section = file.AddSection("Main"_t);
  EXPECT_TRUE(section->GetKeys().empty());
  EXPECT_EQ(Shown(section->AddKey("k"_t)->GetValue()), "");
}

TYPED_TEST(IniDocument, ConstructorsTakeNamesAsTheyAre) {
  typename TypeParam::File file;
  typename TypeParam::Section section(&file, " Main\t"_t);
  EXPECT_EQ(Shown(section.GetSectionName()), " Main\\9;");
  typename TypeParam::Key key(&section, " k "_t);
  EXPECT_EQ(Shown(key.GetKeyName()), " k ");
  EXPECT_EQ(Shown(key.GetValue()), "");
  EXPECT_EQ(ContentOf(file), "");
}

TYPED_TEST(IniDocument, TheMapsAreLentNotCopied) {
  typename TypeParam::File file;
  const auto& sections = file.GetSections();
  auto* const section = file.AddSection("Main"_t);
  const auto& keys = section->GetKeys();
  auto* const key = section->AddKey("k"_t);
  ASSERT_EQ(sections.size(), 1u);
  EXPECT_EQ(sections.begin()->second, section);
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_EQ(keys.begin()->second, key);
}

TYPED_TEST(IniDocument, NamesAndValuesComeAsCopies) {
  typename TypeParam::File file;
  auto* const key = file.AddSection("Main"_t)->AddKey("k"_t);
  key->SetValue("v"_t);
  key->GetKeyName() += typename TypeParam::Char{'x'};
  key->GetValue() += typename TypeParam::Char{'x'};
  file.GetSection("Main"_t)->GetSectionName().clear();
  EXPECT_EQ(ContentOf(file), "Main{k=v}");
}

TYPED_TEST(IniDocument, ValuesAreKeptAsTheyAre) {
  typename TypeParam::File file;
  auto* const key = file.AddSection("Main"_t)->AddKey("k"_t);
  for (const std::string_view value :
       {std::string_view(" x "), std::string_view(""),
        std::string_view("\t\"quoted\" # ; =\r\n"),
        std::string_view("a\0b", 3)}) {
    key->SetValue(Text<typename TypeParam::Char>(value));
    EXPECT_EQ(Shown(key->GetValue()), Shown(std::string(value)));
  }
}

TYPED_TEST(IniDocument, TheLineTerminatorIsOneLineFeed) {
  EXPECT_EQ(std::basic_string<typename TypeParam::Char>(TypeParam::File::LF),
            Text<typename TypeParam::Char>("\n"));
}

TYPED_TEST(IniDocument, NamesAreInCaseInsensitiveOrder) {
  typename TypeParam::File file;
  for (const auto name : {"beta"_t, "GAMMA"_t, "Alpha"_t, ""_t}) {
    file.AddSection(name);
  }
  EXPECT_EQ(ContentOf(file), "{} Alpha{} beta{} GAMMA{}");
}

TYPED_TEST(IniDocument, TheComparatorIsWhatTheCLibrarySays) {
  const typename TypeParam::Less less;
  EXPECT_TRUE(less("a"_t, "B"_t));
  EXPECT_TRUE(less("A"_t, "b"_t));
  EXPECT_FALSE(less("b"_t, "A"_t));
  EXPECT_FALSE(less("main"_t, "MAIN"_t));
  EXPECT_FALSE(less("MAIN"_t, "main"_t));
  EXPECT_TRUE(less("mai"_t, "MAIN"_t));
  EXPECT_TRUE(less(""_t, "a"_t));
  EXPECT_FALSE(less(""_t, ""_t));
  // In lower case '_' comes before the letters.
  EXPECT_TRUE(less("_"_t, "A"_t));
}

TYPED_TEST(IniDocument, NamesCompareUpToTheirFirstNul) {
  const typename TypeParam::Less less;
  EXPECT_FALSE(less("a\0b"_t, "a"_t));
  EXPECT_FALSE(less("a"_t, "a\0b"_t));
  EXPECT_FALSE(less("A\0b"_t, "a\0c"_t));
  EXPECT_TRUE(less("a\0z"_t, "b\0a"_t));
  typename TypeParam::File file;
  auto* const section = file.AddSection("a\0b"_t);
  EXPECT_EQ(file.AddSection("A"_t), section);
  EXPECT_EQ(file.GetSection("a\0c"_t), section);
  EXPECT_EQ(ContentOf(file), "a\\0;b{}");
}

TEST(IniNameOrder, NarrowNamesFoldAsTheCLibraryFoldsBytes) {
  for (const char* const name : {"C", "C.UTF-8", "tr_TR.UTF-8", "ru_RU.KOI8-R",
                                 "ru_RU.CP1251", "ja_JP.SHIFT_JIS"}) {
    const CLocale locale(name);
    for (int i = 0; i < 256; ++i) {
      for (int j = 0; j < 256; ++j) {
        const std::string left = {'x', static_cast<char>(i), 'a'};
        const std::string right = {'X', static_cast<char>(j), 'B'};
        ASSERT_EQ(korvan::ci_less_a()(left, right),
                  strcasecmp(left.c_str(), right.c_str()) < 0)
            << name << ' ' << i << ' ' << j;
      }
    }
  }
}

TEST(IniNameOrder, WideNamesFoldAsTheCLibraryFoldsCharacters) {
  const wchar_t characters[] = {0,    1,       L'A',     L'I',      L'Z',
                                L'_', L'i',    L'z',     0x130,     0x131,
                                0xC9, 0xE9,    0x416,    0x436,     0x1E9E,
                                0xDF, 0x1F600, 0x10FFFF, 0x7FFFFFFF};
  for (const char* const name : {"C", "C.UTF-8", "tr_TR.UTF-8"}) {
    const CLocale locale(name);
    for (const wchar_t i : characters) {
      for (const wchar_t j : characters) {
        const std::wstring left = {L'x', L'Y', i, L'a'};
        const std::wstring right = {L'x', L'y', j, L'B'};
        ASSERT_EQ(korvan::ci_less_w()(left, right),
                  wcscasecmp(left.c_str(), right.c_str()) < 0)
            << name << ' ' << int{i} << ' ' << int{j};
      }
    }
  }
}

TEST(IniNameOrder, OnlyWideNamesFoldLettersOfSeveralBytes) {
  const CLocale locale("C.UTF-8");
  korvan::CIniFileA narrow;
  narrow.AddSection("\xD0\x96");  // the Cyrillic letter Zhe
  narrow.AddSection("\xD0\xB6");
  EXPECT_EQ(narrow.GetSections().size(), 2u);
  korvan::CIniFileW wide;
  wide.AddSection(L"\u0416");
  wide.AddSection(L"\u0436");
  EXPECT_EQ(ContentOf(wide), "\\416;{}");
}

TEST(IniNameOrder, TurkishKeepsTheTwoLettersIApart) {
  const CLocale locale("tr_TR.UTF-8");
  korvan::CIniFileW file;
  file.AddSection(L"I");
  file.AddSection(L"i");
  EXPECT_EQ(file.GetSections().size(), 2u);
  file.AddSection(L"\u0130");  // I with a dot, which is the capital of i
  EXPECT_EQ(file.GetSections().size(), 2u);
}

TYPED_TEST(IniDocument, ADocumentFreesAllItOwns) {
  const long live = LiveBlocks();
  {
    typename TypeParam::File file;
    for (const auto section : {"one"_t, "two"_t, "three"_t}) {
      file.SetKeyValue(section, "a key with a name too long to be inline"_t,
                       "a value with a text too long to be inline"_t);
      file.SetKeyValue(section, "k"_t, "v"_t);
    }
    EXPECT_GT(LiveBlocks(), live);
  }
  EXPECT_EQ(LiveBlocks(), live);
}

TYPED_TEST(IniDocument, ASectionFreesItsKeysAndAKeyItsTexts) {
  typename TypeParam::File file;
  const long live = LiveBlocks();
  {
    typename TypeParam::Section section(&file, "by hand"_t);
    section.SetKeyValue("k"_t, "v"_t);
    typename TypeParam::Key key(&section,
                                "a key with a name too long to be inline"_t);
  }
  EXPECT_EQ(LiveBlocks(), live);
}

TYPED_TEST(IniDocument, AnEntryTakesTwoBlocksAndOneForEachLongText) {
  typename TypeParam::File file;
  auto* const section = file.AddSection("Main"_t);
  const long live = LiveBlocks();
  section->SetKeyValue("k"_t, "v"_t);
  EXPECT_EQ(LiveBlocks() - live, 2);
  section->SetKeyValue("a key with a name too long to be inline"_t,
                       "a value with a text too long to be inline"_t);
  EXPECT_EQ(LiveBlocks() - live, 2 + 5);
}

}  // namespace
