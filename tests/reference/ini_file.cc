// The examples of <korvan/ini_file.h>: the names, the three levels of a
// document, its texts and files.
#include "reference/reference.h"

namespace {

void CompareNames() {
  assert(korvan::ci_less_a()("Alpha", "BETA"));
  assert(!korvan::ci_less_a()("beta", "BETA"));

  assert(korvan::ci_less_w()(L"Alpha", L"BETA"));
}

void UseAKey(korvan::CIniFileA::CIniSectionA* section) {
  auto* key = section->AddKey("[Type");
  assert(section->AddKey("[TYPE") == key);

  assert(section->GetKey("[type") == key);

  assert(key->GetKeyName() == "[Type");

  section->SetKeyValue("[Type", "75");
  assert(key->GetValue() == "75");

  key->SetValue("80");
  assert(key->GetValue() == "80");

  assert(key->SetKeyName("[Kind"));
  assert(!key->SetKeyName("[KIND"));

  section->SetKeyValue("[Name", "GOST");

  assert(section->GetKeyValue("[name") == "GOST");
  assert(section->GetKeyValue("none").empty());

  for (const auto& entry : section->GetKeys()) {
    assert(entry.first == entry.second->GetKeyName());
  }

  section->RemoveKey("[Kind");

  section->RemoveKey(section->GetKey("[Name"));
  assert(section->GetKeys().empty());

  section->AddKey("[Type");
  section->RemoveAllKeys();
  assert(section->GetKeys().empty());

  korvan::CIniFileA::CIniSectionA::CIniKeyA lone(nullptr, "Type");
  assert(lone.GetValue().empty());

  using Key = korvan::CIniFileA::CIniSectionA::CIniKeyA;
  { const Key gone(nullptr, "Type"); }
}

void UseASection() {
  korvan::CIniFileA settings;
  assert(settings.GetSections().empty());

  auto* section = settings.AddSection("Provider");
  assert(settings.AddSection("PROVIDER") == section);

  assert(settings.GetSection("provider") == section);
  assert(settings.GetSection("Other") == nullptr);

  assert(section->GetSectionName() == "Provider");

  UseAKey(section);

  assert(section->SetSectionName("Main"));
  assert(!section->SetSectionName("MAIN"));

  for (const auto& entry : settings.GetSections()) {
    assert(entry.first == entry.second->GetSectionName());
  }

  settings.RemoveSection("Main");

  settings.AddSection("Main");
  settings.RemoveSection(settings.GetSection("Main"));
  assert(settings.GetSections().empty());

  settings.AddSection("Main");
  settings.RemoveAllSections();
  assert(settings.GetSections().empty());

  korvan::CIniFileA::CIniSectionA apart(nullptr, "Provider");
  assert(apart.GetKeys().empty());

  { const korvan::CIniFileA::CIniSectionA gone(nullptr, "Main"); }

  { korvan::CIniFileA gone; }
}

void UseADocument() {
  korvan::CIniFileA settings;
  std::istringstream input("[Provider]\n[Type=75\nname=skipped\n");
  settings.Load(input);
  assert(settings.GetKeyValue("provider", "[type") == "75");
  assert(settings.GetSection("Provider")->GetKey("name") == nullptr);

  std::ostringstream output;
  settings.Save(output);
  assert(output.str() == "[Provider]\n[Type=75\n");

  assert(settings.RenameSection("provider", "Main"));

  settings.SetKeyValue("Main", "[Type", "75");

  assert(settings.GetKeyValue("main", "[type") == "75");

  std::istringstream more("[Main]\n[Type=81\n");
  more >> korvan::CIniFileA::CIniMergeA(settings);
  assert(settings.GetKeyValue("Main", "[Type") == "81");

  settings.SetKeyValue("Main", "[Type", "75");
  assert(settings.RenameKey("Main", "[Type", "[Kind"));

  assert(settings.GetKeyValueDword("Main", "[Kind") == 75);
  assert(settings.GetKeyValueDword("Main", "none") == 4294967295);

  settings.SetKeyValueDword("Main", "[Port", 8080);
  assert(settings.GetKeyValue("Main", "[Port") == "8080");

  assert(!settings.Load(std::string("/no/such/file.ini")));

  assert(!settings.Save(std::string("/no/such/folder/file.ini")));

  korvan::CIniFileW wide;
  assert(!wide.Load(std::wstring(L"/no/such/file.ini")));

  assert(!wide.Save(std::wstring(L"/no/such/folder/file.ini")));
}

}  // namespace

int main() {
  CompareNames();
  UseASection();
  UseADocument();
}
