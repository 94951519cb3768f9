// All 2^32 numbers of texts.
#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "exhaustion/every.h"
#include "resources/expected_texts.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

class Check {
 public:
  std::string operator()(std::uint64_t number) {
    const auto id = static_cast<unsigned int>(number);
    // No text has as many characters, and none has this one.
    char text[64];
    std::memset(text, '#', sizeof(text));
    SetLastError(kUntouchedError);
    const int size = LoadString_korvan(nullptr, id, text, sizeof(text));
    const auto expected =
        id < 0x10000 ? kExpectedTexts.find(id) : kExpectedTexts.end();
    const bool is_right =
        expected == kExpectedTexts.end()
            ? size == 0 && text[0] == '\0' && text[1] == '#' &&
                  GetLastError() == ERROR_INVALID_PARAMETER
            : expected->second + '#' ==
                      std::string(text, expected->second.size() + 1) &&
                  size == static_cast<int>(expected->second.size()) &&
                  GetLastError() == kUntouchedError;
    return is_right ? "" : "text " + std::to_string(id);
  }
};

}  // namespace
}  // namespace korvan::test

int main() {
  return korvan::test::LookAtEvery("numbers of texts", std::uint64_t{1} << 32,
                                   [] { return korvan::test::Check(); });
}
