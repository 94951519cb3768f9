// Lookups in the OID registry and of texts, beside the linear search, hash
// tables with the same content, and the registries of other libraries with
// theirs.
//
// A benchmark is named "row/competitor"; bench/rows.py lists the rows.

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <botan/oids.h>
#include <cryptohi.h>
#include <gnutls/gnutls.h>
#include <gnutls/x509.h>
#include <korvan/korvan.h>
#include <openssl/objects.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// The perfect hash table that gperf makes of the registry's OIDs.
const char* FindInGperf(const char* oid, std::size_t length);

namespace {

using korvan::COidData;
using korvan::FindOIDInfo;

// All records, their names resolved.
std::vector<COidData*> AllRecords() {
  // No record has this name, so all names are loaded.
  wchar_t nobody[] = L"\n";
  FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, nobody, 0);
  std::vector<COidData*> records;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      records.push_back(&table.rgRecords[i]);
    }
  }
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
  Pair pair = {record.Algid, 0};
  if (record.ExtraInfo.cbData >= sizeof pair.second) {
    std::memcpy(&pair.second, record.ExtraInfo.pbData, sizeof pair.second);
  }
  return pair;
}

// No text is longer.
constexpr int kMaxText = 64;
using Text = std::array<char, kMaxText>;

// The keys that searches are asked for.
struct Keys {
  std::vector<std::string> oids, missing_oids, openssl_oids;
  std::vector<std::wstring> names, names_in_any_case, missing_names;
  std::vector<unsigned int> groups, algids, text_numbers;
  std::vector<Pair> pairs;
  // The texts with these numbers, padded with zeros.
  std::vector<Text> texts;
};

// An OID that the registry does not have, and that differs as late as may be.
std::string MissingOid(std::string oid) {
  char& digit = oid.back();
  digit = digit == '9' ? '8' : static_cast<char>(digit + 1);
  if (FindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid.data(), 0) != nullptr) {
    oid += ".77";
  }
  return oid;
}

std::wstring InAnyCase(std::wstring name, std::mt19937& random) {
  for (wchar_t& character : name) {
    const auto unit = static_cast<std::wint_t>(character);
    character = static_cast<wchar_t>(random() % 2 == 0 ? std::towupper(unit)
                                                       : std::towlower(unit));
  }
  return name;
}

Keys MakeKeys() {
  Keys keys;
  std::mt19937 random(2);
  for (const COidData* record : AllRecords()) {
    keys.oids.push_back(record->pszOID);
    keys.groups.push_back(record->dwGroupId);
    keys.missing_oids.push_back(MissingOid(record->pszOID));
    if (OBJ_txt2nid(record->pszOID) != NID_undef) {
      keys.openssl_oids.push_back(record->pszOID);
    }
    keys.algids.push_back(record->Algid);
    keys.pairs.push_back(PairOf(*record));
    if (record->pwszName == nullptr || record->pwszName[0] == L'\0') {
      continue;
    }
    keys.names.push_back(record->pwszName);
    keys.names_in_any_case.push_back(InAnyCase(record->pwszName, random));
    keys.missing_names.push_back(record->pwszName);
    keys.missing_names.back().back() = L'~';
  }
  for (unsigned int number = 0; number < 9000; ++number) {
    Text text;
    if (LoadString_korvan(nullptr, number, text.data(), kMaxText) > 0) {
      keys.text_numbers.push_back(number);
    }
  }
  for (const unsigned int number : keys.text_numbers) {
    LoadString_korvan(nullptr, number, keys.texts.emplace_back().data(),
                      kMaxText);
  }
  return keys;
}

Keys& AllKeys() {
  static Keys keys = MakeKeys();
  return keys;
}

// Places among `size` keys in random order, more of them than a branch
// predictor can learn: of a few hundred searches it learns every branch.
std::vector<std::uint16_t> RandomPlaces(std::size_t size) {
  std::mt19937 random(3);
  std::vector<std::uint16_t> places(8192);
  for (std::uint16_t& place : places) {
    place = static_cast<std::uint16_t>(random() % size);
  }
  return places;
}

// Adds a benchmark that calls `find` with one key after the other and with the
// key's place among them. One iteration is one search.
template <class AnyKeys, class Find>
void Add(const char* row, const char* competitor, AnyKeys& keys, Find find) {
  const auto run = [&keys, find](benchmark::State& state) {
    const std::vector<std::uint16_t> places = RandomPlaces(keys.size());
    auto place = places.begin();
    for (auto _ : state) {
      benchmark::DoNotOptimize(find(keys[*place], *place));
      if (++place == places.end()) {
        place = places.begin();
      }
    }
  };
  benchmark::RegisterBenchmark((std::string(row) + "/" + competitor).c_str(),
                               run);
}

bool IsSame(const Pair& left, const Pair& right) { return left == right; }
bool IsSame(unsigned int left, unsigned int right) { return left == right; }
template <class Char>
bool IsSame(const std::basic_string<Char>& left,
            const std::basic_string<Char>& right) {
  // With the zero behind it, which ends the key that a search is given.
  return std::memcmp(left.c_str(), right.c_str(),
                     (left.size() + 1) * sizeof(Char)) == 0;
}

// Compares each key once, byte for byte, with what is known to be right.
template <class AnyKeys>
void AddComparison(const char* row, const char* competitor, AnyKeys& keys,
                   const AnyKeys& right) {
  Add(row, competitor, keys, [right](const auto& key, std::size_t i) {
    return IsSame(key, right[i]);
  });
}

// A key that is in the registry has to be read, and compared with the record's.
template <class AnyKeys>
void AddFloor(const char* row, AnyKeys& keys) {
  AddComparison(row, "floor", keys, keys);
}

template <class AnyKeys>
void AddOurs(const char* row, AnyKeys& keys, DWORD key_type) {
  Add(row, "ours", keys, [key_type](auto& key, std::size_t) {
    if constexpr (requires { key.data(); }) {
      return FindOIDInfo(key_type, key.data(), 0);
    } else {
      return FindOIDInfo(key_type, &key, 0);
    }
  });
}

// The first record that matches, in one group or in all.
template <class Matches>
COidData* FindFirst(DWORD group, Matches matches) {
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    if (group != 0 && table.dwGroupId != group) {
      continue;
    }
    for (int i = 0; i < table.cRecords; ++i) {
      if (matches(table.rgRecords[i])) {
        return &table.rgRecords[i];
      }
    }
  }
  return nullptr;
}

COidData* FindFirstOid(const std::string& oid, DWORD group) {
  return FindFirst(group, [&](const COidData& record) {
    return std::strcmp(record.pszOID, oid.c_str()) == 0;
  });
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

template <class Map, class AnyKeys>
void AddMap(const char* row, const char* competitor, const Map& map,
            AnyKeys& keys) {
  Add(row, competitor, keys, [&map](const auto& key, std::size_t) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : found->second;
  });
}

void AddOids() {
  Keys& keys = AllKeys();
  const auto oid_of = [](const COidData& record) { return record.pszOID; };
  static const auto in_std =
      MapOf<std::unordered_map<std::string_view, COidData*>>(oid_of);
  static const auto in_absl =
      MapOf<absl::flat_hash_map<std::string_view, COidData*>>(oid_of);
  const auto add_all = [&](const char* row, std::vector<std::string>& oids) {
    AddOurs(row, oids, CRYPT_OID_INFO_OID_KEY);
    Add(row, "linear search", oids, [](const std::string& oid, std::size_t) {
      return FindFirstOid(oid, 0);
    });
    // A caller has a C string, whose length is not known.
    const auto add_map = [&](const char* competitor, const auto& map) {
      Add(row, competitor, oids, [&map](const std::string& oid, std::size_t) {
        const auto found = map.find(std::string_view(oid.c_str()));
        return found == map.end() ? nullptr : found->second;
      });
    };
    add_map("std hash map", in_std);
    add_map("Abseil", in_absl);
    Add(row, "gperf", oids, [](const std::string& oid, std::size_t) {
      return FindInGperf(oid.c_str(), std::strlen(oid.c_str()));
    });
  };

  add_all("find_oid", keys.oids);
  AddFloor("find_oid", keys.oids);
  add_all("find_oid_missing", keys.missing_oids);
  // A key can be told to be missing before all of it is read.
  std::vector<std::string> nearly_right = keys.oids;
  for (std::size_t i = 0; i < nearly_right.size(); ++i) {
    nearly_right[i].resize(keys.missing_oids[i].size());
  }
  AddComparison("find_oid_missing", "yardstick", keys.missing_oids,
                nearly_right);

  Add("find_oid_in_group", "ours", keys.oids,
      [&keys](std::string& oid, std::size_t i) {
        return FindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid.data(), keys.groups[i]);
      });
  Add("find_oid_in_group", "linear search", keys.oids,
      [&keys](const std::string& oid, std::size_t i) {
        return FindFirstOid(oid, keys.groups[i]);
      });
  AddFloor("find_oid_in_group", keys.oids);

  std::vector<std::string>& oids = keys.openssl_oids;
  AddOurs("find_oid_openssl", oids, CRYPT_OID_INFO_OID_KEY);
  Add("find_oid_openssl", "OpenSSL", oids,
      [](const std::string& oid, std::size_t) {
        return OBJ_txt2nid(oid.c_str());
      });
  Add("find_oid_openssl", "GnuTLS", oids,
      [](const std::string& oid, std::size_t) {
        return gnutls_x509_dn_oid_name(oid.c_str(), 0);
      });
  static const std::vector<Botan::OID> botan_oids(oids.begin(), oids.end());
  Add("find_oid_openssl", "Botan", botan_oids,
      [](const Botan::OID& oid, std::size_t) {
        return Botan::OIDS::oid2str_or_empty(oid);
      });
  AddFloor("find_oid_openssl", oids);
}

struct FoldedHash {
  std::size_t operator()(const std::wstring& name) const {
    std::size_t hash = 14695981039346656037u;
    for (const wchar_t character : name) {
      const auto unit = static_cast<std::wint_t>(character);
      hash = (hash ^ std::towlower(unit)) * 1099511628211u;
    }
    return hash;
  }
};

struct FoldedEqual {
  bool operator()(const std::wstring& left, const std::wstring& right) const {
    return wcscasecmp(left.c_str(), right.c_str()) == 0;
  }
};

void AddNames() {
  Keys& keys = AllKeys();
  static const auto in_std = MapOf<
      std::unordered_map<std::wstring, COidData*, FoldedHash, FoldedEqual>>(
      [](const COidData& record) {
        return record.pwszName == nullptr ? L"(no name)" : record.pwszName;
      });
  const auto add_all = [&](const char* row, std::vector<std::wstring>& names) {
    AddOurs(row, names, CRYPT_OID_INFO_NAME_KEY);
    Add(row, "linear search", names, [](const std::wstring& name, std::size_t) {
      return FindFirst(0, [&](const COidData& record) {
        return record.pwszName != nullptr &&
               wcscasecmp(record.pwszName, name.c_str()) == 0;
      });
    });
    AddMap(row, "std hash map", in_std, names);
    // By a copy: the C library knows equal pointers without looking.
    Add(row, "yardstick", names,
        [stored = keys.names](const std::wstring& name, std::size_t i) {
          return wcscasecmp(stored[i].c_str(), name.c_str());
        });
  };
  add_all("find_name", keys.names);
  AddFloor("find_name", keys.names);
  add_all("find_name_any_case", keys.names_in_any_case);
  AddFloor("find_name_any_case", keys.names_in_any_case);
  add_all("find_name_missing", keys.missing_names);

  // Names that Botan knows: it has its own.
  static const std::vector<std::string> botan_names = {
      "RSA",          "DSA",
      "DH",           "ElGamal",
      "ECDSA",        "GOST-34.10",
      "SHA-160",      "SHA-256",
      "MD5",          "Tiger(24,3)",
      "X520.Country", "X520.CommonName",
      "X520.Title",   "X509v3.CRLNumber",
      "PKIX.OCSP",    "PKIX.ServerAuth"};
  Add("find_name", "Botan", botan_names,
      [](const std::string& name, std::size_t) {
        return Botan::OIDS::str2oid_or_empty(name);
      });
}

void AddAlgids() {
  Keys& keys = AllKeys();
  static const auto in_std = MapOf<std::unordered_map<unsigned int, COidData*>>(
      [](const COidData& record) { return record.Algid; });
  AddOurs("find_algid", keys.algids, CRYPT_OID_INFO_ALGID_KEY);
  Add("find_algid", "linear search", keys.algids,
      [](unsigned int algid, std::size_t) {
        return FindFirst(
            0, [&](const COidData& record) { return record.Algid == algid; });
      });
  AddMap("find_algid", "std hash map", in_std, keys.algids);
  AddFloor("find_algid", keys.algids);
}

void AddPairs() {
  Keys& keys = AllKeys();
  static const auto in_std =
      MapOf<std::unordered_map<Pair, COidData*, HashPair>>(PairOf);
  AddOurs("find_pair", keys.pairs, CRYPT_OID_INFO_SIGN_KEY);
  Add("find_pair", "linear search", keys.pairs,
      [](const Pair& pair, std::size_t) {
        return FindFirst(
            0, [&](const COidData& record) { return PairOf(record) == pair; });
      });
  AddMap("find_pair", "std hash map", in_std, keys.pairs);
  AddFloor("find_pair", keys.pairs);

  // Other libraries search for the algorithm that a kind of key and a hash
  // make.
  struct InNss {
    KeyType key;
    SECOidTag hash;
  };
  static const std::vector<InNss> in_nss = {
      {rsaKey, SEC_OID_MD2},  {rsaKey, SEC_OID_MD5},    {rsaKey, SEC_OID_SHA1},
      {dsaKey, SEC_OID_SHA1}, {rsaKey, SEC_OID_SHA256}, {ecKey, SEC_OID_SHA256},
      {ecKey, SEC_OID_SHA1},  {dsaKey, SEC_OID_SHA256}};
  Add("find_pair", "NSS", in_nss, [](InNss pair, std::size_t) {
    return SEC_GetSignatureAlgorithmOidTag(pair.key, pair.hash);
  });
  struct InGnutls {
    gnutls_pk_algorithm_t key;
    gnutls_digest_algorithm_t hash;
  };
  static const std::vector<InGnutls> in_gnutls = {
      {GNUTLS_PK_RSA, GNUTLS_DIG_MD2},    {GNUTLS_PK_RSA, GNUTLS_DIG_MD5},
      {GNUTLS_PK_RSA, GNUTLS_DIG_SHA1},   {GNUTLS_PK_DSA, GNUTLS_DIG_SHA1},
      {GNUTLS_PK_RSA, GNUTLS_DIG_SHA256}, {GNUTLS_PK_EC, GNUTLS_DIG_SHA256}};
  Add("find_pair", "GnuTLS", in_gnutls, [](InGnutls pair, std::size_t) {
    return gnutls_pk_to_sign(pair.key, pair.hash);
  });
}

// Calls `copy` with a buffer; the copied text counts as read.
template <class AnyKeys, class Copy>
void AddText(const char* competitor, AnyKeys& keys, Copy copy) {
  Add("copy_text", competitor, keys, [copy](const auto& key, std::size_t) {
    Text buffer;
    const auto length = copy(key, buffer);
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
    return length;
  });
}

void AddTexts() {
  Keys& keys = AllKeys();
  static const auto in_std = [&] {
    std::unordered_map<unsigned int, std::string> texts;
    for (std::size_t i = 0; i < keys.texts.size(); ++i) {
      texts[keys.text_numbers[i]] = keys.texts[i].data();
    }
    return texts;
  }();
  AddText("ours", keys.text_numbers, [](unsigned int number, Text& buffer) {
    return LoadString_korvan(nullptr, number, buffer.data(), kMaxText);
  });
  AddText("std hash map", keys.text_numbers,
          [](unsigned int number, Text& buffer) {
            return in_std.find(number)->second.copy(buffer.data(), kMaxText);
          });
  // As many bytes as the longest text has, which takes no call and no loop.
  AddText("floor", keys.texts, [](const Text& text, Text& buffer) {
    buffer = text;
    return kMaxText;
  });
}

}  // namespace

int main(int argc, char** argv) {
  AddOids();
  AddNames();
  AddAlgids();
  AddPairs();
  AddTexts();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
}
