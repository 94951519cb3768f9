// Any sequence of lookups, loads of names and cleanups, in the registry and in
// a caller's own records, with the locale and the host's string function
// switched between them, beside the plain registry. The same must be found,
// loaded, asked of the string function, left as the last error and thrown.
#include <dlfcn.h>
#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "oid/expected_rows.h"
#include "oid/find.h"
#include "oid/plain_registry.h"
#include "oid/registry_rows.h"
#include "support/input.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

struct Fault {};

// The string function that this program puts in the place of the library's, as
// a host may. It does one of four things, which the number decides.
struct Host {
  bool is_on = false;
  unsigned int shift = 0;
  std::string text;
  std::vector<unsigned int> asked;

  int Load(unsigned int number, char* buffer, int size) {
    using Function = int (*)(void*, unsigned int, char*, int);
    static const auto librarys = reinterpret_cast<Function>(
        dlsym(RTLD_NEXT, "_Z17LoadString_korvanPvjPci"));
    asked.push_back(number);
    if (!is_on) {
      return librarys(nullptr, number, buffer, size);
    }
    switch ((number + shift) % 4) {
      case 0:
        throw Fault();
      case 1:
        return librarys(nullptr, number, buffer, size);
      case 2:
        return 0;
      default:
        text.copy(buffer, static_cast<std::size_t>(size));
        return -1;  // anything but 0 is success
    }
  }
};
Host host;

// The registry's records as they were before the first lookup.
const PlainRegistry& UnusedRegistry() {
  static const PlainRegistry unused;
  return unused;
}

// Brings a record of the registry back to where it was before its first use: a
// name that is not the row's own takes it out of the index, no name at all puts
// it in.
void Restore(COidData& record, const COidData& unused) {
  constexpr unsigned int kNumberOfNoRow = 1;
  constexpr unsigned int kNumberWithoutText = 4;
  if (record.pwszName == unused.pwszName &&
      record.dwOidFlags == unused.dwOidFlags) {
    return;
  }
  if ((record.dwOidFlags & kNameIsOwned) != 0) {
    delete[] record.pwszName;
  }
  InitOidInfoWorker(
      record, HoldsTextNumber(unused) ? kNumberOfNoRow : kNumberWithoutText);
  delete[] record.pwszName;
  record.pwszName = unused.pwszName;
  record.dwOidFlags = unused.dwOidFlags;
}

// What can be seen of a call.
struct Seen {
  bool thrown = false;
  int found = -1;  // a row, or whether a record matches
  unsigned int error = kUntouchedError;
  std::vector<unsigned int> asked;

  friend bool operator==(const Seen&, const Seen&) = default;
};

template <class Call>
Seen See(Call call) {
  Seen seen;
  host.asked.clear();
  SetLastError(kUntouchedError);
  try {
    seen.found = call();
  } catch (const Fault&) {
    seen.thrown = true;
  }
  seen.error = GetLastError();
  seen.asked = host.asked;
  return seen;
}

class Lookups {
 public:
  explicit Lookups(Input& input)
      : input_(input),
        plain_(UnusedRegistry()),
        own_(input.ConsumeBool() ? own_above_ : own_below_) {
    for (COidData& own : own_) {
      own = AnyRecord();
      first_own_ = plain_.Add(own) - (static_cast<int>(std::size(own_)) - 1);
    }
  }
  Lookups(const Lookups&) = delete;
  Lookups& operator=(const Lookups&) = delete;
  ~Lookups() {
    host = {};
    locale_.Set(0);
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      Restore(*rows_[row], UnusedRegistry().Rows()[row].record);
    }
    for (const COidData& own : own_) {
      if ((own.dwOidFlags & kNameIsOwned) != 0) {
        delete[] own.pwszName;
      }
    }
  }

  void Run() {
    while (input_.remaining_bytes() != 0) {
      Step();
      ExpectSameStates();
    }
    ExpectSameNames();
  }

 private:
  // A key in memory of its own, so that a read beyond it is seen.
  struct KeyBytes {
    std::unique_ptr<unsigned char[]> bytes;
    void* place;
  };

  template <class Element>
  static KeyBytes Copied(const Element* elements, std::size_t count,
                         std::size_t offset = 0) {
    const std::size_t size = count * sizeof(Element);
    auto bytes = std::make_unique<unsigned char[]>(offset + size);
    std::memcpy(bytes.get() + offset, elements, size);
    void* const place = bytes.get() + offset;
    return {std::move(bytes), place};
  }

  const ExpectedRow& AnyRow() {
    return kExpectedRows[input_.ConsumeIntegral<std::uint16_t>() %
                         kExpectedRows.size()];
  }

  std::string AnyOid() {
    std::string oid = AnyRow().oid;
    switch (Below(input_, 6)) {
      case 1:
        oid.resize(Below(input_, oid.size() + 1));
        break;
      case 2:
        oid += input_.ConsumeRandomLengthString(3);
        break;
      case 3:
        oid[Below(input_, oid.size())] =
            static_cast<char>(Below(input_, 255) + 1);
        break;
      case 4:
        return input_.ConsumeRandomLengthString(40);
      default:
        break;
    }
    return oid;
  }

  std::wstring AnyName() {
    constexpr wchar_t kOthers[] = {0x131,      0x130, 0x212A, 0x17F,
                                   0x7FFFFFFF, -1,    0x416,  '@'};
    const wchar_t* const stated = AnyRow().name;
    std::wstring name = stated == nullptr ? L"Quorin CSP" : stated;
    const std::string changes = input_.ConsumeRandomLengthString(4);
    for (std::size_t i = 0; i + 1 < changes.size() && !name.empty(); i += 2) {
      wchar_t& changed =
          name[static_cast<unsigned char>(changes[i]) % name.size()];
      const auto change = static_cast<unsigned char>(changes[i + 1]);
      changed = change < 128 ? static_cast<wchar_t>(changed ^ 0x20)
                             : kOthers[change % std::size(kOthers)];
    }
    switch (Below(input_, 6)) {
      case 1:
        name.resize(Below(input_, name.size() + 1));
        break;
      case 2:
        name += L'x';
        break;
      case 3: {
        const std::string text = input_.ConsumeRandomLengthString(12);
        return std::wstring(text.begin(), text.end());
      }
      default:
        break;
    }
    return name;
  }

  // An ALG_ID of a row, or one that may be of none.
  unsigned int AnyAlgid() {
    return OneIn(input_, 6) ? input_.ConsumeIntegral<std::uint16_t>()
                            : AnyRow().algid;
  }

  KeyBytes AnyKey(unsigned int& type) {
    type = static_cast<unsigned int>(Below(input_, 6));
    switch (type) {
      case CRYPT_OID_INFO_NAME_KEY: {
        const std::wstring name = AnyName();
        return Copied(name.c_str(), name.size() + 1);
      }
      case CRYPT_OID_INFO_ALGID_KEY: {
        const unsigned int algid = AnyAlgid();
        return Copied(&algid, 1, Below(input_, 4));
      }
      case CRYPT_OID_INFO_SIGN_KEY: {
        const ExpectedRow& row = AnyRow();
        unsigned int pair[] = {row.algid, row.SecondAlgid()};
        if (OneIn(input_, 3)) {
          pair[Below(input_, 2)] = AnyAlgid();
        }
        return Copied(pair, std::size(pair), Below(input_, 4));
      }
      default: {
        const std::string oid = AnyOid();
        return Copied(oid.c_str(), oid.size() + 1);
      }
    }
  }

  unsigned int AnyGroup() {
    constexpr unsigned int kGroups[] = {
        0,  1, 2,  3,  4,          5,          6,          7,         8,
        20, 9, 19, 21, 0x80000000, 0x80000001, 0x80000014, 0x40000001};
    return kGroups[Below(input_, std::size(kGroups))];
  }

  COidData AnyRecord() {
    static constexpr wchar_t kOwnName[] = L"Own Name";
    COidData record = {};
    const ExpectedRow& row = AnyRow();
    record.pszOID = OneIn(input_, 4) ? nullptr : row.oid;
    record.Algid = row.algid;
    switch (Below(input_, 4)) {
      case 1:
        record.pwszName = row.name;
        break;
      case 2:
        record.pwszName = kOwnName;
        break;
      case 3:
        record.pwszName =
            reinterpret_cast<LPCWSTR>(std::uintptr_t{AnyTextNumber()});
        break;
      default:
        break;
    }
    const std::size_t words = Below(input_, 3);
    record.ExtraInfo.cbData = static_cast<DWORD>(Below(input_, 5) + words * 2);
    if (words != 0) {
      extra_.push_back(Copied(&record.Algid, 1, 0));
      extra_.back().bytes = std::make_unique<unsigned char[]>(8);
      extra_.back().bytes[0] = static_cast<unsigned char>(words);
      record.ExtraInfo.pbData = extra_.back().bytes.get();
    }
    return record;
  }

  unsigned int AnyTextNumber() {
    return OneIn(input_, 4) ? 1 + input_.ConsumeIntegral<std::uint8_t>()
                            : std::max(AnyRow().text_number, 1U);
  }

  int NumberOf(const COidData* found) const {
    if (found == nullptr) {
      return -1;
    }
    for (std::size_t i = 0; i < std::size(own_); ++i) {
      if (found == &own_[i]) {
        return first_own_ + static_cast<int>(i);
      }
    }
    const auto row = std::ranges::find(rows_, found);
    Expect(row != rows_.end());
    return static_cast<int>(row - rows_.begin());
  }

  template <class Librarys, class Models>
  static void Compare(Librarys librarys, Models models) {
    const Seen seen = See(librarys);
    Expect(seen == See(models));
  }

  void Step() {
    switch (Below(input_, 16)) {
      case 0:
        CleanupOidInfo();
        plain_.Cleanup();
        break;
      case 1: {
        {
          const COidInfoCleanupHelper cleanup;
        }
        plain_.Cleanup();
        break;
      }
      case 2:
        locale_.Set(AnyLocale(input_));
        break;
      case 3:
        host.is_on = input_.ConsumeBool();
        host.shift = static_cast<unsigned int>(Below(input_, 4));
        host.text = input_.ConsumeRandomLengthString(300);
        break;
      case 4:
        LoadName();
        break;
      case 5:
      case 6:
        Match();
        break;
      case 7:
      case 8:
        FindInOwnTable();
        break;
      case 9:
        FindInPartOfTheRegistry();
        break;
      case 10:
        FindInTableOfTheRegistry();
        break;
      default:
        FindInGroup();
        break;
    }
  }

  void FindInGroup() {
    unsigned int type = 0;
    const KeyBytes key = AnyKey(type);
    void* const place = OneIn(input_, 16) ? nullptr : key.place;
    const unsigned int group = AnyGroup();
    const bool is_internal = input_.ConsumeBool();
    Compare(
        [&] {
          return NumberOf(is_internal ? FindOIDInfoInternal(type, place, group)
                                      : FindOIDInfo(type, place, group));
        },
        [&] { return plain_.Find(type, place, group); });
  }

  void FindInTableOfTheRegistry() {
    unsigned int type = 0;
    const KeyBytes key = AnyKey(type);
    void* const place = OneIn(input_, 16) ? nullptr : key.place;
    const std::size_t table = Below(input_, std::size(oid_registry));
    Compare(
        [&] {
          return NumberOf(
              FindOIDInfoInternal(oid_registry[table], type, place));
        },
        [&] {
          return place == nullptr ? -1 : plain_.FindInTable(table, type, place);
        });
  }

  // A caller's table of some of the registry's records.
  void FindInPartOfTheRegistry() {
    unsigned int type = 0;
    const KeyBytes key = AnyKey(type);
    const OID_TABLE_INFO& whole =
        oid_registry[Below(input_, std::size(oid_registry))];
    const std::size_t first =
        Below(input_, static_cast<std::size_t>(whole.cRecords));
    const std::size_t count =
        Below(input_, static_cast<std::size_t>(whole.cRecords) - first + 1);
    const OID_TABLE_INFO part = {whole.dwGroupId, static_cast<int>(count),
                                 whole.rgRecords + first};
    Compare(
        [&] { return NumberOf(FindOIDInfoInternal(part, type, key.place)); },
        [&] {
          return plain_.FindInRows(
              FirstRowOf(whole.dwGroupId) + static_cast<int>(first),
              static_cast<int>(count), type, key.place);
        });
  }

  void FindInOwnTable() {
    unsigned int type = 0;
    const KeyBytes key = AnyKey(type);
    void* const place = OneIn(input_, 16) ? nullptr : key.place;
    const int count = static_cast<int>(Below(input_, std::size(own_) + 2)) - 1;
    const bool has_records = !OneIn(input_, 16);
    const OID_TABLE_INFO own = {3, count, has_records ? own_ : nullptr};
    Compare([&] { return NumberOf(FindOIDInfoInternal(own, type, place)); },
            [&] {
              return place == nullptr || !has_records
                         ? -1
                         : plain_.FindInRows(first_own_, std::max(count, 0),
                                             type, place);
            });
  }

  // A record of the registry or of the caller's.
  std::pair<COidData&, int> AnyOfAll() {
    if (input_.ConsumeBool()) {
      const std::size_t own = Below(input_, std::size(own_));
      return {own_[own], first_own_ + static_cast<int>(own)};
    }
    const std::size_t row =
        input_.ConsumeIntegral<std::uint16_t>() % rows_.size();
    return {*rows_[row], static_cast<int>(row)};
  }

  void Match() {
    unsigned int type = 0;
    const KeyBytes key = AnyKey(type);
    void* const place = OneIn(input_, 16) ? nullptr : key.place;
    const auto [record, row] = AnyOfAll();
    Compare(
        [&, &matched = record] { return MatchOidInfo(matched, type, place); },
        [&, number = row] {
          return place != nullptr && plain_.Matches(number, type, place);
        });
  }

  void LoadName() {
    const auto [record, row] = AnyOfAll();
    const unsigned int number = AnyTextNumber();
    // What the record held is the caller's to free.
    if ((record.dwOidFlags & kNameIsOwned) != 0) {
      delete[] record.pwszName;
    }
    Compare(
        [&, &loaded = record] {
          InitOidInfoWorker(loaded, number);
          return 0;
        },
        [&, loaded = row] {
          plain_.Load(loaded, number);
          return 0;
        });
  }

  const COidData& RecordOf(std::size_t row) const {
    return row < rows_.size() ? *rows_[row] : own_[row - rows_.size()];
  }

  void ExpectSameStates() const {
    for (std::size_t i = 0; i < plain_.Rows().size(); ++i) {
      const COidData& plain = plain_.Rows()[i].record;
      const COidData& record = RecordOf(i);
      Expect(record.dwOidFlags == plain.dwOidFlags);
      Expect(HoldsTextNumber(record) == HoldsTextNumber(plain));
      Expect((record.pwszName == nullptr) == (plain.pwszName == nullptr));
    }
  }

  void ExpectSameNames() const {
    for (std::size_t i = 0; i < plain_.Rows().size(); ++i) {
      const COidData& plain = plain_.Rows()[i].record;
      const LPCWSTR name = RecordOf(i).pwszName;
      Expect(name == plain.pwszName || std::wcscmp(name, plain.pwszName) == 0);
    }
  }

  Input& input_;
  ThreadLocale locale_;
  PlainRegistry plain_;
  const std::vector<COidData*> rows_ = RegistryRows();
  std::vector<KeyBytes> extra_;
  // The caller's own records: in memory above the library or below it.
  COidData own_above_[3];
  static inline COidData own_below_[3];
  COidData (&own_)[3];
  int first_own_ = 0;
};

}  // namespace
}  // namespace korvan::test

int LoadString_korvan(void* /*hModule*/, unsigned int uID, char* lpBuffer,
                      int cchBufferMax) {
  return korvan::test::host.Load(uID, lpBuffer, cchBufferMax);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::Input input(data, size);
  korvan::test::Lookups(input).Run();
  return 0;
}
