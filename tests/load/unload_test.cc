// The library loaded and unloaded by a program that is not linked with it.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <malloc.h>

#include <cstddef>
#include <fstream>

#include "support/campaign.h"
#include "support/child_process.h"
#include "support/mappings.h"

namespace korvan::test {
namespace {

// The type alone: the function is found in the loaded library.
using Find = decltype(&FindOIDInfo);

class Library {
 public:
  Library() : handle_(dlopen(KORVAN_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() {
    if (handle_ != nullptr) {
      dlclose(handle_);
    }
  }

  bool IsLoaded() const { return handle_ != nullptr; }

  COidData* FindByOid(const char* oid, unsigned int group) const {
    return Lookup()(CRYPT_OID_INFO_OID_KEY, const_cast<char*>(oid), group);
  }

  // Loads every name of the registry.
  void LoadNames() const {
    wchar_t name[] = L"no such name";
    ASSERT_EQ(Lookup()(CRYPT_OID_INFO_NAME_KEY, name, 0), nullptr);
  }

 private:
  Find Lookup() const {
    return reinterpret_cast<Find>(
        dlsym(handle_, "_ZN6korvan11FindOIDInfoEjPvj"));
  }

  void* handle_;
};

bool IsMapped() { return !MappingsOf("libkorvan.so").empty(); }

std::size_t PagesInUse() {
  std::ifstream statm("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  return resident;
}

TEST(Unload, AnUnloadedLibraryIsUnmapped) {
  {
    const Library library;
    ASSERT_TRUE(library.IsLoaded()) << dlerror();
    ASSERT_TRUE(IsMapped());
    library.LoadNames();
  }
  EXPECT_EQ(dlopen(KORVAN_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
  EXPECT_FALSE(IsMapped());
}

TEST(Unload, ALibraryThatIsLoadedAgainLoadsItsNamesAnew) {
  for (int round = 0; round < 3; ++round) {
    const Library library;
    ASSERT_TRUE(library.IsLoaded()) << dlerror();
    const COidData* const found =
        library.FindByOid("2.5.29.35", CRYPT_EXT_OR_ATTR_OID_GROUP_ID);
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(found->pwszName, L"Authority Key Identifier");
  }
}

// Fork handlers that outlived the library would be called where it was.
TEST(Unload, AnUnloadedLibraryLeavesNothingThatAForkWouldCall) {
  for (int round = 0; round < 10; ++round) {
    {
      const Library library;
      ASSERT_TRUE(library.IsLoaded()) << dlerror();
    }
    EXPECT_EQ(ExitStatusOf(StartChild([] { return 0; })), 0);
  }
}

// Loads a library that uses korvan, which loads korvan, and uses every service.
void LoadUseAndUnload(std::size_t times) {
  for (std::size_t i = 0; i < times; ++i) {
    void* const user = dlopen(KORVAN_USER_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(user, nullptr) << dlerror();
    const auto use = reinterpret_cast<int (*)()>(
        dlsym(user, "EveryServiceWorksInUserLibrary"));
    ASSERT_TRUE(use());
    ASSERT_EQ(dlclose(user), 0);
    ASSERT_FALSE(IsMapped()) << i;
  }
}

TEST(Unload, ALibraryThatWasUsedIsUnmappedEveryTime) {
  const std::size_t times = Rounds(500, 10000);
  LoadUseAndUnload(times);
  Figures("loaded, used and unloaded ", times, " times");
}

TEST(Unload, LoadingUsingAndUnloadingDoesNotGrowTheProcess) {
  LoadUseAndUnload(50);  // until the allocator has settled
  const auto heap = mallinfo2().uordblks;
  const std::size_t pages = PagesInUse();
  ASSERT_GT(pages, 0u) << "/proc/self/statm can't be read";
  const std::size_t times = Rounds(500, 10000);
  LoadUseAndUnload(times);
  // One leaked name a round would be 2,000 bytes or more.
  const auto growth = static_cast<long>(mallinfo2().uordblks - heap);
  EXPECT_LT(growth, 2000);
  EXPECT_LT(PagesInUse(), pages + 64);
  Figures(growth, " bytes more in use after ", times, " times");
}

}  // namespace
}  // namespace korvan::test
