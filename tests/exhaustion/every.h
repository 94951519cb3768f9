// Looks at every one of so many inputs, on all processors, until one of them is
// wrong.
#ifndef KORVAN_TESTS_EXHAUSTION_EVERY_H_
#define KORVAN_TESTS_EXHAUSTION_EVERY_H_

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace korvan::test {

// `make` makes a checker for one thread: of a number from 0 up to `count` it
// returns what is wrong, or nothing. Returns the exit status.
template <class Make>
int LookAtEvery(const char* what, std::uint64_t count, Make make) {
  constexpr std::uint64_t kBlock = 4096;
  const auto start = std::chrono::steady_clock::now();
  std::atomic<std::uint64_t> next{0};
  std::atomic<bool> failed{false};
  const auto work = [&] {
    auto check = make();
    for (std::uint64_t begin = next.fetch_add(kBlock); begin < count && !failed;
         begin = next.fetch_add(kBlock)) {
      const std::uint64_t end = std::min(begin + kBlock, count);
      for (std::uint64_t number = begin; number < end; ++number) {
        const std::string fault = check(number);
        if (!fault.empty()) {
          std::printf("%s: %s\n", what, fault.c_str());
          failed = true;
          return;
        }
      }
    }
  };
  std::vector<std::thread> threads;
  // Of a system that does not tell, one thread.
  const unsigned int processors =
      std::max(1U, std::thread::hardware_concurrency());
  for (unsigned int i = 0; i < processors; ++i) {
    threads.emplace_back(work);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::chrono::duration<double> seconds =
      std::chrono::steady_clock::now() - start;
  if (failed) {
    return 1;
  }
  std::printf("%s: %llu, as the model says, in %.0f s\n", what,
              static_cast<unsigned long long>(count), seconds.count());
  return 0;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_EXHAUSTION_EVERY_H_
