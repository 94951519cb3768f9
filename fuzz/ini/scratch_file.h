// Files in memory that documents are loaded from and saved to by name, and the
// conversions of files.
#ifndef KORVAN_FUZZ_INI_SCRATCH_FILE_H_
#define KORVAN_FUZZ_INI_SCRATCH_FILE_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cwchar>
#include <locale>
#include <string>
#include <string_view>

#include "support/input.h"

namespace korvan::test {

// The name of an open file.
inline std::string NameOf(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

class ScratchFile {
 public:
  ScratchFile() : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    Expect(descriptor_ >= 0);
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { close(descriptor_); }

  std::string name() const { return NameOf(descriptor_); }

  void Fill(std::string_view bytes) {
    Expect(ftruncate(descriptor_, 0) == 0);
    Expect(pwrite(descriptor_, bytes.data(), bytes.size(), 0) ==
           static_cast<ssize_t>(bytes.size()));
  }

  std::string Bytes() const {
    std::string bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)),
                      '\0');
    Expect(pread(descriptor_, bytes.data(), bytes.size(), 0) ==
           static_cast<ssize_t>(bytes.size()));
    return bytes;
  }

 private:
  int descriptor_;
};

// Adds 1 to each byte of a file when it is read, and refuses one.
class ShiftedBytes : public std::codecvt<char, char, std::mbstate_t> {
 protected:
  result do_in(std::mbstate_t&, const char* from, const char* from_end,
               const char*& from_next, char* to, char* to_end,
               char*& to_next) const override {
    return Shift(1, from, from_end, from_next, to, to_end, to_next);
  }
  result do_out(std::mbstate_t&, const char* from, const char* from_end,
                const char*& from_next, char* to, char* to_end,
                char*& to_next) const override {
    return Shift(-1, from, from_end, from_next, to, to_end, to_next);
  }
  int do_encoding() const noexcept override { return 1; }
  bool do_always_noconv() const noexcept override { return false; }
  int do_max_length() const noexcept override { return 1; }

 private:
  static constexpr char kRefused = '\x05';

  static result Shift(int by, const char* from, const char* from_end,
                      const char*& from_next, char* to, char* to_end,
                      char*& to_next) {
    result status = ok;
    for (; from != from_end && status == ok; ++from, ++to) {
      if (to == to_end) {
        status = partial;
        break;
      }
      if (*from == kRefused) {
        status = error;
        break;
      }
      *to = static_cast<char>(*from + by);
    }
    from_next = from;
    to_next = to;
    return status;
  }
};

// How a file's bytes become characters: as in the C locale, in UTF-8, in
// another encoding, or by ShiftedBytes.
inline const std::locale& FileLocale(std::size_t number) {
  static const std::locale kFileLocales[] = {
      std::locale::classic(), std::locale("C.UTF-8"),
      std::locale("ru_RU.KOI8-R"),
      std::locale(std::locale::classic(), new ShiftedBytes)};
  return kFileLocales[number];
}
constexpr std::size_t kFileLocaleCount = 4;

// The global C++ locale, which a file takes its conversion from.
class GlobalLocale {
 public:
  explicit GlobalLocale(std::size_t number) : is_set_(number != 0) {
    if (is_set_) {
      std::locale::global(FileLocale(number));
    }
  }
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;
  ~GlobalLocale() {
    if (is_set_) {
      std::locale::global(std::locale::classic());
    }
  }

 private:
  bool is_set_;
};

}  // namespace korvan::test

#endif  // KORVAN_FUZZ_INI_SCRATCH_FILE_H_
