// Work in a child process, which shares nothing with the test from then on.
#ifndef KORVAN_TESTS_SUPPORT_CHILD_PROCESS_H_
#define KORVAN_TESTS_SUPPORT_CHILD_PROCESS_H_

#include <sys/wait.h>
#include <unistd.h>

namespace korvan::test {

// Instead of the exit status of a child that was killed or never began.
constexpr int kNoExitStatus = 255;

// Forks a child that does `work` and exits with the status that it returns.
template <class Work>
pid_t StartChild(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(work());
  }
  return child;
}

// Waits for the child to end.
inline int ExitStatusOf(pid_t child) {
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) {
    return kNoExitStatus;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : kNoExitStatus;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_CHILD_PROCESS_H_
