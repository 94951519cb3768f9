// Counting the instructions of one operation in a program that runs under
// callgrind. Callgrind is started with collection off; it is switched on for
// the operation alone.

#ifndef KORVAN_BENCH_COST_MEASURE_H_
#define KORVAN_BENCH_COST_MEASURE_H_

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// Ends the program if an operation did not do what it should: the cost of a
// failure is worth nothing.
inline void Require(bool succeeded, const std::string& name) {
  if (!succeeded) {
    std::fprintf(stderr, "%s: the operation failed\n", name.c_str());
    std::exit(1);
  }
}

// Counts what `operation` does, and has callgrind write it to a file of its
// own under `name`. `operation` returns whether it succeeded.
template <class Operation>
void Count(const std::string& name, Operation operation) {
  CALLGRIND_TOGGLE_COLLECT;
  const bool succeeded = operation();
  CALLGRIND_TOGGLE_COLLECT;
  Require(succeeded, name);
  CALLGRIND_DUMP_STATS_AT(name.c_str());
}

// Counts `operation` on what `prepare` makes. It runs once before that: the
// first run pays for what happens once in a process, such as binding symbols.
template <class Prepare, class Operation>
void Measure(const std::string& name, Prepare prepare, Operation operation) {
  auto warm_up = prepare();
  operation(warm_up);
  auto subject = prepare();
  Count(name, [&] { return operation(subject); });
}

// The same for an operation that needs nothing fresh.
template <class Operation>
void Measure(const std::string& name, Operation operation) {
  operation();
  Count(name, operation);
}

#endif  // KORVAN_BENCH_COST_MEASURE_H_
