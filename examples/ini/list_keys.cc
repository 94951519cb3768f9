// Lists the sections of a document, and their keys.
#include <korvan/korvan.h>

#include <iostream>
#include <sstream>

int main() {
  std::istringstream file("[net]\n[Port=80\n[host=a\n[Empty]\n[Log]\n[On=1\n");
  korvan::CIniFileA settings;
  settings.Load(file);
  for (const auto& section : settings.GetSections()) {
    std::cout << section.first << '\n';
    for (const auto& key : section.second->GetKeys()) {
      std::cout << "  " << key.first << " is " << key.second->GetValue()
                << '\n';
    }
  }
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// Empty
// Log
//   [On is 1
// net
//   [host is a
//   [Port is 80
