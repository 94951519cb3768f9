// Random sequences of operations, beside the same done the plain way.
#include <korvan/ini_file.h>
#include <korvan/text.h>
#include <rapidcheck.h>

#include <tuple>
#include <vector>

#include "ini/ini_twins.h"

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

struct Step {
  int operation;
  std::string_view section;
  std::string_view key;
  std::string_view text;
};

rc::Gen<Step> AnyStep() {
  const auto name = rc::gen::elementOf(
      std::vector<std::string_view>(std::begin(kNames), std::end(kNames)));
  return rc::gen::map(
      rc::gen::tuple(rc::gen::inRange(0, 14), name, name, name),
      [](const std::tuple<int, std::string_view, std::string_view,
                          std::string_view>& parts) {
        return Step{std::get<0>(parts), std::get<1>(parts), std::get<2>(parts),
                    std::get<3>(parts)};
      });
}

// Does one step to both, and compares what it returns.
template <class Twin>
void Do(const Step& step, typename Twin::File& file,
        PlainIni<typename Twin::Char>& plain) {
  using Char = typename Twin::Char;
  const auto section = Text<Char>(step.section);
  const auto key = Text<Char>(step.key);
  const auto text = Text<Char>(step.text);
  auto* const found = file.GetSection(section);
  RC_ASSERT((found != nullptr) == plain.HasSection(section));
  const auto* const plain_value = plain.Value(section, key);
  RC_ASSERT(file.GetKeyValue(section, key) ==
            (plain_value == nullptr ? Text<Char>("") : *plain_value));
  switch (step.operation) {
    case 0:
      file.AddSection(section);
      return plain.AddSection(section);
    case 1:
    case 2:
    case 3:
      file.SetKeyValue(section, key, text);
      return plain.Set(section, key, text);
    case 4:
      file.AddSection(section)->AddKey(key);
      return plain.AddKey(section, key);
    case 5:
      file.RemoveSection(section);
      return plain.RemoveSection(section);
    case 6:
      if (found != nullptr) {
        found->RemoveKey(key);
      }
      return plain.RemoveKey(section, key);
    case 7:
      file.RemoveSection(found);
      return plain.RemoveSection(section);
    case 8:
      if (found != nullptr) {
        found->RemoveKey(found->GetKey(key));
      }
      return plain.RemoveKey(section, key);
    case 9:
    case 10:
      RC_ASSERT(file.RenameSection(section, text) ==
                plain.RenameSection(section, text));
      return;
    case 11:
    case 12:
      RC_ASSERT(file.RenameKey(section, key, text) ==
                plain.RenameKey(section, key, text));
      return;
    default:
      if (found != nullptr) {
        found->SetKeyValue(key, text);
      }
      if (found != nullptr) {
        plain.Set(section, key, text);
      }
  }
}

template <class Twin>
class IniEditingModel : public testing::Test {};
TYPED_TEST_SUITE(IniEditingModel, Twins, TwinNames);

TYPED_TEST(IniEditingModel, AnySequenceDoesWhatThePlainWayDoes) {
  const bool holds = rc::check([] {
    typename TypeParam::File file;
    PlainIni<typename TypeParam::Char> plain;
    for (const Step& step : *rc::gen::container<std::vector<Step>>(AnyStep())) {
      Do<TypeParam>(step, file, plain);
      RC_ASSERT(ContentOf(file) == ContentOf(plain));
    }
  });
  EXPECT_TRUE(holds);
}

TYPED_TEST(IniEditingModel, NamesLoseWhatTrimTakesAtEveryDoor) {
  using String = std::basic_string<typename TypeParam::Char>;
  const bool holds = rc::check([] {
    const String name = Ascii(*rc::gen::container<std::string>(
        rc::gen::element(' ', '\t', '\0', '\n', '\r', '\v', 'a', 'b')));
    String trimmed = name;
    korvan::Trim(trimmed, " \t"_t);
    typename TypeParam::File file;
    auto* const section = file.AddSection(name);
    RC_ASSERT(section->GetSectionName() == trimmed);
    RC_ASSERT(file.GetSection(name) == section);
    auto* const key = section->AddKey("a name that none of these is"_t);
    RC_ASSERT(key->SetKeyName(name));
    RC_ASSERT(key->GetKeyName() == trimmed);
    RC_ASSERT(section->GetKey(name) == key);
    section->RemoveKey(name);
    RC_ASSERT(section->GetKeys().empty());
    file.RemoveSection(name);
    RC_ASSERT(file.GetSections().empty());
  });
  EXPECT_TRUE(holds);
}

TYPED_TEST(IniEditingModel, ASequenceInTurkishTooDoes) {
  const CLocale locale("tr_TR.UTF-8");
  const bool holds = rc::check([] {
    typename TypeParam::File file;
    PlainIni<typename TypeParam::Char> plain;
    const auto names = *rc::gen::container<std::vector<std::string>>(
        rc::gen::container<std::string>(
            rc::gen::element('i', 'I', 's', 'S', ' ')));
    for (const std::string& name : names) {
      file.AddSection(Ascii(name));
      plain.AddSection(Ascii(name));
    }
    RC_ASSERT(ContentOf(file) == ContentOf(plain));
  });
  EXPECT_TRUE(holds);
}

}  // namespace
