// Stream buffers that keep a list of the calls of their virtual functions, and
// fail, throw and change their stream wherever the input says.
#ifndef KORVAN_FUZZ_INI_WATCHED_BUFFERS_H_
#define KORVAN_FUZZ_INI_WATCHED_BUFFERS_H_

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ios>
#include <iterator>
#include <locale>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "ini/width.h"
#include "support/input.h"

namespace korvan::test {

// A virtual function, by a letter of its name, and what it was told.
struct Call {
  char function;
  String text = {};

  friend bool operator==(const Call&, const Call&) = default;
};
using Calls = std::vector<Call>;

struct Fault {};

enum class Trouble { kNone, kEnd, kFault, kFailure, kMemory };

// Throws, or returns whether the text ends here.
inline bool MeetTrouble(Trouble trouble) {
  switch (trouble) {
    case Trouble::kFault:
      throw Fault();
    case Trouble::kFailure:
      throw std::ios_base::failure("on purpose");
    case Trouble::kMemory:
      throw std::bad_alloc();
    case Trouble::kNone:
    case Trouble::kEnd:
      break;
  }
  return trouble == Trouble::kEnd;
}

// What a call threw, by a letter; ' ' if nothing.
template <class AnyCall>
char Thrown(AnyCall call) {
  try {
    call();
  } catch (const Fault&) {
    return 'f';
  } catch (const std::ios_base::failure&) {
    return 'i';
  } catch (const std::bad_alloc&) {
    return 'm';
  }
  return ' ';
}

inline Trouble TroubleOf(std::size_t number) {
  constexpr Trouble kTroubles[] = {Trouble::kEnd, Trouble::kFault,
                                   Trouble::kFailure, Trouble::kMemory};
  return kTroubles[number % std::size(kTroubles)];
}

// The state of a stream, or a mask of exceptions.
inline std::ios_base::iostate AnyState(Input& input) {
  return static_cast<std::ios_base::iostate>(Below(input, 8)) &
         (std::ios_base::badbit | std::ios_base::eofbit |
          std::ios_base::failbit);
}

// Meant for the moment when the text has been given up to `position`.
struct Event {
  std::size_t position;
  Trouble trouble;
  // What the buffer does to its stream then.
  std::function<void(InputStream&)> change;
};

// Gives a text in pieces of the given sizes, over and over. Pieces of size 0
// are single characters without a buffer. Each piece is in memory of its own,
// and the former piece is gone.
class WatchedInput : public StreamBuffer {
 public:
  WatchedInput(const String& text, const std::vector<std::size_t>& sizes,
               const std::vector<Event>& events, bool ends_oddly)
      : text_(text), sizes_(sizes), events_(events), ends_oddly_(ends_oddly) {
    EndOddly();
  }

  void Attach(InputStream& stream) { stream_ = &stream; }
  const Calls& calls() const { return calls_; }
  std::size_t Consumed() const {
    return taken_ - static_cast<std::size_t>(
                        std::max<std::ptrdiff_t>(egptr() - gptr(), 0));
  }

 protected:
  Traits::int_type underflow() override {
    calls_.push_back({'u'});
    return Next();
  }
  Traits::int_type uflow() override {
    calls_.push_back({'U'});
    const auto next = Next();
    if (Traits::eq_int_type(next, Traits::eof())) {
      return next;
    }
    if (gptr() < egptr()) {
      gbump(1);
    } else {
      ++taken_;
    }
    return next;
  }
  std::streamsize showmanyc() override {
    calls_.push_back({'m'});
    return StreamBuffer::showmanyc();
  }
  std::streamsize xsgetn(Char* to, std::streamsize size) override {
    calls_.push_back({'x'});
    return StreamBuffer::xsgetn(to, size);
  }
  Traits::int_type pbackfail(Traits::int_type character) override {
    calls_.push_back({'p'});
    return StreamBuffer::pbackfail(character);
  }
  pos_type seekoff(off_type, std::ios_base::seekdir,
                   std::ios_base::openmode) override {
    calls_.push_back({'o'});
    return pos_type(off_type(-1));
  }
  pos_type seekpos(pos_type, std::ios_base::openmode) override {
    calls_.push_back({'O'});
    return pos_type(off_type(-1));
  }
  int sync() override {
    calls_.push_back({'s'});
    return 0;
  }
  void imbue(const std::locale&) override { calls_.push_back({'i'}); }

 private:
  // The next character, which begins the next piece if the last is used up.
  Traits::int_type Next() {
    if (gptr() < egptr()) {
      return Traits::to_int_type(*gptr());
    }
    if (event_ < events_.size() && events_[event_].position <= taken_) {
      const Event& event = events_[event_++];
      if (event.change) {
        event.change(*stream_);
      }
      if (MeetTrouble(event.trouble)) {
        EndOddly();
        return Traits::eof();
      }
    }
    if (taken_ == text_.size()) {
      EndOddly();
      return Traits::eof();
    }
    const std::size_t size = sizes_[turn_++ % sizes_.size()];
    if (size == 0) {
      setg(nullptr, nullptr, nullptr);
      return Traits::to_int_type(text_[taken_]);
    }
    std::size_t end = std::min(taken_ + size, text_.size());
    if (event_ < events_.size() && events_[event_].position > taken_) {
      end = std::min(end, events_[event_].position);
    }
    piece_ = std::make_unique<Char[]>(end - taken_);
    text_.copy(piece_.get(), end - taken_, taken_);
    setg(piece_.get(), piece_.get(), piece_.get() + (end - taken_));
    taken_ = end;
    return Traits::to_int_type(*gptr());
  }

  // As a buffer may that counts in its own way: `gptr` beyond `egptr`.
  void EndOddly() {
    if (ends_oddly_) {
      setg(passed_, passed_ + 3, passed_ + 1);
    }
  }

  const String& text_;
  const std::vector<std::size_t>& sizes_;
  const std::vector<Event>& events_;
  const bool ends_oddly_;
  InputStream* stream_ = nullptr;
  std::unique_ptr<Char[]> piece_;
  std::size_t taken_ = 0;
  std::size_t turn_ = 0;
  std::size_t event_ = 0;
  Char passed_[3] = {};
  Calls calls_;
};

// Has room for `room` characters at a time (0: none, each comes singly), takes
// `capacity` in all, and then meets its trouble, as it does at each flush that
// is told to.
struct OutputLimits {
  std::size_t room = 0;
  std::size_t capacity = static_cast<std::size_t>(-1);
  Trouble trouble = Trouble::kEnd;
  Trouble trouble_of_flush = Trouble::kNone;
};

class WatchedOutput : public StreamBuffer {
 public:
  explicit WatchedOutput(const OutputLimits& limits)
      : limits_(limits), area_(std::make_unique<Char[]>(limits.room)) {}

  String Written() const { return taken_ + String(pbase(), pptr()); }
  const Calls& calls() const { return calls_; }

 protected:
  std::streamsize xsputn(const Char* text, std::streamsize size) override {
    calls_.push_back({'x', String(text, static_cast<std::size_t>(size))});
    return StreamBuffer::xsputn(text, size);
  }
  Traits::int_type overflow(Traits::int_type next) override {
    calls_.push_back({'o', String(1, Traits::to_char_type(next))});
    taken_.append(pbase(), pptr());
    setp(nullptr, nullptr);
    if (taken_.size() >= limits_.capacity) {
      MeetTrouble(limits_.trouble);
      return Traits::eof();
    }
    const std::size_t room =
        std::min(limits_.room, limits_.capacity - taken_.size());
    if (room != 0) {
      setp(area_.get(), area_.get() + room);
      *pptr() = Traits::to_char_type(next);
      pbump(1);
    } else {
      taken_ += Traits::to_char_type(next);
    }
    return Traits::not_eof(next);
  }
  int sync() override {
    calls_.push_back({'s'});
    return MeetTrouble(limits_.trouble_of_flush) ? -1 : 0;
  }
  pos_type seekoff(off_type, std::ios_base::seekdir,
                   std::ios_base::openmode) override {
    calls_.push_back({'p'});
    return pos_type(off_type(-1));
  }
  void imbue(const std::locale&) override { calls_.push_back({'i'}); }

 private:
  const OutputLimits& limits_;
  std::unique_ptr<Char[]> area_;
  String taken_;
  Calls calls_;
};

}  // namespace korvan::test

#endif  // KORVAN_FUZZ_INI_WATCHED_BUFFERS_H_
