// What a program compiled with version 1.0 knows of INI documents: how large
// they are, so that it can hold one, and what their members do.
#include <korvan/ini_file.h>
#include <korvan/text.h>

#include <cstdio>
#include <sstream>

int main() {
  korvan::CIniFileA file;
  std::istringstream input("[Main]\n[key=value\n[number=42\n");
  input >> file;
  korvan::CIniFileA::CIniSectionA* const section = file.GetSection("MAIN");
  if (section == nullptr || section->GetKeyValue("[KEY") != "value" ||
      file.GetKeyValueDword("Main", "[number") != 42) {
    std::puts("another document is read");
    return 1;
  }
  section->SetKeyValue("more", "1");
  file.AddSection("Second");
  unsigned int keys = 0;
  for (const auto& named_section : file.GetSections()) {
    keys += static_cast<unsigned int>(named_section.second->GetKeys().size());
  }
  std::ostringstream output;
  output << file;
  if (keys != 3 || file.GetSections().size() != 2 ||
      output.str().find("[Second]") == std::string::npos) {
    std::printf("%u keys are written as\n%s", keys, output.str().c_str());
    return 1;
  }
  korvan::CIniFileW wide;
  wide.SetKeyValue(L"Main", L"name", L"value");
  std::wstring text = L" text ";
  korvan::Trim(text, L" ");
  if (wide.GetKeyValue(L"main", L"NAME") != L"value" || text != L"text") {
    std::puts("wide text is another");
    return 1;
  }
  return 0;
}
