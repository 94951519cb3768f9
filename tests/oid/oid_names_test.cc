// Names and when they are loaded. Every test needs a registry that nobody has
// used: ctest gives each a process of its own.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "oid/expected_rows.h"
#include "oid/find.h"
#include "oid/registry_rows.h"
#include "support/child_process.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

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

  static COidData& Row(int row) {
    return *RegistryRows()[static_cast<std::size_t>(row)];
  }

  // A copy of every record of the registry.
  static std::vector<COidData> RegistryContent() {
    std::vector<COidData> content;
    for (const COidData* const record : RegistryRows()) {
      content.push_back(*record);
    }
    return content;
  }

  // Whether every byte of the registry is as it was then.
  static bool RegistryIs(const std::vector<COidData>& then) {
    const std::vector<COidData> now = RegistryContent();
    return now.size() == then.size() &&
           std::memcmp(now.data(), then.data(),
                       then.size() * sizeof(COidData)) == 0;
  }

  // Whether `holds` is true in a child process, which begins with the registry
  // as this process has it and leaves this process's alone.
  template <class Holds>
  static bool IsTrueInAChild(Holds holds) {
    return ExitStatusOf(StartChild([&] { return holds() ? 0 : 1; })) == 0;
  }

  const std::set<int> all_ = RowsThatHoldTextNumbers();
};

TEST_F(OidNames, ASearchByOidLoadsTheNameOfTheMatchOnly) {
  COidData* const found =
      FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(found->pwszName, L"GOST R 34.10-2001");
  EXPECT_EQ(found->Algid, 0x2E23u);
  EXPECT_EQ(found->dwOidFlags, kMark | kNameIsOwned);
  EXPECT_EQ(Loaded(),
            std::set<int>{FirstRowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID) + 2});
}

TEST_F(OidNames, ASearchByOidThatFindsNothingLoadsNothing) {
  EXPECT_EQ(FindByOid("1.2.3", kAllGroups), nullptr);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, ASearchByAlgidLoadsTheNameOfTheMatchOnly) {
  COidData* const found = FindByAlgid(0x661E, kAllGroups);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(found->pwszName, L"GOST 28147-89");
  EXPECT_EQ(Loaded(),
            std::set<int>{FirstRowOf(CRYPT_ENCRYPT_ALG_OID_GROUP_ID) + 9});
}

TEST_F(OidNames, ASearchByPairLoadsTheNameOfTheMatchOnly) {
  COidData* const found = FindByPair(0x801E, 0x2E23, kAllGroups);
  ASSERT_NE(found, nullptr);
  EXPECT_STREQ(found->pwszName, L"GOST R 34.10/34.11-2001");
  EXPECT_EQ(Loaded(),
            std::set<int>{FirstRowOf(CRYPT_SIGN_ALG_OID_GROUP_ID) + 2});
}

TEST_F(OidNames, ALiteralNameIsHandedOutAsItStands) {
  COidData* const found =
      FindByOid("1.3.14.3.2.26", CRYPT_HASH_ALG_OID_GROUP_ID);
  EXPECT_STREQ(found->pwszName, L"sha1");
  EXPECT_EQ(found->dwOidFlags, 0u);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, ASearchByNameLoadsUpToAndIncludingTheMatch) {
  COidData* const found =
      FindByName(L"basic constraints", CRYPT_EXT_OR_ATTR_OID_GROUP_ID);
  EXPECT_STREQ(found->pszOID, "2.5.29.19");
  EXPECT_EQ(Loaded(),
            NumbersAmong(FirstRowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID),
                         FirstRowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID) + 9));
}

TEST_F(OidNames, ASearchByNameStopsLoadingAtALiteralMatch) {
  EXPECT_NE(FindByName(L"sha1", CRYPT_HASH_ALG_OID_GROUP_ID), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(0, 5));
}

TEST_F(OidNames, ASearchByNameInAllGroupsLoadsTheGroupsBeforeTheMatch) {
  EXPECT_NE(FindByName(L"CN", kAllGroups), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(0, FirstRowOf(CRYPT_RDN_ATTR_OID_GROUP_ID)));
}

TEST_F(OidNames, ASearchByNameInAGroupOfLiteralsLoadsNothing) {
  COidData* const found = FindByName(L"cn", CRYPT_RDN_ATTR_OID_GROUP_ID);
  EXPECT_STREQ(found->pszOID, "2.5.4.3");
  EXPECT_EQ(FindUnknownName(CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, ASearchByNameThatFindsNothingLoadsTheWholeGroup) {
  EXPECT_EQ(FindUnknownName(CRYPT_ENHKEY_USAGE_OID_GROUP_ID), nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(FirstRowOf(CRYPT_ENHKEY_USAGE_OID_GROUP_ID),
                                   FirstRowOf(CRYPT_POLICY_OID_GROUP_ID)));
}

TEST_F(OidNames, ASearchByNameThatFindsNothingAnywhereLoadsEveryName) {
  EXPECT_EQ(FindUnknownName(kAllGroups), nullptr);
  EXPECT_EQ(Loaded(), all_);
}

TEST_F(OidNames, ASearchLoadsTheLastNameThatIsLeftWhicheverItIs) {
  wchar_t other[] = L"other";
  for (const int left : all_) {
    EXPECT_TRUE(IsTrueInAChild([&] {
      for (const int row : all_) {
        if (row != left) {
          MatchOidInfo(Row(row), CRYPT_OID_INFO_NAME_KEY, other);
        }
      }
      return Loaded().size() == all_.size() - 1 &&
             FindUnknownName(Row(left).dwGroupId) == nullptr &&
             Loaded() == all_;
    })) << "row "
        << left;
  }
}

TEST_F(OidNames, AnOverlongNameLoadsLikeAnyOther) {
  EXPECT_EQ(FindByName(std::wstring(1000, L'x').c_str(),
                       CRYPT_ENHKEY_USAGE_OID_GROUP_ID),
            nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(FirstRowOf(CRYPT_ENHKEY_USAGE_OID_GROUP_ID),
                                   FirstRowOf(CRYPT_POLICY_OID_GROUP_ID)));
}

TEST_F(OidNames, ANameWithOtherCharactersLoadsLikeAnyOther) {
  EXPECT_EQ(FindByName(L"\x0438\x043C\x044F", CRYPT_ENHKEY_USAGE_OID_GROUP_ID),
            nullptr);
  EXPECT_EQ(Loaded(), NumbersAmong(FirstRowOf(CRYPT_ENHKEY_USAGE_OID_GROUP_ID),
                                   FirstRowOf(CRYPT_POLICY_OID_GROUP_ID)));
}

TEST_F(OidNames, ASecondSearchGivesTheSameArray) {
  const wchar_t* const name =
      FindByOid("2.5.4.3", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->pwszName;
  EXPECT_EQ(FindByOid("2.5.4.3", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->pwszName,
            name);
  EXPECT_EQ(
      FindByName(L"common name", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->pwszName,
      name);
}

TEST_F(OidNames, AMatchByNameLoadsTheNameOfTheRecordAsked) {
  COidData& record = *RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 53);
  wchar_t other[] = L"other";
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, other));
  EXPECT_STREQ(record.pwszName, L"Common Name");
  EXPECT_EQ(Loaded(),
            std::set<int>{FirstRowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID) + 53});
}

TEST_F(OidNames, AMatchByAnyOtherKeyLoadsNothing) {
  COidData& record = *RowOf(CRYPT_PUBKEY_ALG_OID_GROUP_ID, 2);
  char oid[] = "1.2.643.2.2.19";
  unsigned int words[2] = {0x2E23, 0};
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_OID_KEY, oid));
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_ALGID_KEY, words));
  EXPECT_TRUE(MatchOidInfo(record, CRYPT_OID_INFO_SIGN_KEY, words));
  EXPECT_FALSE(MatchOidInfo(record, kUnknownKeyType, words));
  EXPECT_FALSE(MatchOidInfo(record, CRYPT_OID_INFO_NAME_KEY, nullptr));
  EXPECT_EQ(Loaded(), std::set<int>{});
}

TEST_F(OidNames, AMissingTextLeavesTheNameNullAndTheRecordFound) {
  struct Missing {
    const char* oid;
    unsigned int group;
    int row;
  };
  constexpr unsigned int kExtensions = CRYPT_EXT_OR_ATTR_OID_GROUP_ID;
  constexpr unsigned int kUsages = CRYPT_ENHKEY_USAGE_OID_GROUP_ID;
  const Missing kMissing[] = {
      {"1.2.840.113556.1.2.141", kExtensions, 108},
      {"2.5.29.16", kExtensions, 109},
      {"2.5.4.20", kExtensions, 110},
      {"1.2.643.3.131.1.1", kExtensions, 111},
      {"1.2.643.3.141.1.1", kExtensions, 112},
      {"1.2.643.3.141.1.2", kExtensions, 113},
      {"1.2.643.2.4.1.1.1.1.1.1", kUsages, 31},
      {"1.2.643.2.4.1.1.1.1.1.2", kUsages, 32},
      {"1.2.643.2.4.1.1.1.1.1.3", kUsages, 33},
  };
  for (const Missing& missing : kMissing) {
    for (int round = 0; round < 2; ++round) {
      COidData* const found = FindByOid(missing.oid, missing.group);
      ASSERT_EQ(found, RowOf(missing.group, missing.row));
      EXPECT_EQ(found->pwszName, nullptr);
      EXPECT_EQ(found->dwOidFlags, kMark | kNameIsOwned);
    }
  }
}

TEST_F(OidNames, AMissingTextLeavesTheLastErrorOfTheStringFunction) {
  SetLastError(kUntouchedError);
  EXPECT_NE(FindByOid("2.5.29.16", CRYPT_EXT_OR_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  SetLastError(kUntouchedError);
  EXPECT_NE(FindByOid("2.5.29.16", CRYPT_EXT_OR_ATTR_OID_GROUP_ID),
            nullptr);  // not tried again
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

TEST_F(OidNames, ASearchByNameThatPassesAMissingTextLeavesThatErrorToo) {
  SetLastError(kUntouchedError);
  EXPECT_EQ(FindUnknownName(CRYPT_ENHKEY_USAGE_OID_GROUP_ID), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(OidNames, ALoadedTextLeavesTheLastErrorAlone) {
  SetLastError(kUntouchedError);
  EXPECT_NE(FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID),
            nullptr);
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

TEST_F(OidNames, CleanupTakesLoadedNamesForGood) {
  ASSERT_STREQ(FindByOid("2.5.29.35", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->pwszName,
               L"Authority Key Identifier");
  CleanupOidInfo();
  COidData* const found =
      FindByOid("2.5.29.35", CRYPT_EXT_OR_ATTR_OID_GROUP_ID);
  EXPECT_EQ(found, RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 0));
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(found->dwOidFlags, 0u);
  // The next row has the same text, and nobody had loaded it.
  EXPECT_STREQ(
      FindByName(L"Authority Key Identifier", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)
          ->pszOID,
      "2.5.29.1");
}

TEST_F(OidNames, CleanupTakesFailedLoadsForGood) {
  ASSERT_EQ(FindByOid("2.5.29.16", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->dwOidFlags,
            kMark | kNameIsOwned);
  CleanupOidInfo();
  SetLastError(kUntouchedError);
  EXPECT_EQ(FindByOid("2.5.29.16", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->pwszName,
            nullptr);
  EXPECT_EQ(FindByOid("2.5.29.16", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->dwOidFlags,
            kMark);
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

TEST_F(OidNames, CleanupLeavesLiteralsAndUnusedNumbers) {
  CleanupOidInfo();
  EXPECT_EQ(Loaded(), std::set<int>{});
  EXPECT_STREQ(
      FindByOid("1.3.14.3.2.26", CRYPT_HASH_ALG_OID_GROUP_ID)->pwszName,
      L"sha1");
  EXPECT_STREQ(
      FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID)->pwszName,
      L"GOST R 34.10-2001");
}

TEST_F(OidNames, ANameThatCleanupTookLetsALaterRowWin) {
  ASSERT_STREQ(
      FindByName(L"Certificate Extensions", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)
          ->pszOID,
      "1.3.6.1.4.1.311.2.1.14");
  ASSERT_EQ(FindUnknownName(CRYPT_EXT_OR_ATTR_OID_GROUP_ID), nullptr);
  CleanupOidInfo();
  EXPECT_EQ(
      FindByName(L"Certificate Extensions", CRYPT_EXT_OR_ATTR_OID_GROUP_ID),
      nullptr);
  // A literal among names that are gone.
  EXPECT_STREQ(FindByName(L"", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)->pszOID,
               "1.2.840.113549.1.9.9");
}

TEST_F(OidNames, ASecondCleanupChangesNothing) {
  FindUnknownName(kAllGroups);
  CleanupOidInfo();
  for (const COidData* record : RegistryRows()) {
    EXPECT_EQ(record->dwOidFlags & kNameIsOwned, 0u);
  }
  const std::vector<COidData> cleaned_up = RegistryContent();
  SetLastError(kUntouchedError);
  CleanupOidInfo();
  EXPECT_EQ(GetLastError(), kUntouchedError);
  EXPECT_TRUE(RegistryIs(cleaned_up));
}

TEST_F(OidNames, TheCleanupHelperCleansUpWhenItIsDestroyed) {
  COidData* const found =
      FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  { COidInfoCleanupHelper helper; }
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(found->dwOidFlags, kMark);
}

TEST_F(OidNames, TheLocaleOfTheMomentFoldsNames) {
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  FindUnknownName(kAllGroups);
  EXPECT_NE(FindByName(L"initials", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "tr_TR.UTF-8"), nullptr);
  // There 'I' folds to a dotless i, and 'i' to itself.
  EXPECT_EQ(FindByName(L"initials", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_EQ(FindByName(L"INITIALS", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_EQ(FindByName(L"InItIals", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_NE(FindByName(L"Initials", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_NE(FindByName(L"\x0131NiTiALS", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_NE(FindByName(L"SERiALnumber", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  EXPECT_NE(FindByName(L"INITIALS", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_EQ(FindByName(L"\x0131NiTiALS", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
}

TEST_F(OidNames, ACharacterThatFoldsIntoAsciiIsFolded) {
  FindUnknownName(kAllGroups);
  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  // U+212A KELVIN SIGN folds to k.
  EXPECT_STREQ(FindByName(L"\x212A"
                          L"ey Usage",
                          CRYPT_EXT_OR_ATTR_OID_GROUP_ID)
                   ->pszOID,
               "2.5.29.15");
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  EXPECT_EQ(FindByName(L"\x212A"
                       L"ey Usage",
                       CRYPT_EXT_OR_ATTR_OID_GROUP_ID),
            nullptr);
}

TEST_F(OidNames, TheLocaleFoldsNamesOfOneLetterToo) {
  ASSERT_NE(std::setlocale(LC_ALL, "tr_TR.UTF-8"), nullptr);
  EXPECT_STREQ(FindByName(L"I", CRYPT_RDN_ATTR_OID_GROUP_ID)->pszOID,
               "2.5.4.43");
  EXPECT_EQ(FindByName(L"i", CRYPT_RDN_ATTR_OID_GROUP_ID), nullptr);
}

TEST_F(OidNames, ANullNameAmongLoadedOnesLetsALaterRowWin) {
  ASSERT_NE(FindByOid("2.5.29.35", CRYPT_EXT_OR_ATTR_OID_GROUP_ID), nullptr);
  CleanupOidInfo();
  ASSERT_EQ(FindUnknownName(CRYPT_EXT_OR_ATTR_OID_GROUP_ID), nullptr);
  EXPECT_STREQ(
      FindByName(L"Authority Key Identifier", CRYPT_EXT_OR_ATTR_OID_GROUP_ID)
          ->pszOID,
      "2.5.29.1");
}

// The only row of its group, so that no other row has an influence.
// The second text is as long as the row's own.
TEST_F(OidNames, AnyTextCanBeGivenToTheOnlyRecordOfAGroup) {
  COidData& record = *RowOf(CRYPT_POLICY_OID_GROUP_ID, 0);
  ASSERT_EQ(FindByName(L"All issuance policies", CRYPT_POLICY_OID_GROUP_ID),
            &record);
  const struct {
    unsigned int number;
    const wchar_t* text;
  } kTexts[] = {{8048, L"Common Name"}, {8023, L"Unstructured Addresss"}};
  for (const auto& given : kTexts) {
    EXPECT_TRUE(IsTrueInAChild([&] {
      const std::unique_ptr<const wchar_t[]> own_text(record.pwszName);
      InitOidInfoWorker(record, given.number);
      return FindByName(given.text, CRYPT_POLICY_OID_GROUP_ID) == &record &&
             FindByName(L"All issuance policies", CRYPT_POLICY_OID_GROUP_ID) ==
                 nullptr;
    })) << given.number;
  }
}

TEST_F(OidNames, AnyTextCanBeGivenToARecordThatCleanupLeftWithoutAName) {
  COidData& record = *RowOf(CRYPT_POLICY_OID_GROUP_ID, 0);
  ASSERT_EQ(FindByName(L"All issuance policies", CRYPT_POLICY_OID_GROUP_ID),
            &record);
  CleanupOidInfo();
  EXPECT_EQ(FindByName(L"All issuance policies", CRYPT_POLICY_OID_GROUP_ID),
            nullptr);
  InitOidInfoWorker(record, 8048);
  EXPECT_EQ(FindByName(L"Common Name", CRYPT_POLICY_OID_GROUP_ID), &record);
}

TEST_F(OidNames, AnyTextCanBeGivenToARecordAndIsFound) {
  FindUnknownName(kAllGroups);
  COidData& record = *RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 53);
  const std::unique_ptr<const wchar_t[]> own_text(record.pwszName);
  InitOidInfoWorker(record, 1);
  EXPECT_STREQ(record.pwszName, L"Quorin CSP");
  EXPECT_EQ(FindByName(L"quorin csp", kAllGroups), &record);
  EXPECT_EQ(FindByName(L"Common Name", CRYPT_EXT_OR_ATTR_OID_GROUP_ID),
            nullptr);
  EXPECT_EQ(FindUnknownName(CRYPT_EXT_OR_ATTR_OID_GROUP_ID), nullptr);
}

TEST_F(OidNames, AnotherRowsTextGivenToAnEarlierRecordWins) {
  FindUnknownName(kAllGroups);
  COidData& earlier = *RowOf(CRYPT_ENHKEY_USAGE_OID_GROUP_ID, 0);
  const std::unique_ptr<const wchar_t[]> own_text(earlier.pwszName);
  InitOidInfoWorker(earlier, 8533);
  EXPECT_EQ(FindByName(L"Lifetime Signing", CRYPT_ENHKEY_USAGE_OID_GROUP_ID),
            &earlier);
  EXPECT_EQ(FindByName(L"Lifetime Signing", kAllGroups), &earlier);
}

TEST_F(OidNames, AnotherRowsTextGivenToAnyEarlierRecordWins) {
  const COidData& last = *RowOf(CRYPT_POLICY_OID_GROUP_ID, 0);
  const auto number = static_cast<unsigned int>(
      reinterpret_cast<std::uintptr_t>(last.pwszName));
  FindUnknownName(kAllGroups);
  for (const int row : all_) {
    EXPECT_TRUE(IsTrueInAChild([&] {
      COidData& record = Row(row);
      const std::unique_ptr<const wchar_t[]> own_text(record.pwszName);
      InitOidInfoWorker(record, number);
      return FindByName(L"All issuance policies", record.dwGroupId) ==
                 &record &&
             FindByName(L"All issuance policies", kAllGroups) ==
                 (row < FirstRowOf(CRYPT_POLICY_OID_GROUP_ID) ? &record
                                                              : &last);
    })) << "row "
        << row;
  }
}

TEST_F(OidNames, AMissingTextGivenToARecordTakesItsName) {
  COidData* const found =
      FindByOid("1.2.643.2.2.19", CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  const std::unique_ptr<const wchar_t[]> own_text(found->pwszName);
  InitOidInfoWorker(*found, 4);
  EXPECT_EQ(found->pwszName, nullptr);
  EXPECT_EQ(FindByName(L"GOST R 34.10-2001", CRYPT_PUBKEY_ALG_OID_GROUP_ID),
            nullptr);
}

TEST_F(OidNames, AnOwnRecordGetsItsTextAndTheFlag) {
  COidData record = {};
  record.dwOidFlags = 0x11;
  InitOidInfoWorker(record, 8048);
  const std::unique_ptr<const wchar_t[]> owned(record.pwszName);
  EXPECT_STREQ(record.pwszName, L"Common Name");
  EXPECT_EQ(record.dwOidFlags, 0x11 | kNameIsOwned);
  EXPECT_EQ(Loaded(), std::set<int>{});
}

// Enough records that, wherever program and library are loaded, some of them
// lie where a look at only one end of the registry would take them for its
// rows. Static memory and the heap usually lie below the library, the stack
// above it.
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
    EXPECT_TRUE(RegistryIs(before));
    EXPECT_EQ(Loaded(), std::set<int>{});
    // A search still loads every name of the registry.
    EXPECT_EQ(FindUnknownName(kAllGroups), nullptr);
    EXPECT_EQ(Loaded(), all_);
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

// One name that is loaded must not make another count as loaded.
TEST_F(OidNames, ANameIsLoadedWhicheverOtherNameWasLoadedBefore) {
  wchar_t other[] = L"other";
  for (const int loaded : all_) {
    EXPECT_TRUE(IsTrueInAChild([&] {
      MatchOidInfo(Row(loaded), CRYPT_OID_INFO_NAME_KEY, other);
      for (const OID_TABLE_INFO& table : oid_registry) {
        FindUnknownName(table.dwGroupId);
      }
      return Loaded() == all_;
    })) << "row "
        << loaded;
  }
}

TEST_F(OidNames, ARowIsFoundByNameWhicheverOtherNameWasLoadedBefore) {
  wchar_t other[] = L"other";
  for (const int loaded : all_) {
    EXPECT_TRUE(IsTrueInAChild([&] {
      MatchOidInfo(Row(loaded), CRYPT_OID_INFO_NAME_KEY, other);
      return FindByName(L"GOST R 34.11-94 (Quorin 2)",
                        CRYPT_HASH_ALG_OID_GROUP_ID) == &Row(0) &&
             FindByName(L"Embedded Windows System Component Verification",
                        kAllGroups) ==
                 &Row(FirstRowOf(CRYPT_ENHKEY_USAGE_OID_GROUP_ID) + 14);
    })) << "row "
        << loaded;
  }
}

TEST_F(OidNames, AnOwnRecordLosesItsNameToAMissingText) {
  COidData record = {};
  record.pwszName = L"mine";
  SetLastError(kUntouchedError);
  InitOidInfoWorker(record, 8031);
  EXPECT_EQ(record.pwszName, nullptr);
  EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(OidNames, AnOwnRecordThatLosesItsNameTakesNoneFromTheRegistry) {
  COidData record = {};
  InitOidInfoWorker(record, 0xFFFF);  // no text has this number
  EXPECT_TRUE(Loaded().empty());
  EXPECT_EQ(FindByName(L"GOST R 34.11-94 (Quorin 2)", kAllGroups), &Row(0));
}

TEST_F(OidNames, ASearchInAnOwnTableLoadsTheNamesItPasses) {
  COidData records[3] = {};
  const unsigned int kNumbers[] = {8048, 4, 8049};
  for (int i = 0; i < 3; ++i) {
    records[i].pwszName =
        reinterpret_cast<LPCWSTR>(std::uintptr_t{kNumbers[i]});
  }
  wchar_t name[] = L"LOCALiTY";
  EXPECT_EQ(FindOIDInfoInternal(
                OID_TABLE_INFO{CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 3, records},
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
  const OID_TABLE_INFO middle = {CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 5,
                                 RowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID, 10)};
  EXPECT_EQ(FindOIDInfoInternal(middle, CRYPT_OID_INFO_NAME_KEY, name),
            nullptr);
  const int first = FirstRowOf(CRYPT_EXT_OR_ATTR_OID_GROUP_ID) + 10;
  EXPECT_EQ(Loaded(), NumbersAmong(first, first + 5));
}

TEST_F(OidNames, EveryLoadedTextIsTheStringTables) {
  FindUnknownName(kAllGroups);
  const std::vector<COidData*> rows = RegistryRows();
  ASSERT_EQ(rows.size(), kExpectedRows.size());
  for (std::size_t row = 0; row < rows.size(); ++row) {
    EXPECT_STREQ(rows[row]->pwszName, kExpectedRows[row].name) << "row " << row;
  }
}

}  // namespace
}  // namespace korvan::test
