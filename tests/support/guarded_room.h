// Memory that is followed by a page that cannot be read or written.
#ifndef KORVAN_TESTS_SUPPORT_GUARDED_ROOM_H_
#define KORVAN_TESTS_SUPPORT_GUARDED_ROOM_H_

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>

namespace korvan::test {

// Holds bytes right before such a page: a read past their end kills the test.
class GuardedRoom {
 public:
  explicit GuardedRoom(std::size_t capacity) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    capacity_ = (capacity + page - 1) / page * page;
    mapped_ = capacity_ + page;
    void* const start = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) {
      throw std::bad_alloc();
    }
    start_ = static_cast<unsigned char*>(start);
    if (mprotect(start_ + capacity_, page, PROT_NONE) != 0) {
      throw std::bad_alloc();
    }
  }
  GuardedRoom(const GuardedRoom&) = delete;
  GuardedRoom& operator=(const GuardedRoom&) = delete;
  ~GuardedRoom() { munmap(start_, mapped_); }

  // Copies the bytes to the end of the memory, over earlier ones.
  unsigned char* Place(std::span<const unsigned char> bytes) {
    if (bytes.size() > capacity_) {
      throw std::bad_alloc();
    }
    unsigned char* const place = start_ + capacity_ - bytes.size();
    std::ranges::copy(bytes, place);
    return place;
  }

 private:
  std::size_t capacity_;
  std::size_t mapped_;
  unsigned char* start_;
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_GUARDED_ROOM_H_
