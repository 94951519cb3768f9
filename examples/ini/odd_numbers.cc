// Which numbers values are.
#include <korvan/korvan.h>

#include <iostream>
#include <string>

int main() {
  korvan::CIniFileA document;
  for (const std::string value :
       {"75", " 75 apples", "0x10", "-1", "4294967296", "none", ""}) {
    document.SetKeyValue("Main", "[Key", value);
    std::cout << '\'' << value
              << "': " << document.GetKeyValueDword("Main", "[Key") << '\n';
  }
  std::cout << "no key: " << document.GetKeyValueDword("Main", "[Other")
            << '\n';
  document.SetKeyValueDword("Main", "[Key", 4294967297);
  std::cout << "written " << document.GetKeyValue("Main", "[Key") << ", read "
            << document.GetKeyValueDword("Main", "[Key") << '\n';
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// '75': 75
// ' 75 apples': 75
// '0x10': 0
// '-1': 4294967295
// '4294967296': 0
// 'none': 4294967295
// '': 4294967295
// no key: 4294967295
// written 4294967297, read 1
