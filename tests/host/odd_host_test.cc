// A host whose LoadString_korvan or SetLastError throws, fails or lies at its
// nth call, or from there on: for each lookup, conversion and text. What the
// library answers then is what the plain registry answers with the same host,
// and what the table of failures says; nothing leaks, and the next call works.
#include <gtest/gtest.h>
#include <korvan/oid_info.h>
#include <korvan/public_key.h>
#include <korvan/string_resources.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "host/odd_host.h"
#include "oid/find.h"
#include "oid/plain_registry.h"
#include "oid/registry_rows.h"
#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/campaign.h"
#include "support/child_process.h"
#include "support/failing_heap.h"
#include "support/settings.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

// What a call threw: "", "host" or "memory".
template <class Call>
std::string ThrownByHost(Call call) {
  try {
    call();
  } catch (const HostError&) {
    return "host";
  } catch (const std::bad_alloc&) {
    return "memory";
  }
  return "";
}

// Does `work` in a new process, whose registry nobody has used.
template <class Work>
void InNewProcess(Work work) {
  EXPECT_EQ(ExitStatusOf(StartChild([&] {
              work();
              return testing::Test::HasFailure() ? 1 : 0;
            })),
            0);
}

// A host's faults, to begin a call with.
struct Faults {
  TextFault text = TextFault::kNone;
  ErrorFault error = ErrorFault::kNone;
  int at = 1;
  bool goes_on = false;
};

void SetHost(const Faults& faults) {
  odd_host = {};
  odd_host.text_fault = faults.text;
  odd_host.error_fault = faults.error;
  odd_host.fault_at = faults.at;
  odd_host.goes_on = faults.goes_on;
  odd_host.last_error = kUntouchedError;
}

// A search in the library, and the same in the plain registry. Each gives the
// number of the row that it finds, or -1.
struct Search {
  const char* name;
  std::function<int()> in_library;
  std::function<int(PlainRegistry&)> in_plain;
};

// The number of a record of the registry, or -1 for null.
int NumberOf(const COidData* record) {
  if (record == nullptr) {
    return -1;
  }
  int number = 0;
  for (const OID_TABLE_INFO& table : oid_registry) {
    for (int i = 0; i < table.cRecords; ++i, ++number) {
      if (&table.rgRecords[i] == record) {
        return number;
      }
    }
  }
  ADD_FAILURE() << "no record of the registry";
  return -1;
}

template <class Key>
Search FindBy(const char* name, unsigned int type, Key& key,
              unsigned int group) {
  return {
      name,
      [type, &key, group] { return NumberOf(FindOIDInfo(type, &key, group)); },
      [type, &key, group](PlainRegistry& plain) {
        return plain.Find(type, &key, group);
      }};
}

char gost_2001[] = "1.2.643.2.2.19";
wchar_t gost_2001_name[] = L"gost r 34.10-2001";
wchar_t unknown_name[] = L"no such name";
unsigned int gost_algid = 0x2E23;
unsigned int gost_pair[] = {0x801E, 0x2E23};
constexpr unsigned int kPublicKeys = CRYPT_PUBKEY_ALG_OID_GROUP_ID;
constexpr unsigned int kTableOfPublicKeys = 2;

// The first row of the public keys, and a text that is not its own.
constexpr unsigned int kAnotherText = 8048;
int FirstPublicKey() { return FirstRowOf(kPublicKeys); }

int ConvertsAKey() {
  const Bytes bits = Counted(64);
  const CERT_PUBLIC_KEY_INFO info = InfoOf(kGost2001, {}, bits);
  unsigned char* blob = EarlierBuffer();
  unsigned int size = kUntouchedSize;
  const std::string thrown = ThrownByHost([&] {
    EXPECT_EQ(KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size), 1);
  });
  if (thrown.empty()) {
    EXPECT_EQ(Take(blob, size), ModelBlob(0x2E23, {}, bits));
    return 0;
  }
  EXPECT_EQ(blob, nullptr);
  EXPECT_EQ(size, kUntouchedSize);
  if (thrown == "host") {
    throw HostError();
  }
  throw std::bad_alloc();
}

const std::vector<Search>& Searches() {
  static const std::vector<Search> searches = {
      FindBy("FindOIDInfo by OID", CRYPT_OID_INFO_OID_KEY, gost_2001,
             kPublicKeys),
      FindBy("FindOIDInfo by OID in all groups", CRYPT_OID_INFO_OID_KEY,
             gost_2001, kAllGroups),
      FindBy("FindOIDInfo by ALG_ID", CRYPT_OID_INFO_ALGID_KEY, gost_algid,
             kAllGroups),
      FindBy("FindOIDInfo by pair", CRYPT_OID_INFO_SIGN_KEY, gost_pair,
             kAllGroups),
      FindBy("FindOIDInfo by name", CRYPT_OID_INFO_NAME_KEY, gost_2001_name,
             kPublicKeys),
      FindBy("FindOIDInfo by unknown name", CRYPT_OID_INFO_NAME_KEY,
             unknown_name, kPublicKeys),
      FindBy("FindOIDInfo by unknown name in all groups",
             CRYPT_OID_INFO_NAME_KEY, unknown_name, kAllGroups),
      {"FindOIDInfoInternal by name",
       [] {
         return NumberOf(FindOIDInfoInternal(CRYPT_OID_INFO_NAME_KEY,
                                             gost_2001_name, kPublicKeys));
       },
       [](PlainRegistry& plain) {
         return plain.Find(CRYPT_OID_INFO_NAME_KEY, gost_2001_name,
                           kPublicKeys);
       }},
      {"FindOIDInfoInternal in a table of the registry",
       [] {
         return NumberOf(FindOIDInfoInternal(oid_registry[kTableOfPublicKeys],
                                             CRYPT_OID_INFO_NAME_KEY,
                                             unknown_name));
       },
       [](PlainRegistry& plain) {
         return plain.FindInTable(kTableOfPublicKeys, CRYPT_OID_INFO_NAME_KEY,
                                  unknown_name);
       }},
      {"MatchOidInfo",
       [] {
         return static_cast<int>(
             MatchOidInfo(oid_registry[kTableOfPublicKeys].rgRecords[0],
                          CRYPT_OID_INFO_NAME_KEY, gost_2001_name));
       },
       [](PlainRegistry& plain) {
         return static_cast<int>(plain.Matches(
             FirstPublicKey(), CRYPT_OID_INFO_NAME_KEY, gost_2001_name));
       }},
      {"InitOidInfoWorker",
       [] {
         COidData& record = oid_registry[kTableOfPublicKeys].rgRecords[0];
         if ((record.dwOidFlags & kNameIsOwned) != 0) {
           delete[] record.pwszName;  // an earlier call's, which is not freed
         }
         InitOidInfoWorker(record, kAnotherText);
         return 0;
       },
       [](PlainRegistry& plain) {
         plain.Load(FirstPublicKey(), kAnotherText);
         return 0;
       }},
      {"KRVConvertPublicKeyInfo", ConvertsAKey,
       [](PlainRegistry& plain) {
         plain.Find(CRYPT_OID_INFO_OID_KEY, gost_2001, kPublicKeys);
         return 0;
       }},
  };
  return searches;
}

std::wstring NameOf(const COidData& record) {
  if (HoldsTextNumber(record)) {
    return L"a number";
  }
  return record.pwszName == nullptr ? L"none" : record.pwszName;
}

// Expects that library and plain registry have the same names, and that these
// are all blocks that are there since there were `blocks`.
void ExpectSameNames(const PlainRegistry& plain, long blocks) {
  const long now = HeapBlocks();
  long owned = 0;
  std::size_t number = 0;
  for (const COidData* record : RegistryRows()) {
    const COidData& expected = plain.Rows()[number].record;
    EXPECT_EQ(NameOf(*record), NameOf(expected)) << "row " << number;
    EXPECT_EQ(record->dwOidFlags, expected.dwOidFlags) << "row " << number;
    owned +=
        (record->dwOidFlags & kNameIsOwned) != 0 && record->pwszName != nullptr;
    ++number;
  }
  if (kAreAllBlocksSeen) {
    EXPECT_EQ(now - blocks, owned);
  }
}

// Searches in both, with the same host, and tells all that can be seen after.
template <class Registry>
std::string Seen(const Faults& faults, Registry search) {
  SetHost(faults);
  int found = -2;
  const std::string thrown = ThrownByHost([&] { found = search(); });
  std::ostringstream seen;
  seen << "found " << found << ", thrown " << thrown << ", texts "
       << odd_host.text_calls << ", errors " << odd_host.error_calls
       << ", last error " << std::hex << odd_host.last_error << ", asked "
       << odd_host.asked_for_error;
  return seen.str();
}

void SearchWithFaults(const Search& search, const Faults& faults) {
  // What the plain registry does is done before blocks are counted.
  PlainRegistry plain;
  const std::string expected =
      Seen(faults, [&] { return search.in_plain(plain); });
  // The same host again, healthy: what was lost stays lost, all else is there.
  PlainRegistry plain_after = plain;
  const std::string expected_after =
      Seen({}, [&] { return search.in_plain(plain_after); });
  plain_after.Find(CRYPT_OID_INFO_NAME_KEY, unknown_name, kAllGroups);
  PlainRegistry plain_cleaned = plain_after;
  plain_cleaned.Cleanup();

  const long blocks = HeapBlocks();
  {
    const std::string seen = Seen(faults, search.in_library);
    EXPECT_EQ(seen, expected);
  }
  ExpectSameNames(plain, blocks);
  {
    const std::string seen_after = Seen({}, search.in_library);
    EXPECT_EQ(seen_after, expected_after);
  }
  FindUnknownName(kAllGroups);
  ExpectSameNames(plain_after, blocks);
  CleanupOidInfo();
  ExpectSameNames(plain_cleaned, blocks);
}

// How often the host's functions are called by a search without a fault.
struct Calls {
  int texts;
  int errors;
};

Calls CallsOf(const Search& search) {
  PlainRegistry plain;
  SetHost({});
  search.in_plain(plain);
  return {odd_host.text_calls, odd_host.error_calls};
}

// 1 to `last`; in scripts/test the first, one in the middle and the last.
std::vector<int> TurnsUpTo(int last) {
  std::vector<int> turns;
  for (int turn = 1; turn <= last; ++turn) {
    if (turn == 1 || turn == last || turn == last / 2 || Rounds(0, 1) != 0) {
      turns.push_back(turn);
    }
  }
  return turns;
}

constexpr TextFault kTextFaults[] = {
    TextFault::kThrows,         TextFault::kThrowsBadAlloc,
    TextFault::kReportsNone,    TextFault::kReportsNoneAndSets,
    TextFault::kCountsNegative, TextFault::kCountsTooMany,
    TextFault::kCountsTooFew,   TextFault::kFillsAll,
    TextFault::kWritesNothing,  TextFault::kHoldsNul,
    TextFault::kHasNoCharacters};

constexpr ErrorFault kErrorFaults[] = {
    ErrorFault::kThrows, ErrorFault::kForgets, ErrorFault::kChanges};

void TryAll(const std::vector<Faults>& all, const Search& search) {
  for (const Faults& faults : all) {
    SCOPED_TRACE(
        std::string(search.name) + ", text fault " +
        std::to_string(static_cast<int>(faults.text)) + ", error fault " +
        std::to_string(static_cast<int>(faults.error)) + " at call " +
        std::to_string(faults.at) + (faults.goes_on ? " and after" : ""));
    InNewProcess([&] { SearchWithFaults(search, faults); });
    if (testing::Test::HasFailure()) {
      return;
    }
  }
}

std::vector<bool> OnceAndFromThereOn() {
  return Rounds(0, 1) != 0 ? std::vector<bool>{false, true}
                           : std::vector<bool>{false};
}

TEST(OddHost, SearchesBearTextsThatThrowFailAndLie) {
  std::size_t tried = 0;
  for (const Search& search : Searches()) {
    std::vector<Faults> all = {{}};
    Vary(all, &Faults::text, {std::begin(kTextFaults), std::end(kTextFaults)});
    Vary(all, &Faults::at, TurnsUpTo(CallsOf(search).texts));
    Vary(all, &Faults::goes_on, OnceAndFromThereOn());
    TryAll(all, search);
    tried += all.size();
  }
  Figures(Searches().size(), " searches, ", std::size(kTextFaults),
          " faults of texts, ", tried, " processes");
}

TEST(OddHost, SearchesBearALastErrorThatThrowsForgetsAndLies) {
  std::size_t tried = 0;
  for (const Search& search : Searches()) {
    const int calls = CallsOf(search).errors;
    if (calls == 0) {
      continue;
    }
    std::vector<Faults> all = {{}};
    Vary(all, &Faults::error,
         {std::begin(kErrorFaults), std::end(kErrorFaults)});
    Vary(all, &Faults::at, TurnsUpTo(calls));
    Vary(all, &Faults::goes_on, OnceAndFromThereOn());
    TryAll(all, search);
    tried += all.size();
  }
  EXPECT_NE(tried, 0u);
  Figures(std::size(kErrorFaults), " faults of the last error in searches, ",
          tried, " processes");
}

// A name in a caller's own record, which the library does not own.
TEST(OddHost, ARecordOfACallersOwnTakesWhatTheHostSays) {
  for (const TextFault fault : kTextFaults) {
    COidData record = {};
    record.pwszName = L"mine";
    PlainRegistry plain;
    const Faults faults = {.text = fault};
    const std::string expected = Seen(faults, [&] {
      plain.Load(0, kAnotherText);
      return 0;
    });
    EXPECT_EQ(Seen(faults,
                   [&] {
                     InitOidInfoWorker(record, kAnotherText);
                     return 0;
                   }),
              expected);
    EXPECT_EQ(NameOf(record), NameOf(plain.Rows()[0].record));
    EXPECT_EQ(record.dwOidFlags, kNameIsOwned);
    delete[] record.pwszName;
    SetHost({});
    InitOidInfoWorker(record, kAnotherText);
    EXPECT_STREQ(record.pwszName, L"Common Name");
    delete[] record.pwszName;
  }
}

// A call that fails, and what it leaves in the outputs, whatever becomes of the
// error that it sets.
struct Failure {
  const char* name;
  unsigned int code;
  std::string outputs;
  std::function<std::string()> call;  // returns the outputs, throws nothing
};

std::string thrown_in_failure;

// What a conversion leaves of a pointer that had an earlier buffer: "kept",
// "null" or how many bytes. Frees it.
std::string BufferShown(unsigned char* buffer, const unsigned char* earlier,
                        unsigned int size) {
  const std::string shown = buffer == nullptr   ? "null"
                            : buffer == earlier ? "kept"
                                                : std::to_string(size);
  std::free(buffer);
  return shown;
}

std::string SizeShown(unsigned int size) {
  return size == kUntouchedSize ? "kept" : std::to_string(size);
}

std::string ConvertShown(const CERT_PUBLIC_KEY_INFO* info, bool with_size,
                         bool with_memory) {
  unsigned char* const earlier = EarlierBuffer();
  unsigned char* blob = earlier;
  unsigned int size = kUntouchedSize;
  thrown_in_failure = ThrownByHost([&] {
    const FailingHeap failing(with_memory ? 1000 : 0, Refusal::kOne);
    EXPECT_EQ(KRVConvertPublicKeyInfo(0, info, 0, 0, &blob,
                                      with_size ? &size : nullptr),
              0);
  });
  return "blob " + BufferShown(blob, earlier, size) + ", size " +
         SizeShown(size);
}

// `granted` requests of the heap are granted, the one after is not.
std::string EncodeShown(const Bytes& blob, bool is_null, long granted) {
  unsigned char* const earlier_key = EarlierBuffer();
  unsigned char* const earlier_parameters = EarlierBuffer();
  unsigned char* key = earlier_key;
  unsigned char* parameters = earlier_parameters;
  unsigned int key_size = kUntouchedSize;
  unsigned int parameters_size = kUntouchedSize;
  thrown_in_failure = ThrownByHost([&] {
    const FailingHeap failing(granted, Refusal::kOne);
    EXPECT_EQ(KRVEncodePublicKeyAndParametrs(
                  0, nullptr, is_null ? nullptr : blob.data(), SizeOf(blob), 0,
                  0, &key, &key_size, &parameters, &parameters_size),
              0);
  });
  return "key " + BufferShown(key, earlier_key, key_size) + ", size " +
         SizeShown(key_size) + ", parameters " +
         BufferShown(parameters, earlier_parameters, parameters_size) +
         ", size " + SizeShown(parameters_size);
}

std::string TextShown(unsigned int number, bool with_buffer) {
  char text[4] = {'a', 'b', 'c', 'd'};
  thrown_in_failure = ThrownByHost([&] {
    EXPECT_EQ(LoadString_korvan(nullptr, number, with_buffer ? text : nullptr,
                                sizeof(text)),
              0);
  });
  return text[0] == 0 ? "empty" : "kept";
}

constexpr long kAllMemory = 1000;
constexpr unsigned int kNoText = 4;

const std::vector<Failure>& AllFailures() {
  static const Bytes bits = Counted(64);
  static const CERT_PUBLIC_KEY_INFO good = InfoOf(kRsa, {}, bits);
  static const CERT_PUBLIC_KEY_INFO unknown = InfoOf("1.2.3", {}, bits);
  static const CERT_PUBLIC_KEY_INFO without_oid = InfoOf(nullptr, {}, bits);
  static const CERT_PUBLIC_KEY_INFO too_large = [] {
    CERT_PUBLIC_KEY_INFO info = InfoOf(kRsa, {}, bits);
    info.Algorithm.Parameters = {0xFFFFFFB0, info.PublicKey.pbData};
    return info;
  }();
  static const Bytes blob = ModelHeader(0x2E23, 64 * 8) + Counted(64 + 8);
  static const std::string all_kept =
      "key kept, size kept, parameters kept, size kept";
  static const std::string all_null =
      "key null, size kept, parameters null, size kept";
  static const std::vector<Failure> failures = {
      {"LoadString_korvan, no buffer", ERROR_INVALID_PARAMETER, "kept",
       [] { return TextShown(kAnotherText, false); }},
      {"LoadString_korvan, no such text", ERROR_INVALID_PARAMETER, "empty",
       [] { return TextShown(kNoText, true); }},
      {"KRVConvertPublicKeyInfo, no info", ERROR_INVALID_PARAMETER,
       "blob kept, size kept",
       [] { return ConvertShown(nullptr, true, true); }},
      {"KRVConvertPublicKeyInfo, nowhere for the size", ERROR_INVALID_PARAMETER,
       "blob kept, size kept", [] { return ConvertShown(&good, false, true); }},
      {"KRVConvertPublicKeyInfo, unknown algorithm", NTE_BAD_ALGID,
       "blob null, size kept",
       [] { return ConvertShown(&unknown, true, true); }},
      {"KRVConvertPublicKeyInfo, no OID", NTE_BAD_ALGID, "blob null, size kept",
       [] { return ConvertShown(&without_oid, true, true); }},
      {"KRVConvertPublicKeyInfo, no memory", NTE_NO_MEMORY,
       "blob null, size 80", [] { return ConvertShown(&good, true, false); }},
      {"KRVConvertPublicKeyInfo, a size beyond 32 bits", NTE_NO_MEMORY,
       "blob null, size 0",
       [] { return ConvertShown(&too_large, true, true); }},
      {"KRVEncodePublicKeyAndParametrs, no blob", ERROR_INVALID_PARAMETER,
       all_kept, [] { return EncodeShown(blob, true, kAllMemory); }},
      {"KRVEncodePublicKeyAndParametrs, no bytes", ERROR_INVALID_PARAMETER,
       all_kept, [] { return EncodeShown({}, false, kAllMemory); }},
      {"KRVEncodePublicKeyAndParametrs, a short blob", NTE_BAD_KEY, all_null,
       [] { return EncodeShown(Counted(15), false, kAllMemory); }},
      {"KRVEncodePublicKeyAndParametrs, a short key", NTE_BAD_KEY, all_null,
       [] {
         return EncodeShown(ModelHeader(0x2E23, 64) + Counted(7), false,
                            kAllMemory);
       }},
      {"KRVEncodePublicKeyAndParametrs, no memory for the key", NTE_NO_MEMORY,
       "key null, size 66, parameters null, size 8",
       [] { return EncodeShown(blob, false, 0); }},
      {"KRVEncodePublicKeyAndParametrs, no memory for the parameters",
       NTE_NO_MEMORY, "key 66, size 66, parameters null, size 8",
       [] { return EncodeShown(blob, false, 1); }},
  };
  return failures;
}

// The code that a host with this fault has after it was told another.
unsigned int CodeAfter(ErrorFault fault, unsigned int code) {
  switch (fault) {
    case ErrorFault::kNone:
      return code;
    case ErrorFault::kChanges:
      return kHostsOwnError;
    case ErrorFault::kThrows:
    case ErrorFault::kForgets:
      break;
  }
  return kUntouchedError;
}

// A text's buffer is emptied behind the error, so an exception leaves it.
std::string OutputsOf(const Failure& failure, ErrorFault fault) {
  return fault == ErrorFault::kThrows && failure.outputs == "empty"
             ? "kept"
             : failure.outputs;
}

TEST(OddHost, EveryFailureLeavesItsOutputsWhateverTheHostDoesWithTheError) {
  std::size_t tried = 0;
  for (const Failure& failure : AllFailures()) {
    for (const ErrorFault fault :
         {ErrorFault::kNone, ErrorFault::kThrows, ErrorFault::kForgets,
          ErrorFault::kChanges, ErrorFault::kNone}) {
      SCOPED_TRACE(failure.name);
      SetHost({.error = fault});
      EXPECT_EQ(failure.call(), OutputsOf(failure, fault));
      EXPECT_EQ(thrown_in_failure, fault == ErrorFault::kThrows ? "host" : "");
      EXPECT_EQ(odd_host.error_calls, 1);
      EXPECT_EQ(odd_host.asked_for_error, 0);
      EXPECT_EQ(odd_host.last_error, CodeAfter(fault, failure.code));
      ++tried;
    }
  }
  Figures(AllFailures().size(), " failures of calls, ", tried, " calls");
}

TEST(OddHost, NoFailureLeavesABlockBehind) {
  const auto fail_all = [] {
    for (const Failure& failure : AllFailures()) {
      for (const ErrorFault fault : kErrorFaults) {
        SetHost({.error = fault});
        failure.call();
      }
    }
  };
  fail_all();  // what is kept for good is there then
  const long blocks = HeapBlocks();
  fail_all();
  if (kAreAllBlocksSeen) {
    EXPECT_EQ(HeapBlocks(), blocks);
  }
}

}  // namespace
}  // namespace korvan::test
