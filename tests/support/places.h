// Places in memory where the arguments of a call may lie: the result must be
// the same, and nobody may write to what is only read.
#ifndef KORVAN_TESTS_SUPPORT_PLACES_H_
#define KORVAN_TESTS_SUPPORT_PLACES_H_

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/campaign.h"
#include "support/mappings.h"

namespace korvan::test {

enum class Place {
  kHeap,
  kStack,
  kStatic,
  kReadOnly,   // where a write ends the process
  kOddNumber,  // at an odd address
  kBelowLibrary,
  kAboveLibrary,
  kEndOfPage,  // before a page that can't be read or written
};
inline constexpr struct {
  Place place;
  const char* name;
} kPlaces[] = {
    {Place::kHeap, "on the heap"},
    {Place::kStack, "on the stack"},
    {Place::kStatic, "in static memory"},
    {Place::kReadOnly, "in read-only memory"},
    {Place::kOddNumber, "at an odd address"},
    {Place::kBelowLibrary, "below the library"},
    {Place::kAboveLibrary, "above the library"},
    {Place::kEndOfPage, "at the end of a page"},
};

// The most that an argument takes, which is no more than a page.
constexpr std::size_t kMostBytes = 4096;
struct alignas(std::max_align_t) PlaceRoom {
  unsigned char bytes[kMostBytes];
};

// Makes the arguments of one call, numbered from 0 in the order in which they
// are made. One of them lies at a place, the others on the heap.
class Arguments {
 public:
  Arguments(Place place, std::size_t placed, PlaceRoom& stack)
      : place_(place), placed_(placed), stack_(stack) {}
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;
  ~Arguments() {
    Protect(PROT_READ | PROT_WRITE);
    for (; !ends_.empty(); ends_.pop_back()) {
      ends_.back()();
    }
  }

  // A copy of values that the call only reads.
  template <class T>
  T* Read(const T* values, std::size_t count) {
    auto* const copy =
        static_cast<T*>(Room(count * sizeof(T), alignof(T), true));
    std::memcpy(copy, values, count * sizeof(T));
    return copy;
  }
  template <class T>
  T* Read(const T& value) {
    return Read(&value, 1);
  }

  // A copy of a text with its terminator, which the call only reads.
  template <class Char>
  Char* ReadText(std::basic_string_view<Char> text) {
    const std::basic_string<Char> whole(text);
    return Read(whole.c_str(), whole.size() + 1);
  }
  char* ReadText(const char* text) { return ReadText(std::string_view(text)); }
  wchar_t* ReadText(const wchar_t* text) {
    return ReadText(std::wstring_view(text));
  }

  // Numbers that may lie at any address.
  void* ReadNumbers(const std::vector<unsigned int>& numbers) {
    return Read(reinterpret_cast<const unsigned char*>(numbers.data()),
                numbers.size() * sizeof(numbers[0]));
  }

  // A copy of a value that the call may write.
  template <class T>
  T* Written(const T& value) {
    return ::new (Room(sizeof(T), alignof(T), false)) T(value);
  }
  unsigned char* WrittenBytes(std::size_t count) {
    void* const bytes = Room(count, 1, false);
    std::memset(bytes, '#', count);
    return static_cast<unsigned char*>(bytes);
  }

  // Objects, which end with the arguments.
  template <class T, class... Parts>
  const T& ReadObject(Parts&&... parts) {
    return Object<T>(true, std::forward<Parts>(parts)...);
  }
  template <class T, class... Parts>
  T& WrittenObject(Parts&&... parts) {
    return Object<T>(false, std::forward<Parts>(parts)...);
  }

  // From now on until the arguments end, what is only read can't be written.
  void Ready() { Protect(PROT_READ); }

  std::size_t Count() const { return count_; }

  // Whether an argument lies at the place.
  bool IsPlaced() const { return is_placed_; }

 private:
  template <class T, class... Parts>
  T& Object(bool is_read, Parts&&... parts) {
    T* const object = ::new (Room(sizeof(T), alignof(T), is_read))
        T(std::forward<Parts>(parts)...);
    ends_.push_back([object] { object->~T(); });
    return *object;
  }

  void* Room(std::size_t size, std::size_t alignment, bool is_read) {
    const bool can_be_placed = (place_ != Place::kReadOnly || is_read) &&
                               (place_ != Place::kOddNumber || alignment == 1);
    if (count_++ != placed_ || !can_be_placed) {
      return OnTheHeap(size);
    }
    is_placed_ = true;
    EXPECT_LE(size, kMostBytes);
    switch (place_) {
      case Place::kHeap:
        return OnTheHeap(size);
      case Place::kStack:
        return stack_.bytes;
      case Place::kStatic: {
        static PlaceRoom room;
        return room.bytes;
      }
      case Place::kReadOnly:
        read_only_ = Mapped(nullptr, 0);
        return read_only_;
      case Place::kOddNumber:
        return static_cast<unsigned char*>(OnTheHeap(size + 1)) + 1;
      case Place::kBelowLibrary:
        return Beside(MappingsOf("libkorvan.so").front().begin, -1);
      case Place::kAboveLibrary:
        return Beside(MappingsOf("libkorvan.so").back().end, +1);
      case Place::kEndOfPage: {
        auto* const pages = static_cast<unsigned char*>(Mapped(nullptr, 0));
        EXPECT_EQ(mprotect(pages + PageSize(), PageSize(), PROT_NONE), 0);
        return pages + PageSize() - size;
      }
    }
    return nullptr;
  }

  void* OnTheHeap(std::size_t size) {
    void* const room = ::operator new(size);
    ends_.push_back([room] { ::operator delete(room); });
    return room;
  }

  static std::size_t PageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  }

  // A page, and one behind it; null where they can't be there.
  void* Mapped(void* where, int flags) {
    const std::size_t size = 2 * PageSize();
    void* const pages = mmap(where, size, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    if (pages == MAP_FAILED) {
      return nullptr;
    }
    ends_.push_back([pages, size] { munmap(pages, size); });
    return pages;
  }

  // The first free pages on that side of an address.
  void* Beside(std::uintptr_t address, int side) {
    constexpr std::uintptr_t kStep = 1 << 16;
    constexpr int kMostSteps = 1 << 20;
    address = address / kStep * kStep;
    for (int step = 0; step < kMostSteps; ++step) {
      address = side < 0 ? address - kStep : address + kStep;
      void* const pages =
          Mapped(reinterpret_cast<void*>(address), MAP_FIXED_NOREPLACE);
      if (pages != nullptr) {
        return pages;
      }
    }
    throw std::bad_alloc();
  }

  void Protect(int protection) {
    if (read_only_ != nullptr) {
      EXPECT_EQ(mprotect(read_only_, PageSize(), protection), 0);
    }
  }

  Place place_;
  std::size_t placed_;
  PlaceRoom& stack_;
  std::size_t count_ = 0;
  bool is_placed_ = false;
  void* read_only_ = nullptr;
  std::vector<std::function<void()>> ends_;
};

struct Operation {
  const char* name;
  const char* result;
  std::function<std::string(Arguments&)> call;
};

// Calls each operation with each of its arguments at each place.
inline void ExpectTheSameEverywhere(const std::vector<Operation>& operations) {
  std::size_t arguments_in_all = 0;
  std::size_t calls = 0;
  for (const Operation& operation : operations) {
    std::size_t count = 1;
    for (std::size_t placed = 0; placed < count; ++placed) {
      for (const auto& [place, place_name] : kPlaces) {
        PlaceRoom stack;
        Arguments arguments(place, placed, stack);
        EXPECT_EQ(operation.call(arguments), operation.result)
            << operation.name << ", argument " << placed << ' ' << place_name;
        count = arguments.Count();
        calls += arguments.IsPlaced();
      }
    }
    arguments_in_all += count;
  }
  Figures(operations.size(), " operations with ", arguments_in_all,
          " arguments in ", std::size(kPlaces), " places: ", calls, " calls");
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_PLACES_H_
