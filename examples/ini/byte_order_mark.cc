// Reads INI text that begins with a byte-order mark, narrow and wide.
#include <korvan/korvan.h>

#include <iostream>
#include <sstream>
#include <string>

// In UTF-8 the mark is three bytes. The stream must be able to go back.
static void SkipMark(std::istream& text) {
  std::string first(3, '\0');
  text.read(&first[0], 3);
  if (first != "\xEF\xBB\xBF") {
    text.clear();
    text.seekg(0);
  }
}

static void SkipMark(std::wistream& text) {
  if (text.peek() == 0xFEFF) {
    text.get();
  }
}

int main() {
  const char* const bytes = "\xEF\xBB\xBF[Main]\n[Key=value\n";
  korvan::CIniFileA settings;
  std::istringstream marked(bytes);
  settings.Load(marked);
  std::cout << "with the mark: " << settings.GetSections().size()
            << " sections\n";
  std::istringstream text(bytes);
  SkipMark(text);
  settings.Load(text);
  std::cout << "without it: " << settings.GetKeyValue("Main", "[Key") << '\n';

  korvan::CIniFileW wide;
  std::wistringstream wide_text(L"\xFEFF[Main]\n[Key=value\n");
  SkipMark(wide_text);
  wide.Load(wide_text);
  std::cout << "wide: " << wide.GetSections().size() << " section\n";
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// with the mark: 0 sections
// without it: value
// wide: 1 section
