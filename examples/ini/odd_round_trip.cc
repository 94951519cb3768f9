// Saves a document, and loads what was saved.
#include <korvan/korvan.h>

#include <iostream>
#include <sstream>

int main() {
  korvan::CIniFileA document;
  document.SetKeyValue("Provider", "Name", "example");
  document.SetKeyValue("Provider", "[Type", "75");
  document.SetKeyValue("Provider", "[List", "[a]");
  document.SetKeyValue("Provider", "[Text", "first\nsecond");
  std::stringstream text;
  text << document;
  std::cout << "saved:\n" << text.str();

  text >> document;
  std::cout << "loaded, and saved again:\n" << document;
  // The reader has left the stream at its end, as std::getline would.
  std::cout << "the stream has " << (text ? "not failed\n" : "failed\n");
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// saved:
// [Provider]
// [List=[a]
// [Text=first
// second
// [Type=75
// Name=example
// loaded, and saved again:
// [List=[a]
// [Text=first
// [Type=75
// [Provider]
// the stream has failed
