// Names and when they are loaded. Every test needs a registry that nobody has
// used: ctest gives each a process of its own.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "oid/registry_rows.h"

namespace {

using korvan::CleanupOidInfo;
using korvan::COidData;
using korvan::FindOIDInfo;
using korvan::FindOIDInfoInternal;
using korvan::InitOidInfoWorker;
using korvan::MatchOidInfo;
using korvan::oid_registry;
using korvan::OID_TABLE_INFO;

constexpr unsigned int kNameIsOwned = 0x2;
constexpr unsigned int kMark = 0x1;

class OidNames : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(RowsThatHoldTextNumbers().size(), 181u)
        << "the registry was used before: run one test a process";
  }

  // The rows whose names have been loaded, or tried, since the start.
  std::set<int> Loaded() const {
    std::set<int> loaded = all_;
    for (int row : RowsThatHoldTextNumbers()) {
      loaded.erase(row);
    }
    return loaded;
  }

  // Of the rows from `first` up to but not including `end`, those that hold
  // numbers at the start.
  std::set<int> NumbersAmong(int first, int end) const {
    return {all_.lower_bound(first), all_.lower_bound(end)};
  }

  static COidData* ByOid(std::string oid, unsigned int group) {
    return FindOIDInfo(CRYPT_OID_INFO_OID_KEY, &oid[0], group);
  }
  static COidData* ByName(std::wstring name, unsigned int group) {
    return FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, &name[0], group);
  }

  static COidData& Row(int row) {
    return *RegistryRows()[static_cast<std::size_t>(row)];
  }

  // Whether `holds` does in a process of its own, on a registry that is as
  // this process has it.
  template <class Holds>
  static bool Apart(Holds holds) {
    const pid_t child = fork();
    if (child == 0) {
      _exit(holds() ? 0 : 1);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
  }

  const std::set<int> all_ = RowsThatHoldTextNumbers();
};

TEST_F(OidNames, ASearchByOidLoadsTheNameOfTheMatchOnly) {
  COidData* const found = ByOid("1.2.643.2.2.19", 3);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(found->pwszName, L"GOST R 34.10-2001");
  EXPECT_EQ(found->Algid, 0x2E23u);
  EXPECT_EQ(found->dwOidFlags, kMark | kNameIsOwned);
  EXPECT_EQ(Loaded(), std::set<int>{FirstRowOf(3) + 2});
}

TEST_F(OidNames, ASearchByOidThatFindsNothingLoadsNothing) {
  EXPECT_EQ(ByOid("1.2.3", 0), nullptr);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, ASearchByAlgidLoadsTheNameOfTheMatchOnly) {
  unsigned int algid = 0x661E;
  COidData* const found = FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algid, 0);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(found->pwszName, L"GOST 28147-89");
  EXPECT_EQ(Loaded(), std::set<int>{FirstRowOf(2) + 9});
}

TEST_F(OidNames, ASearchByPairLoadsTheNameOfTheMatchOnly) {
  unsigned int pair[2] = {0x801E, 0x2E23};
  COidData* const found = FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair, 0);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(found->pwszName, L"GOST R 34.10/34.11-2001");
  EXPECT_EQ(Loaded(), std::set<int>{FirstRowOf(4) + 2});
}

TEST_F(OidNames, ALiteralNameIsHandedOutAsItStands) {
  COidData* const found = ByOid("1.3.14.3.2.26", 1);
  EXPECT_STREQ(found->pwszName, L"sha1");
  EXPECT_EQ(found->dwOidFlags, 0u);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, ASearchByNameLoadsUpToAndIncludingTheMatch) {
  COidData* const found = ByName(L"basic constraints", 6);
  EXPECT_STREQ(found->pszOID, "2.5.29.19");
  EXPECT_EQ(Loaded(), NumbersAmong(FirstRowOf(6), FirstRowOf(6) + 9));
}

TEST_F(OidNames, ASearchByNameStopsLoadingAtALiteralMatch) {
  EXPECT_NE(ByName(L"sha1", 1), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(0, 5));
}

TEST_F(OidNames, ASearchByNameInAllGroupsLoadsTheGroupsBeforeTheMatch) {
  EXPECT_NE(ByName(L"CN", 0), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(0, FirstRowOf(5)));
}

TEST_F(OidNames, ASearchByNameInAGroupOfLiteralsLoadsNothing) {
  COidData* const found = ByName(L"cn", 5);
  EXPECT_STREQ(found->pszOID, "2.5.4.3");
  EXPECT_EQ(ByName(L"no such name", 5), nullptr);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, ASearchByNameThatFindsNothingLoadsTheWholeGroup) {
  EXPECT_EQ(ByName(L"no such name", 7), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(FirstRowOf(7), FirstRowOf(8)));
}

TEST_F(OidNames, ASearchByNameThatFindsNothingAnywhereLoadsEveryName) {
  EXPECT_EQ(ByName(L"no such name", 0), nullptr);
  EXPECT_EQ(Loaded(), all_);
}

TEST_F(OidNames, ASearchLoadsTheLastNameThatIsLeftWhicheverItIs) {
  wchar_t other[] = L"other";
  for (const int left : all_) {
    EXPECT_TRUE(Apart([&] {
      for (const int row : all_) {
        if (row != left) {
          MatchOidInfo(Row(row), CRYPT_OID_INFO_NAME_KEY, other);
        }
      }
      return Loaded().size() == all_.size() - 1 &&
             ByName(L"no such name", Row(left).dwGroupId) == nullptr &&
             Loaded() == all_;
    })) << "row "
        << left;
  }
}

TEST_F(OidNames, AnOverlongNameLoadsLikeAnyOther) {
  EXPECT_EQ(ByName(std::wstring(1000, L'x'), 7), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(FirstRowOf(7), FirstRowOf(8)));
}

TEST_F(OidNames, ANameWithOtherCharactersLoadsLikeAnyOther) {
  EXPECT_EQ(ByName(L"\x0438\x043C\x044F", 7), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(FirstRowOf(7), FirstRowOf(8)));
}

TEST_F(OidNames, ASecondSearchGivesTheSameArray) {
  const wchar_t* const name = ByOid("2.5.4.3", 6)->pwszName;
  EXPECT_EQ(ByOid("2.5.4.3", 6)->pwszName, name);
  EXPECT_EQ(ByName(L"common name", 6)->pwszName, name);
}

TEST_F(OidNames, AMatchByNameLoadsTheNameOfTheRecordAsked) {
  COidData& record = oid_registry[5].rgRecords[53];
  wchar_t other[] = L"other";
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, other));
  EXPECT_STREQ(record.pwszName, L"Common Name");
  EXPECT_EQ(Loaded(), std::set<int>{FirstRowOf(6) + 53});
}

TEST_F(OidNames, AMatchByAnyOtherKeyLoadsNothing) {
  COidData& record = oid_registry[2].rgRecords[2];
  char oid[] = "1.2.643.2.2.19";
  unsigned int words[2] = {0x2E23, 0};
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_OID_KEY, oid));
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_ALGID_KEY, words));
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_SIGN_KEY, words));
  EXPECT_FALSE(MatchOidInfo(record, 5, words));
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, nullptr));
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, AMissingTextLeavesTheNameNullAndTheRecordFound) {
  struct Missing {
    const char* oid;
    unsigned int group;
    int row;
  };
  const Missing kMissing[] = {
      {"1.2.840.113556.1.2.141", 6, 108},
      {"2.5.29.16", 6, 109},
      {"2.5.4.20", 6, 110},
      {"1.2.643.3.131.1.1", 6, 111},
      {"1.2.643.3.141.1.1", 6, 112},
      {"1.2.643.3.141.1.2", 6, 113},
      {"1.2.643.2.4.1.1.1.1.1.1", 7, 31},
      {"1.2.643.2.4.1.1.1.1.1.2", 7, 32},
      {"1.2.643.2.4.1.1.1.1.1.3", 7, 33},
  };
  for (const Missing& missing : kMissing) {
    for (int round = 0; round < 2; ++round) {
      COidData* const found = ByOid(missing.oid, missing.group);
      ASSERT_EQ(found, RegistryRows()[static_cast<std::size_t>(
                           FirstRowOf(missing.group) + missing.row)]);
      EXPECT_EQ(found->pwszName, nullptr);
      EXPECT_EQ(found->dwOidFlags, kMark | kNameIsOwned);
    }
  }
}

TEST_F(OidNames, AMissingTextLeavesTheLastErrorOfTheStringFunction) {
  SetLastError(12345);
  EXPECT_NE(ByOid("2.5.29.16", 6), nullptr);
  EXPECT_EQ(GetLastError(), 87u);
  SetLastError(12345);
  EXPECT_NE(ByOid("2.5.29.16", 6), nullptr);  // not tried again
  EXPECT_EQ(GetLastError(), 12345u);
}

TEST_F(OidNames, ASearchByNameThatPassesAMissingTextLeavesThatErrorToo) {
  SetLastError(12345);
  EXPECT_EQ(ByName(L"no such name", 7), nullptr);
  EXPECT_EQ(GetLastError(), 87u);
}

TEST_F(OidNames, ALoadedTextLeavesTheLastErrorAlone) {
  SetLastError(12345);
  EXPECT_NE(ByOid("1.2.643.2.2.19", 3), nullptr);
  EXPECT_EQ(GetLastError(), 12345u);
}

TEST_F(OidNames, CleanupTakesLoadedNamesForGood) {
  ASSERT_STREQ(ByOid("2.5.29.35", 6)->pwszName, L"Authority Key Identifier");
  CleanupOidInfo();
  COidData* const found = ByOid("2.5.29.35", 6);
  EXPECT_EQ(found, oid_registry[5].rgRecords);
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(found->dwOidFlags, 0u);
  // The next row has the same text, and nobody had loaded it.
  EXPECT_STREQ(ByName(L"Authority Key Identifier", 6)->pszOID, "2.5.29.1");
}

TEST_F(OidNames, CleanupTakesFailedLoadsForGood) {
  ASSERT_EQ(ByOid("2.5.29.16", 6)->dwOidFlags, kMark | kNameIsOwned);
  CleanupOidInfo();
  SetLastError(12345);
  EXPECT_EQ(ByOid("2.5.29.16", 6)->pwszName, nullptr);
  EXPECT_EQ(ByOid("2.5.29.16", 6)->dwOidFlags, kMark);
  EXPECT_EQ(GetLastError(), 12345u);
}

TEST_F(OidNames, CleanupLeavesLiteralsAndUnusedNumbers) {
  CleanupOidInfo();
  EXPECT_EQ(Loaded(), std::set<int>{});
  EXPECT_STREQ(ByOid("1.3.14.3.2.26", 1)->pwszName, L"sha1");
  EXPECT_STREQ(ByOid("1.2.643.2.2.19", 3)->pwszName, L"GOST R 34.10-2001");
}

TEST_F(OidNames, ANameThatCleanupTookLetsALaterRowWin) {
  ASSERT_STREQ(ByName(L"Certificate Extensions", 6)->pszOID,
               "1.3.6.1.4.1.311.2.1.14");
  ASSERT_EQ(ByName(L"no such name", 6), nullptr);
  CleanupOidInfo();
  EXPECT_EQ(ByName(L"Certificate Extensions", 6), nullptr);
  // A literal among names that are gone.
  EXPECT_STREQ(ByName(L"", 6)->pszOID, "1.2.840.113549.1.9.9");
}

TEST_F(OidNames, CleanupTwiceIsCleanupOnce) {
  ByName(L"no such name", 0);
  CleanupOidInfo();
  CleanupOidInfo();
  for (const COidData* record : RegistryRows()) {
    EXPECT_EQ(record->dwOidFlags & kNameIsOwned, 0u);
  }
}

TEST_F(OidNames, TheCleanupHelperCleansUpWhenItIsDestroyed) {
  COidData* const found = ByOid("1.2.643.2.2.19", 3);
  { korvan::COidInfoCleanupHelper helper; }
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(found->dwOidFlags, kMark);
}

TEST_F(OidNames, TheLocaleOfTheMomentFoldsNames) {
  ByName(L"no such name", 0);
  EXPECT_NE(ByName(L"initials", 5), nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "tr_TR.UTF-8"), nullptr);
  // There 'I' folds to a dotless i, and 'i' to itself.
  EXPECT_EQ(ByName(L"initials", 5), nullptr);
  EXPECT_EQ(ByName(L"INITIALS", 5), nullptr);
  EXPECT_EQ(ByName(L"InItIals", 5), nullptr);
  EXPECT_NE(ByName(L"Initials", 5), nullptr);
  EXPECT_NE(ByName(L"\x0131NiTiALS", 5), nullptr);
  EXPECT_NE(ByName(L"SERiALnumber", 5), nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  EXPECT_NE(ByName(L"INITIALS", 5), nullptr);
  EXPECT_EQ(ByName(L"\x0131NiTiALS", 5), nullptr);
}

TEST_F(OidNames, ACharacterThatFoldsIntoAsciiIsFolded) {
  ByName(L"no such name", 0);
  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  // U+212A KELVIN SIGN folds to k.
  EXPECT_STREQ(ByName(L"\x212A"
                      L"ey Usage",
                      6)
                   ->pszOID,
               "2.5.29.15");
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  EXPECT_EQ(ByName(L"\x212A"
                   L"ey Usage",
                   6),
            nullptr);
}

TEST_F(OidNames, AFoldOfTheLocaleSettlesNamesOfOneLetter) {
  ASSERT_NE(std::setlocale(LC_ALL, "tr_TR.UTF-8"), nullptr);
  EXPECT_STREQ(ByName(L"I", 5)->pszOID, "2.5.4.43");
  EXPECT_EQ(ByName(L"i", 5), nullptr);
}

TEST_F(OidNames, ANullNameAmongLoadedOnesLetsALaterRowWin) {
  ASSERT_NE(ByOid("2.5.29.35", 6), nullptr);
  CleanupOidInfo();
  ASSERT_EQ(ByName(L"no such name", 6), nullptr);
  EXPECT_STREQ(ByName(L"Authority Key Identifier", 6)->pszOID, "2.5.29.1");
}

// The one row of its group, so that no other row decides what is known of it.
// The second text is as long as the row's own.
TEST_F(OidNames, AnyTextCanBeGivenToTheOnlyRecordOfAGroup) {
  COidData& record = oid_registry[7].rgRecords[0];
  ASSERT_EQ(ByName(L"All issuance policies", 8), &record);
  const struct {
    unsigned int number;
    const wchar_t* text;
  } kTexts[] = {{8048, L"Common Name"}, {8023, L"Unstructured Addresss"}};
  for (const auto& given : kTexts) {
    EXPECT_TRUE(Apart([&] {
      const std::unique_ptr<const wchar_t[]> own_text(record.pwszName);
      InitOidInfoWorker(record, given.number);
      return ByName(given.text, 8) == &record &&
             ByName(L"All issuance policies", 8) == nullptr;
    })) << given.number;
  }
}

TEST_F(OidNames, AnyTextCanBeGivenToARecordThatCleanupLeftWithoutAName) {
  COidData& record = oid_registry[7].rgRecords[0];
  ASSERT_EQ(ByName(L"All issuance policies", 8), &record);
  CleanupOidInfo();
  EXPECT_EQ(ByName(L"All issuance policies", 8), nullptr);
  InitOidInfoWorker(record, 8048);
  EXPECT_EQ(ByName(L"Common Name", 8), &record);
}

TEST_F(OidNames, AnyTextCanBeGivenToARecordAndIsFound) {
  ByName(L"no such name", 0);
  COidData& record = oid_registry[5].rgRecords[53];
  const std::unique_ptr<const wchar_t[]> own_text(record.pwszName);
  InitOidInfoWorker(record, 1);
  EXPECT_STREQ(record.pwszName, L"Quorin CSP");
  EXPECT_EQ(ByName(L"quorin csp", 0), &record);
  EXPECT_EQ(ByName(L"Common Name", 6), nullptr);
  EXPECT_EQ(ByName(L"no such name", 6), nullptr);
}

TEST_F(OidNames, AnotherRowsTextGivenToAnEarlierRecordWins) {
  ByName(L"no such name", 0);
  COidData& earlier = oid_registry[6].rgRecords[0];
  const std::unique_ptr<const wchar_t[]> own_text(earlier.pwszName);
  InitOidInfoWorker(earlier, 8533);
  EXPECT_EQ(ByName(L"Lifetime Signing", 7), &earlier);
  EXPECT_EQ(ByName(L"Lifetime Signing", 0), &earlier);
}

TEST_F(OidNames, AnotherRowsTextGivenToAnyEarlierRecordWins) {
  const COidData& last = oid_registry[7].rgRecords[0];
  const auto number = static_cast<unsigned int>(
      reinterpret_cast<std::uintptr_t>(last.pwszName));
  ByName(L"no such name", 0);
  for (const int row : all_) {
    EXPECT_TRUE(Apart([&] {
      COidData& record = Row(row);
      const std::unique_ptr<const wchar_t[]> own_text(record.pwszName);
      InitOidInfoWorker(record, number);
      return ByName(L"All issuance policies", record.dwGroupId) == &record &&
             ByName(L"All issuance policies", 0) ==
                 (row < FirstRowOf(8) ? &record : &last);
    })) << "row "
        << row;
  }
}

TEST_F(OidNames, AMissingTextGivenToARecordTakesItsName) {
  COidData* const found = ByOid("1.2.643.2.2.19", 3);
  const std::unique_ptr<const wchar_t[]> own_text(found->pwszName);
  InitOidInfoWorker(*found, 4);
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(ByName(L"GOST R 34.10-2001", 3), nullptr);
}

TEST_F(OidNames, AnOwnRecordGetsItsTextAndTheFlag) {
  COidData record = {};
  record.dwOidFlags = 0x11;
  InitOidInfoWorker(record, 8048);
  const std::unique_ptr<const wchar_t[]> owned(record.pwszName);
  EXPECT_STREQ(record.pwszName, L"Common Name");
  EXPECT_EQ(record.dwOidFlags, 0x13u);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

// So many records that, whatever the program's and the library's places are,
// some would be taken for rows of the registry if only one end were looked at.
// Static memory of a program and the heap lie below the library, as a rule,
// and the stack above it.
constexpr std::size_t kManyRecords = 4096;
COidData static_records[kManyRecords];

class OidNamesOfOwnRecords : public OidNames {
 protected:
  // Gives each of the records a name, and looks whether that changed the
  // registry.
  void GiveNamesTo(COidData* records) {
    const std::vector<COidData> before = RegistryContent();
    for (std::size_t i = 0; i < kManyRecords; ++i) {
      InitOidInfoWorker(records[i], 8048);
      const std::unique_ptr<const wchar_t[]> owned(records[i].pwszName);
      ASSERT_STREQ(records[i].pwszName, L"Common Name");
    }
    const std::vector<COidData> after = RegistryContent();
    EXPECT_EQ(std::memcmp(after.data(), before.data(),
                          before.size() * sizeof(COidData)),
              0);
    EXPECT_EQ(Loaded(), std::set<int>{});
    // Nor does a search take a name for loaded that is not.
    EXPECT_EQ(ByName(L"no such name", 0), nullptr);
    EXPECT_EQ(Loaded(), all_);
  }

 private:
  static std::vector<COidData> RegistryContent() {
    std::vector<COidData> content;
    for (const COidData* const record : RegistryRows()) {
      content.push_back(*record);
    }
    return content;
  }
};

TEST_F(OidNamesOfOwnRecords, StaticRecordsGetTheirTexts) {
  GiveNamesTo(static_records);
}

TEST_F(OidNamesOfOwnRecords, RecordsOnTheHeapGetTheirTexts) {
  const auto records = std::make_unique<COidData[]>(kManyRecords);
  GiveNamesTo(records.get());
}

TEST_F(OidNamesOfOwnRecords, RecordsOnTheStackGetTheirTexts) {
  COidData records[kManyRecords] = {};
  GiveNamesTo(records);
}

// What is known of one name must not be taken for known of another.
TEST_F(OidNames, ANameIsLoadedWhicheverOtherNameWasLoadedBefore) {
  wchar_t other[] = L"other";
  for (const int loaded : all_) {
    EXPECT_TRUE(Apart([&] {
      MatchOidInfo(Row(loaded), CRYPT_OID_INFO_NAME_KEY, other);
      for (const unsigned int group : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 20U}) {
        ByName(L"no such name", group);
      }
      return Loaded() == all_;
    })) << "row "
        << loaded;
  }
}

TEST_F(OidNames, ARowIsFoundByNameWhicheverOtherNameWasLoadedBefore) {
  wchar_t other[] = L"other";
  for (const int loaded : all_) {
    EXPECT_TRUE(Apart([&] {
      MatchOidInfo(Row(loaded), CRYPT_OID_INFO_NAME_KEY, other);
      return ByName(L"GOST R 34.11-94 (Quorin 2)", 1) == &Row(0) &&
             ByName(L"Embedded Windows System Component Verification", 0) ==
                 &Row(FirstRowOf(7) + 14);
    })) << "row "
        << loaded;
  }
}

TEST_F(OidNames, AnOwnRecordLosesItsNameToAMissingText) {
  COidData record = {};
  record.pwszName = L"mine";
  SetLastError(12345);
  InitOidInfoWorker(record, 8031);
  EXPECT_EQ(record.pwszName, nullptr);
  EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
  EXPECT_EQ(GetLastError(), 87u);
}

TEST_F(OidNames, ASearchInAnOwnTableLoadsTheNamesItPasses) {
  COidData records[3] = {};
  const unsigned int kNumbers[] = {8048, 4, 8049};
  for (int i = 0; i < 3; ++i) {
    records[i].pwszName =
        reinterpret_cast<LPCWSTR>(std::uintptr_t{kNumbers[i]});
  }
  wchar_t name[] = L"LOCALITY";
  EXPECT_EQ(FindOIDInfoInternal(OID_TABLE_INFO{6, 3, records},
                                CRYPT_OID_INFO_NAME_KEY, name),
            &records[2]);
  const std::unique_ptr<const wchar_t[]> first(records[0].pwszName);
  const std::unique_ptr<const wchar_t[]> last(records[2].pwszName);
  EXPECT_STREQ(records[0].pwszName, L"Common Name");
  EXPECT_EQ(records[1].pwszName, nullptr);
  EXPECT_STREQ(records[2].pwszName, L"Locality");
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, ATableOverLibraryRowsLoadsOnlyTheRowsItCovers) {
  wchar_t name[] = L"no such name";
  const OID_TABLE_INFO middle = {6, 5, oid_registry[5].rgRecords + 10};
  EXPECT_EQ(FindOIDInfoInternal(middle, CRYPT_OID_INFO_NAME_KEY, name),
            nullptr);
  const int first = FirstRowOf(6) + 10;
  EXPECT_EQ(Loaded(), NumbersAmong(first, first + 5));
}

TEST_F(OidNames, EveryLoadedTextIsTheStringTables) {
  ByName(L"no such name", 0);
  EXPECT_STREQ(oid_registry[0].rgRecords[0].pwszName,
               L"GOST R 34.11-94 (Quorin 2)");
  EXPECT_STREQ(oid_registry[6].rgRecords[14].pwszName,
               L"Embedded Windows System Component Verification");
  EXPECT_STREQ(oid_registry[7].rgRecords[0].pwszName, L"All issuance policies");
}

}  // namespace
