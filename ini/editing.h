#ifndef KORVAN_INI_EDITING_H_
#define KORVAN_INI_EDITING_H_

#include <utility>

#include "ini/named_nodes.h"

/// @file
/// What a document does by the names of a section and a key, in terms of what
/// it and its sections do by one name.

namespace korvan::ini {

template <class File>
using StringOf = typename File::Sections::key_type;

template <class File>
bool RenameSection(const File& file, StringOf<File>&& old_name,
                   StringOf<File>&& new_name) {
  auto* const section = Find(file.GetSections(), std::move(old_name));
  return section != nullptr && section->SetSectionName(std::move(new_name));
}

template <class File>
auto GetKey(const File& file, StringOf<File>&& section_name,
            StringOf<File>&& key_name) {
  const auto* const section = Find(file.GetSections(), std::move(section_name));
  return section == nullptr ? nullptr
                            : Find(section->GetKeys(), std::move(key_name));
}

template <class File>
bool RenameKey(const File& file, StringOf<File>&& section_name,
               StringOf<File>&& old_name, StringOf<File>&& new_name) {
  auto* const key = GetKey(file, std::move(section_name), std::move(old_name));
  return key != nullptr && key->SetKeyName(std::move(new_name));
}

template <class File>
void SetKeyValue(File& file, StringOf<File>&& section_name,
                 StringOf<File>&& key_name, StringOf<File>&& value) {
  const auto sections_before = file.GetSections().size();
  auto* const section = file.AddSection(std::move(section_name));
  try {
    section->SetKeyValue(std::move(key_name), std::move(value));
  } catch (...) {
    // Nobody asked for a section without the key.
    if (file.GetSections().size() != sections_before) {
      file.RemoveSection(section);
    }
    throw;
  }
}

}  // namespace korvan::ini

#endif  // KORVAN_INI_EDITING_H_
