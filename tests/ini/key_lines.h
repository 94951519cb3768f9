// Key lines in no order, enough of which are entered at once.
#ifndef KORVAN_TESTS_INI_KEY_LINES_H_
#define KORVAN_TESTS_INI_KEY_LINES_H_

#include <string>

namespace korvan::test {

// 7 must have no divisor in common with `count`.
inline std::string KeyLines(int count, const std::string& value) {
  std::string lines;
  for (int i = 0; i < count; ++i) {
    lines += "[k" + std::to_string(1000 + i * 7 % count) + "=" + value + "\n";
  }
  return lines;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_INI_KEY_LINES_H_
