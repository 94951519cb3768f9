// Tells a key that is missing from one whose value is empty.
#include <korvan/korvan.h>

#include <iostream>
#include <sstream>
#include <string>

static std::string Value(const korvan::CIniFileA& settings,
                         const std::string& section, const std::string& key) {
  const auto* found = settings.GetSection(section);
  if (found == nullptr) {
    return "no such section";
  }
  const auto* found_key = found->GetKey(key);
  if (found_key == nullptr) {
    return "no such key";
  }
  return "'" + found_key->GetValue() + "'";
}

int main() {
  std::istringstream file("[Log]\n[Level=\n[File=a.log\n");
  korvan::CIniFileA settings;
  settings.Load(file);
  std::cout << "Log, [File: " << Value(settings, "Log", "[File") << '\n'
            << "Log, [Level: " << Value(settings, "Log", "[Level") << '\n'
            << "Log, [Mode: " << Value(settings, "Log", "[Mode") << '\n'
            << "Net, [Port: " << Value(settings, "Net", "[Port") << '\n';

  // These give the same for the three last ones.
  std::cout << "by name: '" << settings.GetKeyValue("Log", "[Level") << "', '"
            << settings.GetKeyValue("Log", "[Mode") << "', '"
            << settings.GetKeyValue("Net", "[Port") << "'\n"
            << "as a number: " << settings.GetKeyValueDword("Log", "[Level")
            << ", " << settings.GetKeyValueDword("Net", "[Port") << '\n';
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// Log, [File: 'a.log'
// Log, [Level: ''
// Log, [Mode: no such key
// Net, [Port: no such section
// by name: '', '', ''
// as a number: 4294967295, 4294967295
