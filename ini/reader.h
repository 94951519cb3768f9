// Reads INI text into a document.
//
// To the stream it does what a loop of std::getline does, to the last flag and
// character. But a line that lies whole in the stream's buffer is read where it
// lies, without a copy and without a call for each line.
#ifndef KORVAN_INI_READER_H_
#define KORVAN_INI_READER_H_

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "ini/line.h"
#include "ini/stream_area.h"

namespace korvan::ini {

template <class File>
class Reader {
 public:
  using String = typename File::Sections::key_type;
  using Char = typename String::value_type;
  using Stream = std::basic_istream<Char>;

  explicit Reader(File& file) : file_(file) {}

  // Reads lines until the stream gives no more.
  void Read(Stream& input) {
    bool has_more = true;
    while (has_more) {
      const View piece = ReadWholeLines(input);
      has_more = ReadCutLine(input, piece);
    }
  }

 private:
  using Traits = typename String::traits_type;
  using View = std::basic_string_view<Char>;
  using Section = std::remove_pointer_t<typename File::Sections::mapped_type>;

  // Reads the lines that lie whole in the stream's buffer. Returns the
  // beginning of the next line, as much of it as the buffer has. Returns an
  // empty view if the stream itself has to take every step.
  View ReadWholeLines(Stream& input) {
    // With a tie, each line begins with a flush of the tied stream.
    if (!input.good() || input.tie() != nullptr) {
      return {};
    }
    const Char line_feed = input.widen('\n');
    View rest = BeforeEndOfText(GetArea<Char>::Of(*input.rdbuf()));
    std::size_t size = rest.find(line_feed);
    while (size != View::npos) {
      const std::size_t opening = rest.find(kLineOpening);
      if (opening > size) {
        // All lines before the one with the bracket are skipped.
        rest.remove_prefix(rest.rfind(line_feed, opening) + 1);
      } else {
        const View line = rest.substr(0, size);
        rest.remove_prefix(size + 1);
        // The stream moves on before the line is entered: if that throws, the
        // line has been read.
        GetArea<Char>::TakeUpTo(*input.rdbuf(), rest.data());
        EnterLine(line);
      }
      size = rest.find(line_feed);
    }
    GetArea<Char>::TakeUpTo(*input.rdbuf(), rest.data());
    return rest;
  }

  // Reads the line that begins with `piece` and goes on beyond the stream's
  // buffer. Returns false if the stream gives no more lines.
  bool ReadCutLine(Stream& input, View piece) {
    return section_ != nullptr && HoldsNameAndMore(piece)
               ? ReadNameAndValue(input)
               : ReadLine(input);
  }

  bool ReadLine(Stream& input) {
    if (!std::getline(input, line_)) {
      return false;
    }
    EnterLine(line_);
    return true;
  }

  // Reads the value, which may be large, into the string that the key will
  // keep. To the stream the two calls are one for the whole line, because each
  // begins with a character that the buffer has: neither comes upon the end of
  // the text by itself. If the first fails, so does the second.
  bool ReadNameAndValue(Stream& input) {
    String name;
    String value;
    std::getline(input, name, Char{'='});
    if (!std::getline(input, value)) {
      return false;
    }
    if (EndsHeader<Char>(value)) {
      EnterLine(name + Char{'='} + value);
    } else {
      value.resize(ValueOf<Char>(value).size());
      EnterKey(std::move(name), std::move(value));
    }
    return true;
  }

  void EnterLine(View text) {
    const Line<Char> line = ParseLine(text);
    switch (line.kind) {
      case LineKind::kSkipped:
        break;
      case LineKind::kHeader:
        section_ = file_.AddSection(String(line.name));
        break;
      case LineKind::kKey:
        if (section_ != nullptr) {  // null before the first header
          EnterKey(String(line.name), String(line.value));
        }
        break;
    }
  }

  void EnterKey(String name, String value) {
    section_->AddKey(std::move(name))->SetValue(std::move(value));
  }

  // `text` up to the first character that equals Traits::eof(). The standard
  // line reader takes it for the end of the text, but only at the beginning of
  // a line or of a buffer, so it has to decide itself. Only wide text can have
  // it.
  static View BeforeEndOfText(View text) {
    constexpr Char kEnd = Traits::to_char_type(Traits::eof());
    constexpr bool kIsCharacter =
        Traits::eq_int_type(Traits::to_int_type(kEnd), Traits::eof());
    return kIsCharacter ? text.substr(0, text.find(kEnd)) : text;
  }

  File& file_;
  Section* section_ = nullptr;  // the one that key lines go to
  String line_;                 // kept for its memory
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_READER_H_
