// Reads an INI file in UTF-16, which the C library converts.
#include <iconv.h>
#include <korvan/korvan.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

// Converts bytes in UTF-16, with a byte-order mark or in little-endian order.
// False where they are no UTF-16.
static bool Convert(const std::string& bytes, std::wstring& text) {
  const bool marked = bytes.compare(0, 2, "\xFF\xFE") == 0 ||
                      bytes.compare(0, 2, "\xFE\xFF") == 0;
  const iconv_t converter =
      iconv_open("WCHAR_T", marked ? "UTF-16" : "UTF-16LE");
  if (reinterpret_cast<std::intptr_t>(converter) == -1) {
    return false;
  }
  text.resize(bytes.size() / 2);  // a character takes two bytes or four
  char* in = const_cast<char*>(bytes.data());  // only read
  char* out = reinterpret_cast<char*>(text.data());
  std::size_t in_left = bytes.size();
  std::size_t out_left = text.size() * sizeof(wchar_t);
  const bool done = iconv(converter, &in, &in_left, &out, &out_left) == 0;
  iconv_close(converter);
  text.resize(text.size() - out_left / sizeof(wchar_t));
  return done && in_left == 0;
}

int main() {
  const char bytes[] = "\xFF\xFE[\0M\0a\0i\0n\0]\0\n\0[\0K\0=\0\x3D\x04\n";
  std::ofstream("example.ini", std::ios::binary)
      .write(bytes, sizeof(bytes));  // the last 0 is the line feed's

  std::ifstream file("example.ini", std::ios::binary);
  std::wstring text;
  const bool done = Convert({std::istreambuf_iterator<char>(file), {}}, text);
  std::remove("example.ini");
  korvan::CIniFileW settings;
  std::wistringstream stream(text);
  settings.Load(stream);
  const std::wstring value = settings.GetKeyValue(L"Main", L"[K");
  std::cout << text.size() << " characters, [K is U+0" << std::hex
            << std::uppercase << int(value.at(0)) << '\n';
  return done && std::cout.flush() ? 0 : 1;
}
// It prints:
// 12 characters, [K is U+043D
