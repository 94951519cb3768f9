// Access to the characters that a stream buffer has at hand (its get area) and
// to the room that it has at hand (its put area).
//
// Both areas may lie oddly. A caller's buffer may leave `gptr` beyond `egptr`,
// and a `std::filebuf` that failed to write a character leaves `pptr` one
// beyond `epptr`. So a difference of these pointers may be negative: there is
// then nothing to read and no room to write.
#ifndef KORVAN_INI_STREAM_AREA_H_
#define KORVAN_INI_STREAM_AREA_H_

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <sstream>
#include <streambuf>
#include <string_view>
#include <typeinfo>

namespace korvan::ini {

// The characters that a stream buffer has at hand. `gptr` and its kin are
// protected: only a derived class may form a pointer to them.
template <class Char>
class GetArea : private std::basic_streambuf<Char> {
 public:
  using Buffer = std::basic_streambuf<Char>;

  static std::basic_string_view<Char> Of(const Buffer& buffer) {
    const Char* const next = (buffer.*&GetArea::gptr)();
    const std::ptrdiff_t size = (buffer.*&GetArea::egptr)() - next;
    return {next, static_cast<std::size_t>(std::max<std::ptrdiff_t>(size, 0))};
  }

  // Takes the characters before `end`. (`gbump` counts in int.)
  static void TakeUpTo(Buffer& buffer, const Char* end) {
    Char* const next = (buffer.*&GetArea::gptr)();
    (buffer.*&GetArea::setg)((buffer.*&GetArea::eback)(), next + (end - next),
                             (buffer.*&GetArea::egptr)());
  }
};

// The room that a stream buffer has at hand; see GetArea.
template <class Char>
class PutArea : private std::basic_streambuf<Char> {
 public:
  using Buffer = std::basic_streambuf<Char>;
  using View = std::basic_string_view<Char>;

  // Whether a buffer is one of the standard library's own. A class derived
  // from these may override what they do, and would miss what passes it by.
  static bool IsOpenTo(const Buffer& buffer) {
    return typeid(buffer) == typeid(std::basic_stringbuf<Char>) ||
           typeid(buffer) == typeid(std::basic_filebuf<Char>);
  }

  // Whether a text of this size would go into the area, and no farther, be it
  // in one piece or in two. A text that fills the area, or is long, may take a
  // file's buffer straight to the file, where it may fail.
  static bool Takes(const Buffer& buffer, std::size_t size) {
    constexpr std::ptrdiff_t kLong = 1024;
    return static_cast<std::ptrdiff_t>(size) < std::min(Room(buffer), kLong);
  }

  // Whether the area holds a character more than it has room for, which its
  // file refused.
  static bool IsOverfull(const Buffer& buffer) { return Room(buffer) < 0; }

  // Puts a text that the area takes.
  static void Put(Buffer& buffer, View text) {
    text.copy((buffer.*&PutArea::pptr)(), text.size());
    (buffer.*&PutArea::pbump)(static_cast<int>(text.size()));
  }

 private:
  static std::ptrdiff_t Room(const Buffer& buffer) {
    return (buffer.*&PutArea::epptr)() - (buffer.*&PutArea::pptr)();
  }
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_STREAM_AREA_H_
