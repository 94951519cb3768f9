// Where files are mapped into this process, as the system tells it.
#ifndef KORVAN_TESTS_SUPPORT_MAPPINGS_H_
#define KORVAN_TESTS_SUPPORT_MAPPINGS_H_

#include <cstdint>
#include <fstream>
#include <ios>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace korvan::test {

struct Mapping {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

// The mappings of the files whose path has `part` in it, the lowest first.
inline std::vector<Mapping> MappingsOf(std::string_view part) {
  std::vector<Mapping> mappings;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find(part) != line.npos) {
      Mapping mapping;
      char dash;
      std::istringstream(line) >> std::hex >> mapping.begin >> dash >>
          mapping.end;
      mappings.push_back(mapping);
    }
  }
  return mappings;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_MAPPINGS_H_
