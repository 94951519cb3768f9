// Splits any bytes as if they were a blob, beside the plain model.
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/input.h"

namespace korvan::test {
namespace {

void Split(Input& input) {
  const bool has_blob = !OneIn(input, 32);
  const bool has_key = !OneIn(input, 4);
  const bool has_parameters = !OneIn(input, 4);
  const bool has_earlier = input.ConsumeBool();
  const unsigned int unused = input.ConsumeIntegral<unsigned char>();
  // A blob whose header is what a conversion makes, or any.
  const unsigned int algorithm = OneIn(input, 3) ? 0x2E29 : 0x2E23;
  const Bytes header =
      input.ConsumeBool()
          ? ModelHeader(algorithm, 8 * input.ConsumeIntegral<std::uint8_t>())
          : Bytes();
  const Bytes blob = header + input.ConsumeRemainingBytes<unsigned char>();
  // The exact bytes, so that a read past their end is seen.
  const auto place = std::make_unique<unsigned char[]>(blob.size());
  std::copy(blob.begin(), blob.end(), place.get());

  Encoded expected = ModelEncode(has_blob ? blob : Bytes());
  if (!has_key) {
    expected.key.reset();
  }
  if (!has_parameters) {
    expected.parameters.reset();
  }
  const bool are_earlier_kept = expected.error == ERROR_INVALID_PARAMETER;

  Encoded call;
  unsigned char* const earlier_key = has_earlier ? EarlierBuffer() : nullptr;
  unsigned char* const earlier_parameters =
      has_earlier ? EarlierBuffer() : nullptr;
  unsigned char* key = earlier_key;
  unsigned char* parameters = earlier_parameters;
  SetLastError(call.error);
  call.result = KRVEncodePublicKeyAndParametrs(
      unused, nullptr, has_blob ? place.get() : nullptr, SizeOf(blob), unused,
      unused, has_key ? &key : nullptr, &call.key_size,
      has_parameters ? &parameters : nullptr, &call.parameters_size);
  call.error = GetLastError();
  if (are_earlier_kept || !has_key) {
    Expect(key == earlier_key);
    std::free(earlier_key);
  } else {
    call.key = Take(key, call.key_size);
  }
  if (are_earlier_kept || !has_parameters) {
    Expect(parameters == earlier_parameters);
    std::free(earlier_parameters);
  } else {
    call.parameters = Take(parameters, call.parameters_size);
  }
  Expect(call == expected);
}

}  // namespace
}  // namespace korvan::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::Input input(data, size);
  korvan::test::Split(input);
  return 0;
}
