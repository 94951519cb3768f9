// Searches that ask the library of each record whether it has the key, and what
// keys look like.
#include "tools/oid_search.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <new>
#include <numeric>
#include <string_view>

#include "tools/program.h"
#include "tools/text.h"

namespace korvan::tools {

namespace {

constexpr std::string_view kDigits = "0123456789";

bool LooksLikeOid(const std::string& text) {
  return text.find_first_not_of("0123456789.") == text.npos &&
         text.find('.') != text.npos && text.front() != '.' &&
         text.back() != '.';
}

std::optional<std::pair<DWORD, DWORD>> PairOfNumbers(const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma == text.npos) {
    return std::nullopt;
  }
  const auto first = Number(text.substr(0, comma));
  const auto second = Number(text.substr(comma + 1));
  return first && second ? std::optional(std::pair(*first, *second))
                         : std::nullopt;
}

// The C locale for the calling thread, as long as this lives.
class PlainLocale {
 public:
  PlainLocale() : plain_(newlocale(LC_ALL_MASK, "C", nullptr)) {
    if (plain_ == locale_t{}) {
      throw std::bad_alloc();
    }
    before_ = uselocale(plain_);
  }
  PlainLocale(const PlainLocale&) = delete;
  PlainLocale& operator=(const PlainLocale&) = delete;
  ~PlainLocale() {
    uselocale(before_);
    freelocale(plain_);
  }

 private:
  locale_t plain_;
  locale_t before_{};
};

wchar_t Folded(wchar_t character) {
  return static_cast<wchar_t>(
      std::towlower(static_cast<std::wint_t>(character)));
}

// How many characters have to be added, removed or replaced to make one text
// of the other, in any case.
std::size_t Distance(const std::wstring& left, const std::wstring& right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t replaced =
          diagonal + (Folded(left[i]) != Folded(right[j]) ? 1 : 0);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

void* Key::Data() {
  switch (type) {
    case CRYPT_OID_INFO_OID_KEY:
      return text.data();
    case CRYPT_OID_INFO_NAME_KEY:
      return name.data();
    default:
      return algids;
  }
}

Key KeyOfType(DWORD type, const std::string& text) {
  Key key{type, text, {}, {}};
  const auto fail = [&](const std::string& what) {
    throw Failure(Status::kUsage, "'" + text + "' is " + what);
  };
  if (type == CRYPT_OID_INFO_NAME_KEY) {
    const std::optional<std::wstring> name = FromLocale(text);
    if (!name) {
      fail("no text in the encoding of this locale");
    }
    key.name = *name;
  } else if (type == CRYPT_OID_INFO_ALGID_KEY) {
    const std::optional<DWORD> number = Number(text);
    if (!number) {
      fail("no ALG_ID");
    }
    key.algids[0] = *number;
  } else if (type == CRYPT_OID_INFO_SIGN_KEY) {
    const auto pair = PairOfNumbers(text);
    if (!pair) {
      fail("no pair of ALG_IDs");
    }
    key.algids[0] = pair->first;
    key.algids[1] = pair->second;
  }
  return key;
}

Key KeyByForm(const std::string& text) {
  return KeyOfType(LooksLikeOid(text)    ? CRYPT_OID_INFO_OID_KEY
                   : Number(text)        ? CRYPT_OID_INFO_ALGID_KEY
                   : PairOfNumbers(text) ? CRYPT_OID_INFO_SIGN_KEY
                                         : CRYPT_OID_INFO_NAME_KEY,
                   text);
}

std::optional<DWORD> Number(const std::string& text) {
  // strtoul takes blanks and signs, too.
  if (text.empty() || kDigits.find(text[0]) == kDigits.npos) {
    return std::nullopt;
  }
  const bool is_hex = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
  char* end = nullptr;
  errno = 0;
  const unsigned long value =
      std::strtoul(text.c_str(), &end, is_hex ? 16 : 10);
  if (*end != '\0' || errno != 0 || value > 0xFFFFFFFF) {
    return std::nullopt;
  }
  return static_cast<DWORD>(value);
}

Records RecordsOf(DWORD group) {
  // A name that nobody has makes the search load them all.
  wchar_t nobody[] = L"\n";
  FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, nobody, 0);
  group &= ~CRYPT_OID_DISABLE_SEARCH_DS_FLAG;
  Records records;
  for (const OID_TABLE_INFO& table : oid_registry) {
    if (group == 0 || group == table.dwGroupId) {
      for (int i = 0; i < table.cRecords; ++i) {
        records.push_back(&table.rgRecords[i]);
      }
    }
  }
  return records;
}

Records Matches(Key& key, DWORD group) {
  Records records = RecordsOf(group);
  std::erase_if(records, [&](COidData* record) {
    return !MatchOidInfo(*record, key.type, key.Data());
  });
  return records;
}

std::vector<std::wstring> HiddenNames(Key& key, DWORD group) {
  std::vector<std::wstring> hidden;
  if (key.type != CRYPT_OID_INFO_NAME_KEY) {
    return hidden;
  }
  const Records shown = Matches(key, group);
  const PlainLocale plain;
  for (const COidData* const record : Matches(key, group)) {
    if (std::ranges::find(shown, record) == shown.end() &&
        std::ranges::find(hidden, record->pwszName) == hidden.end()) {
      hidden.emplace_back(record->pwszName);
    }
  }
  return hidden;
}

std::vector<std::wstring> Nearest(const Key& key, DWORD group) {
  constexpr std::size_t kMost = 3;
  const bool is_name = key.type == CRYPT_OID_INFO_NAME_KEY;
  if (!is_name && key.type != CRYPT_OID_INFO_OID_KEY) {
    return {};
  }
  const std::wstring wanted = is_name ? key.name : FromUtf8(key.text);
  std::vector<std::pair<std::size_t, std::wstring>> found;
  for (const COidData* const record : RecordsOf(group)) {
    if (is_name && record->pwszName == nullptr) {
      continue;
    }
    const std::wstring text = is_name ? record->pwszName : Wide(record->pszOID);
    // A third of the characters at most, one of short texts. A difference of
    // lengths is the least distance.
    const std::size_t most =
        std::max<std::size_t>(1, std::min(text.size(), wanted.size()) / 3);
    if (std::max(text.size(), wanted.size()) -
            std::min(text.size(), wanted.size()) >
        most) {
      continue;
    }
    const std::size_t distance = Distance(wanted, text);
    const auto is_same = [&](const auto& other) {
      return Distance(other.second, text) == 0;
    };
    if (distance <= most && std::ranges::none_of(found, is_same)) {
      // Of those equally far, the first stays the first.
      const auto place = std::ranges::upper_bound(
          found, distance, {}, [](const auto& one) { return one.first; });
      found.emplace(place, distance, text);
    }
  }
  std::vector<std::wstring> nearest;
  for (const auto& [distance, text] : found) {
    if (nearest.size() < kMost) {
      nearest.push_back(text);
    }
  }
  return nearest;
}

std::optional<std::wstring> NameOfOid(std::string oid, DWORD group) {
  const COidData* const found =
      FindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid.data(), group);
  return found != nullptr && found->pwszName != nullptr
             ? std::optional<std::wstring>(found->pwszName)
             : std::nullopt;
}

std::optional<std::wstring> NameOfAlgid(ALG_ID algid) {
  const COidData* const found =
      FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algid, 0);
  return found != nullptr && found->pwszName != nullptr
             ? std::optional<std::wstring>(found->pwszName)
             : std::nullopt;
}

std::wstring Wide(const std::string& ascii) {
  return std::wstring(ascii.begin(), ascii.end());
}

std::string Hex(DWORD number) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%04X", number);
  return text;
}

}  // namespace korvan::tools
