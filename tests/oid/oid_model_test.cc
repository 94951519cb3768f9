// Random searches, in the library and in a plain registry beside it: both must
// find the same row, load the same names and leave the same last error. ctest
// gives each test a process of its own, with a registry that nobody has used.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>

#include <clocale>
#include <cstddef>
#include <cwctype>
#include <random>
#include <string>
#include <vector>

#include "oid/expected_rows.h"
#include "oid/find.h"
#include "oid/plain_registry.h"
#include "oid/registry_rows.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

class OidSearches : public testing::Test {
 protected:
  std::size_t Below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }

  const ExpectedRow& AnyRow() { return kExpectedRows[Below(259)]; }

  unsigned int AnyGroup() {
    const unsigned int kGroups[] = {0, 1, 2, 3, 4,  5,
                                    6, 7, 8, 9, 20, AnyRow().group};
    const unsigned int group = kGroups[Below(12)];
    return Below(4) == 0 ? group | CRYPT_OID_DISABLE_SEARCH_DS_FLAG : group;
  }

  std::string AnyOid() {
    std::string oid = AnyRow().oid;
    switch (Below(8)) {
      case 0:
        oid[Below(oid.size())] = "0123456789.x\x80"[Below(13)];
        break;
      case 1:
        oid.resize(Below(oid.size() + 1));
        break;
      case 2:
        oid += ".1";
        break;
      default:
        break;
    }
    return oid;
  }

  std::wstring AnyName() {
    const wchar_t* const stated = AnyRow().name;
    std::wstring name = stated == nullptr ? L"missing" : stated;
    for (wchar_t& c : name) {
      if (Below(3) == 0) {
        const auto unit = static_cast<std::wint_t>(c);
        c = static_cast<wchar_t>(Below(2) == 0 ? std::towupper(unit)
                                               : std::towlower(unit));
      }
    }
    if (!name.empty()) {
      wchar_t& c = name[Below(name.size())];
      switch (Below(10)) {
        case 0:
          c = static_cast<wchar_t>(c ^ 0x20);  // '@' and '`' differ so too
          break;
        case 1:
          c = L"\x0131\x0130\x212A\x017F\x0416\x7FFFFFFF"[Below(6)];
          break;
        case 2:
          name.resize(Below(name.size()));
          break;
        default:
          break;
      }
    }
    return name;
  }

  // One search of any kind, by any entry point.
  void Search() {
    const unsigned int group = AnyGroup();
    switch (Below(4)) {
      case 0: {
        std::string oid = AnyOid();
        Compare(CRYPT_OID_INFO_OID_KEY, &oid[0], group, "OID " + oid);
        break;
      }
      case 1: {
        std::wstring name = AnyName();
        Compare(CRYPT_OID_INFO_NAME_KEY, &name[0], group,
                "name " + testing::PrintToString(name));
        break;
      }
      case 2: {
        unsigned int algid = Below(8) == 0
                                 ? static_cast<unsigned int>(random_())
                                 : AnyRow().algid;
        Compare(CRYPT_OID_INFO_ALGID_KEY, &algid, group,
                "ALG_ID " + std::to_string(algid));
        break;
      }
      default: {
        const ExpectedRow& row = AnyRow();
        unsigned int pair[2] = {row.algid, Below(8) == 0
                                               ? AnyRow().SecondAlgid()
                                               : row.SecondAlgid()};
        Compare(
            CRYPT_OID_INFO_SIGN_KEY, pair, group,
            "pair " + std::to_string(pair[0]) + ", " + std::to_string(pair[1]));
        break;
      }
    }
  }

  void Compare(unsigned int key_type, void* key, unsigned int group,
               const std::string& what) {
    SCOPED_TRACE(what + " in group " + std::to_string(group));
    SetLastError(kUntouchedError);
    const COidData* found = nullptr;
    int expected = -1;
    unsigned int error = 0;
    const std::size_t table = Below(9);
    switch (Below(4)) {
      case 0:
        found = FindOIDInfoInternal(oid_registry[table], key_type, key);
        error = GetLastError();
        SetLastError(kUntouchedError);
        expected = plain_.FindInTable(table, key_type, key);
        break;
      case 1: {
        // A caller's table over some of the library's rows.
        const OID_TABLE_INFO& whole = oid_registry[table];
        const auto first = Below(static_cast<std::size_t>(whole.cRecords));
        const auto count =
            Below(static_cast<std::size_t>(whole.cRecords) - first + 1);
        const OID_TABLE_INFO own = {whole.dwGroupId, static_cast<int>(count),
                                    whole.rgRecords + first};
        found = FindOIDInfoInternal(own, key_type, key);
        error = GetLastError();
        SetLastError(kUntouchedError);
        expected = plain_.FindInRows(
            FirstRowOf(whole.dwGroupId) + static_cast<int>(first),
            static_cast<int>(count), key_type, key);
        break;
      }
      default:
        return CompareGroup(key_type, key, group);
    }
    ExpectSame(found, expected, error);
  }

  void CompareGroup(unsigned int key_type, void* key, unsigned int group) {
    SetLastError(kUntouchedError);
    const COidData* const found = FindOIDInfo(key_type, key, group);
    const unsigned int error = GetLastError();
    SetLastError(kUntouchedError);
    ExpectSame(found, plain_.Find(key_type, key, group), error);
  }

  void ExpectSame(const COidData* found, int expected, unsigned int error) {
    ASSERT_EQ(found, expected < 0 ? nullptr
                                  : rows_[static_cast<std::size_t>(expected)]);
    ASSERT_EQ(error, GetLastError());
    ExpectSameNames();
  }

  void ExpectSameNames() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      const COidData& actual = *rows_[i];
      const COidData& plain = plain_.Rows()[i].record;
      ASSERT_EQ(actual.dwOidFlags, plain.dwOidFlags) << "row " << i;
      if (HoldsTextNumber(plain) || plain.pwszName == nullptr) {
        ASSERT_EQ(actual.pwszName, plain.pwszName) << "row " << i;
      } else {
        ASSERT_FALSE(HoldsTextNumber(actual)) << "row " << i;
        ASSERT_STREQ(actual.pwszName, plain.pwszName) << "row " << i;
      }
    }
  }

  // Asks for every name, from the first row's to the last's. At each search the
  // names before are loaded, and the wanted one is not.
  void SearchNamesInOrder(bool in_all_groups) {
    for (const ExpectedRow& row : kExpectedRows) {
      if (row.name == nullptr) {
        continue;
      }
      std::wstring name = row.name;
      SCOPED_TRACE("name " + testing::PrintToString(name));
      CompareGroup(CRYPT_OID_INFO_NAME_KEY, &name[0],
                   in_all_groups ? kAllGroups : row.group);
      if (HasFatalFailure()) {
        return;
      }
    }
  }

  // Gives a row the text of any other, or takes its name by a number that has
  // no text.
  void RenameSomeRow() {
    const std::size_t row = Below(259);
    const unsigned int number =
        Below(4) == 0 ? 4 : kExpectedRows[Below(259)].text_number;
    // What the record held is the caller's to free.
    if ((rows_[row]->dwOidFlags & kNameIsOwned) != 0) {
      delete[] rows_[row]->pwszName;
    }
    InitOidInfoWorker(*rows_[row], number);
    plain_.Load(static_cast<int>(row), number);
  }

  void SearchMany(int count) {
    for (int i = 0; i < count && !HasFatalFailure(); ++i) {
      Search();
    }
  }

  std::mt19937_64 random_{20260101};
  PlainRegistry plain_;
  const std::vector<COidData*> rows_ = RegistryRows();
};

TEST_F(OidSearches, EverySearchAnswersAsThePlainRegistryDoes) {
  SearchMany(4000);
}

TEST_F(OidSearches,
       EverySearchAnswersAsThePlainRegistryDoesOnceAllNamesAreLoaded) {
  wchar_t name[] = L"no such name";
  Compare(CRYPT_OID_INFO_NAME_KEY, name, kAllGroups, "no such name");
  SearchMany(4000);
}

TEST_F(OidSearches, SearchesForNamesInRowOrderAnswerAsThePlainRegistryDoes) {
  SearchNamesInOrder(false);
}

TEST_F(OidSearches,
       SearchesInAllGroupsForNamesInRowOrderAnswerAsThePlainRegistryDoes) {
  SearchNamesInOrder(true);
}

TEST_F(OidSearches, EverySearchAfterCleanupAnswersAsThePlainRegistryDoes) {
  SearchMany(40);
  CleanupOidInfo();
  plain_.Cleanup();
  SearchMany(2000);
  CleanupOidInfo();
  plain_.Cleanup();
  SearchMany(1000);
}

TEST_F(OidSearches, EverySearchInEveryLocaleAnswersAsThePlainRegistryDoes) {
  for (int round = 0; round < 40 && !HasFatalFailure(); ++round) {
    for (const char* locale :
         {"tr_TR.UTF-8", "C.UTF-8", "C", "ru_RU.KOI8-R", "ja_JP.SHIFT_JIS"}) {
      ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
      SearchMany(20);
    }
  }
}

TEST_F(OidSearches,
       EverySearchAnswersAsThePlainRegistryDoesWhileCallersRenameRecords) {
  for (int round = 0; round < 60 && !HasFatalFailure(); ++round) {
    RenameSomeRow();
    SearchMany(20);
  }
}

TEST_F(OidSearches,
       EverySearchAnswersAsThePlainRegistryDoesOnceACallerRenamedARecord) {
  wchar_t name[] = L"no such name";
  Compare(CRYPT_OID_INFO_NAME_KEY, name, kAllGroups, "no such name");
  RenameSomeRow();
  SearchMany(3000);
}

}  // namespace
}  // namespace korvan::test
