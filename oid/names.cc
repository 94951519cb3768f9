#include "oid/names.h"

#include <korvan/oid_info.h>
#include <korvan/string_resources.h>
#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "oid/hash_codes.h"
#include "oid/index.h"
#include "oid/registry.h"
#include "oid/rows.h"

namespace korvan {
namespace oid {
namespace {

constexpr DWORD kNameIsOwned = 0x2;

// One bit a row, set while its name is not settled.
constexpr RowNumber kBits = 64;

constexpr std::uint64_t UnloadedNames(RowNumber word) {
  std::uint64_t bits = 0;
  for (RowNumber row = kRowCount; row-- > 0;) {
    if (row / kBits == word && kRows[row].name.number != 0) {
      bits |= std::uint64_t{1} << row % kBits;
    }
  }
  return bits;
}

constinit std::atomic<std::uint64_t> unsettled[] = {
    UnloadedNames(0), UnloadedNames(1), UnloadedNames(2), UnloadedNames(3),
    UnloadedNames(4)};
static_assert(std::size(unsettled) == (kRowCount + kBits - 1) / kBits);

// Whether the index would look for a name at `row`. A host may give the string
// function another body, and a caller any record another text.
bool IsIndexed(LPCWSTR name, RowNumber row) {
  const std::size_t length = std::wcslen(name);
  return length == kNameLengths[row] &&
         NameHashCode(name, length) == kNameHashCodes[row];
}

// Notes what the record's new name means for the index, if the record is one
// of the registry's.
void Settle(const COidData& record, LPCWSTR name) {
  if (std::less<>{}(&record, records) ||
      !std::less<>{}(&record, records + kRowCount)) {
    return;
  }
  const auto row = static_cast<RowNumber>(&record - records);
  const std::uint64_t bit = std::uint64_t{1} << row % kBits;
  if (name == nullptr || IsIndexed(name, row)) {
    unsettled[row / kBits].fetch_and(~bit, std::memory_order_release);
  } else {
    unsettled[row / kBits].fetch_or(bit, std::memory_order_release);
  }
}

// Held while a name is put in place, and for nothing else: no allocation, no
// call that a caller could have replaced.
constinit std::mutex putting_in_place;

// A fork copies the forking thread alone, so a lock that another thread holds
// at that moment stays locked in the child for ever. There are two: ours, and
// one that the C library holds while it loads the locale's converter, which
// the first conversion does. Hence the forking thread converts a character,
// which loads the converter or waits until it is loaded, and takes our lock.
void BeforeFork() {
  std::mbstate_t state{};
  wchar_t converted;
  static_cast<void>(std::mbrtowc(&converted, "x", 1, &state));
  putting_in_place.lock();
}

void AfterFork() { putting_in_place.unlock(); }

// Registered at load: a registration at the first use would need a lock that a
// fork can leave locked, too. When it fails, which takes a failed allocation,
// there is nobody to tell; all else works as before. Unloading the library
// takes the handlers back.
[[maybe_unused]] const int fork_handlers_status =
    pthread_atfork(BeforeFork, AfterFork, AfterFork);

// A name on its way into a record. Whatever ends the load, an exception
// included, the record then has the name or null in place of `replaced`.
class NameInTheMaking {
 public:
  NameInTheMaking(COidData& record, LPCWSTR replaced)
      : record_(record), replaced_(replaced) {}
  NameInTheMaking(const NameInTheMaking&) = delete;
  NameInTheMaking& operator=(const NameInTheMaking&) = delete;

  // Of threads that meet here, the first one's name stays; the others' go, and
  // they write nothing. The flag comes before the name: who sees the name may
  // read the flag. Both are written atomically, since callers who walk the
  // registry read them at any time.
  ~NameInTheMaking() {
    const std::lock_guard lock(putting_in_place);
    if (NameOf(record_) != replaced_) return;
    std::atomic_ref(record_.dwOidFlags)
        .fetch_or(kNameIsOwned, std::memory_order_relaxed);
    const LPCWSTR name = name_.release();
    std::atomic_ref(record_.pwszName).store(name, std::memory_order_release);
    Settle(record_, name);
  }

  void Finish(std::unique_ptr<wchar_t[]> name) { name_ = std::move(name); }

 private:
  COidData& record_;
  LPCWSTR replaced_;
  std::unique_ptr<wchar_t[]> name_;
};

// Loads the text `number` into `record`, whose name was `replaced` when the
// load was decided upon.
void LoadName(COidData& record, LPCWSTR replaced, unsigned int number) {
  NameInTheMaking made(record, replaced);
  // LoadString_korvan writes no terminator; the zeros are it, and the last one
  // stays whatever is written.
  constexpr int kMostBytes = 256;
  static_assert(kLongestName <= kMostBytes);
  char text[kMostBytes + 1] = {};
  if (LoadString_korvan(nullptr, number, text, kMostBytes) == 0) return;
  std::mbstate_t state{};
  const char* rest = text;
  const std::size_t count = std::mbsrtowcs(nullptr, &rest, 0, &state);
  constexpr auto kInvalid = static_cast<std::size_t>(-1);
  if (count == 0 || count == kInvalid) return;
  // The conversion stops before a terminator; the array's last zero is it.
  auto name = std::make_unique<wchar_t[]>(count + 1);
  const std::size_t converted =
      std::mbsrtowcs(name.get(), &rest, count, &state);
  if (converted == 0 || converted == kInvalid) return;
  made.Finish(std::move(name));
  // The record owns the name now, which the analyser can't follow.
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

}  // namespace

COidData& Loaded(COidData& record, LPCWSTR number) {
  LoadName(record, number,
           static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(number)));
  return record;
}

bool AreNamesSettled(RowRange rows) {
  constexpr std::uint64_t kAll = ~std::uint64_t{0};
  std::uint64_t asked = kAll << rows.begin % kBits;
  for (std::uint32_t word = rows.begin / kBits; word * kBits < rows.end;
       ++word) {
    const std::uint32_t left = rows.end - word * kBits;
    if (left < kBits) asked &= ~(kAll << left);
    if ((unsettled[word].load(std::memory_order_acquire) & asked) != 0) {
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
    if ((record.dwOidFlags & oid::kNameIsOwned) == 0) continue;
    delete[] record.pwszName;
    std::atomic_ref(record.dwOidFlags)
        .fetch_and(~oid::kNameIsOwned, std::memory_order_relaxed);
    std::atomic_ref(record.pwszName).store(nullptr, std::memory_order_relaxed);
  }
}

}  // namespace korvan
