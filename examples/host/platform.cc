// This host's last-error code and byte buffers.
#include <korvan/platform/asn1_record.h>
#include <korvan/platform/last_error.h>

#include <utility>

namespace {
thread_local unsigned int last_error = 0;
}

void SetLastError(unsigned int code) { last_error = code; }
unsigned int GetLastError() { return last_error; }

IdentObj::IdentObj(const void* bytes, unsigned int count)
    : length(count),
      bytes_(static_cast<const unsigned char*>(bytes),
             static_cast<const unsigned char*>(bytes) + count) {
  data = bytes_.data();
}

IdentObj& IdentObj::operator=(IdentObj other) {
  bytes_ = std::move(other.bytes_);
  length = other.length;
  data = bytes_.data();
  return *this;
}
