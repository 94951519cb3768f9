// Names that are one name, and what that does to editing.
#include <korvan/korvan.h>

#include <iostream>
#include <string>

int main() {
  std::cout << std::boolalpha;
  korvan::CIniFileA document;
  document.SetKeyValue("Main", " [Key\t", "  value");
  document.SetKeyValue("MAIN", "[KEY", "  other");    // the spelling stays
  document.AddSection(std::string("Main\0more", 9));  // a NUL ends a name
  std::cout << document;

  // A new name that differs in case alone is taken already, by the key itself.
  auto* const section = document.GetSection("main");
  std::cout << "[Key to [KEY: " << section->GetKey("[Key")->SetKeyName("[KEY")
            << '\n';
  std::cout << "by a third name: " << document.RenameKey("Main", "[Key", "[x")
            << ", " << document.RenameKey("Main", "[x", "[KEY") << '\n';

  // The name of the argument decides, not the pointer.
  korvan::CIniFileA other;
  other.SetKeyValue("Main", "[key", "stays");
  section->RemoveKey(other.GetSection("Main")->GetKey("[key"));
  std::cout << "left: " << section->GetKeys().size() << " keys, and "
            << other.GetKeyValue("Main", "[key") << '\n';
  document.RemoveSection(other.GetSection("Main"));
  std::cout << "left: " << document.GetSections().size() << " sections, and "
            << other.GetKeyValue("Main", "[key") << '\n';
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// [Main]
// [Key=  other
// [Key to [KEY: false
// by a third name: true, true
// left: 0 keys, and stays
// left: 0 sections, and stays
