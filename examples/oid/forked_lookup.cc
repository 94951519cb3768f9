// Forks while another thread looks names up: the child can look up, too.
#include <korvan/korvan.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <thread>

static bool HasCommonName() {
  wchar_t name[] = L"Common Name";
  return korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, name, 0) != nullptr;
}

int main() {
  bool found_by_thread = false;
  std::thread thread([&] { found_by_thread = HasCommonName(); });
  const pid_t child = fork();
  if (child == 0) {
    // Not `return`: that would run the destructors of the parent's objects.
    _exit(HasCommonName() ? 0 : 1);
  }
  thread.join();
  int status = 1;
  if (child < 0 || waitpid(child, &status, 0) != child) {
    return 1;
  }
  std::printf("the thread %s it\n", found_by_thread ? "finds" : "misses");
  std::printf("the child %s it\n", status == 0 ? "finds" : "misses");
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// the thread finds it
// the child finds it
