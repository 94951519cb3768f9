// Two copies of the library in one process, each loaded into a namespace of its
// own: what one does the other does not see. A process has static thread-local
// storage for few C libraries, of which each copy brings one, so ctest gives
// each test a process of its own.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <korvan/oid_info.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cwchar>

#include "support/campaign.h"
#include "support/child_process.h"
#include "support/mappings.h"
#include "support/together.h"

namespace korvan::test {
namespace {

constexpr int kRowsNamedByNumber = 181;

class Copy {
 public:
  Copy() : handle_(dlmopen(LM_ID_NEWLM, KORVAN_LIBRARY, RTLD_NOW)) {
    EXPECT_NE(handle_, nullptr) << dlerror();
  }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;
  ~Copy() {
    if (handle_ != nullptr) {
      EXPECT_EQ(dlclose(handle_), 0) << dlerror();
    }
  }

  const OID_TABLE_INFO (&Registry() const)[9] {
    return *static_cast<const OID_TABLE_INFO(*)[9]>(
        dlsym(handle_, "_ZN6korvan12oid_registryE"));
  }

  COidData* FindByOid(const char* oid) const {
    return Find()(CRYPT_OID_INFO_OID_KEY, const_cast<char*>(oid), 0);
  }

  void LoadNames() const {
    wchar_t name[] = L"no such name";
    EXPECT_EQ(Find()(CRYPT_OID_INFO_NAME_KEY, name, 0), nullptr);
  }

  int RecordsWithNumbers() const {
    int count = 0;
    for (const OID_TABLE_INFO& table : Registry()) {
      for (int i = 0; i < table.cRecords; ++i) {
        const auto name =
            reinterpret_cast<std::uintptr_t>(table.rgRecords[i].pwszName);
        count += name != 0 && name < 0x10000;
      }
    }
    return count;
  }

  void SetLastError(unsigned int code) const {
    Function<void (*)(unsigned int)>("SetLastError")(code);
  }

  unsigned int GetLastError() const {
    return Function<unsigned int (*)()>("GetLastError")();
  }

 private:
  template <class Pointer>
  Pointer Function(const char* name) const {
    return reinterpret_cast<Pointer>(dlsym(handle_, name));
  }

  decltype(&FindOIDInfo) Find() const {
    return Function<decltype(&FindOIDInfo)>("_ZN6korvan11FindOIDInfoEjPvj");
  }

  void* handle_;
};

TEST(TwoCopies, NamesLoadedInOneStayNumbersInTheOther) {
  const Copy first;
  ASSERT_FALSE(HasFailure());
  const Copy second;
  ASSERT_FALSE(HasFailure());
  ASSERT_NE(&first.Registry(), &second.Registry());
  first.LoadNames();
  EXPECT_EQ(first.RecordsWithNumbers(), 0);
  EXPECT_EQ(second.RecordsWithNumbers(), kRowsNamedByNumber);
}

TEST(TwoCopies, ACopyKeepsItsNamesWhenTheOtherIsUnloaded) {
  const Copy kept;
  ASSERT_FALSE(HasFailure());
  const COidData* const found = kept.FindByOid("1.2.643.2.2.19");
  {
    const Copy unloaded;
    ASSERT_FALSE(HasFailure());
    unloaded.LoadNames();
  }
  EXPECT_STREQ(found->pwszName, L"GOST R 34.10-2001");
}

TEST(TwoCopies, EachHasALastErrorOfItsOwn) {
  const Copy first;
  ASSERT_FALSE(HasFailure());
  const Copy second;
  ASSERT_FALSE(HasFailure());
  first.SetLastError(1);
  second.SetLastError(2);
  first.LoadNames();  // the texts of some are missing
  EXPECT_EQ(first.GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(second.GetLastError(), 2u);
}

constexpr int kThreads = 16;

constexpr int kWell = 0;
constexpr int kNotLoaded = 1;
constexpr int kWrong = 2;
constexpr int kStillMapped = 3;

// Half of the threads use one copy, half the other; then both are unloaded.
int UseTwoCopies() {
  {
    const Copy copies[2];
    if (testing::Test::HasFailure()) {
      return kNotLoaded;
    }
    std::atomic<int> wrong{0};
    RunTogether(kThreads, [&](int thread) {
      const Copy& copy = copies[thread % 2];
      for (const OID_TABLE_INFO& table : copy.Registry()) {
        for (int i = 0; i < table.cRecords; ++i) {
          wrong += copy.FindByOid(table.rgRecords[i].pszOID) == nullptr;
        }
      }
      copy.LoadNames();
      const COidData* const own = copy.FindByOid("2.5.29.35");
      const COidData* const other =
          copies[(thread + 1) % 2].FindByOid("2.5.29.35");
      wrong += own == other || own->pwszName == other->pwszName ||
               std::wcscmp(own->pwszName, L"Authority Key Identifier") != 0;
    });
    if (wrong != 0) {
      return kWrong;
    }
  }
  return MappingsOf("libkorvan").empty() ? kWell : kStillMapped;
}

TEST(TwoCopies, ThreadsThatUseBothFindInEachItsOwnAndBothAreUnmapped) {
  const std::size_t rounds = Rounds(20, 1000);
  for (std::size_t round = 0; round < rounds; ++round) {
    ASSERT_EQ(ExitStatusOf(StartChild(UseTwoCopies)), kWell)
        << "round " << round << "; " << kNotLoaded << ": not loaded, " << kWrong
        << ": a wrong answer, " << kStillMapped << ": still mapped";
  }
  Figures(rounds, " times two copies, used by ", kThreads,
          " threads and unmapped");
}

}  // namespace
}  // namespace korvan::test
