#ifndef KORVAN_INI_WRITER_H_
#define KORVAN_INI_WRITER_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

#include "ini/stream_area.h"
#include "ini/twins.h"

/// @file
/// Writes a document as INI text. Each line and each line feed is one
/// formatted insertion, and where nobody can tell, it is put straight into the
/// stream's buffer.

namespace korvan::ini {

template <class Char>
class LineWriter {
 public:
  using Stream = std::basic_ostream<Char>;
  using View = std::basic_string_view<Char>;

  LineWriter(Stream& output, View line_feed)
      : output_(output),
        line_feed_(line_feed),
        is_standard_(output.rdbuf() != nullptr &&
                     PutArea<Char>::IsStandard(*output.rdbuf())) {}

  /// Writes a line of three parts.
  void Write(View first, View second, View third) {
    if (is_standard_ && !IsInsertionSeen() &&
        PutArea<Char>::HasRoomFor(
            *output_.rdbuf(),
            first.size() + second.size() + third.size() + line_feed_.size())) {
      for (const View part : {first, second, third, line_feed_}) {
        PutArea<Char>::Put(*output_.rdbuf(), part);
      }
    } else {
      if (is_standard_ && IsInsertionUnsafe()) {
        output_.flush();
      }
      // One `assign` and two `append`s draw a false warning from GCC 12 -O3.
      line_.clear();
      line_.append(first).append(second).append(third);
      output_ << line_;
      output_ << line_feed_;
    }
  }

 private:
  /// Whether it shows where an insertion begins and ends: it fails, it is
  /// padded, or another stream is flushed before it, or this stream after it.
  bool IsInsertionSeen() const {
    return !output_.good() || output_.width() != 0 ||
           output_.tie() != nullptr ||
           (output_.flags() & std::ios_base::unitbuf) != 0;
  }

  // Whether the standard library's insertion would itself write beyond the
  // buffer's block. It does into an overfull area, except where it hands the
  // area and a text without padding to the file at once: that is how a file
  // without conversion takes them.
  bool IsInsertionUnsafe() const {
    return output_.good() && PutArea<Char>::IsOverfull(*output_.rdbuf()) &&
           (output_.width() != 0 ||
            !AnyBlockWillDo(Char{}, output_.rdbuf()->getloc()));
  }

  Stream& output_;
  View line_feed_;
  bool is_standard_;
  std::basic_string<Char> line_;
};

/// @param value_of  gives the value of a key.
template <class Char, class Sections, class ValueOf>
void Write(std::basic_ostream<Char>& output, const Sections& sections,
           const Char* line_feed, ValueOf value_of) {
  static constexpr Char kOpening[] = {'[', '\0'};
  static constexpr Char kClosing[] = {']', '\0'};
  static constexpr Char kEquals[] = {'=', '\0'};
  LineWriter<Char> writer(output, line_feed);
  for (const auto& [section_name, section] : sections) {
    writer.Write(kOpening, section_name, kClosing);
    for (const auto& [key_name, key] : section->GetKeys()) {
      writer.Write(key_name, kEquals, value_of(*key));
    }
  }
}

}  // namespace korvan::ini

#endif  // KORVAN_INI_WRITER_H_
