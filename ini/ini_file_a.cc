// The INI classes of narrow text: what they have of their own. The rest of
// their definitions comes from ini_file.inc.
#include <korvan/ini_file.h>

#include <cstdio>
#include <string>
#include <utility>

#include "ini/twins.h"

namespace korvan {

using Char = char;
using File = CIniFileA;
using Section = File::CIniSectionA;
using Key = Section::CIniKeyA;
using Merge = File::CIniMergeA;

}  // namespace korvan

#include "ini/ini_file.inc"

namespace korvan {

bool ci_less_a::operator()(const std::string& left,
                           const std::string& right) const {
  return ini::CompareNames(left, right) < 0;
}

Key::CIniKeyA(Section* owner, std::string name)
    : name_(std::move(name)), owner_(owner) {}

Key::~CIniKeyA() = default;

Section::CIniSectionA(File* owner, std::string name)
    : owner_(owner), name_(std::move(name)) {}

Section::~CIniSectionA() { RemoveAllKeys(); }

const char* const File::LF = "\n";

File::CIniFileA() = default;

File::~CIniFileA() { RemoveAllSections(); }

unsigned long File::GetKeyValueDword(std::string section,
                                     std::string key) const {
  unsigned int number = 0xFFFFFFFF;  // stays where the text holds no number
  if (const Key* const found =
          FindKey(*this, std::move(section), std::move(key))) {
    static_cast<void>(std::sscanf(found->value_.c_str(), "%u", &number));
  }
  return number;
}

void File::SetKeyValueDword(std::string section, std::string key,
                            unsigned long value) {
  SetKeyValue(std::move(section), std::move(key), std::to_string(value));
}

}  // namespace korvan
