#ifndef KORVAN_INI_READER_H_
#define KORVAN_INI_READER_H_

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "ini/stream_area.h"

/// @file
/// Reads INI text into a document. What a stream's `std::getline` would do to
/// the stream line by line, this does too, to the last flag and character;
/// but a line that lies whole in the stream's buffer is read where it lies.

namespace korvan::ini {

template <class File>
class Reader {
 public:
  using String = typename File::Sections::key_type;
  using Char = typename String::value_type;
  using Stream = std::basic_istream<Char>;

  explicit Reader(File& file) : file_(file) {}

  void Read(Stream& input) {
    while (ReadCutLine(input, ReadWholeLines(input))) {
    }
  }

 private:
  using Traits = typename String::traits_type;
  using View = std::basic_string_view<Char>;
  using Section = std::remove_pointer_t<typename File::Sections::mapped_type>;

  /// The line reader takes this character for the end of the text where it
  /// asks for a single one: at the beginning of a line and of a buffer.
  static bool IsEndOfText(Char character) {
    return Traits::eq_int_type(Traits::to_int_type(character), Traits::eof());
  }

  /// What comes before the first such character, if there can be one.
  static View BeforeEndOfText(View text) {
    constexpr Char kEnd = Traits::to_char_type(Traits::eof());
    return IsEndOfText(kEnd) ? text.substr(0, text.find(kEnd)) : text;
  }

  /// Reads the lines that lie whole in the stream's buffer.
  ///
  /// @return the piece that the buffer has of the next line; empty where
  ///         every step has to be left to the line reader.
  View ReadWholeLines(Stream& input) {
    // With a tie, each line begins with a flush of the tied stream.
    if (!input.good() || input.tie() != nullptr) {
      return {};
    }
    const Char line_feed = input.widen('\n');
    View rest = BeforeEndOfText(GetArea<Char>::Of(*input.rdbuf()));
    while (true) {
      const std::size_t size = rest.find(line_feed);
      if (size == View::npos) {
        GetArea<Char>::TakeUpTo(*input.rdbuf(), rest.data());
        return rest;
      }
      // Only a line with a bracket in it can be more than skipped.
      if (const std::size_t bracket = rest.find('['); bracket > size) {
        rest.remove_prefix(rest.rfind(line_feed, bracket) + 1);
        continue;
      }
      const View line = rest.substr(0, size);
      rest.remove_prefix(size + 1);
      // First the stream moves on, then the line is entered: when that throws,
      // the line has been read.
      GetArea<Char>::TakeUpTo(*input.rdbuf(), rest.data());
      Enter(line);
    }
  }

  /// Reads the next line, of which the stream's buffer has but a piece, by
  /// the standard line reader.
  ///
  /// @return false at the end of the text.
  bool ReadCutLine(Stream& input, View piece) {
    if (!HasNameAndMore(piece)) {
      if (!std::getline(input, line_)) {
        return false;
      }
      Enter(line_);
      return true;
    }
    // The value may be large, so it is read into the string that the key will
    // keep. To the stream these two calls are one: they begin with characters
    // that it has at hand, the second with one at least.
    String name;
    String value;
    std::getline(input, name, Char{'='});
    if (!std::getline(input, value)) {
      return false;
    }
    if (WithoutTrailing(IsWhite, value).ends_with(']')) {
      Enter(name + Char{'='} + value);
    } else {
      value.resize(WithoutTrailing(IsLineEnd, value).size());
      EnterKey(std::move(name), std::move(value));
    }
    return true;
  }

  /// Whether a key line begins here, its name whole and its value begun.
  bool HasNameAndMore(View piece) const {
    if (section_ == nullptr || !WithoutLeadingBlanks(piece).starts_with('[')) {
      return false;
    }
    return piece.find('=') < piece.size() - 1;
  }

  static bool IsBlank(Char character) {
    return character == ' ' || character == '\t';
  }
  static bool IsLineEnd(Char character) {
    return character == '\n' || character == '\r';
  }
  static bool IsWhite(Char character) {
    return IsBlank(character) || IsLineEnd(character);
  }

  static View WithoutLeadingBlanks(View line) {
    while (!line.empty() && IsBlank(line.front())) {
      line.remove_prefix(1);
    }
    return line;
  }

  static View WithoutTrailing(bool (&is_trimmed)(Char), View line) {
    while (!line.empty() && is_trimmed(line.back())) {
      line.remove_suffix(1);
    }
    return line;
  }

  void Enter(View line) {
    line = WithoutLeadingBlanks(line);
    if (!line.starts_with('[')) {
      return;
    }
    line = WithoutTrailing(IsLineEnd, line);
    if (WithoutTrailing(IsWhite, line).back() == ']') {
      // The last character goes whatever it is: "[Main] " names "Main]".
      // Existing files have such names.
      section_ = file_.AddSection(String(line.substr(1, line.size() - 2)));
    } else if (section_ != nullptr) {  // none before the first header
      if (const std::size_t equals = line.find('='); equals != View::npos) {
        EnterKey(String(line.substr(0, equals)),
                 String(line.substr(equals + 1)));
      }
    }
  }

  void EnterKey(String name, String value) {
    section_->AddKey(std::move(name))->SetValue(std::move(value));
  }

  File& file_;
  Section* section_ = nullptr;
  String line_;
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_READER_H_
