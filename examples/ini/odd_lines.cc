// What the reader makes of lines that look like others.
#include <korvan/korvan.h>

#include <iostream>
#include <sstream>
#include <string>

// Prints what a line gives that is read after the header "[s]".
static void Show(const std::string& line) {
  std::istringstream text("[s]\n" + line);
  korvan::CIniFileA document;
  document.Load(text);
  std::cout << line << '|';
  for (const auto& section : document.GetSections()) {
    if (section.first != "s") {
      std::cout << " the section '" << section.first << '\'';
    }
    for (const auto& key : section.second->GetKeys()) {
      std::cout << " the key '" << key.first << "' with '"
                << key.second->GetValue() << '\'';
    }
  }
  std::cout << '\n';
}

int main() {
  Show("key=value");
  Show("[key=value");
  Show("[key = value ");
  Show("[key]=value");
  Show("[key=value]");
  Show("[Main]");
  Show("[ Main ]");
  Show("[Main] ");
  Show("[Main] ; note");
  Show("[a=b=c");
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// key=value|
// [key=value| the key '[key' with 'value'
// [key = value | the key '[key' with ' value '
// [key]=value| the key '[key]' with 'value'
// [key=value]| the section 'key=value'
// [Main]| the section 'Main'
// [ Main ]| the section 'Main'
// [Main] | the section 'Main]'
// [Main] ; note|
// [a=b=c| the key '[a' with 'b=c'
