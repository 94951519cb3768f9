#ifndef KORVAN_TESTS_PUBKEY_GUARDED_BYTES_H_
#define KORVAN_TESTS_PUBKEY_GUARDED_BYTES_H_

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>

namespace korvan::test {

// A copy of some bytes that ends where a page begins that nobody may touch: a
// read past the end kills the test. The bytes cannot be written either.
class GuardedBytes {
 public:
  explicit GuardedBytes(std::span<const unsigned char> bytes)
      : size_(bytes.size()) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t pages = (size_ + page - 1) / page * page;
    mapped_ = pages + page;
    void* const start = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) {
      throw std::bad_alloc();
    }
    start_ = static_cast<unsigned char*>(start);
    data_ = start_ + pages - size_;
    std::ranges::copy(bytes, data_);
    if (pages != 0) {
      mprotect(start_, pages, PROT_READ);
    }
    mprotect(start_ + pages, page, PROT_NONE);
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  ~GuardedBytes() { munmap(start_, mapped_); }

  unsigned char* data() const { return data_; }
  unsigned int size() const { return static_cast<unsigned int>(size_); }

 private:
  std::size_t size_;
  std::size_t mapped_;
  unsigned char* start_;
  unsigned char* data_;
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_PUBKEY_GUARDED_BYTES_H_
