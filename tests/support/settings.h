// Lists of settings for a test that is to hold under all of them.
#ifndef KORVAN_TESTS_SUPPORT_SETTINGS_H_
#define KORVAN_TESTS_SUPPORT_SETTINGS_H_

#include <cstddef>
#include <numeric>
#include <type_traits>
#include <vector>

namespace korvan::test {

// Replaces each of the settings by one for each value of a field. Begun with
// one setting and called for several fields, it gives all combinations.
template <class Settings, class Value>
void Vary(std::vector<Settings>& settings, Value Settings::*field,
          const std::vector<std::type_identity_t<Value>>& values) {
  std::vector<Settings> varied;
  for (const Settings& setting : settings) {
    for (const Value& value : values) {
      varied.push_back(setting);
      varied.back().*field = value;
    }
  }
  settings = varied;
}

// 0, 1, 2 and so on, `last` included.
inline std::vector<std::size_t> NumbersUpTo(std::size_t last) {
  std::vector<std::size_t> numbers(last + 1);
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  return numbers;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_SETTINGS_H_
