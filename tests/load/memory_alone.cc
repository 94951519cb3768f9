// A process that has nothing but memory: looks records up, reads texts,
// converts keys and edits a document, and exits with 0 if all answers are
// right.
//
//   memory_alone                      between marks for strace
//   memory_alone in_empty_root FOLDER where there is no file
//   memory_alone under_strict_seccomp where the kernel kills whoever calls it
#include <linux/seccomp.h>
#include <malloc.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <string>

#include "load/every_service.h"

namespace {

void Require(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
  }
}

// Shows in a trace, and does nothing.
void Mark(const char* mark) {
  if (write(-1, mark, std::strlen(mark)) == 0) {
    std::abort();
  }
}

bool EntersEmptyRoot(const char* folder) {
  return (geteuid() == 0 || unshare(CLONE_NEWUSER) == 0) &&
         chroot(folder) == 0 && chdir("/") == 0 && access("/usr", F_OK) != 0;
}

// Memory that malloc has already is all that there will be.
bool EntersStrictSeccomp() {
  constexpr int kRoom = 8 << 20;
  if (mallopt(M_MMAP_THRESHOLD, 2 * kRoom) == 0 ||
      mallopt(M_TRIM_THRESHOLD, 2 * kRoom) == 0) {
    return false;
  }
  void* volatile room = std::malloc(kRoom);
  std::free(room);
  return room != nullptr && prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  Mark("main");
  // Whatever comes of it: a process may well be started with a nonsense LANG.
  std::setlocale(LC_ALL, "");
  // The first stream of a process makes this, under a lock of its own, and its
  // first allocation asks for a random number.
  const std::locale streams;
  void* volatile allocation = std::malloc(1);
  std::free(allocation);
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "in_empty_root") {
    Require(argc == 3 && EntersEmptyRoot(argv[2]), "no empty root can be made");
  } else if (mode == "under_strict_seccomp") {
    Require(EntersStrictSeccomp(), "strict seccomp can't be entered");
  }
  Mark("work");
  // Twice: what is loaded lazily, and what is there.
  const bool works =
      korvan::test::EveryServiceWorks() && korvan::test::EveryServiceWorks();
  Mark("end");
  if (mode == "under_strict_seccomp") {
    // The only way out that is open.
    syscall(SYS_exit, works ? 0 : 1);
  }
  Require(works, "an answer is wrong");
}
