// Reads INI text into a document.
//
// To the stream it does what a loop of std::getline does, to the last flag and
// character. But a line that lies whole in the stream's buffer is read where it
// lies, without a copy and without a call for each line. Where keys come in no
// order, many lines are entered at once: see key_run.h.
#ifndef KORVAN_INI_READER_H_
#define KORVAN_INI_READER_H_

#include <algorithm>
#include <cstddef>
#include <istream>
#include <new>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

#include "ini/file_stream.h"
#include "ini/key_run.h"
#include "ini/line.h"
#include "ini/named_nodes.h"
#include "ini/stream_area.h"
#include "ini/trim.h"
#include "ini/twins.h"

namespace korvan::ini {

template <class File>
class Reader {
 public:
  using Sections = typename File::Sections;
  using Section = NodeOf<Sections>;
  using Keys = typename Section::Keys;
  using String = typename Sections::key_type;
  using Char = typename String::value_type;
  using Stream = std::basic_istream<Char>;

  // Reads into `file`, whose map is `sections`. `keys_of` gives the map of a
  // section, which only the document may change.
  Reader(File& file, Sections& sections, Keys& (*keys_of)(Section&))
      : file_(file), sections_(sections), keys_of_(keys_of) {}

  // Reads lines until the stream gives no more.
  void Read(Stream& input) {
    bool has_more = true;
    while (has_more) {
      const View piece = ReadWholeLines(input);
      has_more = (input.good() && ReadAhead(*input.rdbuf(), kMostForLine)) ||
                 ReadCutLine(input, piece);
    }
  }

 private:
  using Traits = typename String::traits_type;
  using View = std::basic_string_view<Char>;
  using Buffer = std::basic_streambuf<Char>;

  // How much of a file is read ahead, in bytes: so that a line need not be put
  // together from pieces, or a run of keys need not end early.
  static constexpr std::size_t kMostForLine = std::size_t{1} << 18;
  static constexpr std::size_t kMostForRun = std::size_t{1} << 26;
  // A longer line gets the memory for its value at once, but not more than this
  // if the file goes on.
  static constexpr std::size_t kMostForValue = std::size_t{1} << 27;

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
    no_run_before_ = rest.data();
    std::size_t size = rest.find(line_feed);
    while (size != View::npos) {
      const std::size_t opening = rest.find(kLineOpening);
      if (opening > size) {
        // All lines before the one with the bracket are skipped.
        rest.remove_prefix(rest.rfind(line_feed, opening) + 1);
      } else {
        const View line = rest.substr(0, size);
        const View from_line = rest;
        rest.remove_prefix(size + 1);
        // The stream moves on before the line is entered: if that throws, the
        // line has been read.
        GetArea<Char>::TakeUpTo(*input.rdbuf(), rest.data());
        if (!EnterLine(line, line.data() >= no_run_before_)) {
          rest = EnterRun(*input.rdbuf(), from_line, line_feed);
        }
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
               ? ReadNameAndValue(input, piece.size() >= kMostForLine)
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
  bool ReadNameAndValue(Stream& input, bool is_long) {
    String name;
    String value;
    std::getline(input, name, Char{'='});
    if (is_long) {
      ReserveForValue(*input.rdbuf(), value);
    }
    if (!std::getline(input, value)) {
      return false;
    }
    if (EndsHeader<Char>(value)) {
      EnterLine(name + Char{'='} + value);
    } else {
      value.resize(ValueOf<Char>(value).size());
      if (value.capacity() / 2 > value.size()) {
        value.shrink_to_fit();
      }
      TrimName(name);
      EnterKey(std::move(name), std::move(value), false);
    }
    return true;
  }

  // Enters a line. Returns false, with nothing done, if the line may begin a
  // run and its key does not come after all others of the section.
  bool EnterLine(View text, bool may_begin_run = false) {
    const Line<Char> line = ParseLine(text);
    if (line.kind == LineKind::kHeader) {
      section_ = AppendOrFind(sections_, &file_, String(line.name));
      keys_ = &keys_of_(*section_);
    } else if (line.kind == LineKind::kKey && section_ != nullptr) {
      // There is a section from the first header on.
      String name(line.name);
      TrimName(name);
      return EnterKey(std::move(name), String(line.value), may_begin_run);
    }
    return true;
  }

  // As EnterLine, of a name that has been trimmed.
  bool EnterKey(String&& name, String&& value, bool may_begin_run) {
    const bool comes_last = BelongsAt(*keys_, keys_->end(), name);
    if (!comes_last && may_begin_run) {
      return false;
    }
    auto* const key =
        comes_last
            ? Create(*keys_, keys_->end(), true, section_, std::move(name))
            : FindOrCreate(*keys_, section_, std::move(name));
    key->SetValue(std::move(value));
    return true;
  }

  // Enters the key lines that `text`, what is left in the area, begins with:
  // all at once or, if that can't be done, the first of them. Returns what is
  // then left in the area.
  View EnterRun(Buffer& buffer, View text, Char line_feed) {
    if (!folding_) {
      folding_.emplace();
    }
    std::optional<KeyRun<Section>> run(std::in_place, *section_, *keys_,
                                       *folding_);
    bool is_entered = false;
    try {
      run->Gather(text, line_feed);
      // What is read ahead follows what the area still has, so the run's first
      // line goes back there.
      GetArea<Char>::TakeUpTo(buffer, text.data());
      while (text.find(line_feed, run->size()) == View::npos &&
             ReadAhead(buffer, kMostForRun)) {
        text = BeforeEndOfText(GetArea<Char>::Of(buffer));
        run->Gather(text, line_feed);
      }
      is_entered = run->Enter();
    } catch (const std::bad_alloc&) {
      // One by one, as many lines are entered as there is memory for.
    }
    const View after_run = text.substr(run->size());
    no_run_before_ = after_run.data();
    if (is_entered) {
      return after_run;
    }
    run.reset();  // its memory is needed now
    const std::size_t size = text.find(line_feed);
    const View rest = text.substr(size + 1);
    GetArea<Char>::TakeUpTo(buffer, rest.data());
    EnterLine(text.substr(0, size));
    return rest;
  }

  // Has the buffer add more to its area, up to `most` characters. Returns false
  // if it can't: what is not read ahead is read later.
  static bool ReadAhead(Buffer& buffer, std::size_t most) {
    ByteFile* const file = AsByteFile(buffer);
    try {
      return file != nullptr && file->ReadAhead(most);
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  // A long value would move again and again as its string grows.
  static void ReserveForValue(Buffer& buffer, String& value) {
    const View area = GetArea<Char>::Of(buffer);
    ByteFile* const file = AsByteFile(buffer);
    if (file != nullptr) {
      try {
        value.reserve(
            std::min(area.size() + file->BytesAhead(), kMostForValue));
      } catch (const std::bad_alloc&) {
        // A shorter value may still fit.
      }
    }
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
  Sections& sections_;
  Keys& (*keys_of_)(Section&);
  Section* section_ = nullptr;            // the one that key lines go to
  Keys* keys_ = nullptr;                  // its keys
  std::optional<Folding<Char>> folding_;  // made for the first run
  // In the stream's buffer: lines before it are entered one by one.
  const Char* no_run_before_ = nullptr;
  String line_;  // kept for its memory
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_READER_H_
