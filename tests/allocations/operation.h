// The rows of the table of operations, of which each allocation fails.
#ifndef KORVAN_TESTS_ALLOCATIONS_OPERATION_H_
#define KORVAN_TESTS_ALLOCATIONS_OPERATION_H_

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "support/failing_heap.h"

namespace korvan::test {

// One run of an operation, in whose call the heap refuses a request.
class Trial {
 public:
  Trial(long granted, Refusal refusal) : granted_(granted), refusal_(refusal) {}

  // Makes the call that the trial is about. Texts that it takes by value have
  // to be made before, and moved in.
  template <class Call>
  void operator()(Call call) {
    FailingHeap failing(granted_, refusal_);
    try {
      call();
    } catch (const std::bad_alloc&) {
      thrown_ = "bad_alloc";
    } catch (const std::exception&) {
      thrown_ = "another exception";
    }
    failing.Stop();
    refused_ = failing.Refused();
    refused_new_ = failing.RefusedNew();
    refused_size_ = failing.RefusedSize();
  }

  bool Refused() const { return refused_; }
  bool RefusedNew() const { return refused_new_; }
  std::size_t RefusedSize() const { return refused_size_; }
  std::string Thrown() const { return thrown_; }

  // What most operations promise.
  void ExpectBadAllocIfRefused() const {
    EXPECT_EQ(Thrown(), Refused() ? "bad_alloc" : "");
  }

 private:
  long granted_;
  Refusal refusal_;
  bool refused_ = false;
  bool refused_new_ = false;
  std::size_t refused_size_ = 0;
  const char* thrown_ = "";
};

struct Operation {
  std::string function;  // as tests/binary/exported_symbols.txt has it
  std::string how;       // tells it from other rows of the same function
  bool allocates;
  bool in_new_process;  // because what it does lasts
  std::function<void(Trial&)> run;
};

// The rows of the INI classes and of the text helpers.
std::vector<Operation> NarrowOperations();
std::vector<Operation> WideOperations();
// Those of the registry, of the texts and of the key conversions.
std::vector<Operation> RegistryOperations();
std::vector<Operation> ConversionOperations();

}  // namespace korvan::test

#endif  // KORVAN_TESTS_ALLOCATIONS_OPERATION_H_
