// Saves any document, to a stream that does all that a stream may or to a file,
// beside the plain document. The same must be written after each save, and the
// same must have happened to both streams: state, width, what was thrown, and
// every virtual call of their buffers.
#include <korvan/ini_file.h>
#include <signal.h>
#include <sys/resource.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <ios>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "ini/characters.h"
#include "ini/scratch_file.h"
#include "ini/watched_buffers.h"
#include "ini/width.h"
#include "support/input.h"
#include "support/plain_ini.h"

namespace korvan::test {
namespace {

// A buffer derived from a standard one, which may do in xsputn what it likes.
template <class Buffer>
class Derived : public Buffer {
 public:
  using Buffer::Buffer;
  const Calls& calls() const { return calls_; }

 protected:
  std::streamsize xsputn(const Char* text, std::streamsize size) override {
    calls_.push_back({'x', String(text, static_cast<std::size_t>(size))});
    return Buffer::xsputn(text, size);
  }
  Traits::int_type overflow(Traits::int_type next) override {
    calls_.push_back({'o', String(1, Traits::to_char_type(next))});
    return Buffer::overflow(next);
  }
  int sync() override {
    calls_.push_back({'s'});
    return Buffer::sync();
  }

 private:
  Calls calls_;
};

// Whether a file holds one character more than it has room for, since the disk
// refused it (libstdc++ 12).
class Room : private FileBuffer {
 public:
  static bool IsNegative(const StreamBuffer& buffer) {
    return (buffer.*&Room::epptr)() < (buffer.*&Room::pptr)();
  }
};

// While it lives, no file grows beyond `capacity` bytes.
class FullDisk {
 public:
  explicit FullDisk(std::size_t capacity) {
    former_handler_ = signal(SIGXFSZ, SIG_IGN);
    Expect(getrlimit(RLIMIT_FSIZE, &former_) == 0);
    rlimit full = former_;
    full.rlim_cur = capacity;
    Expect(setrlimit(RLIMIT_FSIZE, &full) == 0);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    Expect(setrlimit(RLIMIT_FSIZE, &former_) == 0);
    signal(SIGXFSZ, former_handler_);
  }

 private:
  rlimit former_;
  sighandler_t former_handler_;
};

enum class Target {
  kWatched,
  kString,
  kDerivedString,
  kFile,
  kDerivedFile,
  kNone
};

struct Setup {
  Target target = Target::kWatched;
  OutputLimits limits;
  OutputLimits tied;
  String before;  // what the stream is given first
  std::size_t block = 0;
  bool has_block = false;
  std::size_t file_locale = 0;
  std::ios_base::openmode mode = std::ios_base::out;
};

// One save. The fields are about the stream, and set before it.
struct Step {
  bool inserted = false;  // by `<<`
  bool cleared = false;
  std::ios_base::iostate state = std::ios_base::goodbit;
  std::ios_base::iostate exceptions = std::ios_base::goodbit;
  bool tied = false;
  std::ios_base::fmtflags flags = {};
  std::streamsize width = 0;
  Char fill = Char{' '};
  bool disk_is_full = false;
  std::size_t disk = 0;
  std::size_t overfill = 0;  // so many characters straight to the buffer
  bool flushed = false;      // after it
};

// Whether it is a file whose characters are not its bytes. It throws where it
// can't convert one.
bool Converts(const Setup& setup) {
  return (setup.target == Target::kFile ||
          setup.target == Target::kDerivedFile) &&
         (sizeof(Char) != 1 || setup.file_locale == kFileLocaleCount - 1);
}

// What can be seen of a save.
struct Seen {
  char thrown = ' ';
  char thrown_before = ' ';
  char thrown_after = ' ';
  std::ios_base::iostate state = std::ios_base::goodbit;
  std::ios_base::iostate state_after = std::ios_base::goodbit;
  std::streamsize width = 0;
  std::ios_base::fmtflags flags = {};
  std::string bytes = {};
  String text = {};

  friend bool operator==(const Seen&, const Seen&) = default;
};

// A stream and the document that is saved to it.
template <class AnyFile>
class Writing {
 public:
  Writing(const Setup& setup, ScratchFile& scratch, AnyFile& file)
      : setup_(setup),
        scratch_(scratch),
        file_(file),
        tied_buffer_(setup.tied),
        block_(std::make_unique<Char[]>(setup.block)) {
    switch (setup.target) {
      case Target::kWatched: {
        auto buffer = std::make_unique<WatchedOutput>(setup.limits);
        watched_ = buffer.get();
        calls_ = &buffer->calls();
        buffer_ = std::move(buffer);
        break;
      }
      case Target::kString:
        SetString(std::make_unique<StringBuffer>(setup.mode));
        break;
      case Target::kDerivedString: {
        auto buffer = std::make_unique<Derived<StringBuffer>>(setup.mode);
        calls_ = &buffer->calls();
        SetString(std::move(buffer));
        break;
      }
      case Target::kFile:
        SetFile(std::make_unique<FileBuffer>());
        break;
      case Target::kDerivedFile: {
        auto buffer = std::make_unique<Derived<FileBuffer>>();
        calls_ = &buffer->calls();
        SetFile(std::move(buffer));
        break;
      }
      case Target::kNone:
        break;
    }
    output_.rdbuf(buffer_.get());
    if (buffer_ != nullptr) {
      static_cast<void>(Thrown([&] {
        buffer_->sputn(setup.before.data(),
                       static_cast<std::streamsize>(setup.before.size()));
      }));
    }
  }

  Seen Save(const Step& step) {
    Seen seen;
    if (setup_.target == Target::kDerivedFile && Room::IsNegative(*buffer_)) {
      // An insertion would write beyond the block (libstdc++ 12). A document
      // sees to that in a standard file only.
      return seen;
    }
    {
      const std::unique_ptr<FullDisk> full =
          step.disk_is_full ? std::make_unique<FullDisk>(step.disk) : nullptr;
      seen.thrown_before = Thrown([&] {
        Overfill(step.overfill);
        if (step.cleared) {
          output_.clear();
        }
        output_.tie(step.tied ? &tied_ : nullptr);
        output_.flags(step.flags);
        output_.width(step.width);
        output_.fill(step.fill);
        output_.exceptions(step.exceptions);
        output_.setstate(step.state);
      });
      seen.thrown = Thrown([&] { Save(file_, step); });
      seen.state = output_.rdstate();
      seen.width = output_.width();
      seen.flags = output_.flags();
    }
    if (step.flushed) {
      seen.thrown_after = Thrown([&] { output_.flush(); });
      seen.state_after = output_.rdstate();
    }
    if (watched_ != nullptr) {
      seen.text = watched_->Written();
    } else if (string_ != nullptr && IsTextSet()) {
      seen.text = string_->str();
    } else if (stream_file_ != nullptr) {
      seen.bytes = scratch_.Bytes();
    }
    return seen;
  }

  // What the file holds in the end; nothing of another target.
  std::string Closed() {
    if (stream_file_ == nullptr) {
      return "";
    }
    static_cast<void>(Thrown([&] { stream_file_->close(); }));
    return scratch_.Bytes();
  }

  const Calls* calls() const { return calls_; }
  const WatchedOutput& tied() const { return tied_buffer_; }

 private:
  void SetString(std::unique_ptr<StringBuffer> buffer) {
    if (setup_.has_block) {
      buffer->pubsetbuf(block_.get(),
                        static_cast<std::streamsize>(setup_.block));
    }
    string_ = buffer.get();
    buffer_ = std::move(buffer);
  }

  void SetFile(std::unique_ptr<FileBuffer> buffer) {
    buffer->pubimbue(FileLocale(setup_.file_locale));
    if (setup_.has_block) {
      buffer->pubsetbuf(setup_.block == 0 ? nullptr : block_.get(),
                        static_cast<std::streamsize>(setup_.block));
    }
    Expect(buffer->open(scratch_.name(),
                        std::ios_base::out | std::ios_base::binary) != nullptr);
    stream_file_ = buffer.get();
    buffer_ = std::move(buffer);
  }

  // Puts characters straight into a file, until it refuses one, which the
  // stream does not notice.
  void Overfill(std::size_t most) {
    bool takes =
        setup_.target == Target::kFile && !Room::IsNegative(*stream_file_);
    for (std::size_t i = 0; takes && i < most; ++i) {
      takes =
          !Traits::eq_int_type(stream_file_->sputc(Char{'o'}), Traits::eof());
    }
  }

  // A string buffer that outgrows a block that is shorter than a string's own
  // room goes on in that room, and never sets what comes before.
  bool IsTextSet() const {
    return !setup_.has_block || setup_.block >= String().capacity();
  }

  void Save(File& file, const Step& step) {
    if (step.inserted) {
      Expect(&(output_ << file) == &output_);
    } else {
      file.Save(output_);
    }
  }

  // The insertions that the library is to look the same as. But those of the
  // standard library would write beyond the block of a file that has refused a
  // character; the document flushes such a file before.
  void Save(PlainFile& file, const Step&) {
    if (setup_.target == Target::kFile && !file.sections().empty() &&
        output_.good() && Room::IsNegative(*buffer_) &&
        (output_.width() != 0 || Converts(setup_))) {
      output_.flush();
    }
    file.Save(output_);
  }

  const Setup& setup_;
  ScratchFile& scratch_;
  AnyFile& file_;
  WatchedOutput tied_buffer_;
  std::unique_ptr<Char[]> block_;
  std::unique_ptr<StreamBuffer> buffer_;
  WatchedOutput* watched_ = nullptr;
  StringBuffer* string_ = nullptr;
  FileBuffer* stream_file_ = nullptr;
  const Calls* calls_ = nullptr;
  OutputStream output_{nullptr};
  OutputStream tied_{&tied_buffer_};
};

OutputLimits AnyLimits(Input& input) {
  OutputLimits limits;
  limits.room = Below(input, 64);
  const std::size_t capacity = Below(input, 256);
  if (capacity != 0) {
    limits.capacity = capacity - 1;
  }
  limits.trouble = TroubleOf(Below(input, 4));
  limits.trouble_of_flush =
      OneIn(input, 8) ? TroubleOf(Below(input, 4)) : Trouble::kNone;
  return limits;
}

Step AnyStep(Input& input, const Setup& setup) {
  constexpr std::ios_base::fmtflags kAdjustments[] = {
      {}, std::ios_base::left, std::ios_base::right, std::ios_base::internal};
  Step step;
  step.inserted = input.ConsumeBool();
  step.cleared = !OneIn(input, 4);
  step.state = OneIn(input, 8) ? AnyState(input) : std::ios_base::goodbit;
  step.exceptions = OneIn(input, 8) ? AnyState(input) : std::ios_base::goodbit;
  step.tied = OneIn(input, 6);
  step.flags = kAdjustments[Below(input, std::size(kAdjustments))];
  if (OneIn(input, 6) && !Converts(setup)) {
    // What the flush after an insertion throws ends the process (libstdc++ 12).
    step.flags |= std::ios_base::unitbuf;
    step.exceptions = std::ios_base::goodbit;
  }
  step.width = OneIn(input, 4) ? static_cast<std::streamsize>(Below(input, 40))
                               : std::streamsize{0};
  step.fill = OneIn(input, 4) ? Char{'*'} : Char{' '};
  step.disk_is_full = OneIn(input, 6);
  step.disk = Below(input, 64);
  step.overfill = OneIn(input, 6) ? Below(input, 70) : 0;
  step.flushed = OneIn(input, 3);
  return step;
}

void SaveToStreams(Input& input, File& file, PlainFile& plain) {
  constexpr Target kTargets[] = {Target::kWatched,       Target::kString,
                                 Target::kDerivedString, Target::kFile,
                                 Target::kDerivedFile,   Target::kNone};
  static ScratchFile scratch;
  static ScratchFile plain_scratch;
  Setup setup;
  setup.target = kTargets[Below(input, std::size(kTargets))];
  setup.limits = AnyLimits(input);
  if (setup.limits.trouble_of_flush != Trouble::kNone) {
    // As below: it may fail but not throw.
    setup.limits.trouble_of_flush = Trouble::kEnd;
  }
  setup.tied = AnyLimits(input);
  setup.before = String(Below(input, 64), Char{'b'});
  setup.has_block = OneIn(input, 2);
  setup.block = Below(input, 64);
  setup.file_locale = Below(input, kFileLocaleCount);
  if (OneIn(input, 4)) {
    setup.mode |= std::ios_base::in;
  }
  if (OneIn(input, 8)) {
    setup.mode = std::ios_base::in;
  }
  Writing writing(setup, scratch, file);
  Writing plain_writing(setup, plain_scratch, plain);
  for (std::size_t count = Below(input, 3) + 1; count != 0; --count) {
    const Step step = AnyStep(input, setup);
    Expect(writing.Save(step) == plain_writing.Save(step));
  }
  Expect(writing.Closed() == plain_writing.Closed());
  Expect((writing.calls() == nullptr) == (plain_writing.calls() == nullptr));
  Expect(writing.calls() == nullptr ||
         *writing.calls() == *plain_writing.calls());
  Expect(writing.tied().calls() == plain_writing.tied().calls());
}

bool Save(File& file, const std::string& name) { return file.Save(Text(name)); }

bool Save(PlainFile& file, const std::string& name) {
  std::basic_ofstream<Char> stream(name, std::ios_base::binary);
  if (!stream.is_open()) {
    return false;
  }
  file.Save(stream);
  // Closing wide text that can't be converted throws.
  static_cast<void>(Thrown([&] { stream.close(); }));
  return true;
}

void SaveByName(Input& input, File& file, PlainFile& plain) {
  constexpr const char* kOthers[] = {"/dev/full", "/", "/no/such/file"};
  const GlobalLocale locale(Below(input, kFileLocaleCount));
  const std::size_t other = Below(input, 8);
  static ScratchFile scratch;
  static ScratchFile plain_scratch;
  scratch.Fill("a longer text of an earlier file, which is to go");
  plain_scratch.Fill("");
  const bool disk_is_full = OneIn(input, 4);
  const std::size_t disk = Below(input, 64);
  if (other < std::size(kOthers)) {
    Expect(Save(file, kOthers[other]) == Save(plain, kOthers[other]));
    return;
  }
  {
    const std::unique_ptr<FullDisk> full =
        disk_is_full ? std::make_unique<FullDisk>(disk) : nullptr;
    Expect(Save(file, scratch.name()));
    Expect(Save(plain, plain_scratch.name()));
  }
  Expect(scratch.Bytes() == plain_scratch.Bytes());
}

// A line "section/key=value" of the text sets a value, one without "=" adds a
// section.
void Fill(std::string_view text, File& file, PlainFile& plain) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    const std::size_t slash = std::min(line.find('/'), line.size());
    const String section = TextOf(line.substr(0, slash));
    const std::size_t equals = line.find('=', slash);
    if (equals == std::string_view::npos) {
      file.AddSection(section);
      plain.AddSection(section);
    } else {
      const String key = TextOf(line.substr(slash + 1, equals - slash - 1));
      const String value = TextOf(line.substr(equals + 1));
      file.SetKeyValue(section, key, value);
      plain.Set(section, key, value);
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void SaveAny(std::string_view text, Input& input) {
  const ThreadLocale locale(AnyLocale(input));
  File file;
  PlainFile plain;
  Fill(Stretched(text, AnyStretch(input)), file, plain);
  if (OneIn(input, 4)) {
    SaveByName(input, file, plain);
  } else {
    SaveToStreams(input, file, plain);
  }
}

}  // namespace
}  // namespace korvan::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::TextAndSettings input(data, size);
  korvan::test::SaveAny(input.text(), input.settings());
  return 0;
}
