// Loads any text, from a stream that does all that a stream may or from a file,
// beside the plain document. The same must be in both after each load, and the
// same must have happened to both streams: state, what was thrown, position and
// every virtual call of their buffers.
#include <korvan/ini_file.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <istream>
#include <iterator>
#include <locale>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "ini/characters.h"
#include "ini/compare.h"
#include "ini/scratch_file.h"
#include "ini/watched_buffers.h"
#include "ini/width.h"
#include "support/input.h"
#include "support/plain_ini.h"

namespace korvan::test {
namespace {

// A locale in which a line ends with another character.
class OtherLineEnd : public std::ctype<Char> {
 public:
  explicit OtherLineEnd(Char line_end) : line_end_(line_end) {}

 protected:
  Char do_widen(char character) const override {
    return character == '\n' ? line_end_ : Char{character};
  }
  const char* do_widen(const char* from, const char* end,
                       Char* to) const override {
    for (; from != end; ++from, ++to) {
      *to = do_widen(*from);
    }
    return end;
  }

 private:
  Char line_end_;
};

constexpr char kLineEnds[] = {'\n', '|', '=', '[', ']', ' ', '\r', 'a', '\0'};

const std::locale& StreamLocale(std::size_t number) {
  static std::optional<std::locale> made[std::size(kLineEnds)];
  std::optional<std::locale>& locale = made[number];
  if (!locale) {
    locale.emplace(std::locale::classic());
    if (number != 0) {
      locale.emplace(*locale, new OtherLineEnd(Char{kLineEnds[number]}));
    }
  }
  return *locale;
}

enum class Source { kWatched, kString, kFile, kNone };

// One load. The fields that are about a stream are set before it.
struct Step {
  bool merge = false;
  int call = 0;
  bool cleared = false;
  std::ios_base::iostate state = std::ios_base::goodbit;
  std::ios_base::iostate exceptions = std::ios_base::goodbit;
  bool tied = false;
  std::size_t line_end = 0;
};

struct Setup {
  Source source = Source::kWatched;
  std::string bytes;  // of a file
  String text;        // the same in characters, of any other source
  std::vector<std::size_t> pieces;
  std::vector<Event> events;
  bool ends_oddly = false;
  OutputLimits tied;
  std::size_t file_block = 0;
  std::size_t file_locale = 0;
};

// What can be seen of a load, beside the document.
struct Seen {
  char thrown = ' ';
  char thrown_before = ' ';
  std::ios_base::iostate state = std::ios_base::goodbit;
  std::streamsize count = 0;
  std::streamoff position = 0;

  friend bool operator==(const Seen&, const Seen&) = default;
};

// A stream and the document that it is loaded into.
template <class AnyFile>
class Reading {
 public:
  Reading(const Setup& setup, const std::string& file_name, AnyFile& file)
      : file_(file), tied_buffer_(setup.tied) {
    switch (setup.source) {
      case Source::kWatched: {
        auto buffer = std::make_unique<WatchedInput>(
            setup.text, setup.pieces, setup.events, setup.ends_oddly);
        buffer->Attach(input_);
        watched_ = buffer.get();
        buffer_ = std::move(buffer);
        break;
      }
      case Source::kString:
        buffer_ = std::make_unique<StringBuffer>(setup.text);
        break;
      case Source::kFile: {
        auto buffer = std::make_unique<FileBuffer>();
        buffer->pubimbue(FileLocale(setup.file_locale));
        if (setup.file_block != 0) {
          block_ = std::make_unique<Char[]>(setup.file_block);
          buffer->pubsetbuf(block_.get(),
                            static_cast<std::streamsize>(setup.file_block));
        }
        Expect(buffer->open(file_name, std::ios_base::in |
                                           std::ios_base::binary) != nullptr);
        buffer_ = std::move(buffer);
        break;
      }
      case Source::kNone:
        break;
    }
    input_.rdbuf(buffer_.get());
  }

  Seen Load(const Step& step) {
    Seen seen;
    seen.thrown_before = Thrown([&] {
      if (step.cleared) {
        input_.clear();
      }
      input_.tie(step.tied ? &tied_ : nullptr);
      input_.imbue(StreamLocale(step.line_end));
      input_.exceptions(step.exceptions);
      input_.setstate(step.state);
    });
    seen.thrown = Thrown([&] { Load(file_, step); });
    seen.state = input_.rdstate();
    seen.count = input_.gcount();
    if (watched_ != nullptr) {
      seen.position = static_cast<std::streamoff>(watched_->Consumed());
    } else if (buffer_ != nullptr) {
      seen.position =
          buffer_->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    }
    return seen;
  }

  const Calls* calls() const {
    return watched_ == nullptr ? nullptr : &watched_->calls();
  }
  const WatchedOutput& tied() const { return tied_buffer_; }

 private:
  void Load(File& file, const Step& step) {
    switch (step.call) {
      case 0:
        file.Load(input_, step.merge);
        break;
      case 1:
        Expect(&(step.merge ? input_ >> Merge(file) : input_ >> file) ==
               &input_);
        break;
      default:
        if (step.merge) {
          file.Load(input_, true);
        } else {
          file.Load(input_);
        }
        break;
    }
  }
  void Load(PlainFile& file, const Step& step) {
    file.Load(input_, step.merge);
  }

  AnyFile& file_;
  std::unique_ptr<Char[]> block_;
  std::unique_ptr<StreamBuffer> buffer_;
  WatchedInput* watched_ = nullptr;
  WatchedOutput tied_buffer_;
  InputStream input_{nullptr};
  OutputStream tied_{&tied_buffer_};
};

Event AnyEvent(Input& input, std::size_t size) {
  Event event = {
      input.ConsumeIntegral<std::uint16_t>() % (size + 1), Trouble::kNone, {}};
  const std::size_t number = Below(input, 8);
  switch (Below(input, 8)) {
    case 4:
      event.change = [](InputStream& stream) { stream.tie(nullptr); };
      break;
    case 5:
      event.change = [=](InputStream& stream) {
        stream.imbue(StreamLocale(number));
      };
      break;
    case 6:
      event.change = [](InputStream& stream) {
        stream.setstate(std::ios_base::failbit);
      };
      break;
    case 7:
      event.change = [](InputStream& stream) {
        stream.exceptions(std::ios_base::eofbit);
      };
      break;
    default:
      event.trouble = TroubleOf(number);
      break;
  }
  return event;
}

Step AnyStep(Input& input) {
  Step step;
  step.merge = input.ConsumeBool();
  step.call = static_cast<int>(Below(input, 3));
  step.cleared = !OneIn(input, 4);
  step.state = OneIn(input, 8) ? AnyState(input) : std::ios_base::goodbit;
  step.exceptions = OneIn(input, 4) ? AnyState(input) : std::ios_base::goodbit;
  step.tied = OneIn(input, 6);
  step.line_end = OneIn(input, 6) ? Below(input, std::size(kLineEnds)) : 0;
  return step;
}

// Whether the two documents are still comparable: where their names are no
// longer in order, as after a change of the locale, nobody says what a load
// makes of them.
class Comparison {
 public:
  Comparison(const File& file, const PlainFile& plain, Alphabet alphabet)
      : file_(file), plain_(plain), compares_(alphabet == Alphabet::kOrdered) {}

  // The locale has changed.
  void Reconsider() { compares_ = compares_ && IsInOrder(plain_); }

  void Compare() const {
    if (compares_) {
      ExpectSame(file_, plain_);
    } else {
      ExpectSound(file_);
    }
  }

 private:
  const File& file_;
  const PlainFile& plain_;
  bool compares_;
};

void LoadFromStreams(Input& input, Setup& setup, File& file, PlainFile& plain,
                     const Comparison& comparison) {
  constexpr Source kSources[] = {Source::kWatched, Source::kWatched,
                                 Source::kWatched, Source::kString,
                                 Source::kFile,    Source::kNone};
  setup.source = kSources[Below(input, std::size(kSources))];
  // Many pieces of some characters each would take long.
  const bool is_long = setup.text.size() >= 4096;
  const std::size_t least_piece = is_long ? 500 : 0;
  for (std::size_t count = Below(input, 4); count != 0; --count) {
    setup.pieces.push_back(Below(input, 64) + least_piece);
  }
  if (setup.pieces.empty()) {
    setup.pieces.push_back(setup.text.size() + 1);
  }
  for (std::size_t count = Below(input, 4); count != 0; --count) {
    setup.events.push_back(AnyEvent(input, setup.text.size()));
  }
  std::ranges::sort(setup.events, {}, &Event::position);
  setup.ends_oddly = OneIn(input, 8);
  setup.tied.trouble_of_flush =
      OneIn(input, 4) ? Trouble::kFault : Trouble::kNone;
  const std::size_t file_block = Below(input, 64);
  setup.file_block = is_long ? 0 : file_block;
  setup.file_locale = Below(input, kFileLocaleCount);

  static ScratchFile scratch;
  if (setup.source == Source::kFile) {
    scratch.Fill(setup.bytes);
  }
  Reading reading(setup, scratch.name(), file);
  Reading plain_reading(setup, scratch.name(), plain);
  for (std::size_t count = Below(input, 3) + 1; count != 0; --count) {
    const Step step = AnyStep(input);
    Expect(reading.Load(step) == plain_reading.Load(step));
    comparison.Compare();
  }
  Expect((reading.calls() == nullptr) == (plain_reading.calls() == nullptr));
  Expect(reading.calls() == nullptr ||
         *reading.calls() == *plain_reading.calls());
  Expect(reading.tied().calls() == plain_reading.tied().calls());
}

// A pipe that holds the bytes and gives no more.
class Pipe {
 public:
  explicit Pipe(std::string_view bytes) {
    int both[2];
    Expect(pipe(both) == 0);
    Expect(write(both[1], bytes.data(), bytes.size()) ==
           static_cast<ssize_t>(bytes.size()));
    close(both[1]);
    descriptor_ = both[0];
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() { close(descriptor_); }

  std::string name() const { return NameOf(descriptor_); }

 private:
  int descriptor_;
};

bool Load(File& file, const std::string& name, bool merge) {
  return file.Load(Text(name), merge);
}

bool Load(PlainFile& file, const std::string& name, bool merge) {
  std::basic_ifstream<Char> stream(name, std::ios_base::binary);
  if (!stream.is_open()) {
    return false;
  }
  file.Load(stream, merge);
  return true;
}

void LoadByName(Input& input, const Setup& setup, File& file, PlainFile& plain,
                const Comparison& comparison) {
  // What a pipe of the system holds at least.
  constexpr std::size_t kMostInPipe = 65536;
  const GlobalLocale locale(Below(input, kFileLocaleCount));
  const bool merge = input.ConsumeBool();
  const auto load = [&](const std::string& name,
                        const std::string& plain_name) {
    Expect(Load(file, name, merge) == Load(plain, plain_name, merge));
    comparison.Compare();
  };
  switch (Below(input, 6)) {
    case 3:
      if (setup.bytes.size() <= kMostInPipe) {
        const Pipe pipe(setup.bytes);
        const Pipe plain_pipe(setup.bytes);
        return load(pipe.name(), plain_pipe.name());
      }
      break;
    case 4:
      return load("/", "/");
    case 5:
      return load("/no/such/file", "/no/such/file");
    default:
      break;
  }
  static ScratchFile scratch;
  scratch.Fill(setup.bytes);
  load(scratch.name(), scratch.name());
}

void LoadAny(std::string_view text, Input& input) {
  ThreadLocale locale(AnyLocale(input));
  const auto alphabet =
      OneIn(input, 16) ? Alphabet::kWidest : Alphabet::kOrdered;
  Setup setup;
  setup.bytes = Stretched(text, AnyStretch(input));
  setup.text = TextOf(setup.bytes, alphabet);

  File file;
  PlainFile plain;
  Comparison comparison(file, plain, alphabet);
  // What is there before: the same text or another.
  const String before =
      OneIn(input, 4) ? setup.text : "[Main]\n[k=old\n[Old]\n[q=1\n"_t;
  const auto load_before = [&](auto& any) {
    StringInput stream(before);
    any.Load(stream, false);
  };
  load_before(file);
  load_before(plain);
  comparison.Compare();
  if (OneIn(input, 8)) {
    locale.Set(AnyLocale(input));
    comparison.Reconsider();
  }
  if (OneIn(input, 4)) {
    LoadByName(input, setup, file, plain, comparison);
  } else {
    LoadFromStreams(input, setup, file, plain, comparison);
  }
}

}  // namespace
}  // namespace korvan::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::TextAndSettings input(data, size);
  korvan::test::LoadAny(input.text(), input.settings());
  return 0;
}
