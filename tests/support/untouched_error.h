// A last-error code that nobody sets, so that a test can tell whether a call
// left the code alone.
#ifndef KORVAN_TESTS_SUPPORT_UNTOUCHED_ERROR_H_
#define KORVAN_TESTS_SUPPORT_UNTOUCHED_ERROR_H_

namespace korvan::test {

constexpr unsigned int kUntouchedError = 0x0BADC0DE;

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_UNTOUCHED_ERROR_H_
