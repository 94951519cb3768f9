// Threads that start together, so that they meet in what they do first.
#ifndef KORVAN_TESTS_SUPPORT_TOGETHER_H_
#define KORVAN_TESTS_SUPPORT_TOGETHER_H_

#include <atomic>
#include <thread>
#include <vector>

namespace korvan::test {

// Where threads wait for each other.
class MeetingPoint {
 public:
  explicit MeetingPoint(int threads) : awaited_(threads) {}

  // Returns when all threads have called it.
  void Meet() {
    --awaited_;
    while (awaited_ > 0) {
      std::this_thread::yield();
    }
  }

 private:
  std::atomic<int> awaited_;
};

// Runs `work(number)` on so many threads, numbered from 0, and waits for them.
template <class Work>
void RunTogether(int threads, Work work) {
  MeetingPoint start(threads);
  std::vector<std::thread> running;
  for (int number = 0; number < threads; ++number) {
    running.emplace_back([&, number] {
      start.Meet();
      work(number);
    });
  }
  for (std::thread& thread : running) {
    thread.join();
  }
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_TOGETHER_H_
