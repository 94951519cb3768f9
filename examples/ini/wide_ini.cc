// Reads a wide INI file in UTF-8, and writes it to another one.
#include <korvan/korvan.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <locale>

int main() {
  // The global locale decides in which encoding files are, and how names fold.
  std::locale::global(std::locale("C.UTF-8"));
  std::ofstream("example.ini") << "[Имя]\n[Ключ=значение\n";

  korvan::CIniFileW settings;
  if (!settings.Load(L"example.ini")) {
    std::cerr << "example.ini can't be opened\n";
    return 1;
  }
  settings.SetKeyValue(L"ИМЯ", L"[ключ", L"другое");
  const bool saved = settings.Save(L"saved.ini");

  std::cout << std::ifstream("saved.ini").rdbuf();
  std::remove("example.ini");
  std::remove("saved.ini");
  return saved && std::cout.flush() ? 0 : 1;
}
// It prints:
// [Имя]
// [Ключ=другое
