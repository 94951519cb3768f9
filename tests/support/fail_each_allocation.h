// Lets each allocation of a piece of code fail in turn. A program that uses it
// is linked with failing_new.cc.
#ifndef KORVAN_TESTS_SUPPORT_FAIL_EACH_ALLOCATION_H_
#define KORVAN_TESTS_SUPPORT_FAIL_EACH_ALLOCATION_H_

#include <gtest/gtest.h>

#include "support/failing_new.h"

namespace korvan::test {

// Calls `attempt` with 0, 1, 2 and so on: how many of its allocations it lets
// succeed before one fails. It tells whether one did; once none does, returns
// how many there are. No attempt may leave a block behind.
template <class Attempt>
long FailEachAllocation(Attempt attempt) {
  for (long successes = 0;; ++successes) {
    const long live = LiveBlocks();
    const bool failed = attempt(successes);
    EXPECT_EQ(LiveBlocks(), live) << "after " << successes;
    if (!failed) {
      return successes;
    }
  }
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_FAIL_EACH_ALLOCATION_H_
