// How names get into records and out of them. The head of names.h says which
// states a name has and how it is published.
#include "oid/names.h"

#include <korvan/oid_info.h>
#include <korvan/string_resources.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "oid/hash_codes.h"
#include "oid/index.h"
#include "oid/registry.h"
#include "oid/rows.h"

namespace korvan {
namespace oid {
namespace {

constexpr DWORD kNameIsOwned = 0x2;

// One bit for each row.
constexpr RowNumber kBits = 64;
using RowBits = std::array<std::uint64_t, (kRowCount + kBits - 1) / kBits>;

constexpr std::uint64_t BitOf(RowNumber row) {
  return std::uint64_t{1} << row % kBits;
}

consteval RowBits RowsNamedByNumber() {
  RowBits bits{};
  for (RowNumber row = 0; row < kRowCount; ++row) {
    if (kRows[row].name.number != 0) {
      bits[row / kBits] |= BitOf(row);
    }
  }
  return bits;
}

// The rows whose name is not indexed. Read and written atomically.
constinit RowBits unindexed = RowsNamedByNumber();

// Takes the name that the registry owns from a record and returns it; null if
// it owns none.
LPCWSTR TakeName(COidData& record);

}  // namespace

bool AreIndexed(RowRange rows) {
  // Word by word: in the first and in the last, only some bits are of these
  // rows.
  constexpr std::uint64_t kAll = ~std::uint64_t{0};
  std::uint64_t asked = kAll << rows.begin % kBits;
  for (RowNumber word = rows.begin / kBits; word * kBits < rows.end; ++word) {
    const RowNumber left = rows.end - word * kBits;
    if (left < kBits) {
      asked &= ~(kAll << left);
    }
    const std::uint64_t found =
        std::atomic_ref(unindexed[word]).load(std::memory_order_acquire);
    if ((found & asked) != 0) {
      return false;
    }
    asked = kAll;
  }
  return true;
}

}  // namespace oid

void InitOidInfoWorker(COidData& record, unsigned int uResourceId) {
  oid::LoadName(record, oid::NameOf(record), uResourceId);
}

void CleanupOidInfo() {
  for (COidData& record : oid::records) {
    delete[] oid::TakeName(record);
  }
}

namespace oid {
namespace {

// Held while a name is published or taken, and for nothing else: no allocation,
// and no call that a host could replace.
constinit std::mutex publishing;

// A fork copies the forking thread alone, so a lock that another thread holds
// at that moment stays locked in the child for ever. There are two: ours, and
// one that the C library holds while it loads the locale's converter, which
// the first conversion does. So the forking thread converts a character, which
// loads the converter or waits until it is loaded, and takes our lock.
void BeforeFork() {
  std::mbstate_t state{};
  wchar_t converted;
  static_cast<void>(std::mbrtowc(&converted, "x", 1, &state));
  publishing.lock();
}

void AfterFork() { publishing.unlock(); }

// Registered at load: at the first use, the registration itself would need a
// lock that a fork can leave locked. It fails only if an allocation does; then
// there is nobody to tell, and all else works. Unloading the library takes the
// handlers back.
[[maybe_unused]] const int fork_handlers_status =
    pthread_atfork(BeforeFork, AfterFork, AfterFork);

// The record's row. One that a caller has made has none.
std::optional<RowNumber> RowOf(const COidData& record) {
  const std::less<> is_before;
  if (is_before(&record, records) || !is_before(&record, records + kRowCount)) {
    return std::nullopt;
  }
  return static_cast<RowNumber>(&record - records);
}

// Whether the index would find that name at `row`.
bool IsNameOfRow(LPCWSTR name, RowNumber row) {
  const std::size_t length = std::wcslen(name);
  return length == kNameLengths[row] &&
         NameHashCode(name, length) == kNameHashCodes[row];
}

// Threads may still look up while the process exits: one that has set the flag
// writes the name before it gives up the lock.
LPCWSTR TakeName(COidData& record) {
  const std::atomic_ref flags(record.dwOidFlags);
  if ((flags.load(std::memory_order_relaxed) & kNameIsOwned) == 0) {
    return nullptr;
  }
  const std::lock_guard lock(publishing);
  flags.fetch_and(~kNameIsOwned, std::memory_order_relaxed);
  return std::atomic_ref(record.pwszName)
      .exchange(nullptr, std::memory_order_relaxed);
}

// Puts `name`, which may be null, in the place of the name `replaced`. Returns
// false if the record has another name by then, as another thread was first.
bool Publish(COidData& record, LPCWSTR replaced, LPCWSTR name) noexcept {
  const std::optional row = RowOf(record);
  const bool is_indexed = row && (name == nullptr || IsNameOfRow(name, *row));
  const std::lock_guard lock(publishing);
  if (NameOf(record) != replaced) {
    return false;
  }
  std::atomic_ref(record.dwOidFlags)
      .fetch_or(kNameIsOwned, std::memory_order_relaxed);
  std::atomic_ref(record.pwszName).store(name, std::memory_order_release);
  if (row) {
    const std::atomic_ref bits(unindexed[*row / kBits]);
    if (is_indexed) {
      bits.fetch_and(~BitOf(*row), std::memory_order_release);
    } else {
      bits.fetch_or(BitOf(*row), std::memory_order_release);
    }
  }
  return true;
}

// A text in wide characters, or null if it is empty or the locale can't convert
// it.
std::unique_ptr<wchar_t[]> Widen(const char* text) {
  constexpr auto kInvalid = static_cast<std::size_t>(-1);
  std::mbstate_t state{};
  const std::size_t count = std::mbsrtowcs(nullptr, &text, 0, &state);
  if (count == kInvalid) {
    return nullptr;
  }
  // The conversion stops before a terminator; the array's last zero is it.
  auto wide = std::make_unique<wchar_t[]>(count + 1);
  const std::size_t converted =
      std::mbsrtowcs(wide.get(), &text, count, &state);
  if (converted == 0 || converted == kInvalid) {
    return nullptr;
  }
  return wide;
}

}  // namespace

COidData& LoadName(COidData& record, LPCWSTR replaced, unsigned int number) {
  std::unique_ptr<wchar_t[]> name;
  try {
    // LoadString_korvan writes no terminator. The zeros behind the text are
    // one, and the last one stays whatever a host's function writes.
    constexpr int kMostBytes = 256;
    static_assert(kLongestName <= kMostBytes);
    char text[kMostBytes + 1] = {};
    if (LoadString_korvan(nullptr, number, text, kMostBytes) != 0) {
      name = Widen(text);
    }
  } catch (...) {
    // Thrown by an allocation or by a host's LoadString_korvan.
    Publish(record, replaced, nullptr);
    throw;
  }
  if (Publish(record, replaced, name.get())) {
    static_cast<void>(name.release());  // the record owns it
  }
  return record;
}

}  // namespace oid
}  // namespace korvan
