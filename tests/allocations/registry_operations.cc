// The operations of the registry and of the texts. Where the memory for a name
// is refused, the exception passes, that name stays null for good, and all else
// goes on.
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "allocations/operation.h"
#include "oid/find.h"
#include "oid/plain_registry.h"
#include "oid/registry_rows.h"
#include "support/campaign.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

// The registry beside the plain one, where all names can be loaded.
class NamesBeside {
 public:
  NamesBeside() : names_(AllNames()), blocks_(HeapBlocks()) {}

  // Expects that names are loaded or still numbers, but so many that are null
  // though they have a text, and no block but theirs.
  void Expect(int lost_names) const {
    const long blocks = HeapBlocks() - blocks_;
    int lost = 0;
    long loaded = 0;
    const std::vector<COidData*> rows = RegistryRows();
    for (std::size_t row = 0; row < rows.size(); ++row) {
      if (HoldsTextNumber(*rows[row])) {
        continue;
      }
      const bool is_owned = (rows[row]->dwOidFlags & kNameIsOwned) != 0;
      if (rows[row]->pwszName == nullptr && !names_[row].empty()) {
        EXPECT_TRUE(is_owned);
        ++lost;
        continue;
      }
      EXPECT_EQ(NameOf(*rows[row]), names_[row]) << row;
      loaded += is_owned && rows[row]->pwszName != nullptr;
    }
    EXPECT_EQ(lost, lost_names);
    ExpectBlocks(blocks, loaded);
  }

  // What the last error is by now: only a name that has no text sets it.
  unsigned int Error() const {
    const std::vector<COidData*> rows = RegistryRows();
    for (std::size_t row = 0; row < rows.size(); ++row) {
      if (names_[row].empty() && (rows[row]->dwOidFlags & kNameIsOwned) != 0) {
        return ERROR_INVALID_PARAMETER;
      }
    }
    return kUntouchedError;
  }

  // Frees the names and expects that they were all that was kept.
  void ExpectNothingIsLeft() const {
    CleanupOidInfo();
    ExpectBlocks(HeapBlocks() - blocks_, 0);
  }

 private:
  static std::vector<std::wstring> AllNames() {
    std::vector<std::wstring> names;
    PlainRegistry plain;
    for (int row = 0; row < static_cast<int>(plain.Rows().size()); ++row) {
      const COidData& record = At(plain, row).record;
      if (HoldsTextNumber(record)) {
        plain.Load(row, static_cast<unsigned int>(
                            reinterpret_cast<std::uintptr_t>(record.pwszName)));
      }
      names.push_back(NameOf(record));
    }
    return names;
  }
  static const PlainRegistry::Row& At(const PlainRegistry& plain, int row) {
    return plain.Rows()[static_cast<std::size_t>(row)];
  }
  static std::wstring NameOf(const COidData& record) {
    return record.pwszName == nullptr ? std::wstring() : record.pwszName;
  }
  static void ExpectBlocks(long blocks, long expected) {
    if (kAreAllBlocksSeen) {
      EXPECT_EQ(blocks, expected);
    }
  }

  std::vector<std::wstring> names_;
  long blocks_;  // declared last: the names are blocks, too
};

// A lookup that finds, or does not find, a record of the registry.
template <class Lookup>
Operation RegistryRow(const std::string& function, const std::string& how,
                      bool finds, Lookup lookup) {
  const auto run = [=](Trial& trial) {
    const NamesBeside names;
    bool found = false;
    SetLastError(kUntouchedError);
    trial([&] { found = lookup(); });
    EXPECT_EQ(GetLastError(), names.Error());
    trial.ExpectBadAllocIfRefused();
    EXPECT_EQ(found, finds && !trial.Refused());
    names.Expect(trial.Refused() ? 1 : 0);
    // Another search of the same finds the record, with or without its name.
    lookup();
    names.Expect(trial.Refused() ? 1 : 0);
    FindUnknownName(kAllGroups);
    names.Expect(trial.Refused() ? 1 : 0);
    names.ExpectNothingIsLeft();
  };
  return {"korvan::" + function, how, true, true, run};
}

// A call that gives a caller's own record a name.
template <class Call>
Operation OwnRow(const std::string& function, const std::string& how,
                 Call call) {
  const auto run = [=](Trial& trial) {
    COidData record = {};
    record.pszOID = "2.999.1";
    record.pwszName = reinterpret_cast<LPCWSTR>(std::uintptr_t{8048});
    trial([&] { call(record); });
    trial.ExpectBadAllocIfRefused();
    EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
    if (trial.Refused()) {
      EXPECT_EQ(record.pwszName, nullptr);
      InitOidInfoWorker(record, 8048);
    }
    EXPECT_STREQ(record.pwszName, L"Common Name");
    delete[] record.pwszName;
  };
  return {"korvan::" + function, how, true, false, run};
}

// A call that asks nothing of the heap, in a process whose names are loaded.
Operation NoRequest(const std::string& function, const std::string& how,
                    const std::function<void()>& call) {
  return {function, how, false, true, [=](Trial& trial) {
            FindUnknownName(kAllGroups);
            trial(call);
          }};
}

}  // namespace

std::vector<Operation> RegistryOperations() {
  const std::string find = "FindOIDInfo(unsigned int, void*, unsigned int)";
  const std::string find_internal =
      "FindOIDInfoInternal(unsigned int, void*, unsigned int)";
  const std::string find_in_table =
      "FindOIDInfoInternal(korvan::OID_TABLE_INFO const&, unsigned int, void*)";
  const std::string match =
      "MatchOidInfo(korvan::COidData&, unsigned int, void*)";
  static char gost_2001[] = "1.2.643.2.2.19";
  static char own_oid[] = "2.999.1";
  static wchar_t unknown[] = L"no such name";
  static wchar_t common_name[] = L"common name";
  static unsigned int gost_algid = 0x2E23;
  static unsigned int gost_pair[] = {0x801E, 0x2E23};
  // Each name takes two new processes.
  const auto group = static_cast<unsigned int>(
      Rounds(CRYPT_PUBKEY_ALG_OID_GROUP_ID, kAllGroups));
  return {
      RegistryRow(find, "by OID", true,
                  [] {
                    return FindByOid(gost_2001,
                                     CRYPT_PUBKEY_ALG_OID_GROUP_ID) != nullptr;
                  }),
      RegistryRow(find, "by ALG_ID", true,
                  [] {
                    return FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &gost_algid,
                                       CRYPT_PUBKEY_ALG_OID_GROUP_ID) !=
                           nullptr;
                  }),
      RegistryRow(find, "by signature pair", true,
                  [] {
                    return FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, gost_pair,
                                       CRYPT_SIGN_ALG_OID_GROUP_ID) != nullptr;
                  }),
      RegistryRow(find, "by an unknown name", false,
                  [=] { return FindUnknownName(group) != nullptr; }),
      RegistryRow(find_internal, "by OID", true,
                  [] {
                    return FindOIDInfoInternal(CRYPT_OID_INFO_OID_KEY,
                                               gost_2001, 3) != nullptr;
                  }),
      RegistryRow(find_internal, "by an unknown name", false,
                  [=] {
                    return FindOIDInfoInternal(CRYPT_OID_INFO_NAME_KEY, unknown,
                                               3) != nullptr;
                  }),
      RegistryRow(find_in_table, "by OID", true,
                  [] {
                    return FindOIDInfoInternal(oid_registry[2], 1, gost_2001) !=
                           nullptr;
                  }),
      RegistryRow(find_in_table, "by an unknown name", false,
                  [] {
                    return FindOIDInfoInternal(oid_registry[2], 2, unknown) !=
                           nullptr;
                  }),
      RegistryRow(match, "of the registry", false,
                  [] {
                    return MatchOidInfo(oid_registry[2].rgRecords[0], 2,
                                        unknown);
                  }),
      OwnRow(find_in_table, "an own table",
             [](COidData& record) {
               const OID_TABLE_INFO table = {3, 1, &record};
               FindOIDInfoInternal(table, 1, own_oid);
             }),
      OwnRow(match, "of an own record",
             [](COidData& record) {
               EXPECT_TRUE(MatchOidInfo(record, 2, common_name));
             }),
      OwnRow("InitOidInfoWorker(korvan::COidData&, unsigned int)", "",
             [](COidData& record) { InitOidInfoWorker(record, 8048); }),
      NoRequest("korvan::" + find, "of loaded names",
                [] {
                  EXPECT_NE(FindByOid(gost_2001, kAllGroups), nullptr);
                  EXPECT_NE(FindByName(common_name, kAllGroups), nullptr);
                  EXPECT_NE(FindByAlgid(gost_algid, kAllGroups), nullptr);
                  EXPECT_EQ(FindUnknownName(kAllGroups), nullptr);
                }),
      NoRequest("korvan::CleanupOidInfo()", "", CleanupOidInfo),
      NoRequest("korvan::COidInfoCleanupHelper::~COidInfoCleanupHelper()", "",
                [] { const COidInfoCleanupHelper cleanup{}; }),
      NoRequest("LoadString_korvan(void*, unsigned int, char*, int)", "", [] {
        char text[256];
        EXPECT_EQ(LoadString_korvan(nullptr, 8048, text, 255), 11);
        EXPECT_EQ(LoadString_korvan(nullptr, 4, text, 255), 0);
      })};
}

}  // namespace korvan::test
