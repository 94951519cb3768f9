// What the targets share: decoding of their input, the check that ends a run,
// and locales.
#ifndef KORVAN_FUZZ_SUPPORT_INPUT_H_
#define KORVAN_FUZZ_SUPPORT_INPUT_H_

#include <fuzzer/FuzzedDataProvider.h>
#include <locale.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace korvan::test {

// It takes numbers from the end of the input and texts from its beginning, so
// that the texts of an input can be read in a file. When the input is used up,
// numbers are 0 and texts empty.
using Input = FuzzedDataProvider;

// A finding: both fuzzers take an abort for one. It is not inlined, so that the
// stack tells whose.
[[gnu::noinline]] inline void Expect(bool holds) {
  if (!holds) {
    std::abort();
  }
}

// A number below `end`, which is 256 at most.
inline std::size_t Below(Input& input, std::size_t end) {
  return input.ConsumeIntegralInRange<std::size_t>(0, end - 1);
}

// An input of a text and settings: so many bytes at its end are settings, all
// before them is the text, which a mutation can lengthen without a change of
// the settings.
class TextAndSettings {
 public:
  TextAndSettings(const std::uint8_t* data, std::size_t size)
      : text_(reinterpret_cast<const char*>(data),
              size - std::min(size, kSettings)),
        settings_(data + text_.size(), size - text_.size()) {}

  std::string_view text() const { return text_; }
  Input& settings() { return settings_; }

 private:
  static constexpr std::size_t kSettings = 64;

  std::string_view text_;
  Input settings_;
};

// True in about one of `times` inputs, and false when the input is used up.
inline bool OneIn(Input& input, std::size_t times) {
  return Below(input, times) == times - 1;
}

// How long a text of an input is made: mostly not at all, since a long one
// takes the time of many inputs. The longest line is longer than what the
// library reads ahead of a file for one.
inline std::size_t AnyStretch(Input& input) {
  const std::size_t number = Below(input, 256);
  return number == 255  ? 270000
         : number > 252 ? 20000
         : number > 240 ? 1100
         : number > 200 ? 40
                        : 1;
}

// Locales that fold the case of ASCII letters, of other characters and of
// neither in different ways, with one byte a character and with several.
inline constexpr const char* kLocales[] = {"C", "C.UTF-8", "tr_TR.UTF-8",
                                           "ru_RU.KOI8-R", "ja_JP.SHIFT_JIS"};

inline std::size_t AnyLocale(Input& input) {
  return Below(input, std::size(kLocales));
}

// The C library's locale of the one thread that runs: quicker to set than the
// process's, and the same to all functions. The C locale is back in the end.
class ThreadLocale {
 public:
  explicit ThreadLocale(std::size_t number = 0) { Set(number); }
  ThreadLocale(const ThreadLocale&) = delete;
  ThreadLocale& operator=(const ThreadLocale&) = delete;
  ~ThreadLocale() { Set(0); }

  void Set(std::size_t number) {
    static std::array<locale_t, std::size(kLocales)> made = {};
    if (made[number] == nullptr) {
      made[number] = newlocale(LC_ALL_MASK, kLocales[number], nullptr);
      Expect(made[number] != nullptr);
    }
    uselocale(made[number]);
  }
};

}  // namespace korvan::test

#endif  // KORVAN_FUZZ_SUPPORT_INPUT_H_
