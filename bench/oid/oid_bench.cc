// Lookups in the OID registry, beside the plain linear search, hash tables with
// the same content, and the registries of other libraries with theirs.

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <botan/oids.h>
#include <cryptohi.h>
#include <gnutls/gnutls.h>
#include <gnutls/x509.h>
#include <korvan/korvan.h>
#include <openssl/objects.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// The perfect hash table that gperf makes of the registry's OIDs.
const char* FindInGperf(const char* oid, std::size_t length);

namespace {

using korvan::COidData;

// The records, in an order that no search can learn, their names resolved.
std::vector<COidData*> ShuffledRecords() {
  wchar_t nobody[] = L"\n";
  korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, nobody, 0);
  std::vector<COidData*> records;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      records.push_back(&table.rgRecords[i]);
    }
  }
  std::shuffle(records.begin(), records.end(), std::mt19937(1));
  return records;
}

const std::vector<COidData*>& Records() {
  static const std::vector<COidData*> records = ShuffledRecords();
  return records;
}

struct Pair {
  unsigned int first;
  unsigned int second;
  bool operator==(const Pair&) const = default;
};
struct HashPair {
  std::size_t operator()(Pair pair) const {
    return std::hash<std::uint64_t>()(std::uint64_t{pair.first} << 32 |
                                      pair.second);
  }
};

Pair PairOf(const COidData& record) {
  Pair pair{record.Algid, 0};
  if (record.ExtraInfo.cbData >= 4) {
    std::memcpy(&pair.second, record.ExtraInfo.pbData, 4);
  }
  return pair;
}

// Keys that a search is asked for, one after the other.
struct Keys {
  std::vector<std::string> oids, missing_oids, openssl_oids;
  std::vector<std::wstring> names, cased_names, missing_names;
  std::vector<unsigned int> groups, algids, text_numbers;
  std::vector<Pair> pairs;
};

Keys MakeKeys() {
  Keys keys;
  std::mt19937 random(2);
  for (const COidData* record : Records()) {
    keys.oids.push_back(record->pszOID);
    keys.groups.push_back(record->dwGroupId);
    keys.missing_oids.push_back(record->pszOID);
    char& digit = keys.missing_oids.back()[keys.oids.back().size() - 1];
    digit = digit == '9' ? '8' : static_cast<char>(digit + 1);
    if (korvan::FindOIDInfo(1, keys.missing_oids.back().data(), 0)) {
      keys.missing_oids.back() += ".77";
    }
    if (OBJ_txt2nid(record->pszOID) != NID_undef) {
      keys.openssl_oids.push_back(record->pszOID);
    }
    keys.algids.push_back(record->Algid);
    keys.pairs.push_back(PairOf(*record));
    if (record->pwszName == nullptr || record->pwszName[0] == L'\0') continue;
    keys.names.push_back(record->pwszName);
    keys.cased_names.push_back(record->pwszName);
    for (wchar_t& c : keys.cased_names.back()) {
      const auto unit = static_cast<std::wint_t>(c);
      c = static_cast<wchar_t>(random() % 2 == 0 ? std::towupper(unit)
                                                 : std::towlower(unit));
    }
    keys.missing_names.push_back(record->pwszName);
    keys.missing_names.back().back() = L'~';
  }
  for (unsigned int number = 0; number < 9000; ++number) {
    char text[64];
    if (LoadString_korvan(nullptr, number, text, 63) > 0) {
      keys.text_numbers.push_back(number);
    }
  }
  std::shuffle(keys.text_numbers.begin(), keys.text_numbers.end(), random);
  return keys;
}

Keys& AllKeys() {
  static Keys keys = MakeKeys();
  return keys;
}

// Times `find` over all of `keys`; one iteration is one search.
template <class AnyKeys, class Find>
void Search(benchmark::State& state, AnyKeys& keys, Find find) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(find(keys[i], i));
    if (++i == keys.size()) i = 0;
  }
}

COidData* Plain(unsigned int key_type, void* key, unsigned int group) {
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    if (group != 0 && table.dwGroupId != group) continue;
    for (int i = 0; i < table.cRecords; ++i) {
      COidData& record = table.rgRecords[i];
      bool found = false;
      switch (key_type) {
        case 1:
          found = std::strcmp(record.pszOID, static_cast<char*>(key)) == 0;
          break;
        case 2:
          found = record.pwszName != nullptr &&
                  wcscasecmp(record.pwszName, static_cast<wchar_t*>(key)) == 0;
          break;
        case 3:
          found = record.Algid == *static_cast<unsigned int*>(key);
          break;
        default:
          found = PairOf(record) == *static_cast<Pair*>(key);
      }
      if (found) return &record;
    }
  }
  return nullptr;
}

// A map from each key to its first record, as a search would find it.
template <class Map, class KeyOf>
Map MapOf(KeyOf key_of) {
  Map map;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      map.emplace(key_of(table.rgRecords[i]), &table.rgRecords[i]);
    }
  }
  return map;
}

// By OID.

void OidHitOurs(benchmark::State& state) {
  Search(state, AllKeys().oids, [](std::string& oid, std::size_t) {
    return korvan::FindOIDInfo(1, oid.data(), 0);
  });
}
void OidHitOwnGroupOurs(benchmark::State& state) {
  Search(state, AllKeys().oids, [](std::string& oid, std::size_t i) {
    return korvan::FindOIDInfo(1, oid.data(), AllKeys().groups[i]);
  });
}
void OidHitPlain(benchmark::State& state) {
  Search(state, AllKeys().oids,
         [](std::string& oid, std::size_t) { return Plain(1, oid.data(), 0); });
}
void OidHitOwnGroupPlain(benchmark::State& state) {
  Search(state, AllKeys().oids, [](std::string& oid, std::size_t i) {
    return Plain(1, oid.data(), AllKeys().groups[i]);
  });
}
const auto& OidsInAbsl() {
  static const auto map =
      MapOf<absl::flat_hash_map<std::string_view, COidData*>>(
          [](const COidData& record) { return record.pszOID; });
  return map;
}
void OidHitAbsl(benchmark::State& state) {
  const auto& map = OidsInAbsl();
  Search(state, AllKeys().oids, [&](std::string& oid, std::size_t) {
    return map.find(std::string_view(oid.c_str()))->second;
  });
}
void OidHitStdMap(benchmark::State& state) {
  static const auto map =
      MapOf<std::unordered_map<std::string_view, COidData*>>(
          [](const COidData& record) { return record.pszOID; });
  Search(state, AllKeys().oids, [](std::string& oid, std::size_t) {
    return map.find(std::string_view(oid.c_str()))->second;
  });
}
void OidHitGperf(benchmark::State& state) {
  Search(state, AllKeys().oids, [](std::string& oid, std::size_t) {
    return FindInGperf(oid.c_str(), std::strlen(oid.c_str()));
  });
}
void OidMissGperf(benchmark::State& state) {
  Search(state, AllKeys().missing_oids, [](std::string& oid, std::size_t) {
    return FindInGperf(oid.c_str(), std::strlen(oid.c_str()));
  });
}
// The one right record, known beforehand, compared.
void OidHitLimit(benchmark::State& state) {
  Search(state, AllKeys().oids, [](std::string& oid, std::size_t i) {
    COidData* const record = Records()[i];
    return std::strcmp(record->pszOID, oid.c_str()) == 0 ? record : nullptr;
  });
}
void OidMissOurs(benchmark::State& state) {
  Search(state, AllKeys().missing_oids, [](std::string& oid, std::size_t) {
    return korvan::FindOIDInfo(1, oid.data(), 0);
  });
}
void OidMissPlain(benchmark::State& state) {
  Search(state, AllKeys().missing_oids,
         [](std::string& oid, std::size_t) { return Plain(1, oid.data(), 0); });
}
void OidMissAbsl(benchmark::State& state) {
  const auto& map = OidsInAbsl();
  Search(state, AllKeys().missing_oids, [&](std::string& oid, std::size_t) {
    return map.find(std::string_view(oid.c_str())) == map.end();
  });
}
void OidMissLimit(benchmark::State& state) {
  Search(state, AllKeys().missing_oids, [](std::string& oid, std::size_t i) {
    return std::strcmp(Records()[i]->pszOID, oid.c_str()) == 0;
  });
}
void OidKnownToOpensslOurs(benchmark::State& state) {
  Search(state, AllKeys().openssl_oids, [](std::string& oid, std::size_t) {
    return korvan::FindOIDInfo(1, oid.data(), 0);
  });
}
void OidKnownToOpensslOpenssl(benchmark::State& state) {
  Search(state, AllKeys().openssl_oids, [](std::string& oid, std::size_t) {
    return OBJ_txt2nid(oid.c_str());
  });
}

void OidKnownToOpensslGnutls(benchmark::State& state) {
  Search(state, AllKeys().openssl_oids, [](std::string& oid, std::size_t) {
    return gnutls_x509_dn_oid_name(oid.c_str(), 0);
  });
}
void OidKnownToOpensslBotan(benchmark::State& state) {
  std::vector<Botan::OID> oids;
  for (const std::string& oid : AllKeys().openssl_oids) oids.emplace_back(oid);
  Search(state, oids, [](const Botan::OID& oid, std::size_t) {
    return Botan::OIDS::oid2str_or_empty(oid);
  });
}

// By name.

// Names that Botan knows: it has its own.
void NameHitBotan(benchmark::State& state) {
  const std::vector<std::string> names = {"RSA",          "DSA",
                                          "DH",           "ElGamal",
                                          "ECDSA",        "GOST-34.10",
                                          "SHA-160",      "SHA-256",
                                          "MD5",          "Tiger(24,3)",
                                          "X520.Country", "X520.CommonName",
                                          "X520.Title",   "X509v3.CRLNumber",
                                          "PKIX.OCSP",    "PKIX.ServerAuth"};
  Search(state, names, [](const std::string& name, std::size_t) {
    return Botan::OIDS::str2oid_or_empty(name);
  });
}

struct FoldedHash {
  std::size_t operator()(const std::wstring& name) const {
    std::size_t hash = 14695981039346656037u;
    for (const wchar_t c : name) {
      hash =
          (hash ^ std::towlower(static_cast<std::wint_t>(c))) * 1099511628211u;
    }
    return hash;
  }
};
struct FoldedEqual {
  bool operator()(const std::wstring& a, const std::wstring& b) const {
    return wcscasecmp(a.c_str(), b.c_str()) == 0;
  }
};
const auto& NamesInMap() {
  static const auto map = MapOf<
      std::unordered_map<std::wstring, COidData*, FoldedHash, FoldedEqual>>(
      [](const COidData& record) {
        return record.pwszName == nullptr ? L"(no name)" : record.pwszName;
      });
  return map;
}

void FindNames(benchmark::State& state, std::vector<std::wstring>& names) {
  Search(state, names, [](std::wstring& name, std::size_t) {
    return korvan::FindOIDInfo(2, name.data(), 0);
  });
}
void FindNamesPlainly(benchmark::State& state,
                      std::vector<std::wstring>& names) {
  Search(state, names, [](std::wstring& name, std::size_t) {
    return Plain(2, name.data(), 0);
  });
}
void FindNamesInMap(benchmark::State& state, std::vector<std::wstring>& names) {
  const auto& map = NamesInMap();
  Search(state, names, [&](std::wstring& name, std::size_t) {
    const auto found = map.find(name);
    return found == map.end() ? nullptr : found->second;
  });
}
// One comparison with a copy of the name as it is stored: the C library knows
// equal pointers without looking.
void CompareNames(benchmark::State& state, std::vector<std::wstring>& names) {
  const std::vector<std::wstring> stored = AllKeys().names;
  Search(state, names, [&](std::wstring& name, std::size_t i) {
    return wcscasecmp(stored[i].c_str(), name.c_str());
  });
}
void NameHitOurs(benchmark::State& s) { FindNames(s, AllKeys().names); }
void NameHitPlain(benchmark::State& s) { FindNamesPlainly(s, AllKeys().names); }
void NameHitFoldedMap(benchmark::State& s) {
  FindNamesInMap(s, AllKeys().names);
}
void NameHitLimit(benchmark::State& s) { CompareNames(s, AllKeys().names); }
void NameHitAnyCaseOurs(benchmark::State& s) {
  FindNames(s, AllKeys().cased_names);
}
void NameHitAnyCasePlain(benchmark::State& s) {
  FindNamesPlainly(s, AllKeys().cased_names);
}
void NameHitAnyCaseFoldedMap(benchmark::State& s) {
  FindNamesInMap(s, AllKeys().cased_names);
}
void NameHitAnyCaseLimit(benchmark::State& s) {
  CompareNames(s, AllKeys().cased_names);
}
void NameMissOurs(benchmark::State& s) {
  FindNames(s, AllKeys().missing_names);
}
void NameMissPlain(benchmark::State& s) {
  FindNamesPlainly(s, AllKeys().missing_names);
}
void NameMissFoldedMap(benchmark::State& s) {
  FindNamesInMap(s, AllKeys().missing_names);
}
void NameMissLimit(benchmark::State& s) {
  CompareNames(s, AllKeys().missing_names);
}

// By ALG_ID and by pair.

void AlgidOurs(benchmark::State& state) {
  Search(state, AllKeys().algids, [](unsigned int& algid, std::size_t) {
    return korvan::FindOIDInfo(3, &algid, 0);
  });
}
void AlgidPlain(benchmark::State& state) {
  Search(state, AllKeys().algids,
         [](unsigned int& algid, std::size_t) { return Plain(3, &algid, 0); });
}
void AlgidStdMap(benchmark::State& state) {
  static const auto map = MapOf<std::unordered_map<unsigned int, COidData*>>(
      [](const COidData& record) { return record.Algid; });
  Search(state, AllKeys().algids, [](unsigned int& algid, std::size_t) {
    return map.find(algid)->second;
  });
}
void PairOurs(benchmark::State& state) {
  Search(state, AllKeys().pairs, [](Pair& pair, std::size_t) {
    return korvan::FindOIDInfo(4, &pair, 0);
  });
}
void PairPlain(benchmark::State& state) {
  Search(state, AllKeys().pairs,
         [](Pair& pair, std::size_t) { return Plain(4, &pair, 0); });
}
void PairStdMap(benchmark::State& state) {
  static const auto map =
      MapOf<std::unordered_map<Pair, COidData*, HashPair>>(PairOf);
  Search(state, AllKeys().pairs,
         [](Pair& pair, std::size_t) { return map.find(pair)->second; });
}
// NSS's search for the algorithm that a kind of key and a hash make.
void PairNss(benchmark::State& state) {
  struct KeyAndHash {
    KeyType key;
    SECOidTag hash;
  };
  const std::vector<KeyAndHash> pairs = {
      {rsaKey, SEC_OID_MD2},  {rsaKey, SEC_OID_MD5},    {rsaKey, SEC_OID_SHA1},
      {dsaKey, SEC_OID_SHA1}, {rsaKey, SEC_OID_SHA256}, {ecKey, SEC_OID_SHA256},
      {ecKey, SEC_OID_SHA1},  {dsaKey, SEC_OID_SHA256}};
  Search(state, pairs, [](KeyAndHash pair, std::size_t) {
    return SEC_GetSignatureAlgorithmOidTag(pair.key, pair.hash);
  });
}
void PairGnutls(benchmark::State& state) {
  struct KeyAndHash {
    gnutls_pk_algorithm_t key;
    gnutls_digest_algorithm_t hash;
  };
  const std::vector<KeyAndHash> pairs = {
      {GNUTLS_PK_RSA, GNUTLS_DIG_MD2},    {GNUTLS_PK_RSA, GNUTLS_DIG_MD5},
      {GNUTLS_PK_RSA, GNUTLS_DIG_SHA1},   {GNUTLS_PK_DSA, GNUTLS_DIG_SHA1},
      {GNUTLS_PK_RSA, GNUTLS_DIG_SHA256}, {GNUTLS_PK_EC, GNUTLS_DIG_SHA256}};
  Search(state, pairs, [](KeyAndHash pair, std::size_t) {
    return gnutls_pk_to_sign(pair.key, pair.hash);
  });
}
// The one right record, known beforehand, compared.
void AlgidLimit(benchmark::State& state) {
  Search(state, AllKeys().algids, [](unsigned int& algid, std::size_t i) {
    COidData* const record = Records()[i];
    return record->Algid == algid ? record : nullptr;
  });
}
void PairLimit(benchmark::State& state) {
  Search(state, AllKeys().pairs, [](Pair& pair, std::size_t i) {
    COidData* const record = Records()[i];
    return PairOf(*record) == pair ? record : nullptr;
  });
}

// Texts by number.

void TextOurs(benchmark::State& state) {
  char text[64];
  Search(state, AllKeys().text_numbers, [&](unsigned int number, std::size_t) {
    const int length = LoadString_korvan(nullptr, number, text, 63);
    benchmark::ClobberMemory();
    return length;
  });
}
void TextStdMap(benchmark::State& state) {
  static const auto map = [] {
    std::unordered_map<unsigned int, std::string> texts;
    for (const unsigned int number : AllKeys().text_numbers) {
      char text[64] = {};
      LoadString_korvan(nullptr, number, text, 63);
      texts[number] = text;
    }
    return texts;
  }();
  char text[64];
  Search(state, AllKeys().text_numbers, [&](unsigned int number, std::size_t) {
    const std::string& found = map.find(number)->second;
    const std::size_t length = found.copy(text, 63);
    benchmark::ClobberMemory();
    return length;
  });
}
// The copy alone.
void TextLimit(benchmark::State& state) {
  std::vector<std::string> texts;
  for (const unsigned int number : AllKeys().text_numbers) {
    char text[64] = {};
    LoadString_korvan(nullptr, number, text, 63);
    texts.push_back(text);
  }
  char text[64];
  Search(state, texts, [&](const std::string& found, std::size_t) {
    const std::size_t length = found.copy(text, 63);
    benchmark::ClobberMemory();
    return length;
  });
}

// Operation and competitor: the names that the report reads.
struct Contest {
  const char* name;
  void (*run)(benchmark::State&);
};

constexpr Contest kContests[] = {
    {"find_by_oid_hit/ours", OidHitOurs},
    {"find_by_oid_hit/plain", OidHitPlain},
    {"find_by_oid_hit/absl", OidHitAbsl},
    {"find_by_oid_hit/std_hash_map", OidHitStdMap},
    {"find_by_oid_hit/gperf", OidHitGperf},
    {"find_by_oid_hit/limit", OidHitLimit},
    {"find_by_oid_own_group/ours", OidHitOwnGroupOurs},
    {"find_by_oid_own_group/plain", OidHitOwnGroupPlain},
    {"find_by_oid_own_group/absl", OidHitAbsl},
    {"find_by_oid_own_group/limit", OidHitLimit},
    {"find_by_oid_miss/ours", OidMissOurs},
    {"find_by_oid_miss/plain", OidMissPlain},
    {"find_by_oid_miss/absl", OidMissAbsl},
    {"find_by_oid_miss/gperf", OidMissGperf},
    {"find_by_oid_miss/limit", OidMissLimit},
    {"find_by_oid_openssl_knows/ours", OidKnownToOpensslOurs},
    {"find_by_oid_openssl_knows/openssl", OidKnownToOpensslOpenssl},
    {"find_by_oid_openssl_knows/gnutls", OidKnownToOpensslGnutls},
    {"find_by_oid_openssl_knows/botan", OidKnownToOpensslBotan},
    {"find_by_name_stored_case/ours", NameHitOurs},
    {"find_by_name_stored_case/plain", NameHitPlain},
    {"find_by_name_stored_case/folded_map", NameHitFoldedMap},
    {"find_by_name_stored_case/botan", NameHitBotan},
    {"find_by_name_stored_case/limit", NameHitLimit},
    {"find_by_name_any_case/ours", NameHitAnyCaseOurs},
    {"find_by_name_any_case/plain", NameHitAnyCasePlain},
    {"find_by_name_any_case/folded_map", NameHitAnyCaseFoldedMap},
    {"find_by_name_any_case/limit", NameHitAnyCaseLimit},
    {"find_by_name_miss/ours", NameMissOurs},
    {"find_by_name_miss/plain", NameMissPlain},
    {"find_by_name_miss/folded_map", NameMissFoldedMap},
    {"find_by_name_miss/limit", NameMissLimit},
    {"find_by_algid/ours", AlgidOurs},
    {"find_by_algid/plain", AlgidPlain},
    {"find_by_algid/std_hash_map", AlgidStdMap},
    {"find_by_algid/limit", AlgidLimit},
    {"find_by_pair/ours", PairOurs},
    {"find_by_pair/plain", PairPlain},
    {"find_by_pair/std_hash_map", PairStdMap},
    {"find_by_pair/nss", PairNss},
    {"find_by_pair/gnutls", PairGnutls},
    {"find_by_pair/limit", PairLimit},
    {"text_by_number/ours", TextOurs},
    {"text_by_number/std_hash_map", TextStdMap},
    {"text_by_number/limit", TextLimit},
};

[[maybe_unused]] const bool registered = [] {
  for (const Contest& contest : kContests) {
    benchmark::RegisterBenchmark(contest.name, contest.run);
  }
  return true;
}();

}  // namespace
