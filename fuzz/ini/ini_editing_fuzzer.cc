// Any sequence of operations on two documents, with the locale switched between
// them, beside the model: each result, each object and each text must be the
// model's. Where a switch has put names out of order, nobody says what an
// operation does to them; then only what always holds is looked at, until the
// document has been emptied.
#include <korvan/ini_file.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "ini/characters.h"
#include "ini/compare.h"
#include "ini/model_document.h"
#include "ini/width.h"
#include "support/input.h"

namespace korvan::test {
namespace {

using Sections = std::vector<ModelSection>;

// Few names, so that they meet; each also in another case, with blanks around
// it, with a NUL in it.
constexpr std::string_view kNames[] = {
    "",         "a",     "A",
    " a\t",     "b",     "B ",
    "i",        "I",     "\xC3\xB1",
    "s",        "Alpha", "ALPHA",
    "alpHa ",   "[k",    std::string_view("a\0x", 3),
    "a=b",      "\n",    "_",
    "[i\t",     "[I",    "\xC4",
    "\xE4",     "z",     "a name that is too long to be kept inline",
    "\xF0\xF1", "\xF2",  "\xF3"};

class Editing {
 public:
  explicit Editing(Input& input)
      : input_(input),
        alphabet_(OneIn(input, 16) ? Alphabet::kWidest : Alphabet::kOrdered) {
    for (Document& document : documents_) {
      document.is_known = alphabet_ == Alphabet::kOrdered;
    }
  }

  void Run() {
    while (input_.remaining_bytes() != 0) {
      Document& document = documents_[Below(input_, 2)];
      if (document.is_known) {
        Edit(document);
      } else {
        EditUnknown(document);
      }
    }
    for (Document& document : documents_) {
      Look(document);
    }
  }

 private:
  struct Document {
    File file;
    Sections sections;
    bool is_known = true;  // the model is what the document must be
  };

  String AnyName() {
    const std::size_t number = Below(input_, std::size(kNames) + 4);
    return TextOf(number < std::size(kNames)
                      ? kNames[number]
                      : input_.ConsumeRandomLengthString(12),
                  alphabet_);
  }

  String AnyValue() {
    return TextOf(input_.ConsumeRandomLengthString(20), alphabet_);
  }

  template <class Entry>
  Entry* AnyOf(std::vector<Entry>& entries) {
    return entries.empty() ? nullptr : &entries[Below(input_, entries.size())];
  }

  // One operation on a document and its model.
  void Edit(Document& document) {
    ModelSection* const section = AnyOf(document.sections);
    ModelKey* const key = section == nullptr ? nullptr : AnyOf(section->keys);
    switch (Below(input_, 12)) {
      case 0:
        return EditSections(document);
      case 1:
        return SwitchLocale();
      case 2:
        return Exchange(document);
      case 3:
        return EnterLoneObject(document, section);
      case 4:
        return Look(document);
      case 5:
        return EditNumbers(document);
      case 6:
      case 7:
        return EditByNames(document);
      default:
        if (section != nullptr) {
          EditSection(document, *section);
        }
        if (key != nullptr && OneIn(input_, 2)) {
          EditKey(document);
        }
        break;
    }
  }

  void EditSections(Document& document) {
    File& file = document.file;
    Sections& sections = document.sections;
    const String name = AnyName();
    switch (Below(input_, 7)) {
      case 0:
      case 1:
        Added(sections, name, file.AddSection(name));
        break;
      case 2:
        file.RemoveSection(name);
        Remove(sections, TrimmedName(name));
        break;
      case 3: {
        // One of either document: its name decides.
        ModelSection* const any = AnyOf(documents_[Below(input_, 2)].sections);
        const String its_name = any == nullptr ? String() : any->name;
        file.RemoveSection(any == nullptr ? nullptr : any->object);
        if (any != nullptr) {
          Remove(sections, its_name);
        }
        break;
      }
      case 4:
        file.RemoveAllSections();
        sections.clear();
        break;
      case 5: {
        const String new_name = AnyName();
        ModelSection* const found = FindEntry(sections, TrimmedName(name));
        Expect(file.RenameSection(name, new_name) ==
               (found != nullptr && Rename(sections, found, new_name)));
        break;
      }
      default: {
        ModelSection* const found = FindEntry(sections, TrimmedName(name));
        Expect(file.GetSection(name) ==
               (found == nullptr ? nullptr : found->object));
        break;
      }
    }
  }

  void EditByNames(Document& document) {
    File& file = document.file;
    Sections& sections = document.sections;
    const String section = AnyName();
    const String key = AnyName();
    ModelSection* const found = FindEntry(sections, TrimmedName(section));
    ModelKey* const found_key =
        found == nullptr ? nullptr : FindEntry(found->keys, TrimmedName(key));
    switch (Below(input_, 4)) {
      case 0: {
        const String new_name = AnyName();
        Expect(
            file.RenameKey(section, key, new_name) ==
            (found_key != nullptr && Rename(found->keys, found_key, new_name)));
        break;
      }
      case 1:
        Expect(file.GetKeyValue(section, key) ==
               (found_key == nullptr ? String() : found_key->value));
        break;
      default: {
        const String value = AnyValue();
        file.SetKeyValue(section, key, value);
        Entered(document, section, key).value = value;
        break;
      }
    }
  }

  // The model's key after a value was set by names.
  ModelKey& Entered(Document& document, const String& section,
                    const String& key) {
    Section* const object = document.file.GetSection(section);
    Expect(object != nullptr && object->GetKey(key) != nullptr);
    return Added(Added(document.sections, section, object).keys, key,
                 object->GetKey(key));
  }

  void EditSection(Document& document, ModelSection& section) {
    Section& object = *section.object;
    const String name = AnyName();
    ModelKey* const found = FindEntry(section.keys, TrimmedName(name));
    switch (Below(input_, 9)) {
      case 0:
      case 1:
        Added(section.keys, name, object.AddKey(name));
        break;
      case 2: {
        const String value = AnyValue();
        object.SetKeyValue(name, value);
        Expect(object.GetKey(name) != nullptr);
        Added(section.keys, name, object.GetKey(name)).value = value;
        break;
      }
      case 3:
        Expect(object.GetKey(name) ==
               (found == nullptr ? nullptr : found->object));
        Expect(object.GetKeyValue(name) ==
               (found == nullptr ? String() : found->value));
        break;
      case 4:
        object.RemoveKey(name);
        Remove(section.keys, TrimmedName(name));
        break;
      case 5: {
        // One of any section: its name decides.
        ModelSection* const any = AnyOf(documents_[Below(input_, 2)].sections);
        ModelKey* const key = any == nullptr ? nullptr : AnyOf(any->keys);
        const String its_name = key == nullptr ? String() : key->name;
        object.RemoveKey(key == nullptr ? nullptr : key->object);
        if (key != nullptr) {
          Remove(section.keys, its_name);
        }
        break;
      }
      case 6:
        object.RemoveAllKeys();
        section.keys.clear();
        break;
      default:
        Expect(object.SetSectionName(name) ==
               Rename(document.sections, &section, name));
        break;
    }
  }

  void EditKey(Document& document) {
    ModelSection* const section = AnyOf(document.sections);
    ModelKey* const key = section == nullptr ? nullptr : AnyOf(section->keys);
    if (key == nullptr) {
      return;
    }
    if (input_.ConsumeBool()) {
      key->value = AnyValue();
      key->object->SetValue(key->value);
    } else {
      const String name = AnyName();
      Expect(key->object->SetKeyName(name) == Rename(section->keys, key, name));
    }
  }

  // An object that a caller makes is entered by its first renaming, or never.
  void EnterLoneObject(Document& document, ModelSection* section) {
    const bool has_owner = input_.ConsumeBool();
    const String name = AnyName();
    const String new_name = AnyName();
    if (input_.ConsumeBool()) {
      auto lone =
          std::make_unique<Section>(has_owner ? &document.file : nullptr, name);
      Expect(lone->GetSectionName() == name && lone->GetKeys().empty());
      Key* const key = lone->AddKey(name);
      Expect(lone->AddKey(name) == key && lone->GetKeys().size() == 1);
      const bool is_new =
          FindEntry(document.sections, TrimmedName(new_name)) == nullptr;
      Expect(lone->SetSectionName(new_name) == (has_owner && is_new));
      if (has_owner && is_new) {
        ModelSection& entered =
            Added(document.sections, new_name, lone.release());
        Added(entered.keys, name, key);
      }
    } else {
      Section* const owner =
          has_owner && section != nullptr ? section->object : nullptr;
      auto lone = std::make_unique<Key>(owner, name);
      Expect(lone->GetKeyName() == name && lone->GetValue().empty());
      const bool is_new =
          owner != nullptr &&
          FindEntry(section->keys, TrimmedName(new_name)) == nullptr;
      Expect(lone->SetKeyName(new_name) == is_new);
      if (is_new) {
        Added(section->keys, new_name, lone.release());
      }
    }
  }

  // Narrow documents have numbers.
  void EditNumbers([[maybe_unused]] Document& document) {
#if !KORVAN_TEST_WIDE
    const String section = AnyName();
    const String key = AnyName();
    if (input_.ConsumeBool()) {
      const auto number = input_.ConsumeIntegral<unsigned long>();
      document.file.SetKeyValueDword(section, key, number);
      Entered(document, section, key).value = std::to_string(number);
      return;
    }
    ModelSection* const found =
        FindEntry(document.sections, TrimmedName(section));
    ModelKey* const found_key =
        found == nullptr ? nullptr : FindEntry(found->keys, TrimmedName(key));
    unsigned int number = 0xFFFFFFFF;
    if (found_key != nullptr) {
      static_cast<void>(std::sscanf(found_key->value.c_str(), "%u", &number));
    }
    Expect(document.file.GetKeyValueDword(section, key) == number);
#endif
  }

  // Writes the document, and reads text that another could have written.
  void Exchange(Document& document) {
    StringOutput output;
    output << document.file;
    StringOutput expected;
    for (const ModelSection& section : document.sections) {
      expected << "["_t + section.name + "]"_t
               << "\n"_t;
      for (const ModelKey& key : section.keys) {
        expected << key.name + "="_t + key.value << "\n"_t;
      }
    }
    Expect(output.str() == expected.str());

    const bool merge = input_.ConsumeBool();
    const String section = AnyName();
    const String key = "["_t + AnyName();
    const String value = AnyValue();
    StringInput text("["_t + section + "]\n"_t + key + "="_t + value);
    if (merge) {
      text >> Merge(document.file);
    } else {
      text >> document.file;
      document.sections.clear();
    }
    // What the text means is the reader's: its own target looks at it.
    Adopt(document);
  }

  // Takes what the document now holds for what it must be. The objects that
  // were there before must still be those of their names.
  static void Adopt(Document& document) {
    Sections now;
    for (const auto& [name, section] : document.file.GetSections()) {
      ModelSection adopted = {name, section};
      ModelSection* const before = FindEntryOf(document.sections, section);
      Expect(before == nullptr || before->name == name);
      for (const auto& [key_name, key] : section->GetKeys()) {
        adopted.keys.push_back({key_name, key, key->GetValue()});
        ModelKey* const key_before =
            before == nullptr ? nullptr : FindEntryOf(before->keys, key);
        Expect(key_before == nullptr || key_before->name == key_name);
      }
      now.push_back(adopted);
    }
    for (const ModelSection& section : document.sections) {
      Expect(FindEntryOf(now, section.object) != nullptr);
    }
    Expect(AreInOrder(now));
    document.sections = now;
  }

  void SwitchLocale() {
    locale_.Set(AnyLocale(input_));
    for (Document& document : documents_) {
      bool is_in_order = AreInOrder(document.sections);
      for (const ModelSection& section : document.sections) {
        is_in_order = is_in_order && AreInOrder(section.keys);
      }
      if (!is_in_order) {
        document.is_known = false;
        document.sections.clear();
      }
    }
  }

  // All of the document is the model's.
  static void Look(Document& document) {
    ExpectSound(document.file);
    if (!document.is_known) {
      return;
    }
    const File& file = document.file;
    Expect(file.GetSections().size() == document.sections.size());
    auto section = file.GetSections().begin();
    for (const ModelSection& expected : document.sections) {
      Expect(section->first == expected.name);
      Expect(section->second == expected.object);
      Expect(section->second->GetKeys().size() == expected.keys.size());
      auto key = section->second->GetKeys().begin();
      for (const ModelKey& expected_key : expected.keys) {
        Expect(key->first == expected_key.name);
        Expect(key->second == expected_key.object);
        Expect(key->second->GetValue() == expected_key.value);
        ++key;
      }
      ++section;
    }
  }

  // One operation on a document whose names are out of order.
  void EditUnknown(Document& document) {
    File& file = document.file;
    const String name = AnyName();
    const String other = AnyName();
    Section* section = nullptr;
    if (!file.GetSections().empty()) {
      section = std::next(file.GetSections().begin(),
                          static_cast<std::ptrdiff_t>(
                              Below(input_, file.GetSections().size())))
                    ->second;
    }
    switch (Below(input_, 10)) {
      case 0:
        file.AddSection(name);
        break;
      case 1:
        file.SetKeyValue(name, other, other);
        break;
      case 2:
        file.RemoveSection(name);
        break;
      case 3:
        file.RemoveSection(section);
        break;
      case 4:
        file.RenameSection(name, other);
        break;
      case 5:
        file.RenameKey(name, name, other);
        break;
      case 6:
        EditUnknownSection(section, name, other);
        break;
      case 7:
        LoadUnknown(file, name, other);
        break;
      case 8:
        SwitchLocale();
        break;
      default:
        file.RemoveAllSections();
        document.sections.clear();
        document.is_known = alphabet_ == Alphabet::kOrdered;
        break;
    }
    ExpectSound(file);
  }

  void EditUnknownSection(Section* section, const String& name,
                          const String& other) {
    if (section == nullptr) {
      return;
    }
    switch (Below(input_, 5)) {
      case 0:
        section->AddKey(name);
        break;
      case 1:
        section->SetSectionName(name);
        break;
      case 2:
        section->RemoveKey(name);
        break;
      case 3:
        section->RemoveKey(section->GetKey(name));
        break;
      default:
        if (Key* const key = section->GetKey(name)) {
          key->SetKeyName(other);
        }
        break;
    }
  }

  // Enough keys in no order for the reader to enter them at once.
  void LoadUnknown(File& file, const String& name, const String& other) {
    String text = "["_t + name + "]\n"_t;
    for (int i = 0; i < 24; ++i) {
      text += "["_t + other + Text(std::to_string(i * 7 % 24)) + "=v\n"_t;
    }
    StringInput input(text);
    input >> Merge(file);
  }

  Input& input_;
  const Alphabet alphabet_;
  ThreadLocale locale_;
  Document documents_[2];
};

}  // namespace
}  // namespace korvan::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::Input input(data, size);
  korvan::test::Editing(input).Run();
  return 0;
}
