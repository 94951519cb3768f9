// Splits any bytes as if they were a blob, beside the plain model.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"

using korvan::test::Bytes;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes,
                                      std::size_t size) {
  const Bytes blob(bytes, bytes + size);
  const auto model = korvan::test::ModelEncode(blob);
  if (korvan::test::Encode(blob) != model) {
    std::abort();
  }
  // The sizes alone are the same.
  unsigned int key_size = korvan::test::kUntouchedSize;
  unsigned int parameters_size = korvan::test::kUntouchedSize;
  const int result = korvan::KRVEncodePublicKeyAndParametrs(
      0, nullptr, blob.data(), korvan::test::SizeOf(blob), 0, 0, nullptr,
      &key_size, nullptr, &parameters_size);
  if (result != model.result || key_size != model.key_size ||
      parameters_size != model.parameters_size) {
    std::abort();
  }
  return 0;
}
