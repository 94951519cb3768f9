// Each request that an exported function makes of the heap is refused, once by
// itself and once with all that follow. The functions stand in tables, and a
// test holds the tables to the list of what the library exports.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "allocations/operation.h"
#include "support/campaign.h"
#include "support/child_process.h"
#include "support/failing_heap.h"

namespace korvan::test {
namespace {

std::vector<Operation> AllOperations() {
  std::vector<Operation> all;
  for (const auto& rows : {NarrowOperations(), WideOperations(),
                           RegistryOperations(), ConversionOperations()}) {
    all.insert(all.end(), rows.begin(), rows.end());
  }
  return all;
}

// Runs the operation with so many requests granted. Returns whether one was
// refused. It may leave no block behind; in a program with AddressSanitizer,
// that tells.
bool IsRefusedAfter(long granted, Refusal refusal, const Operation& operation) {
  const long before = HeapBlocks();
  Trial trial(granted, refusal);
  operation.run(trial);
  if (kAreAllBlocksSeen && !operation.in_new_process) {
    EXPECT_EQ(HeapBlocks(), before) << "blocks are left";
  }
  return trial.Refused();
}

bool IsRefusedInNewProcess(long granted, Refusal refusal,
                           const Operation& operation) {
  constexpr int kRefused = 11;
  constexpr int kGranted = 12;
  const int status = ExitStatusOf(StartChild([&]() -> int {
    const bool is_refused = IsRefusedAfter(granted, refusal, operation);
    const int found = testing::Test::HasFailure() ? 1
                      : is_refused                ? kRefused
                                                  : kGranted;
    if (Rounds(0, 1) != 0) {
      std::exit(found);  // AddressSanitizer looks for leaks, which takes long
    }
    return found;
  }));
  EXPECT_TRUE(status == kRefused || status == kGranted)
      << "exit status " << status;
  return status == kRefused;
}

// Returns how many requests the operation makes.
long RefuseEach(Refusal refusal, const Operation& operation) {
  if (!operation.in_new_process) {
    // The standard library keeps some blocks for good when it is first used.
    Trial warming(LONG_MAX, refusal);
    operation.run(warming);
  }
  long granted = 0;
  while (!testing::Test::HasFailure() &&
         (operation.in_new_process
              ? IsRefusedInNewProcess(granted, refusal, operation)
              : IsRefusedAfter(granted, refusal, operation))) {
    ++granted;
  }
  EXPECT_EQ(granted != 0, operation.allocates);
  return granted;
}

void RefuseEachOfAll(Refusal refusal, const char* what) {
  long refused = 0;
  const std::vector<Operation> operations = AllOperations();
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.function + ' ' + operation.how);
    refused += RefuseEach(refusal, operation);
    if (testing::Test::HasFailure()) {
      return;
    }
  }
  Figures(operations.size(), " operations, ", refused, " requests refused ",
          what);
}

TEST(Allocations, EveryOperationBearsThatOneRequestIsRefused) {
  RefuseEachOfAll(Refusal::kOne, "alone");
}

TEST(Allocations, EveryOperationBearsThatAllRequestsFromOneOnAreRefused) {
  RefuseEachOfAll(Refusal::kAllFromThere, "with all after");
}

TEST(Allocations, EveryExportedFunctionIsAnOperation) {
  std::set<std::string> exported;
  std::ifstream list(KORVAN_TEST_EXPORTED_SYMBOLS);
  for (std::string name; std::getline(list, name);) {
    if (name.find('(') != std::string::npos) {  // not of data or a version
      exported.insert(name);
    }
  }
  std::set<std::string> tried;
  for (const Operation& operation : AllOperations()) {
    tried.insert(operation.function);
  }
  EXPECT_EQ(exported, tried);
  Figures(exported.size(), " exported functions");
}

}  // namespace
}  // namespace korvan::test
