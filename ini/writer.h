#ifndef KORVAN_INI_WRITER_H_
#define KORVAN_INI_WRITER_H_

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <typeinfo>

/// @file
/// Writes a document as INI text. Each line and each line feed is one
/// formatted insertion, and where nobody can tell, it is put straight into the
/// stream's buffer.

namespace korvan::ini {

/// The room that a stream buffer has at hand; see GetArea.
template <class Char>
class PutArea : private std::basic_streambuf<Char> {
 public:
  using Buffer = std::basic_streambuf<Char>;
  using View = std::basic_string_view<Char>;

  /// Whether a buffer is one of the standard library's own. A class derived
  /// from these may override what they do, and would miss what passes it by.
  static bool IsOpenTo(const Buffer& buffer) {
    return typeid(buffer) == typeid(std::basic_stringbuf<Char>) ||
           typeid(buffer) == typeid(std::basic_filebuf<Char>);
  }

  /// Whether a text of this size would go into the area, and no farther, be it
  /// in one piece or in two. A text that fills the area, or is long, may take a
  /// file's buffer straight to the file, where it may fail.
  static bool Takes(const Buffer& buffer, std::size_t size) {
    constexpr std::ptrdiff_t kLong = 1024;
    const std::ptrdiff_t room =
        (buffer.*&PutArea::epptr)() - (buffer.*&PutArea::pptr)();
    return size < static_cast<std::size_t>(std::min(room, kLong));
  }

  /// Puts a text that the area takes.
  static void Put(Buffer& buffer, View text) {
    text.copy((buffer.*&PutArea::pptr)(), text.size());
    (buffer.*&PutArea::pbump)(static_cast<int>(text.size()));
  }
};

template <class Char>
class LineWriter {
 public:
  using Stream = std::basic_ostream<Char>;
  using View = std::basic_string_view<Char>;

  LineWriter(Stream& output, View line_feed)
      : output_(output),
        line_feed_(line_feed),
        is_open_(output.rdbuf() != nullptr &&
                 PutArea<Char>::IsOpenTo(*output.rdbuf())) {}

  /// Writes a line of three parts.
  void Write(View first, View second, View third) {
    if (is_open_ && !IsInsertionSeen() &&
        PutArea<Char>::Takes(
            *output_.rdbuf(),
            first.size() + second.size() + third.size() + line_feed_.size())) {
      for (const View part : {first, second, third, line_feed_}) {
        PutArea<Char>::Put(*output_.rdbuf(), part);
      }
    } else {
      line_.assign(first).append(second).append(third);
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

  Stream& output_;
  View line_feed_;
  bool is_open_;
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
