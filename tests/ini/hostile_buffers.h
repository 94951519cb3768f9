// Stream buffers that do everything that they may, and what the stream shows
// then.
#ifndef KORVAN_TESTS_INI_HOSTILE_BUFFERS_H_
#define KORVAN_TESTS_INI_HOSTILE_BUFFERS_H_

#include <algorithm>
#include <cstddef>
#include <ios>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "ini/shown.h"
#include "ini/width.h"

namespace korvan::test {

struct Fault {};

constexpr std::size_t kNever = static_cast<std::size_t>(-1);

// What a buffer does instead of giving or taking a character.
enum class FaultKind {
  kThrows,          // a Fault
  kThrowsFailure,   // as the standard library's own buffers do
  kThrowsBadAlloc,  //
  kThrowsNumber,    // which is of no class
  kEnds,            // gives or takes nothing
  kEndsOnce,        // and goes on at the next call
};

inline void ThrowFault(FaultKind kind) {
  switch (kind) {
    case FaultKind::kThrows:
      throw Fault();
    case FaultKind::kThrowsFailure:
      throw std::ios_base::failure("fault");
    case FaultKind::kThrowsBadAlloc:
      throw std::bad_alloc();
    case FaultKind::kThrowsNumber:
      throw 1;
    case FaultKind::kEnds:
    case FaultKind::kEndsOnce:
      break;
  }
}

// Gives a text in pieces of the given sizes, over and over, and fails instead
// of giving the character at `fault`. Pieces of size 0 are single characters
// without a buffer.
class PiecewiseInput : public StreamBuffer {
 public:
  PiecewiseInput(String text, std::vector<std::size_t> sizes,
                 std::size_t fault = kNever,
                 FaultKind kind = FaultKind::kThrows)
      : text_(std::move(text)),
        sizes_(std::move(sizes)),
        fault_(fault),
        kind_(kind) {
    if (sizes_.empty()) {
      sizes_.push_back(text_.size() + 1);
    }
  }

  std::size_t Consumed() const {
    return taken_ - static_cast<std::size_t>(egptr() - gptr());
  }

 protected:
  Traits::int_type underflow() override {
    if (gptr() != egptr()) {
      return Traits::to_int_type(*gptr());
    }
    if (taken_ == fault_) {
      ThrowFault(kind_);
      if (kind_ == FaultKind::kEndsOnce) {
        fault_ = kNever;
      }
      return Traits::eof();
    }
    if (taken_ == text_.size()) {
      return Traits::eof();
    }
    const std::size_t size = sizes_[turn_ % sizes_.size()];
    if (size == 0) {
      return Traits::to_int_type(text_[taken_]);
    }
    ++turn_;
    const std::size_t end =
        std::min({taken_ + size, text_.size(), std::max(fault_, taken_)});
    setg(text_.data() + taken_, text_.data() + taken_, text_.data() + end);
    taken_ = end;
    return Traits::to_int_type(*gptr());
  }

  Traits::int_type uflow() override {
    const auto next = underflow();
    if (Traits::eq_int_type(next, Traits::eof())) {
      return next;
    }
    if (gptr() != egptr()) {
      gbump(1);
    } else {
      ++taken_;
      ++turn_;
    }
    return next;
  }

 private:
  String text_;
  std::vector<std::size_t> sizes_;
  std::size_t fault_;
  FaultKind kind_;
  std::size_t taken_ = 0;
  std::size_t turn_ = 0;
};

// Keeps what is written and counts flushes. It has room for `room` characters
// at a time (0: none, each comes singly), takes `capacity` in all, and then
// fails.
class LimitedOutput : public StreamBuffer {
 public:
  explicit LimitedOutput(std::size_t room = 0, std::size_t capacity = kNever,
                         FaultKind kind = FaultKind::kEnds)
      : area_(room, Char{}), capacity_(capacity), kind_(kind) {}

  String Written() const { return taken_ + String(pbase(), pptr()); }
  int flushes() const { return flushes_; }

 protected:
  Traits::int_type overflow(Traits::int_type next) override {
    taken_.append(pbase(), pptr());
    setp(nullptr, nullptr);
    if (taken_.size() >= capacity_) {
      ThrowFault(kind_);
      if (kind_ == FaultKind::kEndsOnce) {
        capacity_ = kNever;
      }
      return Traits::eof();
    }
    const std::size_t room = std::min(area_.size(), capacity_ - taken_.size());
    if (room != 0) {
      setp(area_.data(), area_.data() + room);
    }
    if (Traits::eq_int_type(next, Traits::eof())) {
      return Traits::not_eof(next);
    }
    if (room != 0) {
      return sputc(Traits::to_char_type(next));
    }
    taken_ += Traits::to_char_type(next);
    return next;
  }

  int sync() override {
    ++flushes_;
    return 0;
  }

 private:
  String taken_;
  String area_;
  std::size_t capacity_;
  FaultKind kind_;
  int flushes_ = 0;
};

// What a call threw: "", "fault", "failure", "memory" or "number".
template <class Call>
std::string Thrown(Call call) {
  try {
    call();
  } catch (const Fault&) {
    return "fault";
  } catch (const std::ios_base::failure&) {
    return "failure";
  } catch (const std::bad_alloc&) {
    return "memory";
  } catch (int) {
    return "number";
  }
  return "";
}

struct LoadCase {
  String text;
  std::vector<std::size_t> pieces;
  std::size_t fault = kNever;
  std::ios_base::iostate exceptions = std::ios_base::goodbit;
  bool tied = false;
  bool merge = false;
  FaultKind kind = FaultKind::kThrows;
  std::ios_base::iostate state = std::ios_base::goodbit;  // before the load
};

// Loads into a document of the library or a plain one, and tells all that can
// be seen after.
template <class AnyFile>
std::string Load(const LoadCase& load, AnyFile& file) {
  PiecewiseInput buffer(load.text, load.pieces, load.fault, load.kind);
  InputStream input(&buffer);
  input.setstate(load.state);
  LimitedOutput tied_buffer;
  OutputStream tied(&tied_buffer);
  if (load.tied) {
    input.tie(&tied);
  }
  const std::string first = Thrown([&] { input.exceptions(load.exceptions); });
  const std::string thrown = Thrown([&] { file.Load(input, load.merge); });
  std::ostringstream seen;
  seen << ContentOf(file) << " thrown:" << first << ' ' << thrown
       << " state:" << Shown(input.rdstate())
       << " consumed:" << buffer.Consumed() << " gcount:" << input.gcount()
       << " flushes:" << tied_buffer.flushes();
  return seen.str();
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_INI_HOSTILE_BUFFERS_H_
