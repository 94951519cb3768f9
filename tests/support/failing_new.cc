// Replaces `operator new` and `operator delete`, to count and to fail.
#include "support/failing_new.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// A block begins with its size. How much malloc gives for a size is not always
// the same.
constexpr std::size_t kHead = alignof(std::max_align_t);

thread_local long calls = 0;
thread_local std::size_t last_size = 0;
thread_local long successes_left = 0;
thread_local long failures_left = 0;  // after the successes
thread_local bool failed = false;
thread_local bool limited = false;
thread_local long bytes_left = 0;  // of a LimitedNew
thread_local void (*before_each)() = nullptr;
std::atomic<long> live{0};

void* Allocate(std::size_t size) {
  ++calls;
  last_size = size;
  if (before_each != nullptr) {
    before_each();
  }
  if (successes_left > 0) {
    --successes_left;
  } else if (failures_left > 0) {
    --failures_left;
    failed = true;
    throw std::bad_alloc();
  }
  if (limited && static_cast<long>(size) > bytes_left) {
    throw std::bad_alloc();
  }
  auto* const block = static_cast<char*>(std::malloc(kHead + size));
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  std::memcpy(block, &size, sizeof size);
  bytes_left -= static_cast<long>(size);
  ++live;
  return block + kHead;
}

void Free(void* place) {
  if (place == nullptr) {
    return;
  }
  char* const block = static_cast<char*>(place) - kHead;
  std::size_t size = 0;
  std::memcpy(&size, block, sizeof size);
  bytes_left += static_cast<long>(size);
  --live;
  std::free(block);
}

}  // namespace

namespace korvan::test {

FailingNew::FailingNew(long successes, long failures) {
  failed = false;
  successes_left = successes;
  failures_left = failures;
}
FailingNew::~FailingNew() { failures_left = 0; }
bool FailingNew::Failed() const { return failed; }

LimitedNew::LimitedNew(long bytes) {
  limited = true;
  bytes_left = bytes;
}
LimitedNew::~LimitedNew() { limited = false; }
long LimitedNew::Left() const { return bytes_left; }

PausingNew::PausingNew(void (*pause)()) { before_each = pause; }
PausingNew::~PausingNew() { before_each = nullptr; }

long NewCalls() { return calls; }
std::size_t LastNewSize() { return last_size; }
long LiveBlocks() { return live; }

}  // namespace korvan::test

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete[](void* block, std::size_t) noexcept { Free(block); }
