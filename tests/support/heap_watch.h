// A program that is linked with heap_watch.cc can see each request that the
// project's libraries make of the heap, by malloc or by `new`, and make one
// fail. failing_new.h sees `new` only, but the tests' own too.
#ifndef KORVAN_TESTS_SUPPORT_HEAP_WATCH_H_
#define KORVAN_TESTS_SUPPORT_HEAP_WATCH_H_

#include <cstddef>
#include <vector>

namespace korvan::test {

// Sees what the libraries, called from this thread, ask of the heap and give
// back to it, and can make a request fail, from when the watch is made until
// it is stopped or destroyed. The tests' own requests are not seen.
//
// When the first watch is made, the heap's functions in the libraries' tables
// of imported functions are replaced. A replaced `malloc` would be called by
// all code in the process, and would keep a sanitizer's or valgrind's from
// doing its work.
class HeapWatch {
 public:
  // The `fail_at`th request, counted from 1, fails; 0 lets all succeed.
  explicit HeapWatch(int fail_at = 0);
  HeapWatch(const HeapWatch&) = delete;
  HeapWatch& operator=(const HeapWatch&) = delete;
  ~HeapWatch();

  void Stop();

  // What was seen of the first 64 calls. Stop the watch before.
  std::vector<std::size_t> Sizes() const;  // asked for, granted or not
  std::vector<void*> Freed() const;        // given back, null included
  std::size_t FreedBlocks() const;         // given back, null not counted

 private:
  friend bool Grant(std::size_t size);
  friend void NoteFreed(void* memory);

  static constexpr int kMost = 64;
  int fail_at_;
  int requests_ = 0;
  int frees_ = 0;
  std::size_t sizes_[kMost];
  void* freed_[kMost];
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_HEAP_WATCH_H_
