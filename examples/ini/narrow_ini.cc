// Reads an INI file, changes it and writes it.
#include <korvan/korvan.h>

#include <iostream>
#include <sstream>

int main() {
  // Only lines that begin with "[" are read, so the names of keys do, too.
  std::istringstream file("[Provider]\n[Name=example\n# a comment\n");
  korvan::CIniFileA settings;
  settings.Load(file);
  std::cout << settings.GetSection("provider")->GetKey("[NAME")->GetValue()
            << '\n';

  settings.SetKeyValueDword("Provider", "[Type", 75);
  settings.SetKeyValue("Log", "[Level", "2");
  settings.RemoveSection("None");  // which is no error
  settings.Save(std::cout);
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// example
// [Log]
// [Level=2
// [Provider]
// [Name=example
// [Type=75
