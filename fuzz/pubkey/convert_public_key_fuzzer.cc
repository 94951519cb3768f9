// Makes blobs of any algorithms, keys and parameters, beside the plain model.
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"
#include "support/input.h"
#include "support/untouched_error.h"

namespace korvan::test {
namespace {

struct Algorithm {
  const char* oid;
  unsigned int algid;  // 0: the OID is of no public key
};

// The public keys' OIDs, each with what its first record says.
constexpr Algorithm kAlgorithms[] = {{"1.2.643.2.2.19", 0x2E23},
                                     {"1.3.6.1.4.1.86913.2.1.2.2", 0x2E29},
                                     {"1.2.643.2.2.20", 0x2E1E},
                                     {"1.2.643.2.2.98", 0xAA24},
                                     {"1.2.840.113549.1.1.1", 0xA400},
                                     {"1.2.840.10040.4.1", 0x2200},
                                     {"1.2.840.10046.2.1", 0xAA01},
                                     {"1.3.14.3.2.12", 0x2200},
                                     {"1.2.840.113549.1.3.1", 0xAA01},
                                     {"1.3.14.3.2.22", 0xA400},
                                     {"2.16.840.1.101.2.1.1.20", 0x2200},
                                     {"1.2.840.113549.1.9.16.3.5", 0xAA02},
                                     {"1.3.6.1.5.5.7.6.2", 0x2000},
                                     {"1.2.643.2.2.9", 0},  // of a hash
                                     {"1.2.643.2.2.1", 0},
                                     {"1.2.643.2.2.199", 0},
                                     {"", 0},
                                     {nullptr, 0}};

// The exact bytes on the heap, so that a read past their end is seen.
std::unique_ptr<unsigned char[]> OnHeap(const Bytes& bytes) {
  auto place = std::make_unique<unsigned char[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), place.get());
  return place;
}

void Make(Input& input) {
  const Algorithm& algorithm =
      kAlgorithms[Below(input, std::size(kAlgorithms))];
  const bool has_info = !OneIn(input, 32);
  const bool has_size = !OneIn(input, 32);
  const bool has_earlier = input.ConsumeBool();
  // So many parameters that a size of 32 bits can't tell it.
  const bool is_huge = OneIn(input, 16);
  const unsigned int unused = input.ConsumeIntegral<unsigned char>();
  const Bytes parameters = input.ConsumeBytes<unsigned char>(Below(input, 256));
  const Bytes bits = input.ConsumeRemainingBytes<unsigned char>();
  const auto parameters_place = OnHeap(parameters);
  const auto bits_place = OnHeap(bits);
  CERT_PUBLIC_KEY_INFO info = InfoOf(algorithm.oid, parameters, bits);
  info.Algorithm.Parameters.pbData = parameters_place.get();
  info.PublicKey.pbData = bits_place.get();
  info.PublicKey.cUnusedBits = unused;
  const Bytes key = ModelKey(bits);
  if (is_huge) {
    info.Algorithm.Parameters.cbData = 0xFFFFFFF0 - SizeOf(key) + unused % 16;
  }

  Converted expected;
  unsigned char* const earlier = has_earlier ? EarlierBuffer() : nullptr;
  bool is_earlier_kept = false;
  if (!has_info || !has_size) {
    expected.error = ERROR_INVALID_PARAMETER;
    is_earlier_kept = true;
  } else if (algorithm.algid == 0) {
    expected.error = NTE_BAD_ALGID;
  } else if (is_huge) {
    expected.error = NTE_NO_MEMORY;
    expected.size = unused % 16;
  } else {
    expected.result = 1;
    expected.blob = ModelBlob(algorithm.algid, parameters, bits);
    expected.size = SizeOf(*expected.blob);
  }

  Converted call;
  unsigned char* blob = earlier;
  SetLastError(call.error);
  call.result =
      KRVConvertPublicKeyInfo(unused, has_info ? &info : nullptr, unused,
                              unused, &blob, has_size ? &call.size : nullptr);
  call.error = GetLastError();
  if (is_earlier_kept) {
    Expect(blob == earlier);
    std::free(earlier);
  } else {
    call.blob = Take(blob, call.size);
  }
  Expect(call == expected);
}

}  // namespace
}  // namespace korvan::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  korvan::test::Input input(data, size);
  korvan::test::Make(input);
  return 0;
}
