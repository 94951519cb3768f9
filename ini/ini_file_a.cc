#include <korvan/ini_file.h>

#include <cstdio>
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

using FileA = CIniFileA;
using SectionA = FileA::CIniSectionA;
using KeyA = SectionA::CIniKeyA;

const char* const FileA::LF = "\n";

bool ci_less_a::operator()(const std::string& left,
                           const std::string& right) const {
  return ini::CompareNames(left, right) < 0;
}

KeyA::CIniKeyA(SectionA* owner, std::string name)
    : name_(std::move(name)), owner_(owner) {}

KeyA::~CIniKeyA() = default;

std::string KeyA::GetKeyName() const { return name_; }

bool KeyA::SetKeyName(std::string name) {
  return owner_ != nullptr &&
         ini::Rename(owner_->keys_, this, name_, std::move(name));
}

std::string KeyA::GetValue() const { return value_; }

void KeyA::SetValue(std::string value) { value_ = std::move(value); }

SectionA::CIniSectionA(FileA* owner, std::string name)
    : owner_(owner), name_(std::move(name)) {}

SectionA::~CIniSectionA() { RemoveAllKeys(); }

KeyA* SectionA::AddKey(std::string name) {
  return ini::FindOrCreate(keys_, this, std::move(name));
}

KeyA* SectionA::GetKey(std::string name) const {
  return ini::Find(keys_, std::move(name));
}

void SectionA::RemoveKey(std::string name) {
  ini::TrimName(name);
  ini::Remove(keys_, name);
}

void SectionA::RemoveKey(KeyA* key) {
  if (!keys_.empty() && key != nullptr) {
    ini::Remove(keys_, key->name_);
  }
}

void SectionA::RemoveAllKeys() { ini::RemoveAll(keys_); }

const SectionA::Keys& SectionA::GetKeys() const { return keys_; }

std::string SectionA::GetSectionName() const { return name_; }

bool SectionA::SetSectionName(std::string name) {
  return owner_ != nullptr &&
         ini::Rename(owner_->sections_, this, name_, std::move(name));
}

void SectionA::SetKeyValue(std::string key, std::string value) {
  AddKey(std::move(key))->SetValue(std::move(value));
}

std::string SectionA::GetKeyValue(std::string key) const {
  const KeyA* const found = GetKey(std::move(key));
  return found == nullptr ? std::string() : found->value_;
}

FileA::CIniFileA() = default;

FileA::~CIniFileA() { RemoveAllSections(); }

void FileA::Load(std::istream& input, bool merge) {
  if (!merge) {
    RemoveAllSections();
  }
  ini::Reader<FileA>(*this).Read(input);
}

bool FileA::Load(const std::string& file_name, bool merge) {
  ini::FileStream<std::ifstream> file(file_name, std::ios_base::in);
  if (!file.is_open()) {
    return false;
  }
  Load(file.stream(), merge);
  return true;
}

void FileA::Save(std::ostream& output) {
  ini::Write(output, sections_, LF,
             [](const KeyA& key) -> const std::string& { return key.value_; });
}

bool FileA::Save(const std::string& file_name) {
  ini::FileStream<std::ofstream> file(file_name, std::ios_base::out);
  if (!file.is_open()) {
    return false;
  }
  Save(file.stream());
  return true;
}

const FileA::Sections& FileA::GetSections() const { return sections_; }

SectionA* FileA::AddSection(std::string name) {
  return ini::FindOrCreate(sections_, this, std::move(name));
}

SectionA* FileA::GetSection(std::string name) const {
  return ini::Find(sections_, std::move(name));
}

void FileA::RemoveSection(std::string name) {
  ini::TrimName(name);
  ini::Remove(sections_, name);
}

void FileA::RemoveSection(SectionA* section) {
  if (!sections_.empty() && section != nullptr) {
    ini::Remove(sections_, section->name_);
  }
}

void FileA::RemoveAllSections() { ini::RemoveAll(sections_); }

bool FileA::RenameSection(std::string old_name, std::string new_name) {
  return ini::RenameSection(*this, std::move(old_name), std::move(new_name));
}

void FileA::SetKeyValue(std::string section, std::string key,
                        std::string value) {
  ini::SetKeyValue(*this, std::move(section), std::move(key), std::move(value));
}

std::string FileA::GetKeyValue(std::string section, std::string key) const {
  const KeyA* const found =
      ini::GetKey(*this, std::move(section), std::move(key));
  return found == nullptr ? std::string() : found->value_;
}

bool FileA::RenameKey(std::string section, std::string old_name,
                      std::string new_name) {
  return ini::RenameKey(*this, std::move(section), std::move(old_name),
                        std::move(new_name));
}

unsigned long FileA::GetKeyValueDword(std::string section,
                                      std::string key) const {
  unsigned int number = 0xFFFFFFFF;  // stays where the text holds no number
  if (const KeyA* const found =
          ini::GetKey(*this, std::move(section), std::move(key))) {
    static_cast<void>(std::sscanf(found->value_.c_str(), "%u", &number));
  }
  return number;
}

void FileA::SetKeyValueDword(std::string section, std::string key,
                             unsigned long value) {
  SetKeyValue(std::move(section), std::move(key), std::to_string(value));
}

std::istream& operator>>(std::istream& input, CIniFileA& file) {
  file.Load(input, false);
  return input;
}

std::istream& operator>>(std::istream& input, CIniFileA::CIniMergeA merge) {
  merge.file_.Load(input, true);
  return input;
}

std::ostream& operator<<(std::ostream& output, CIniFileA& file) {
  file.Save(output);
  return output;
}

}  // namespace korvan
