// Writes the lines of INI text to a stream.
//
// To the stream each line, and each line feed, is one formatted insertion. If
// that would only copy characters into the stream's buffer, they are copied
// there without it.
#ifndef KORVAN_INI_WRITER_H_
#define KORVAN_INI_WRITER_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

#include "ini/stream_area.h"
#include "ini/twins.h"

namespace korvan::ini {

template <class Char>
class Writer {
 public:
  using Stream = std::basic_ostream<Char>;
  using View = std::basic_string_view<Char>;

  Writer(Stream& output, View line_feed)
      : output_(output),
        line_feed_(line_feed),
        is_standard_(output.rdbuf() != nullptr &&
                     PutArea<Char>::IsStandard(*output.rdbuf())) {}

  void WriteHeader(View name) {
    static constexpr Char kOpening[] = {'[', '\0'};
    static constexpr Char kClosing[] = {']', '\0'};
    WriteLine(kOpening, name, kClosing);
  }

  void WriteKey(View name, View value) {
    static constexpr Char kEquals[] = {'=', '\0'};
    WriteLine(name, kEquals, value);
  }

 private:
  // Writes a line of three parts.
  void WriteLine(View first, View second, View third) {
    const std::size_t size =
        first.size() + second.size() + third.size() + line_feed_.size();
    if (is_standard_ && IsInsertionACopy() &&
        PutArea<Char>::HasRoomFor(*output_.rdbuf(), size)) {
      PutArea<Char>::Put(*output_.rdbuf(), first);
      PutArea<Char>::Put(*output_.rdbuf(), second);
      PutArea<Char>::Put(*output_.rdbuf(), third);
      PutArea<Char>::Put(*output_.rdbuf(), line_feed_);
    } else {
      InsertLine(first, second, third);
    }
  }

  // Leaves the line to the stream. It is not inlined, because that makes the
  // path above, which nearly every line takes, shorter by a third.
  [[gnu::noinline]] void InsertLine(View first, View second, View third) {
    if (is_standard_ && DoesInsertionOverrun()) {
      output_.flush();
    }
    // One `assign` and two `append`s draw a false warning from GCC 12 -O3.
    line_.clear();
    line_.append(first).append(second).append(third);
    output_ << line_;
    output_ << line_feed_;
  }

  // Whether an insertion that finds room only copies characters: the stream has
  // not failed, pads nothing, and flushes neither its tied stream before nor
  // itself after.
  bool IsInsertionACopy() const {
    return output_.good() && output_.width() == 0 && output_.tie() == nullptr &&
           (output_.flags() & std::ios_base::unitbuf) == 0;
  }

  // Whether the standard library's own insertion would write beyond the
  // buffer's block. libstdc++ 12 does so if the area is overfull, except for a
  // text without padding in a file without conversion: it hands area and text
  // to the file at once.
  bool DoesInsertionOverrun() const {
    return output_.good() && PutArea<Char>::IsOverfull(*output_.rdbuf()) &&
           (output_.width() != 0 ||
            !IsFileUnconverted<Char>(output_.rdbuf()->getloc()));
  }

  Stream& output_;
  View line_feed_;
  bool is_standard_;              // the stream's buffer, as PutArea says it
  std::basic_string<Char> line_;  // kept for its memory
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_WRITER_H_
