// Finding, adding, renaming and removing, and values by name.
#include <korvan/ini_file.h>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/failing_new.h"

namespace korvan::test {
namespace {

struct IniEditing : testing::Test {
  std::string Content() const { return ContentOf(file); }

  File file;
};

TEST_F(IniEditing, AddSectionTrimsTheNameAndFindsItInAnyCase) {
  Section* const section = file.AddSection("  Base\t"_t);
  ASSERT_NE(section, nullptr);
  EXPECT_EQ(file.AddSection("BASE"_t), section);
  EXPECT_EQ(file.AddSection("\tbase "_t), section);
  EXPECT_EQ(Content(), "Base{}");
}

TEST_F(IniEditing, AddKeyTrimsTheNameAndFindsItInAnyCase) {
  Section* const section = file.AddSection("Main"_t);
  Key* const key = section->AddKey(" Key\t"_t);
  ASSERT_NE(key, nullptr);
  key->SetValue("v"_t);
  EXPECT_EQ(section->AddKey("KEY"_t), key);
  EXPECT_EQ(Content(), "Main{Key=v}");
}

TEST_F(IniEditing, NamesAreTrimmedOfSpacesAndTabsOnly) {
  Section* const section = file.AddSection(" \r\n\v[ a ]\f \t"_t);
  section->AddKey("\t\n=; k \r"_t);
  EXPECT_EQ(Content(), "\\d;\\a;\\b;[ a ]\\c;{\\a;=; k \\d;=}");
}

TEST_F(IniEditing, ABlankNameIsTheEmptyName) {
  Section* const section = file.AddSection(""_t);
  EXPECT_EQ(file.AddSection(" \t "_t), section);
  EXPECT_EQ(section->AddKey("\t"_t), section->AddKey(""_t));
  EXPECT_EQ(Content(), "{=}");
}

TEST_F(IniEditing, AddFindsNamesInWhateverOrderTheyCome) {
  for (const String& name :
       {"m"_t, "q"_t, "a"_t, "p"_t, "Q"_t, "z"_t, "A"_t, "b"_t, "M"_t}) {
    file.AddSection(name);
  }
  EXPECT_EQ(Content(), "a{} b{} m{} p{} q{} z{}");
}

TEST_F(IniEditing, TheArgumentIsTheCallsOwnCopy) {
  String name = "a text that is too long to be inline"_t;
  Section* const section = file.AddSection(name);
  Key* const key = section->AddKey(name);
  key->SetValue(name);
  const std::string content = Content();
  name.assign(name.size(), Char{'x'});
  EXPECT_EQ(Content(), content);
  name = " a name and a value of the same length "_t;
  file.SetKeyValue(name, name, name);
  EXPECT_TRUE(section->SetSectionName("another"_t));
  EXPECT_TRUE(section->SetSectionName(name + "b"_t));
  EXPECT_TRUE(key->SetKeyName(name + "b"_t));
  EXPECT_EQ(Shown(name), " a name and a value of the same length ");
}

TEST_F(IniEditing, GetFindsTrimmedNamesAndCreatesNothing) {
  Section* const section = file.AddSection("Base"_t);
  Key* const key = section->AddKey("Key"_t);
  EXPECT_EQ(file.GetSection(" base "_t), section);
  EXPECT_EQ(file.GetSection("Mai"_t), nullptr);
  EXPECT_EQ(file.GetSection("Base\r"_t), nullptr);
  EXPECT_EQ(file.GetSection(""_t), nullptr);
  EXPECT_EQ(section->GetKey("\tKEY "_t), key);
  EXPECT_EQ(section->GetKey("Keys"_t), nullptr);
  EXPECT_EQ(Content(), "Base{Key=}");
}

TEST_F(IniEditing, RemoveByNameTrimsAndIgnoresCase) {
  file.SetKeyValue("Base"_t, "k"_t, "v"_t);
  file.SetKeyValue("Base"_t, "l"_t, "w"_t);
  file.AddSection("Other"_t);
  file.GetSection("Base"_t)->RemoveKey(" K\t"_t);
  EXPECT_EQ(Content(), "Base{l=w} Other{}");
  file.RemoveSection("\tBASE "_t);
  EXPECT_EQ(Content(), "Other{}");
}

TEST_F(IniEditing, RemovingAMissingNameDoesNothing) {
  file.SetKeyValue("Main"_t, "k"_t, "v"_t);
  file.RemoveSection("Mai"_t);
  file.RemoveSection(""_t);
  file.GetSection("Main"_t)->RemoveKey("k2"_t);
  EXPECT_EQ(Content(), "Main{k=v}");
}

TEST_F(IniEditing, RemoveByPointerRemovesTheObject) {
  Section* const section = file.AddSection("Main"_t);
  section->AddKey("l"_t);
  section->RemoveKey(section->AddKey("k"_t));
  EXPECT_EQ(Content(), "Main{l=}");
  file.RemoveSection(section);
  EXPECT_EQ(Content(), "");
}

TEST_F(IniEditing, RemoveByPointerTrustsTheNameAndNotThePointer) {
  File other;
  Section* const stranger = other.AddSection("BASE"_t);
  stranger->AddKey("k"_t);
  file.AddSection("Base"_t);
  file.AddSection("Rest"_t)->AddKey("K"_t);
  file.GetSection("Rest"_t)->RemoveKey(stranger->GetKey("k"_t));
  EXPECT_EQ(Content(), "Base{} Rest{}");
  file.RemoveSection(stranger);
  EXPECT_EQ(Content(), "Rest{}");
  file.RemoveSection(stranger);
  EXPECT_EQ(Content(), "Rest{}");
  EXPECT_EQ(ContentOf(other), "BASE{k=}");
}

TEST_F(IniEditing, RemoveByPointerTakesTheStoredNameUntrimmed) {
  Section by_hand(nullptr, " Main "_t);
  Key key_by_hand(nullptr, " k "_t);
  Section* const section = file.AddSection("Main"_t);
  section->AddKey("k"_t);
  section->RemoveKey(&key_by_hand);
  file.RemoveSection(&by_hand);
  EXPECT_EQ(Content(), "Main{k=}");
}

TEST_F(IniEditing, RemoveByPointerDoesNotLookAtItWhereThereIsNothing) {
  Section* const no_section = nullptr;
  Key* const no_key = nullptr;
  // Addresses that nothing lives at: a look would crash.
  Section* const wild_section = reinterpret_cast<Section*>(8);
  Key* const wild_key = reinterpret_cast<Key*>(8);
  file.RemoveSection(no_section);
  file.RemoveSection(wild_section);
  Section* const section = file.AddSection("Main"_t);
  section->RemoveKey(no_key);
  section->RemoveKey(wild_key);
  EXPECT_EQ(Content(), "Main{}");
}

TEST_F(IniEditing, RemovingNullDoesNothing) {
  file.SetKeyValue("Main"_t, ""_t, "v"_t);
  file.AddSection(""_t);
  file.RemoveSection(static_cast<Section*>(nullptr));
  file.GetSection("Main"_t)->RemoveKey(static_cast<Key*>(nullptr));
  EXPECT_EQ(Content(), "{} Main{=v}");
}

TEST_F(IniEditing, RemovingFreesWhatIsRemoved) {
  const long live = LiveBlocks();
  Section* const section = file.AddSection("Main"_t);
  section->SetKeyValue("k"_t, "a value with a text too long to be inline"_t);
  section->SetKeyValue("l"_t, "a value with a text too long to be inline"_t);
  section->RemoveKey("k"_t);
  section->RemoveKey(section->GetKey("l"_t));
  section->SetKeyValue("m"_t, "v"_t);
  file.RemoveSection(section);
  EXPECT_EQ(LiveBlocks(), live);
  file.SetKeyValue("S"_t, "k"_t, "v"_t);
  file.RemoveSection("S"_t);
  EXPECT_EQ(LiveBlocks(), live);
  file.SetKeyValue("S"_t, "k"_t, "v"_t);
  file.SetKeyValue("T"_t, "k"_t, "v"_t);
  file.RemoveAllSections();
  EXPECT_EQ(LiveBlocks(), live);
}

TEST_F(IniEditing, RemoveAllEmptiesALevelAndLeavesItUsable) {
  Section* const section = file.AddSection("Main"_t);
  section->SetKeyValue("k"_t, "v"_t);
  section->SetKeyValue("l"_t, "v"_t);
  section->RemoveAllKeys();
  EXPECT_EQ(Content(), "Main{}");
  section->SetKeyValue("k"_t, "w"_t);
  EXPECT_EQ(Content(), "Main{k=w}");
  file.RemoveAllSections();
  EXPECT_EQ(Content(), "");
  file.AddSection("Main"_t);
  EXPECT_EQ(Content(), "Main{}");
}

TEST_F(IniEditing, ARenamedSectionKeepsItsObjectAndKeys) {
  file.SetKeyValue("Main"_t, "k"_t, "v"_t);
  file.AddSection("Zeta"_t);
  Section* const section = file.GetSection("Main"_t);
  Key* const key = section->GetKey("k"_t);
  EXPECT_TRUE(section->SetSectionName("\tZulu "_t));
  EXPECT_EQ(Content(), "Zeta{} Zulu{k=v}");
  EXPECT_EQ(file.GetSection("zulu"_t), section);
  EXPECT_EQ(section->GetKey("k"_t), key);
  EXPECT_EQ(file.GetSection("Main"_t), nullptr);
}

TEST_F(IniEditing, ARenamedKeyKeepsItsObjectAndValue) {
  file.SetKeyValue("Main"_t, "k"_t, "v"_t);
  file.SetKeyValue("Main"_t, "l"_t, "w"_t);
  Key* const key = file.GetSection("Main"_t)->GetKey("k"_t);
  EXPECT_TRUE(key->SetKeyName(" m "_t));
  EXPECT_EQ(Content(), "Main{l=w|m=v}");
  EXPECT_EQ(file.GetSection("Main"_t)->GetKey("M"_t), key);
}

TEST_F(IniEditing, ARenameRefusesATakenNameItsOwnIncluded) {
  file.SetKeyValue("Base"_t, "k"_t, "v"_t);
  file.SetKeyValue("Base"_t, "l"_t, "w"_t);
  file.AddSection("Other"_t);
  Section* const section = file.GetSection("Base"_t);
  for (const String& taken : {"Base"_t, "BASE"_t, " base "_t, "OTHER"_t}) {
    EXPECT_FALSE(section->SetSectionName(taken));
    EXPECT_FALSE(file.RenameSection("base"_t, taken));
  }
  for (const String& taken : {"k"_t, "K"_t, "\tk"_t, "L"_t}) {
    EXPECT_FALSE(section->GetKey("k"_t)->SetKeyName(taken));
    EXPECT_FALSE(file.RenameKey("base"_t, "k"_t, taken));
  }
  EXPECT_EQ(Content(), "Base{k=v|l=w} Other{}");
}

TEST_F(IniEditing, ARenameTakesAnyOtherName) {
  Section* const section = file.AddSection("Main"_t);
  Key* const key = section->AddKey("k"_t);
  EXPECT_TRUE(section->SetSectionName("a=b"_t));
  EXPECT_TRUE(section->SetSectionName("\n[]\r"_t));
  EXPECT_TRUE(section->SetSectionName(" \t"_t));
  EXPECT_TRUE(key->SetKeyName("#;="_t));
  EXPECT_TRUE(key->SetKeyName("x\0y"_t));
  EXPECT_EQ(Content(), "{x\\0;y=}");
  EXPECT_TRUE(key->SetKeyName(""_t));
  EXPECT_EQ(Content(), "{=}");
}

TEST_F(IniEditing, ANameMayBeChangedAndChangedBack) {
  file.SetKeyValue("Base"_t, "k"_t, "v"_t);
  EXPECT_TRUE(file.RenameSection("Base"_t, "x"_t));
  EXPECT_TRUE(file.RenameSection("x"_t, "BASE"_t));
  EXPECT_TRUE(file.RenameKey("base"_t, "k"_t, "x"_t));
  EXPECT_TRUE(file.RenameKey("base"_t, "x"_t, "K"_t));
  EXPECT_EQ(Content(), "BASE{K=v}");
}

TEST_F(IniEditing, RenameSectionByNameTrimsAndIgnoresCase) {
  file.SetKeyValue("Base"_t, "k"_t, "v"_t);
  EXPECT_TRUE(file.RenameSection(" BASE\t"_t, " Other\t"_t));
  EXPECT_EQ(Content(), "Other{k=v}");
}

TEST_F(IniEditing, RenamingAMissingThingFailsAndCreatesNothing) {
  EXPECT_FALSE(file.RenameSection("Missing"_t, "x"_t));
  EXPECT_FALSE(file.RenameKey("Missing"_t, "k"_t, "x"_t));
  file.SetKeyValue("Main"_t, "k"_t, "v"_t);
  EXPECT_FALSE(file.RenameSection("Missing"_t, "x"_t));
  EXPECT_FALSE(file.RenameKey("Missing"_t, "k"_t, "x"_t));
  EXPECT_FALSE(file.RenameKey("Main"_t, "l"_t, "x"_t));
  EXPECT_EQ(Content(), "Main{k=v}");
}

TEST_F(IniEditing, RenameKeyByNameTrimsAllThreeNames) {
  file.SetKeyValue("S"_t, "K"_t, "v"_t);
  EXPECT_TRUE(file.RenameKey(" s "_t, "\tk "_t, " K2\t"_t));
  EXPECT_EQ(Shown(file.GetKeyValue("S"_t, "K2"_t)), "v");
  EXPECT_EQ(file.GetSection("S"_t)->GetKey("K"_t), nullptr);
}

TEST_F(IniEditing, AnObjectMadeByHandIsEnteredByARename) {
  Section* const section = new Section(&file, "by hand"_t);
  EXPECT_TRUE(section->SetSectionName("Main"_t));
  Key* const key = new Key(section, "by hand"_t);
  EXPECT_TRUE(key->SetKeyName("k"_t));
  EXPECT_EQ(Content(), "Main{k=}");
}

TEST_F(IniEditing, AnObjectMadeByHandPushesNobodyOutOfTheMap) {
  const long live = LiveBlocks();
  Section* const held = file.AddSection("Main"_t);
  Key* const held_key = held->AddKey("k"_t);
  EXPECT_TRUE((new Section(&file, "Main"_t))->SetSectionName("Other"_t));
  EXPECT_TRUE((new Key(held, "k"_t))->SetKeyName("l"_t));
  EXPECT_EQ(file.GetSection("Main"_t), held);
  EXPECT_EQ(held->GetKey("k"_t), held_key);
  EXPECT_EQ(Content(), "Main{k=|l=} Other{}");
  file.RemoveAllSections();
  EXPECT_EQ(LiveBlocks(), live);
}

TEST_F(IniEditing, AnObjectWithoutAnOwnerIsNotRenamed) {
  Section section(nullptr, "s"_t);
  EXPECT_FALSE(section.SetSectionName("t"_t));
  EXPECT_EQ(Shown(section.GetSectionName()), "s");
  Key key(nullptr, "k"_t);
  EXPECT_FALSE(key.SetKeyName("l"_t));
  EXPECT_EQ(Shown(key.GetKeyName()), "k");
}

TEST_F(IniEditing, SetKeyValueCreatesWhatIsMissing) {
  file.SetKeyValue(" S "_t, "\tK"_t, " v "_t);
  EXPECT_EQ(Content(), "S{K= v }");
  file.GetSection("S"_t)->SetKeyValue(" L "_t, "\tw\t"_t);
  EXPECT_EQ(Content(), "S{K= v |L=\\9;w\\9;}");
}

TEST_F(IniEditing, SetKeyValueReplacesTheValueAndKeepsTheNames) {
  file.SetKeyValue("S"_t, "K"_t, "1"_t);
  Key* const key = file.GetSection("S"_t)->GetKey("K"_t);
  file.SetKeyValue("s"_t, "k"_t, "2"_t);
  EXPECT_EQ(Content(), "S{K=2}");
  file.GetSection("S"_t)->SetKeyValue("k"_t, ""_t);
  EXPECT_EQ(Content(), "S{K=}");
  EXPECT_EQ(file.GetSection("S"_t)->GetKey("K"_t), key);
}

TEST_F(IniEditing, GetKeyValueTrimsNamesAndGivesTheValue) {
  file.SetKeyValue("S"_t, "K"_t, " v "_t);
  EXPECT_EQ(Shown(file.GetKeyValue(" s"_t, "k\t"_t)), " v ");
  EXPECT_EQ(Shown(file.GetSection("S"_t)->GetKeyValue(" k"_t)), " v ");
}

TEST_F(IniEditing, GetKeyValueOfNothingIsEmptyAndCreatesNothing) {
  EXPECT_EQ(Shown(file.GetKeyValue("S"_t, "K"_t)), "");
  file.AddSection("S"_t);
  EXPECT_EQ(Shown(file.GetKeyValue("S"_t, "K"_t)), "");
  EXPECT_EQ(Shown(file.GetSection("S"_t)->GetKeyValue("K"_t)), "");
  EXPECT_EQ(Content(), "S{}");
}

}  // namespace
}  // namespace korvan::test
