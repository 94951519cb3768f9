// A program that is linked with failing_new.cc can make `new` fail, in the
// tests and in the library, and count what is allocated by it. heap_watch.h
// sees malloc too, but the library's requests only.
#ifndef KORVAN_TESTS_SUPPORT_FAILING_NEW_H_
#define KORVAN_TESTS_SUPPORT_FAILING_NEW_H_

#include <climits>
#include <cstddef>

namespace korvan::test {

// While it lives, lets the next `successes` allocations of this thread succeed
// and those after them throw std::bad_alloc, all of them or the next
// `failures`.
class FailingNew {
 public:
  explicit FailingNew(long successes, long failures = LONG_MAX);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();

  // Whether an allocation failed.
  bool Failed() const;
};

// While it lives, lets allocations of this thread throw std::bad_alloc where
// they would take it beyond so many bytes. What it frees can be used again.
class LimitedNew {
 public:
  explicit LimitedNew(long bytes);
  LimitedNew(const LimitedNew&) = delete;
  LimitedNew& operator=(const LimitedNew&) = delete;
  ~LimitedNew();

  // How many of the bytes are left.
  long Left() const;
};

// Calls `pause` before each allocation of this thread while it lives, so that
// a test can hold the thread there.
class PausingNew {
 public:
  explicit PausingNew(void (*pause)());
  PausingNew(const PausingNew&) = delete;
  PausingNew& operator=(const PausingNew&) = delete;
  ~PausingNew();
};

// Allocations of this thread by `new` since the program started.
long NewCalls();

// The bytes that the last of them asked for.
std::size_t LastNewSize();

// Blocks from `new` that are not yet freed, of all threads.
long LiveBlocks();

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_FAILING_NEW_H_
