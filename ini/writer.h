#ifndef KORVAN_INI_WRITER_H_
#define KORVAN_INI_WRITER_H_

#include <algorithm>
#include <climits>
#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

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

  /// (`pbump` counts in int.)
  static std::size_t SizeOf(const Buffer& buffer) {
    return static_cast<std::size_t>(std::min<std::ptrdiff_t>(
        (buffer.*&PutArea::epptr)() - (buffer.*&PutArea::pptr)(), INT_MAX));
  }

  /// Puts a text for which there is room.
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
      : output_(output), line_feed_(line_feed) {}

  /// Writes a line of three parts.
  void Write(View first, View second, View third) {
    if (IsInsertionSeen()) {
      std::basic_string<Char> line;
      line.reserve(first.size() + second.size() + third.size());
      line.append(first).append(second).append(third);
      output_ << line;
      output_ << line_feed_;
    } else if (output_.good() && first.size() + second.size() + third.size() +
                                         line_feed_.size() <=
                                     PutArea<Char>::SizeOf(*output_.rdbuf())) {
      for (const View part : {first, second, third, line_feed_}) {
        PutArea<Char>::Put(*output_.rdbuf(), part);
      }
    } else {
      for (const View part : {first, second, third, line_feed_}) {
        output_ << part;
      }
    }
  }

 private:
  /// Whether it shows where an insertion begins and ends: it is padded, or
  /// another stream is flushed before it, or this stream after it.
  bool IsInsertionSeen() const {
    return output_.width() != 0 || output_.tie() != nullptr ||
           (output_.flags() & std::ios_base::unitbuf) != 0;
  }

  Stream& output_;
  View line_feed_;
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
