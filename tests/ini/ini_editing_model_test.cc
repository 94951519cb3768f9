// Random sequences of operations, compared with the same done the plain way.
#include <korvan/ini_file.h>
#include <korvan/text.h>
#include <rapidcheck.h>

#include <iterator>
#include <string_view>
#include <vector>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/locales.h"

namespace korvan::test {
namespace {

// Few names, so that they meet; each also in another case, with blanks around
// it, with a NUL in it.
constexpr std::string_view kNames[] = {
    "",       "a",     "A",
    " a\t",   "b",     "B ",
    "c",      "Alpha", "ALPHA",
    "alpHa ", "[k",    std::string_view("a\0x", 3),
    "a=b",    "\n",    "Z",
    "z",      "_",     "a name that is too long to be kept inline"};

enum class Operation {
  kAddSection,
  kAddKey,
  kSetValue,
  kSetValueInSection,
  kRemoveSectionByName,
  kRemoveSectionByPointer,
  kRemoveKeyByName,
  kRemoveKeyByPointer,
  kRenameSection,
  kRenameKey,
};

struct Step {
  Operation operation;
  std::string_view section;
  std::string_view key;
  std::string_view text;
};

rc::Gen<Step> AnyStep() {
  // Values are set and names changed more often than the rest, so that there is
  // something to remove.
  const auto operation = rc::gen::weightedElement<Operation>(
      {{1, Operation::kAddSection},
       {1, Operation::kAddKey},
       {3, Operation::kSetValue},
       {1, Operation::kSetValueInSection},
       {1, Operation::kRemoveSectionByName},
       {1, Operation::kRemoveSectionByPointer},
       {1, Operation::kRemoveKeyByName},
       {1, Operation::kRemoveKeyByPointer},
       {2, Operation::kRenameSection},
       {2, Operation::kRenameKey}});
  const auto name = rc::gen::elementOf(
      std::vector<std::string_view>(std::begin(kNames), std::end(kNames)));
  return rc::gen::construct<Step>(operation, name, name, name);
}

// Does one step to both, and compares what it returns.
void Do(const Step& step, File& file, PlainFile& plain) {
  const String section = Text(step.section);
  const String key = Text(step.key);
  const String text = Text(step.text);
  Section* const found = file.GetSection(section);
  RC_ASSERT((found != nullptr) == plain.HasSection(section));
  const String* const plain_value = plain.Value(section, key);
  RC_ASSERT(file.GetKeyValue(section, key) ==
            (plain_value == nullptr ? String() : *plain_value));
  switch (step.operation) {
    case Operation::kAddSection:
      file.AddSection(section);
      plain.AddSection(section);
      break;
    case Operation::kAddKey:
      file.AddSection(section)->AddKey(key);
      plain.AddKey(section, key);
      break;
    case Operation::kSetValue:
      file.SetKeyValue(section, key, text);
      plain.Set(section, key, text);
      break;
    case Operation::kSetValueInSection:
      if (found != nullptr) {
        found->SetKeyValue(key, text);
        plain.Set(section, key, text);
      }
      break;
    case Operation::kRemoveSectionByName:
      file.RemoveSection(section);
      plain.RemoveSection(section);
      break;
    case Operation::kRemoveSectionByPointer:
      file.RemoveSection(found);
      plain.RemoveSection(section);
      break;
    case Operation::kRemoveKeyByName:
      if (found != nullptr) {
        found->RemoveKey(key);
      }
      plain.RemoveKey(section, key);
      break;
    case Operation::kRemoveKeyByPointer:
      if (found != nullptr) {
        found->RemoveKey(found->GetKey(key));
      }
      plain.RemoveKey(section, key);
      break;
    case Operation::kRenameSection:
      RC_ASSERT(file.RenameSection(section, text) ==
                plain.RenameSection(section, text));
      break;
    case Operation::kRenameKey:
      RC_ASSERT(file.RenameKey(section, key, text) ==
                plain.RenameKey(section, key, text));
      break;
  }
}

TEST(IniEditingModel, AnySequenceOfOperationsDoesWhatThePlainWayDoes) {
  const bool holds = rc::check([] {
    File file;
    PlainFile plain;
    for (const Step& step : *rc::gen::container<std::vector<Step>>(AnyStep())) {
      Do(step, file, plain);
      RC_ASSERT(ContentOf(file) == ContentOf(plain));
    }
  });
  EXPECT_TRUE(holds);
}

TEST(IniEditingModel, EveryOperationTrimsNamesAsTrimDoes) {
  const bool holds = rc::check([] {
    const String name = Text(*rc::gen::container<std::string>(
        rc::gen::element(' ', '\t', '\0', '\n', '\r', '\v', 'a', 'b')));
    String trimmed = name;
    korvan::Trim(trimmed, " \t"_t);
    File file;
    Section* const section = file.AddSection(name);
    RC_ASSERT(section->GetSectionName() == trimmed);
    RC_ASSERT(file.GetSection(name) == section);
    Key* const key = section->AddKey("a name that none of these is"_t);
    RC_ASSERT(key->SetKeyName(name));
    RC_ASSERT(key->GetKeyName() == trimmed);
    RC_ASSERT(section->GetKey(name) == key);
    RC_ASSERT(section->AddKey(name) == key);
    section->SetKeyValue(name, "v"_t);
    RC_ASSERT(section->GetKeyValue(name) == "v"_t);
    file.SetKeyValue(name, name, "w"_t);
    RC_ASSERT(file.GetKeyValue(name, name) == "w"_t);
    RC_ASSERT(key->GetValue() == "w"_t);
    RC_ASSERT(file.RenameKey(name, name, "another"_t));
    RC_ASSERT(file.RenameKey(name, "another"_t, name));
    RC_ASSERT(key->GetKeyName() == trimmed);
    RC_ASSERT(file.RenameSection(name, "another"_t));
    RC_ASSERT(file.RenameSection("another"_t, name));
    RC_ASSERT(section->GetSectionName() == trimmed);
    RC_ASSERT(section->SetSectionName("another"_t));
    RC_ASSERT(section->SetSectionName(name));
    RC_ASSERT(section->GetSectionName() == trimmed);
    RC_ASSERT(file.GetSections().size() == 1);
    RC_ASSERT(section->GetKeys().size() == 1);
    section->RemoveKey(name);
    RC_ASSERT(section->GetKeys().empty());
    file.RemoveSection(name);
    RC_ASSERT(file.GetSections().empty());
  });
  EXPECT_TRUE(holds);
}

TEST(IniEditingModel, SectionsAddedInATurkishLocaleAreThoseOfThePlainWay) {
  const CLocale locale("tr_TR.UTF-8");
  const bool holds = rc::check([] {
    File file;
    PlainFile plain;
    const auto names = *rc::gen::container<std::vector<std::string>>(
        rc::gen::container<std::string>(
            rc::gen::element('i', 'I', 's', 'S', ' ')));
    for (const std::string& name : names) {
      file.AddSection(Text(name));
      plain.AddSection(Text(name));
    }
    RC_ASSERT(ContentOf(file) == ContentOf(plain));
  });
  EXPECT_TRUE(holds);
}

}  // namespace
}  // namespace korvan::test
