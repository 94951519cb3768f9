// A second implementation of the platform, unlike the bundled one: buffers
// always on the heap, records behind a pointer, reading from the back of the
// header, errors by exception if so told.
#include <korvan/platform/asn1_record.h>
#include <korvan/platform/last_error.h>
#include <pthread.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "pubkey/host_platform/host_faults.h"

using korvan::test::host_faults;

namespace {

// One code for each thread, kept as the C library keeps such things.
pthread_key_t ErrorKey() {
  static const pthread_key_t key = [] {
    pthread_key_t made;
    pthread_key_create(&made, nullptr);
    return made;
  }();
  return key;
}

// Every call of the record classes begins here. Returns whether it is to lie.
bool Call() {
  if (++host_faults.calls == host_faults.throw_at_call) {
    throw std::string("the host was told to throw");
  }
  return host_faults.calls == host_faults.lie_at_call ||
         (host_faults.lies_on && host_faults.lie_at_call != 0 &&
          host_faults.calls > host_faults.lie_at_call);
}

// A size that is not `size`.
unsigned int WrongSize(unsigned int size) {
  const unsigned int wrong[] = {0, 0xFFFFFFFF, size + 1, size - 1};
  return wrong[host_faults.lie];
}

// Reports a failure, or has the bytes be none or one too many.
void LieAbout(IdentObj& bytes, int* status) {
  switch (host_faults.lie) {
    case 0:
      *status = -1;
      break;
    case 1:
      *status = INT_MAX;
      break;
    case 2:
      bytes = IdentObj(nullptr, 0);
      break;
    default: {
      const std::vector<unsigned char> longer(bytes.length + 1, 0xCC);
      bytes = IdentObj(longer.data(), static_cast<unsigned int>(longer.size()));
      break;
    }
  }
}

}  // namespace

korvan::test::HostFaults korvan::test::host_faults;

void SetLastError(unsigned int code) {
  if (++host_faults.errors == host_faults.throw_at_error) {
    throw std::string("the host was told to throw");
  }
  pthread_setspecific(ErrorKey(),
                      reinterpret_cast<void*>(std::uintptr_t{code}));
}

unsigned int GetLastError() {
  return static_cast<unsigned int>(
      reinterpret_cast<std::uintptr_t>(pthread_getspecific(ErrorKey())));
}

IdentObj::IdentObj() : data(nullptr), length(0) {
  Call();
  ++host_faults.alive;
}

IdentObj::IdentObj(const void* bytes, unsigned int count)
    : data(nullptr), length(count) {
  if (Call() && count != 0) {
    length = host_faults.lie == 0 ? 0 : count - 1;
  }
  if (length != 0) {
    data = std::memcpy(new unsigned char[length], bytes, length);
  }
  ++host_faults.alive;
}

IdentObj& IdentObj::operator=(const IdentObj& other) {
  if (Call()) {
    return *this;
  }
  void* copy = nullptr;
  if (other.length != 0) {
    copy =
        std::memcpy(new unsigned char[other.length], other.data, other.length);
  }
  delete[] static_cast<const unsigned char*>(data);
  data = copy;
  length = other.length;
  return *this;
}

IdentObj::~IdentObj() {
  delete[] static_cast<const unsigned char*>(data);
  --host_faults.alive;
}

struct CASNTBaseRecord::State {
  unsigned char identifier = 0;
  unsigned int tag = 0xFFFFFFFF;
  unsigned int size = 0;
  int status = 1;
  IdentObj content;
  IdentObj encoding;
};

CASNTBaseRecord::CASNTBaseRecord() : state_(nullptr) {
  Call();
  state_ = new State;
  ++host_faults.alive;
}

CASNTBaseRecord::~CASNTBaseRecord() {
  delete state_;
  --host_faults.alive;
}

void CASNTBaseRecord::SetEncodedEntry(const IdentObj& encoded) {
  if (Call()) {
    return;
  }
  const auto* const bytes = static_cast<const unsigned char*>(encoded.data);
  const std::uint64_t count = encoded.length;
  const auto malformed = [&] {
    if (host_faults.throw_for_malformed) {
      throw std::string("no record");
    }
  };
  // This host knows no tag of several bytes, and numbers only universal ones.
  if (count < 2 || (bytes[0] & 0x1F) == 0x1F) {
    return malformed();
  }
  std::uint64_t header = 2;
  std::uint64_t size = bytes[1];
  if (size >= 0x80) {
    const std::uint64_t octets = size - 0x80;
    header += octets;
    if (octets == 0 || octets > 4 || header > count) {
      return malformed();
    }
    size = 0;
    std::uint64_t weight = 1;
    for (std::uint64_t at = header; at > 2; weight *= 256) {
      size += bytes[--at] * weight;
    }
  }
  if (header + size > count) {
    state_->tag = bytes[0] < 0x40 ? bytes[0] & 0x1Fu : 0x1000u;
    state_->size = static_cast<unsigned int>(size);
    return malformed();
  }
  state_->content = IdentObj(bytes + header, static_cast<unsigned int>(size));
  state_->identifier = bytes[0];
  state_->tag = bytes[0] < 0x40 ? bytes[0] & 0x1Fu : 0x1000u;
  state_->size = static_cast<unsigned int>(size);
  state_->status = 0;
}

unsigned int CASNTBaseRecord::GetTag() const {
  if (Call()) {
    return state_->tag == 4 ? 0x44 : 4;
  }
  return state_->tag;
}

unsigned int CASNTBaseRecord::GetEntrySize() const {
  if (Call()) {
    return WrongSize(state_->size);
  }
  if (host_faults.content_size >= 0) {
    return static_cast<unsigned int>(host_faults.content_size);
  }
  return state_->size;
}

bool CASNTBaseRecord::GetIsConstraction() const {
  const bool lies = Call();
  return ((state_->identifier & 0x20) != 0) != lies;
}

const IdentObj& CASNTBaseRecord::GetRecord(int* status) const {
  if (Call()) {
    LieAbout(state_->content, status);
    return state_->content;
  }
  if (host_faults.content_status != 0 || state_->status != 0) {
    *status = host_faults.content_status + state_->status;
  }
  if (host_faults.content_size >= 0 || host_faults.content_excess != 0) {
    const std::vector<unsigned char> other(
        GetEntrySize() + static_cast<unsigned int>(host_faults.content_excess),
        0xCC);
    state_->content =
        IdentObj(other.data(), static_cast<unsigned int>(other.size()));
  }
  return state_->content;
}

void CASNTBaseRecord::SetTag(unsigned int tag) {
  if (!Call()) {
    state_->identifier = static_cast<unsigned char>(tag);
  }
}

void CASNTBaseRecord::SetEntry(const void* bytes, unsigned int count) {
  if (!Call()) {
    state_->content = IdentObj(bytes, count);
  }
}

const IdentObj& CASNTBaseRecord::GetEncodedRecord(int* status) const {
  if (Call()) {
    LieAbout(state_->encoding, status);
    return state_->encoding;
  }
  if (host_faults.encoding_status != 0) {
    *status = host_faults.encoding_status;
    return state_->encoding;
  }
  std::vector<unsigned char> encoding;
  const unsigned int size = state_->content.length;
  encoding.push_back(state_->identifier);
  if (size < 0x80) {
    encoding.push_back(static_cast<unsigned char>(size));
  } else {
    std::vector<unsigned char> octets;
    for (unsigned int rest = size; rest != 0; rest /= 256) {
      octets.insert(octets.begin(), static_cast<unsigned char>(rest));
    }
    encoding.push_back(static_cast<unsigned char>(0x80 + octets.size()));
    encoding.insert(encoding.end(), octets.begin(), octets.end());
  }
  const auto* const content =
      static_cast<const unsigned char*>(state_->content.data);
  encoding.insert(encoding.end(), content, content + size);
  state_->encoding =
      IdentObj(encoding.data(), static_cast<unsigned int>(encoding.size()));
  return state_->encoding;
}
