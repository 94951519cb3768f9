// The examples of <korvan/ini_file.h>: the stream operators, narrow and wide,
// and the document at the head of the file.
#include "reference/reference.h"

namespace {

void Narrow() {
  korvan::CIniFileA settings;
  std::istringstream text("[Provider]\n");
  text >> settings;
  assert(settings.GetSections().size() == 1);

  std::istringstream second("[Other]\n");
  second >> korvan::CIniFileA::CIniMergeA(settings);
  assert(settings.GetSections().size() == 2);

  std::ostringstream written;
  written << settings;
  assert(written.str() == "[Other]\n[Provider]\n");
}

void Wide() {
  korvan::CIniFileW settings;
  std::wistringstream text(L"[Provider]\n");
  text >> settings;
  assert(settings.GetSections().size() == 1);

  std::wistringstream second(L"[Other]\n");
  second >> korvan::CIniFileW::CIniMergeW(settings);
  assert(settings.GetSections().size() == 2);

  std::wostringstream written;
  written << settings;
  assert(written.str() == L"[Other]\n[Provider]\n");
}

void AtTheHead() {
  korvan::CIniFileA settings;
  settings.SetKeyValue("Provider", "[Type", "75");
  const bool opened = settings.Save(std::string("provider.ini"));
  assert(opened && std::remove("provider.ini") == 0);
}

}  // namespace

int main() {
  AtTheHead();
  Narrow();
  Wide();
}
