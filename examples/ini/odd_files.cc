// What `true` means where a file is loaded or saved.
#include <korvan/korvan.h>

#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

int main() {
  std::cout << std::boolalpha;
  korvan::CIniFileA document;
  document.SetKeyValue("Main", "[Key", "value");

  // A file that can't be opened leaves the document alone.
  std::cout << "no file: " << document.Load(std::string("none.ini")) << ", "
            << document.GetSections().size() << " section\n";
  // A disk without room opens, and takes nothing.
  std::cout << "to a full disk: " << document.Save(std::string("/dev/full"))
            << '\n';
  // A folder opens, and has no lines: the document is empty afterwards.
  std::cout << "a folder: " << document.Load(std::string(".")) << ", "
            << document.GetSections().size() << " sections\n";

  // A stream of one's own tells whether all was written.
  document.SetKeyValue("Main", "[Key", "value");
  std::ofstream full("/dev/full");
  document.Save(full);
  full.close();
  std::cout << "by a stream: " << !full.fail() << '\n';

  // The width of a stream pads the first header.
  std::ostringstream padded;
  padded << std::setfill('.') << std::setw(9) << document;
  std::cout << padded.str();
  return std::cout.flush() ? 0 : 1;
}
// It prints:
// no file: false, 1 section
// to a full disk: true
// a folder: true, 0 sections
// by a stream: false
// ...[Main]
// [Key=value
