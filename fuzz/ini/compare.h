// A document of the library beside a plain one.
#ifndef KORVAN_FUZZ_INI_COMPARE_H_
#define KORVAN_FUZZ_INI_COMPARE_H_

#include <set>

#include "ini/width.h"
#include "support/input.h"
#include "support/plain_ini.h"

namespace korvan::test {

inline void ExpectSame(const File& file, const PlainFile& plain) {
  Expect(file.GetSections().size() == plain.sections().size());
  auto section = file.GetSections().begin();
  for (const auto& [name, keys] : plain.sections()) {
    Expect(section->first == name);
    Expect(section->second->GetSectionName() == name);
    Expect(section->second->GetKeys().size() == keys.size());
    auto key = section->second->GetKeys().begin();
    for (const auto& [key_name, value] : keys) {
      Expect(key->first == key_name);
      Expect(key->second->GetKeyName() == key_name);
      Expect(key->second->GetValue() == value);
      ++key;
    }
    ++section;
  }
}

// What holds even where names have no order: entries and objects have the same
// names, and no object has two entries.
inline void ExpectSound(const File& file) {
  std::set<const void*> met;
  for (const auto& [name, section] : file.GetSections()) {
    Expect(met.insert(section).second);
    Expect(section->GetSectionName() == name);
    for (const auto& [key_name, key] : section->GetKeys()) {
      Expect(met.insert(key).second);
      Expect(key->GetKeyName() == key_name);
    }
  }
}

// Whether the names of a map come one after the other in the present locale.
template <class Entries>
bool IsInOrder(const Entries& entries) {
  const String* previous = nullptr;
  for (const auto& [name, entry] : entries) {
    if (previous != nullptr && CompareIgnoringCase(*previous, name) >= 0) {
      return false;
    }
    previous = &name;
  }
  return true;
}

inline bool IsInOrder(const PlainFile& plain) {
  if (!IsInOrder(plain.sections())) {
    return false;
  }
  for (const auto& [name, keys] : plain.sections()) {
    if (!IsInOrder(keys)) {
      return false;
    }
  }
  return true;
}

}  // namespace korvan::test

#endif  // KORVAN_FUZZ_INI_COMPARE_H_
