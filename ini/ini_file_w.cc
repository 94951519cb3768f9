#include <korvan/ini_file.h>

#include <fstream>
#include <string>
#include <utility>

#include "ini/editing.h"
#include "ini/file_stream.h"
#include "ini/named_nodes.h"
#include "ini/reader.h"
#include "ini/twins.h"
#include "ini/writer.h"

namespace korvan {

using FileW = CIniFileW;
using SectionW = FileW::CIniSectionW;
using KeyW = SectionW::CIniKeyW;

const wchar_t* const FileW::LF = L"\n";

bool ci_less_w::operator()(const std::wstring& left,
                           const std::wstring& right) const {
  return ini::CompareNames(left, right) < 0;
}

KeyW::CIniKeyW(SectionW* owner, std::wstring name)
    : name_(std::move(name)), owner_(owner) {}

KeyW::~CIniKeyW() = default;

std::wstring KeyW::GetKeyName() const { return name_; }

bool KeyW::SetKeyName(std::wstring name) {
  return owner_ != nullptr &&
         ini::Rename(owner_->keys_, this, name_, std::move(name));
}

std::wstring KeyW::GetValue() const { return value_; }

void KeyW::SetValue(std::wstring value) { value_ = std::move(value); }

SectionW::CIniSectionW(FileW* owner, std::wstring name)
    : owner_(owner), name_(std::move(name)) {}

SectionW::~CIniSectionW() { RemoveAllKeys(); }

KeyW* SectionW::AddKey(std::wstring name) {
  return ini::FindOrCreate(keys_, this, std::move(name));
}

KeyW* SectionW::GetKey(std::wstring name) const {
  return ini::Find(keys_, std::move(name));
}

void SectionW::RemoveKey(std::wstring name) {
  ini::TrimName(name);
  ini::Remove(keys_, name);
}

void SectionW::RemoveKey(KeyW* key) {
  if (!keys_.empty() && key != nullptr) {
    ini::Remove(keys_, key->name_);
  }
}

void SectionW::RemoveAllKeys() { ini::RemoveAll(keys_); }

const SectionW::Keys& SectionW::GetKeys() const { return keys_; }

std::wstring SectionW::GetSectionName() const { return name_; }

bool SectionW::SetSectionName(std::wstring name) {
  return owner_ != nullptr &&
         ini::Rename(owner_->sections_, this, name_, std::move(name));
}

void SectionW::SetKeyValue(std::wstring key, std::wstring value) {
  AddKey(std::move(key))->SetValue(std::move(value));
}

std::wstring SectionW::GetKeyValue(std::wstring key) const {
  const KeyW* const found = GetKey(std::move(key));
  return found == nullptr ? std::wstring() : found->value_;
}

FileW::CIniFileW() = default;

FileW::~CIniFileW() { RemoveAllSections(); }

void FileW::Load(std::wistream& input, bool merge) {
  if (!merge) {
    RemoveAllSections();
  }
  ini::Reader<FileW>(*this).Read(input);
}

bool FileW::Load(const std::wstring& file_name, bool merge) {
  ini::FileStream<std::wifstream> file(file_name, std::ios_base::in);
  if (!file.is_open()) {
    return false;
  }
  Load(file.stream(), merge);
  return true;
}

void FileW::Save(std::wostream& output) {
  ini::Write(output, sections_, LF,
             [](const KeyW& key) -> const std::wstring& { return key.value_; });
}

bool FileW::Save(const std::wstring& file_name) {
  ini::FileStream<std::wofstream> file(file_name, std::ios_base::out);
  if (!file.is_open()) {
    return false;
  }
  Save(file.stream());
  return true;
}

const FileW::Sections& FileW::GetSections() const { return sections_; }

SectionW* FileW::AddSection(std::wstring name) {
  return ini::FindOrCreate(sections_, this, std::move(name));
}

SectionW* FileW::GetSection(std::wstring name) const {
  return ini::Find(sections_, std::move(name));
}

void FileW::RemoveSection(std::wstring name) {
  ini::TrimName(name);
  ini::Remove(sections_, name);
}

void FileW::RemoveSection(SectionW* section) {
  if (!sections_.empty() && section != nullptr) {
    ini::Remove(sections_, section->name_);
  }
}

void FileW::RemoveAllSections() { ini::RemoveAll(sections_); }

bool FileW::RenameSection(std::wstring old_name, std::wstring new_name) {
  return ini::RenameSection(*this, std::move(old_name), std::move(new_name));
}

void FileW::SetKeyValue(std::wstring section, std::wstring key,
                        std::wstring value) {
  ini::SetKeyValue(*this, std::move(section), std::move(key), std::move(value));
}

std::wstring FileW::GetKeyValue(std::wstring section, std::wstring key) const {
  const KeyW* const found =
      ini::GetKey(*this, std::move(section), std::move(key));
  return found == nullptr ? std::wstring() : found->value_;
}

bool FileW::RenameKey(std::wstring section, std::wstring old_name,
                      std::wstring new_name) {
  return ini::RenameKey(*this, std::move(section), std::move(old_name),
                        std::move(new_name));
}

std::wistream& operator>>(std::wistream& input, CIniFileW& file) {
  file.Load(input, false);
  return input;
}

std::wistream& operator>>(std::wistream& input, CIniFileW::CIniMergeW merge) {
  merge.file_.Load(input, true);
  return input;
}

std::wostream& operator<<(std::wostream& output, CIniFileW& file) {
  file.Save(output);
  return output;
}

}  // namespace korvan
