// A document as sorted lists, searched from the front: the model of the editing
// operations. Beside the texts it knows which object of the library stands for
// which entry, so that an object that is exchanged for another is seen.
#ifndef KORVAN_FUZZ_INI_MODEL_DOCUMENT_H_
#define KORVAN_FUZZ_INI_MODEL_DOCUMENT_H_

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "ini/width.h"
#include "support/input.h"
#include "support/plain_ini.h"

namespace korvan::test {

inline String TrimmedName(const String& name) {
  const auto is_blank = [](Char character) {
    return character == Char{' '} || character == Char{'\t'};
  };
  const auto begin = std::find_if_not(name.begin(), name.end(), is_blank);
  auto end = name.end();
  while (end != begin && is_blank(*(end - 1))) {
    --end;
  }
  return String(begin, end);
}

struct ModelKey {
  String name;
  Key* object;
  String value = {};
};

struct ModelSection {
  String name;
  Section* object;
  std::vector<ModelKey> keys = {};
};

// The entry of a name that has been trimmed, or null.
template <class Entry>
Entry* FindEntry(std::vector<Entry>& entries, const String& name) {
  for (Entry& entry : entries) {
    if (CompareIgnoringCase(entry.name, name) == 0) {
      return &entry;
    }
  }
  return nullptr;
}

template <class Entry, class Object>
Entry* FindEntryOf(std::vector<Entry>& entries, const Object* object) {
  for (Entry& entry : entries) {
    if (entry.object == object) {
      return &entry;
    }
  }
  return nullptr;
}

// Enters a name that is not there, before the first that comes after it.
template <class Entry>
Entry& Enter(std::vector<Entry>& entries, Entry entry) {
  auto place = entries.begin();
  while (place != entries.end() &&
         CompareIgnoringCase(place->name, entry.name) < 0) {
    ++place;
  }
  return *entries.insert(place, std::move(entry));
}

// What adding a name gave: the entry of that name, with that object.
template <class Entry, class Object>
Entry& Added(std::vector<Entry>& entries, const String& name, Object* object) {
  const String trimmed = TrimmedName(name);
  if (Entry* const found = FindEntry(entries, trimmed)) {
    Expect(found->object == object);
    return *found;
  }
  Expect(FindEntryOf(entries, object) == nullptr);
  return Enter(entries, Entry{trimmed, object});
}

template <class Entry>
void Remove(std::vector<Entry>& entries, const String& trimmed) {
  std::erase_if(entries, [&](const Entry& entry) {
    return CompareIgnoringCase(entry.name, trimmed) == 0;
  });
}

// Whether an entry takes a new name.
template <class Entry>
bool Rename(std::vector<Entry>& entries, Entry* entry, const String& name) {
  const String trimmed = TrimmedName(name);
  if (FindEntry(entries, trimmed) != nullptr) {
    return false;
  }
  Entry renamed = std::move(*entry);
  entries.erase(entries.begin() + (entry - entries.data()));
  renamed.name = trimmed;
  Enter(entries, std::move(renamed));
  return true;
}

template <class Entry>
bool AreInOrder(const std::vector<Entry>& entries) {
  return std::ranges::adjacent_find(
             entries, [](const Entry& left, const Entry& right) {
               return CompareIgnoringCase(left.name, right.name) >= 0;
             }) == entries.end();
}

}  // namespace korvan::test

#endif  // KORVAN_FUZZ_INI_MODEL_DOCUMENT_H_
