// Access to the characters that a stream buffer has ready to be read (its get
// area), and to the room that it has ready to be written to (its put area).
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

// The pointers to an area come from a standard or a caller's class and may lie
// oddly. A caller's buffer may leave gptr beyond egptr. A std::filebuf that
// failed to write a character leaves pptr one beyond epptr (libstdc++ 12). So
// every difference of them is taken with its sign, and one below zero means
// that there is nothing to read or no room to write.

// The get area of a stream buffer, of whatever class. The standard line reader
// takes its characters from there, too, and calls the buffer only when there
// are none, so the buffer can't tell the difference.
//
// gptr, egptr and the others are protected. Only a derived class may form
// pointers to these members, which then work on any buffer. So this class is
// derived, but no object of it is ever made.
template <class Char>
class GetArea : private std::basic_streambuf<Char> {
 public:
  using Buffer = std::basic_streambuf<Char>;
  using View = std::basic_string_view<Char>;

  // The characters in the area. They stay valid until the buffer is used.
  static View Of(const Buffer& buffer) {
    const Char* const next = (buffer.*&GetArea::gptr)();
    const std::ptrdiff_t size = (buffer.*&GetArea::egptr)() - next;
    return {next, static_cast<std::size_t>(std::max<std::ptrdiff_t>(size, 0))};
  }

  // Takes the characters before `end`, which must lie in the area or be its
  // end; characters from `end` on that were taken are given back. Not by gbump:
  // it counts in int, and an area may be larger.
  static void TakeUpTo(Buffer& buffer, const Char* end) {
    Char* const next = (buffer.*&GetArea::gptr)();
    (buffer.*&GetArea::setg)((buffer.*&GetArea::eback)(), next + (end - next),
                             (buffer.*&GetArea::egptr)());
  }
};

// The put area of a stream buffer. It is reached as a get area is.
template <class Char>
class PutArea : private std::basic_streambuf<Char> {
 public:
  using Buffer = std::basic_streambuf<Char>;
  using View = std::basic_string_view<Char>;

  // Whether the buffer is a standard string or file buffer, and not of a class
  // derived from one. An insertion calls the buffer's xsputn, and such a class
  // may do there what it likes; it would miss what is put past it.
  static bool IsStandard(const Buffer& buffer) {
    return typeid(buffer) == typeid(std::basic_stringbuf<Char>) ||
           typeid(buffer) == typeid(std::basic_filebuf<Char>);
  }

  // Whether insertions of `size` characters, in one piece or in several, would
  // all go into the area and no farther. A standard file buffer may send a text
  // that fills the area, or has 1024 characters, straight to the file, and
  // fail.
  static bool HasRoomFor(const Buffer& buffer, std::size_t size) {
    constexpr std::ptrdiff_t kLong = 1024;
    return static_cast<std::ptrdiff_t>(size) < std::min(Room(buffer), kLong);
  }

  // Whether the area holds one character more than it has room for, because
  // the file refused it.
  static bool IsOverfull(const Buffer& buffer) { return Room(buffer) < 0; }

  // Puts a text into the area, which must have room for it.
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
