// The locale changes between any two operations. Documents are not made for it:
// names may be lost or found twice. But nothing is destroyed twice, leaks or is
// read where it is not, and what holds no document answers as the locale of the
// moment says.
#include <gtest/gtest.h>
#include <korvan/korvan.h>

#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <locale>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>

#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/campaign.h"
#include "support/failing_new.h"
#include "support/folder.h"
#include "support/locales.h"

namespace korvan::test {
namespace {

class Random {
 public:
  explicit Random(std::size_t seed)
      : engine_(static_cast<std::mt19937::result_type>(seed)) {}

  std::size_t Below(std::size_t end) { return engine_() % end; }

  template <class List>
  auto OneOf(const List& list) {
    return list[Below(std::size(list))];
  }

 private:
  std::mt19937 engine_;
};

// Sets the C library's locale, the C++ library's, or both, one after the other.
void SwitchNow(std::size_t way, const char* first, const char* second) {
  if (way != 1) {
    ASSERT_NE(std::setlocale(LC_ALL, first), nullptr) << first;
  }
  if (way != 0) {
    std::locale::global(std::locale(second));
  }
  if (way == 3) {
    ASSERT_NE(std::setlocale(LC_ALL, first), nullptr) << first;
  }
}

// The same, every other time by another thread: while that one runs, no other
// does anything.
void Switch(Random& random) {
  const std::size_t way = random.Below(4);
  const char* const first = random.OneOf(kTestLocales);
  const char* const second = random.OneOf(kTestLocales);
  if (random.Below(2) == 0) {
    SwitchNow(way, first, second);
  } else {
    std::thread([=] { SwitchNow(way, first, second); }).join();
  }
}

// Text whose case, order or encoding differ between the locales.
template <class Char>
std::basic_string<Char> AnyText(Random& random, std::size_t longest) {
  constexpr unsigned int kCharacters[] = {
      'I',   'i',   'K',   'k',   '_',    '\\',   '~',   0xC6,
      0xE6,  0xD6,  0xF6,  0xDD,  0xFD,   0x83,   0x5C,  0xB6,
      0x130, 0x131, 0x416, 0x436, 0x30A2, 0x4E00, 0xE000};
  std::basic_string<Char> text;
  for (std::size_t left = random.Below(longest + 1); left > 0; --left) {
    text += static_cast<Char>(random.OneOf(kCharacters));
  }
  return text;
}

template <class Char>
struct WidthOf;
template <>
struct WidthOf<char> {
  using File = CIniFileA;
  using Section = CIniFileA::CIniSectionA;
};
template <>
struct WidthOf<wchar_t> {
  using File = CIniFileW;
  using Section = CIniFileW::CIniSectionW;
};

// A document, changed at random.
template <class Char>
class Document {
 public:
  Document(Random& random, const Folder& folder)
      : random_(random), path_(folder / "a.ini") {}

  void DoAnything() {
    switch (random_.Below(14)) {
      case 0:
        file_.AddSection(Name());
        break;
      case 1:
      case 2:
        file_.SetKeyValue(Name(), Name(), Name());
        break;
      case 3:
        file_.GetKeyValue(Name(), Name());
        break;
      case 4:
        file_.RemoveSection(Name());
        break;
      case 5:
        file_.RenameSection(Name(), Name());
        break;
      case 6:
        file_.RenameKey(Name(), Name(), Name());
        break;
      case 7:
        if (Section* const section = AnySection()) {
          file_.RemoveSection(section);
        }
        break;
      case 8:
        if (Section* const section = AnySection()) {
          section->SetSectionName(Name());
        }
        break;
      case 9:
        if (Section* const section = AnySection()) {
          RemoveOrRenameAKey(*section);
        }
        break;
      case 10:
        LoadManyKeys();
        break;
      case 11: {
        std::basic_ostringstream<Char> output;
        output << file_;
        break;
      }
      case 12:
        file_.Save(Path());
        break;
      default:
        file_.Load(Path(), random_.Below(2) == 0);
        break;
    }
  }

  // Whether each entry has an object of its own, which has its name.
  bool IsWhole() const {
    std::set<const void*> seen;
    for (const auto& [name, section] : file_.GetSections()) {
      if (section->GetSectionName() != name || !seen.insert(section).second) {
        return false;
      }
      for (const auto& [key_name, key] : section->GetKeys()) {
        if (key->GetKeyName() != key_name || !seen.insert(key).second) {
          return false;
        }
      }
    }
    return true;
  }

 private:
  using File = typename WidthOf<Char>::File;
  using Section = typename WidthOf<Char>::Section;

  std::basic_string<Char> Name() { return AnyText<Char>(random_, 2); }

  std::basic_string<Char> Path() const {
    return std::basic_string<Char>(path_.begin(), path_.end());
  }

  Section* AnySection() {
    const auto& sections = file_.GetSections();
    if (sections.empty()) {
      return nullptr;
    }
    return std::next(sections.begin(), static_cast<std::ptrdiff_t>(
                                           random_.Below(sections.size())))
        ->second;
  }

  void RemoveOrRenameAKey(Section& section) {
    const auto& keys = section.GetKeys();
    if (keys.empty()) {
      section.AddKey(Name());
      return;
    }
    auto* const key =
        std::next(keys.begin(),
                  static_cast<std::ptrdiff_t>(random_.Below(keys.size())))
            ->second;
    if (random_.Below(2) == 0) {
      section.RemoveKey(key);
    } else {
      key->SetKeyName(Name());
    }
  }

  // Keys in no order, so many that they are entered at once.
  void LoadManyKeys() {
    std::basic_string<Char> text;
    const auto add = [&](const std::basic_string<Char>& part, char end) {
      text += static_cast<Char>('[');
      text += part;
      text += static_cast<Char>(end);
      text += static_cast<Char>('\n');
    };
    add(Name(), ']');
    for (std::size_t left = random_.Below(40); left > 0; --left) {
      add(AnyText<Char>(random_, 4), '=');
    }
    std::basic_istringstream<Char> input(text);
    file_.Load(input, random_.Below(4) != 0);
  }

  Random& random_;
  std::string path_;
  File file_;
};

// The first record that has the name, as the C library compares.
const COidData* WalkByName(const wchar_t* name) {
  for (const COidData* const record : RegistryRows()) {
    if (record->pwszName != nullptr &&
        wcscasecmp(record->pwszName, name) == 0) {
      return record;
    }
  }
  return nullptr;
}

void LookUp(Random& random) {
  constexpr const wchar_t* kNames[] = {
      L"COMMON NAME",    L"givenname", L"GIVENNAME", L"G\u0130VENNAME",
      L"g\u0131venname", L"INITIALS",  L"unknown",   L"\u0416"};
  const wchar_t* const name = random.OneOf(kNames);
  EXPECT_EQ(FindByName(name, kAllGroups), WalkByName(name));
}

void Convert(Random& random) {
  const std::wstring wide = AnyText<wchar_t>(random, 12);
  std::string narrow(wide.size(), '\0');
  std::wcstombs(narrow.data(), wide.c_str(), narrow.size());
  // What follows a character that can't be converted is for the C library.
  EXPECT_EQ(wstr_to_str(wide), narrow);
  const std::string bytes = AnyText<char>(random, 12);
  std::wstring widened(bytes.size(), L'\0');
  std::mbstowcs(widened.data(), bytes.c_str(), widened.size());
  EXPECT_EQ(str_to_wstr(bytes), widened);
}

TEST(LocaleSwitches, BetweenAnyTwoOperationsNothingIsDestroyedTwiceOrLeaks) {
  constexpr std::size_t kOperations = 100;
  const CxxLocale classic("C");  // to which all returns
  for (const char* const name : kTestLocales) {
    const CLocale locale(name);  // what the C library keeps of it, it has now
  }
  FindUnknownName(kAllGroups);
  const Folder folder;
  const std::size_t rounds = Rounds(5, 1000);
  for (std::size_t round = 0; round < rounds; ++round) {
    const long live = LiveBlocks();
    {
      const CxxLocale before("C");
      Random random(round);
      Document<char> narrow(random, folder);
      Document<wchar_t> wide(random, folder);
      for (std::size_t i = 0; i < kOperations; ++i) {
        Switch(random);
        narrow.DoAnything();
        Switch(random);
        wide.DoAnything();
        Switch(random);
        LookUp(random);
        Convert(random);
        ASSERT_TRUE(narrow.IsWhole()) << "round " << round;
        ASSERT_TRUE(wide.IsWhole()) << "round " << round;
      }
      Switch(random);
    }
    EXPECT_EQ(LiveBlocks(), live) << "round " << round;
  }
  Figures(rounds * kOperations * 3, " switches among ", std::size(kTestLocales),
          " locales, between ", rounds * kOperations * 5, " operations");
}

}  // namespace
}  // namespace korvan::test
