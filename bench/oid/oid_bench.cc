// Lookups in the OID registry, beside the plain linear search, hash maps with
// the same content, and OpenSSL's own registry.

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <korvan/korvan.h>
#include <openssl/objects.h>

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

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

// By name.

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

BENCHMARK(OidHitOurs);
BENCHMARK(OidHitPlain);
BENCHMARK(OidHitAbsl);
BENCHMARK(OidHitLimit);
BENCHMARK(OidHitOwnGroupOurs);
BENCHMARK(OidHitOwnGroupPlain);
BENCHMARK(OidMissOurs);
BENCHMARK(OidMissPlain);
BENCHMARK(OidMissAbsl);
BENCHMARK(OidMissLimit);
BENCHMARK(OidKnownToOpensslOurs);
BENCHMARK(OidKnownToOpensslOpenssl);
BENCHMARK(NameHitOurs);
BENCHMARK(NameHitPlain);
BENCHMARK(NameHitFoldedMap);
BENCHMARK(NameHitLimit);
BENCHMARK(NameHitAnyCaseOurs);
BENCHMARK(NameHitAnyCasePlain);
BENCHMARK(NameHitAnyCaseFoldedMap);
BENCHMARK(NameHitAnyCaseLimit);
BENCHMARK(NameMissOurs);
BENCHMARK(NameMissPlain);
BENCHMARK(NameMissFoldedMap);
BENCHMARK(NameMissLimit);
BENCHMARK(AlgidOurs);
BENCHMARK(AlgidPlain);
BENCHMARK(AlgidStdMap);
BENCHMARK(PairOurs);
BENCHMARK(PairPlain);
BENCHMARK(PairStdMap);
BENCHMARK(TextOurs);
BENCHMARK(TextStdMap);

}  // namespace
