// A program that is linked with failing_heap.cc can refuse any request that a
// call makes of the heap, by whatever function: its own, those of the project's
// libraries and of the standard libraries below them. failing_new.h sees `new`
// only, heap_watch.h the project's libraries only.
#ifndef KORVAN_TESTS_SUPPORT_FAILING_HEAP_H_
#define KORVAN_TESTS_SUPPORT_FAILING_HEAP_H_

#include <cstddef>

namespace korvan::test {

enum class Refusal { kOne, kAllFromThere };

// From when it is made until it is stopped or destroyed, grants the first
// `granted` requests of this thread and refuses the next, or all from there.
class FailingHeap {
 public:
  FailingHeap(long granted, Refusal refusal);
  FailingHeap(const FailingHeap&) = delete;
  FailingHeap& operator=(const FailingHeap&) = delete;
  ~FailingHeap();

  void Stop();

  // What was seen. Stop it before.
  bool Refused() const { return refused_; }
  bool RefusedNew() const { return refused_new_; }  // the first was by `new`
  std::size_t RefusedSize() const { return refused_size_; }  // of the first

 private:
  friend bool Grant(std::size_t size, bool is_new);

  long granted_;
  Refusal refusal_;
  bool refused_ = false;
  bool refused_new_ = false;
  std::size_t refused_size_ = 0;
};

// Blocks that are not yet freed, as far as they are seen. The program's own are
// not where AddressSanitizer is a part of it, which looks for leaks itself, and
// some of libc++ are not, which it takes and frees within itself.
long HeapBlocks();
#if defined(KORVAN_TEST_ADDRESS_SANITIZER) || defined(_LIBCPP_VERSION)
constexpr bool kAreAllBlocksSeen = false;
#else
constexpr bool kAreAllBlocksSeen = true;
#endif

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_FAILING_HEAP_H_
