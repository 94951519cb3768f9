// What becomes of characters that a wide file, or a file's name, can't hold.
#include <korvan/korvan.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <locale>
#include <string>

int main() {
  std::cout << std::boolalpha;
  {
    // The locale "C" lacks the value's letter, which ends the save.
    korvan::CIniFileW document;
    document.SetKeyValue(L"Main", L"[Key", L"ж");
    std::cout << "in the locale C: " << document.Save(L"example.ini");
    std::ifstream file("example.ini", std::ios::ate);
    std::cout << ", " << file.tellg() << " bytes\n";
    std::remove("example.ini");
  }
  std::locale::global(std::locale("C.UTF-8"));

  // Bytes that are no UTF-8 end a load. What came before stays.
  std::ofstream("example.ini") << "[One]\n[Key=value\n[Two]\n\xFF\n[Three]\n";
  korvan::CIniFileW document;
  std::cout << "in UTF-8: " << document.Load(L"example.ini") << ", "
            << document.GetSections().size() << " sections\n";
  std::remove("example.ini");

  // A name has as many bytes as it had characters. The rest is lost.
  const std::string name = korvan::wstr_to_str(L"жук.ini");
  std::cout << name.size() << " bytes: " << name << '\n';
  std::cout << "saved: " << document.Save(L"жук.ini");
  std::cout << ", as жук.: " << (std::remove("жук.") == 0) << '\n';
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// in the locale C: true, 0 bytes
// in UTF-8: true, 2 sections
// 7 bytes: жук.
// saved: true, as жук.: true
