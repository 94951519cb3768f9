// Reads any bytes as a record, and holds what it says against the bytes.

#include <korvan/platform/asn1_record.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes,
                                      std::size_t size) {
  // The exact bytes on the heap, so that a read past their end is seen there
  // as well as in the buffer's own room.
  const auto copy = std::make_unique<std::uint8_t[]>(size);
  if (size != 0) {
    std::memcpy(copy.get(), bytes, size);
  }
  IdentObj encoded;
  unsigned char* const own = encoded.data;
  encoded.data = copy.get();
  encoded.length = static_cast<unsigned int>(size);
  CASNTBaseRecord record;
  const bool whole = record.SetEncodedEntry(encoded);
  encoded.data = own;

  int status = 0;
  const IdentObj& content = record.GetRecord(&status);
  Require(whole == (status == 0));
  if (!whole) {
    Require(content.length == 0);
    Require(record.GetTag() != 0 || record.GetEntrySize() == 0);
    Require(record.GetTag() != 0 || !record.GetIsConstraction());
    return 0;
  }
  Require(record.GetTag() != 0);
  Require(content.length == record.GetEntrySize());
  Require(content.length + 2 <= size);

  // What is written in DER is read as the same record.
  const IdentObj written(record.GetEncodedRecord(&status));
  Require(status == 0 && written.length <= size);
  CASNTBaseRecord again;
  Require(again.SetEncodedEntry(written));
  Require(again.GetTag() == record.GetTag());
  Require(again.GetIsConstraction() == record.GetIsConstraction());
  const IdentObj& content_again = again.GetRecord(&status);
  Require(content_again.length == content.length);
  Require(std::memcmp(content_again.data, content.data, content.length) == 0);
  const IdentObj& written_again = again.GetEncodedRecord(&status);
  Require(written_again.length == written.length);
  Require(std::memcmp(written_again.data, written.data, written.length) == 0);
  return 0;
}
