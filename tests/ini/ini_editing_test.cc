// Finding, adding, renaming and removing, and values by name.
#include <korvan/ini_file.h>

#include <climits>
#include <cstdio>

#include "ini/ini_twins.h"
#include "support/failing_new.h"

namespace {

using korvan::test::LiveBlocks;

template <class Twin>
class IniEditing : public testing::Test {
 protected:
  using File = typename Twin::File;
  using Section = typename Twin::Section;
  using Key = typename Twin::Key;

  std::string Content() const { return ContentOf(file_); }

  File file_;
};
TYPED_TEST_SUITE(IniEditing, Twins, TwinNames);

TYPED_TEST(IniEditing, AddSectionTrimsTheNameAndFindsItInAnyCase) {
  auto* const section = this->file_.AddSection("  Main\t"_t);
  ASSERT_NE(section, nullptr);
  EXPECT_EQ(this->file_.AddSection("MAIN"_t), section);
  EXPECT_EQ(this->file_.AddSection("\tmain "_t), section);
  EXPECT_EQ(this->Content(), "Main{}");
}

TYPED_TEST(IniEditing, AddKeyTrimsTheNameAndFindsItInAnyCase) {
  auto* const section = this->file_.AddSection("Main"_t);
  auto* const key = section->AddKey(" Key\t"_t);
  ASSERT_NE(key, nullptr);
  key->SetValue("v"_t);
  EXPECT_EQ(section->AddKey("KEY"_t), key);
  EXPECT_EQ(this->Content(), "Main{Key=v}");
}

TYPED_TEST(IniEditing, NamesAreTrimmedOfSpacesAndTabsOnly) {
  auto* const section = this->file_.AddSection(" \r\n\v[ a ]\f \t"_t);
  section->AddKey("\t\n=; k \r"_t);
  EXPECT_EQ(this->Content(), "\\d;\\a;\\b;[ a ]\\c;{\\a;=; k \\d;=}");
}

TYPED_TEST(IniEditing, ABlankNameIsTheEmptyName) {
  auto* const section = this->file_.AddSection(""_t);
  EXPECT_EQ(this->file_.AddSection(" \t "_t), section);
  EXPECT_EQ(section->AddKey("\t"_t), section->AddKey(""_t));
  EXPECT_EQ(this->Content(), "{=}");
}

TYPED_TEST(IniEditing, AddFindsNamesInWhateverOrderTheyCome) {
  for (const auto name :
       {"m"_t, "q"_t, "a"_t, "p"_t, "Q"_t, "z"_t, "A"_t, "b"_t, "M"_t}) {
    this->file_.AddSection(name);
  }
  EXPECT_EQ(this->Content(), "a{} b{} m{} p{} q{} z{}");
}

TYPED_TEST(IniEditing, TheArgumentIsTheCallsOwnCopy) {
  const std::basic_string<typename TypeParam::Char> name = " a "_t;
  auto* const section = this->file_.AddSection(name);
  section->AddKey(name);
  this->file_.GetSection(name);
  section->SetSectionName(name);
  this->file_.RemoveSection(name);
  EXPECT_EQ(Shown(name), " a ");
}

TYPED_TEST(IniEditing, GetFindsTrimmedNamesAndCreatesNothing) {
  auto* const section = this->file_.AddSection("Main"_t);
  auto* const key = section->AddKey("Key"_t);
  EXPECT_EQ(this->file_.GetSection(" main "_t), section);
  EXPECT_EQ(this->file_.GetSection("Mai"_t), nullptr);
  EXPECT_EQ(this->file_.GetSection("Main\r"_t), nullptr);
  EXPECT_EQ(this->file_.GetSection(""_t), nullptr);
  EXPECT_EQ(section->GetKey("\tKEY "_t), key);
  EXPECT_EQ(section->GetKey("Keys"_t), nullptr);
  EXPECT_EQ(this->Content(), "Main{Key=}");
}

TYPED_TEST(IniEditing, RemoveByNameTrimsAndIgnoresCase) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  this->file_.SetKeyValue("Main"_t, "l"_t, "w"_t);
  this->file_.AddSection("Other"_t);
  this->file_.GetSection("Main"_t)->RemoveKey(" K\t"_t);
  EXPECT_EQ(this->Content(), "Main{l=w} Other{}");
  this->file_.RemoveSection("\tMAIN "_t);
  EXPECT_EQ(this->Content(), "Other{}");
}

TYPED_TEST(IniEditing, RemovingAMissingNameDoesNothing) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  this->file_.RemoveSection("Mai"_t);
  this->file_.RemoveSection(""_t);
  this->file_.GetSection("Main"_t)->RemoveKey("k2"_t);
  EXPECT_EQ(this->Content(), "Main{k=v}");
}

TYPED_TEST(IniEditing, RemoveByPointerRemovesTheObject) {
  auto* const section = this->file_.AddSection("Main"_t);
  section->AddKey("l"_t);
  section->RemoveKey(section->AddKey("k"_t));
  EXPECT_EQ(this->Content(), "Main{l=}");
  this->file_.RemoveSection(section);
  EXPECT_EQ(this->Content(), "");
}

TYPED_TEST(IniEditing, RemoveByPointerTrustsTheNameAndNotThePointer) {
  typename TypeParam::File other;
  auto* const stranger = other.AddSection("MAIN"_t);
  stranger->AddKey("k"_t);
  this->file_.AddSection("Main"_t);
  this->file_.AddSection("Rest"_t)->AddKey("K"_t);
  this->file_.GetSection("Rest"_t)->RemoveKey(stranger->GetKey("k"_t));
  EXPECT_EQ(this->Content(), "Main{} Rest{}");
  this->file_.RemoveSection(stranger);
  EXPECT_EQ(this->Content(), "Rest{}");
  this->file_.RemoveSection(stranger);
  EXPECT_EQ(this->Content(), "Rest{}");
  EXPECT_EQ(ContentOf(other), "MAIN{k=}");
}

TYPED_TEST(IniEditing, RemoveByPointerTakesTheStoredNameUntrimmed) {
  typename TypeParam::Section by_hand(nullptr, " Main "_t);
  typename TypeParam::Key key_by_hand(nullptr, " k "_t);
  auto* const section = this->file_.AddSection("Main"_t);
  section->AddKey("k"_t);
  section->RemoveKey(&key_by_hand);
  this->file_.RemoveSection(&by_hand);
  EXPECT_EQ(this->Content(), "Main{k=}");
}

TYPED_TEST(IniEditing, RemoveByPointerDoesNotLookAtItWhereThereIsNothing) {
  typename TypeParam::Section* const no_section = nullptr;
  typename TypeParam::Key* const no_key = nullptr;
  // Addresses that nothing lives at: a look would crash.
  auto* const wild_section = reinterpret_cast<typename TypeParam::Section*>(8);
  auto* const wild_key = reinterpret_cast<typename TypeParam::Key*>(8);
  this->file_.RemoveSection(no_section);
  this->file_.RemoveSection(wild_section);
  auto* const section = this->file_.AddSection("Main"_t);
  section->RemoveKey(no_key);
  section->RemoveKey(wild_key);
  EXPECT_EQ(this->Content(), "Main{}");
}

TYPED_TEST(IniEditing, RemovingNullDoesNothing) {
  this->file_.SetKeyValue("Main"_t, ""_t, "v"_t);
  this->file_.AddSection(""_t);
  this->file_.RemoveSection(static_cast<typename TypeParam::Section*>(nullptr));
  this->file_.GetSection("Main"_t)->RemoveKey(
      static_cast<typename TypeParam::Key*>(nullptr));
  EXPECT_EQ(this->Content(), "{} Main{=v}");
}

TYPED_TEST(IniEditing, RemovingFreesWhatIsRemoved) {
  const long live = LiveBlocks();
  auto* const section = this->file_.AddSection("Main"_t);
  section->SetKeyValue("k"_t, "a value with a text too long to be inline"_t);
  section->SetKeyValue("l"_t, "a value with a text too long to be inline"_t);
  section->RemoveKey("k"_t);
  section->RemoveKey(section->GetKey("l"_t));
  section->SetKeyValue("m"_t, "v"_t);
  this->file_.RemoveSection(section);
  EXPECT_EQ(LiveBlocks(), live);
  this->file_.SetKeyValue("S"_t, "k"_t, "v"_t);
  this->file_.RemoveSection("S"_t);
  EXPECT_EQ(LiveBlocks(), live);
  this->file_.SetKeyValue("S"_t, "k"_t, "v"_t);
  this->file_.SetKeyValue("T"_t, "k"_t, "v"_t);
  this->file_.RemoveAllSections();
  EXPECT_EQ(LiveBlocks(), live);
}

TYPED_TEST(IniEditing, RemoveAllEmptiesALevelAndLeavesItUsable) {
  auto* const section = this->file_.AddSection("Main"_t);
  section->SetKeyValue("k"_t, "v"_t);
  section->SetKeyValue("l"_t, "v"_t);
  section->RemoveAllKeys();
  EXPECT_EQ(this->Content(), "Main{}");
  section->SetKeyValue("k"_t, "w"_t);
  EXPECT_EQ(this->Content(), "Main{k=w}");
  this->file_.RemoveAllSections();
  EXPECT_EQ(this->Content(), "");
  this->file_.AddSection("Main"_t);
  EXPECT_EQ(this->Content(), "Main{}");
}

TYPED_TEST(IniEditing, ARenamedSectionKeepsItsObjectAndKeys) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  this->file_.AddSection("Zeta"_t);
  auto* const section = this->file_.GetSection("Main"_t);
  auto* const key = section->GetKey("k"_t);
  EXPECT_TRUE(section->SetSectionName("\tZulu "_t));
  EXPECT_EQ(this->Content(), "Zeta{} Zulu{k=v}");
  EXPECT_EQ(this->file_.GetSection("zulu"_t), section);
  EXPECT_EQ(section->GetKey("k"_t), key);
  EXPECT_EQ(this->file_.GetSection("Main"_t), nullptr);
}

TYPED_TEST(IniEditing, ARenamedKeyKeepsItsObjectAndValue) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  this->file_.SetKeyValue("Main"_t, "l"_t, "w"_t);
  auto* const key = this->file_.GetSection("Main"_t)->GetKey("k"_t);
  EXPECT_TRUE(key->SetKeyName(" m "_t));
  EXPECT_EQ(this->Content(), "Main{l=w|m=v}");
  EXPECT_EQ(this->file_.GetSection("Main"_t)->GetKey("M"_t), key);
}

TYPED_TEST(IniEditing, ARenameRefusesATakenNameItsOwnIncluded) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  this->file_.SetKeyValue("Main"_t, "l"_t, "w"_t);
  this->file_.AddSection("Other"_t);
  auto* const section = this->file_.GetSection("Main"_t);
  for (const auto taken : {"Main"_t, "MAIN"_t, " main "_t, "OTHER"_t}) {
    EXPECT_FALSE(section->SetSectionName(taken));
    EXPECT_FALSE(this->file_.RenameSection("main"_t, taken));
  }
  for (const auto taken : {"k"_t, "K"_t, "\tk"_t, "L"_t}) {
    EXPECT_FALSE(section->GetKey("k"_t)->SetKeyName(taken));
    EXPECT_FALSE(this->file_.RenameKey("main"_t, "k"_t, taken));
  }
  EXPECT_EQ(this->Content(), "Main{k=v|l=w} Other{}");
}

TYPED_TEST(IniEditing, ARenameTakesAnyOtherName) {
  auto* const section = this->file_.AddSection("Main"_t);
  auto* const key = section->AddKey("k"_t);
  EXPECT_TRUE(section->SetSectionName("a=b"_t));
  EXPECT_TRUE(section->SetSectionName("\n[]\r"_t));
  EXPECT_TRUE(section->SetSectionName(" \t"_t));
  EXPECT_TRUE(key->SetKeyName("#;="_t));
  EXPECT_TRUE(key->SetKeyName("x\0y"_t));
  EXPECT_EQ(this->Content(), "{x\\0;y=}");
  EXPECT_TRUE(key->SetKeyName(""_t));
  EXPECT_EQ(this->Content(), "{=}");
}

TYPED_TEST(IniEditing, ThereAndBackAgainIsARename) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  EXPECT_TRUE(this->file_.RenameSection("Main"_t, "x"_t));
  EXPECT_TRUE(this->file_.RenameSection("x"_t, "MAIN"_t));
  EXPECT_TRUE(this->file_.RenameKey("main"_t, "k"_t, "x"_t));
  EXPECT_TRUE(this->file_.RenameKey("main"_t, "x"_t, "K"_t));
  EXPECT_EQ(this->Content(), "MAIN{K=v}");
}

TYPED_TEST(IniEditing, RenameSectionByNameTrimsAndIgnoresCase) {
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  EXPECT_TRUE(this->file_.RenameSection(" MAIN\t"_t, " Other\t"_t));
  EXPECT_EQ(this->Content(), "Other{k=v}");
}

TYPED_TEST(IniEditing, RenamingAMissingThingFailsAndCreatesNothing) {
  EXPECT_FALSE(this->file_.RenameSection("Missing"_t, "x"_t));
  EXPECT_FALSE(this->file_.RenameKey("Missing"_t, "k"_t, "x"_t));
  this->file_.SetKeyValue("Main"_t, "k"_t, "v"_t);
  EXPECT_FALSE(this->file_.RenameSection("Missing"_t, "x"_t));
  EXPECT_FALSE(this->file_.RenameKey("Missing"_t, "k"_t, "x"_t));
  EXPECT_FALSE(this->file_.RenameKey("Main"_t, "l"_t, "x"_t));
  EXPECT_EQ(this->Content(), "Main{k=v}");
}

TYPED_TEST(IniEditing, RenameKeyByNameTrimsAllThreeNames) {
  this->file_.SetKeyValue("S"_t, "K"_t, "v"_t);
  EXPECT_TRUE(this->file_.RenameKey(" s "_t, "\tk "_t, " K2\t"_t));
  EXPECT_EQ(Shown(this->file_.GetKeyValue("S"_t, "K2"_t)), "v");
  EXPECT_EQ(this->file_.GetSection("S"_t)->GetKey("K"_t), nullptr);
}

TYPED_TEST(IniEditing, AnObjectMadeByHandIsEnteredByARename) {
  auto* const section =
      new typename TypeParam::Section(&this->file_, "by hand"_t);
  EXPECT_TRUE(section->SetSectionName("Main"_t));
  auto* const key = new typename TypeParam::Key(section, "by hand"_t);
  EXPECT_TRUE(key->SetKeyName("k"_t));
  EXPECT_EQ(this->Content(), "Main{k=}");
}

TYPED_TEST(IniEditing, AnObjectMadeByHandPushesNobodyOutOfTheMap) {
  const long live = LiveBlocks();
  auto* const held = this->file_.AddSection("Main"_t);
  auto* const by_hand = new typename TypeParam::Section(&this->file_, "Main"_t);
  EXPECT_TRUE(by_hand->SetSectionName("Other"_t));
  EXPECT_EQ(this->file_.GetSection("Main"_t), held);
  EXPECT_EQ(this->Content(), "Main{} Other{}");
  this->file_.RemoveAllSections();
  EXPECT_EQ(LiveBlocks(), live);
}

TYPED_TEST(IniEditing, AnObjectWithoutAnOwnerIsNotRenamed) {
  typename TypeParam::Section section(nullptr, "s"_t);
  EXPECT_FALSE(section.SetSectionName("t"_t));
  EXPECT_EQ(Shown(section.GetSectionName()), "s");
  typename TypeParam::Key key(nullptr, "k"_t);
  EXPECT_FALSE(key.SetKeyName("l"_t));
  EXPECT_EQ(Shown(key.GetKeyName()), "k");
}

TYPED_TEST(IniEditing, SetKeyValueCreatesWhatIsMissing) {
  this->file_.SetKeyValue(" S "_t, "\tK"_t, " v "_t);
  EXPECT_EQ(this->Content(), "S{K= v }");
  this->file_.GetSection("S"_t)->SetKeyValue(" L "_t, "\tw\t"_t);
  EXPECT_EQ(this->Content(), "S{K= v |L=\\9;w\\9;}");
}

TYPED_TEST(IniEditing, SetKeyValueReplacesTheValueAndKeepsTheNames) {
  this->file_.SetKeyValue("S"_t, "K"_t, "1"_t);
  auto* const key = this->file_.GetSection("S"_t)->GetKey("K"_t);
  this->file_.SetKeyValue("s"_t, "k"_t, "2"_t);
  EXPECT_EQ(this->Content(), "S{K=2}");
  this->file_.GetSection("S"_t)->SetKeyValue("k"_t, ""_t);
  EXPECT_EQ(this->Content(), "S{K=}");
  EXPECT_EQ(this->file_.GetSection("S"_t)->GetKey("K"_t), key);
}

TYPED_TEST(IniEditing, GetKeyValueTrimsNamesAndGivesTheValue) {
  this->file_.SetKeyValue("S"_t, "K"_t, " v "_t);
  EXPECT_EQ(Shown(this->file_.GetKeyValue(" s"_t, "k\t"_t)), " v ");
  EXPECT_EQ(Shown(this->file_.GetSection("S"_t)->GetKeyValue(" k"_t)), " v ");
}

TYPED_TEST(IniEditing, GetKeyValueOfNothingIsEmptyAndCreatesNothing) {
  EXPECT_EQ(Shown(this->file_.GetKeyValue("S"_t, "K"_t)), "");
  this->file_.AddSection("S"_t);
  EXPECT_EQ(Shown(this->file_.GetKeyValue("S"_t, "K"_t)), "");
  EXPECT_EQ(Shown(this->file_.GetSection("S"_t)->GetKeyValue("K"_t)), "");
  EXPECT_EQ(this->Content(), "S{}");
}

TEST(IniNumbers, AreWrittenInPlainDecimalDigitsAllBitsOfThem) {
  korvan::CIniFileA file;
  const struct {
    unsigned long number;
    const char* text;
  } cases[] = {{0, "0"},
               {42, "42"},
               {4294967295, "4294967295"},
               {4294967296, "4294967296"},
               {ULONG_MAX, "18446744073709551615"}};
  for (const auto& written : cases) {
    file.SetKeyValueDword(" S ", "\tk", written.number);
    EXPECT_EQ(ContentOf(file), std::string("S{k=") + written.text + '}');
  }
}

TEST(IniNumbers, AreReadAsTheCLibraryReadsThem) {
  korvan::CIniFileA file;
  const struct {
    const char* text;
    unsigned long number;
  } cases[] = {{"42", 42},          {" 7", 7},
               {"\t\n\v\f\r 7", 7}, {"12abc", 12},
               {"0x10", 0},         {"+5", 5},
               {"-1", 4294967295},  {"-4294967295", 1},
               {"007", 7},          {"4294967295", 4294967295},
               {"4294967296", 0},   {"abc", 4294967295},
               {"", 4294967295},    {" ", 4294967295},
               {"-", 4294967295},   {"- 1", 4294967295}};
  for (const auto& read : cases) {
    file.SetKeyValue("S", "k", read.text);
    EXPECT_EQ(file.GetKeyValueDword(" s ", "K\t"), read.number)
        << '"' << read.text << '"';
  }
}

TEST(IniNumbers, OfAnyLengthAreReadAsTheCLibraryReadsThem) {
  korvan::CIniFileA file;
  for (const char* const sign : {"", "-"}) {
    std::string digits = sign;
    for (int length = 1; length < 40; ++length) {
      digits += static_cast<char>('0' + length % 10);
      unsigned int expected = 0xFFFFFFFF;
      std::sscanf(digits.c_str(), "%u", &expected);
      file.SetKeyValue("S", "k", digits);
      EXPECT_EQ(file.GetKeyValueDword("S", "k"), expected) << digits;
    }
  }
}

TEST(IniNumbers, EndAtANul) {
  korvan::CIniFileA file;
  file.SetKeyValue("S", "k", std::string("1\0002", 3));
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 1u);
  file.SetKeyValue("S", "k", std::string("\0002", 2));
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 4294967295u);
}

TEST(IniNumbers, ThatAreMissingAreTheLargestAndCreateNothing) {
  korvan::CIniFileA file;
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 4294967295u);
  file.AddSection("S");
  EXPECT_EQ(file.GetKeyValueDword("S", "k"), 4294967295u);
  EXPECT_EQ(ContentOf(file), "S{}");
}

// The locale must not change while a document lives. If it does all the same,
// names are lost or found twice, but nothing is destroyed twice.

TEST(IniEditingUnderAnotherLocale, ARenameLeavesOneEntryToAnObject) {
  const long live = LiveBlocks();
  {
    korvan::CIniFileW file;
    korvan::CIniFileW::CIniSectionW* section = nullptr;
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
  const long live = LiveBlocks();
  {
    korvan::CIniFileW file;
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
TEST(IniEditingWithoutAnOrder, NothingIsLostOrDestroyedTwice) {
  const long live = LiveBlocks();
  {
    korvan::CIniFileW file;
    const wchar_t characters[] = {L'a',       static_cast<wchar_t>(0x80000000),
                                  0x60000000, static_cast<wchar_t>(0xFFFFFFFF),
                                  0x7FFFFFFF, static_cast<wchar_t>(0xC0000000),
                                  L'Z',       1};
    unsigned int random = 1;
    const auto next = [&random, &characters] {
      random = random * 1103515245 + 12345;
      return characters[(random >> 16) % 8];
    };
    for (int i = 0; i < 3000; ++i) {
      auto* const section = file.AddSection({next(), next()});
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

}  // namespace
