// The INI classes of wide text: what they have of their own. The rest of their
// definitions comes from ini_file.inc.
#include <korvan/ini_file.h>

#include <string>
#include <utility>

#include "ini/twins.h"

namespace korvan {

using Char = wchar_t;
using File = CIniFileW;
using Section = File::CIniSectionW;
using Key = Section::CIniKeyW;
using Merge = File::CIniMergeW;

}  // namespace korvan

#include "ini/ini_file.inc"

namespace korvan {

bool ci_less_w::operator()(const std::wstring& left,
                           const std::wstring& right) const {
  return ini::CompareNames(left, right) < 0;
}

Key::CIniKeyW(Section* owner, std::wstring name)
    : name_(std::move(name)), owner_(owner) {}

Key::~CIniKeyW() = default;

Section::CIniSectionW(File* owner, std::wstring name)
    : owner_(owner), name_(std::move(name)) {}

Section::~CIniSectionW() { RemoveAllKeys(); }

const wchar_t* const File::LF = L"\n";

File::CIniFileW() = default;

File::~CIniFileW() { RemoveAllSections(); }

// ini_file.inc keeps the functions of both widths alike; this, the members.
static_assert(sizeof(CIniFileW) == sizeof(CIniFileA));
static_assert(sizeof(CIniFileW::CIniSectionW) ==
              sizeof(CIniFileA::CIniSectionA));
static_assert(sizeof(CIniFileW::CIniSectionW::CIniKeyW) ==
              sizeof(CIniFileA::CIniSectionA::CIniKeyA));
static_assert(sizeof(CIniFileW::CIniMergeW) == sizeof(CIniFileA::CIniMergeA));

}  // namespace korvan
