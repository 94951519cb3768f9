// The key conversions: what fails by `malloc` is reported as NTE_NO_MEMORY,
// what fails by `new` passes out as an exception. Each leaves the outputs as
// documented.
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <string>
#include <vector>

#include "allocations/operation.h"
#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"

namespace korvan::test {
namespace {

const Bytes kParameters = Counted(18);

// The RSA algorithm's name is a text from the beginning, so that no conversion
// has to load it.
struct Algorithm {
  const char* oid;
  ALG_ID id;
};
constexpr Algorithm kNamed = {kRsa, CALG_RSA_KEYX};
constexpr Algorithm kNamedByNumber = {kGost2001, 0x2E23};

void ConvertToBlob(Trial& trial, const Algorithm& algorithm,
                   const Bytes& bits) {
  const CERT_PUBLIC_KEY_INFO info = InfoOf(algorithm.oid, kParameters, bits);
  const Bytes whole = ModelBlob(algorithm.id, kParameters, bits);
  unsigned char* blob = EarlierBuffer();
  Converted call;
  SetLastError(kUntouchedError);
  trial([&] {
    call.result = KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &call.size);
  });
  call.error = GetLastError();
  call.blob = Take(blob, call.size);
  Converted expected;
  if (!trial.Refused()) {
    expected = {1, kUntouchedError, whole, SizeOf(whole)};
  } else if (!trial.RefusedNew()) {
    expected = {0, NTE_NO_MEMORY, {}, SizeOf(whole)};
    EXPECT_EQ(trial.RefusedSize(), whole.size());
  }
  EXPECT_EQ(call, expected);
  EXPECT_EQ(trial.Thrown(), trial.RefusedNew() ? "bad_alloc" : "");
  EXPECT_EQ(Convert(info).blob, whole);
}

void SplitBlob(Trial& trial, const Bytes& blob, bool with_buffers) {
  const Encoded whole = ModelEncode(blob);
  unsigned char* key = with_buffers ? EarlierBuffer() : nullptr;
  unsigned char* parameters = with_buffers ? EarlierBuffer() : nullptr;
  Encoded call;
  SetLastError(kUntouchedError);
  trial([&] {
    call.result = KRVEncodePublicKeyAndParametrs(
        0, nullptr, blob.data(), SizeOf(blob), 0, 0,
        with_buffers ? &key : nullptr, &call.key_size,
        with_buffers ? &parameters : nullptr, &call.parameters_size);
  });
  call.error = GetLastError();
  call.key = Take(key, call.key_size);
  call.parameters = Take(parameters, call.parameters_size);
  Encoded expected;
  if (!trial.Refused() || !trial.RefusedNew()) {
    expected = whole;
    expected.error = kUntouchedError;
  }
  if (trial.Refused() && !trial.RefusedNew()) {
    // The key's buffer is made first.
    expected.result = 0;
    expected.error = NTE_NO_MEMORY;
    expected.parameters.reset();
    if (trial.RefusedSize() == whole.key_size) {
      expected.key.reset();
    } else {
      EXPECT_EQ(trial.RefusedSize(), whole.parameters_size);
    }
  }
  if (!with_buffers) {
    expected.key.reset();
    expected.parameters.reset();
  }
  EXPECT_EQ(call, expected);
  EXPECT_EQ(trial.Thrown(), trial.RefusedNew() ? "bad_alloc" : "");
  EXPECT_EQ(Encode(blob), whole);
}

}  // namespace

std::vector<Operation> ConversionOperations() {
  const std::string convert =
      "korvan::KRVConvertPublicKeyInfo(unsigned int, _CERT_PUBLIC_KEY_INFO "
      "const*, unsigned int, unsigned int, unsigned char**, unsigned int*)";
  const std::string encode =
      "korvan::KRVEncodePublicKeyAndParametrs(unsigned int, char const*, "
      "unsigned char const*, unsigned int, unsigned int, unsigned int, "
      "unsigned char**, unsigned int*, unsigned char**, unsigned int*)";
  const auto converts = [](std::size_t key_size) {
    return [=](Trial& trial) {
      ConvertToBlob(trial, kNamed, ModelOctetString(Counted(key_size)));
    };
  };
  const auto splits = [](unsigned int algorithm, unsigned int key_size,
                         bool with_buffers) {
    return [=](Trial& trial) {
      SplitBlob(trial,
                ModelHeader(algorithm, key_size * 8) + kParameters +
                    Counted(key_size),
                with_buffers);
    };
  };
  return {
      {convert, "of a short key", true, false, converts(64)},
      {convert, "of a key of more than 512 bytes", true, false, converts(700)},
      {convert, "that loads the algorithm's name", true, true,
       [](Trial& trial) { ConvertToBlob(trial, kNamedByNumber, Counted(64)); }},
      {encode, "of a short key", true, false, splits(0x2E23, 64, true)},
      {encode, "of a bare key", true, false, splits(0x2E29, 64, true)},
      {encode, "of a key of more than 512 bytes", true, false,
       splits(0x2E23, 700, true)},
      {encode, "for the sizes alone", false, false, splits(0x2E23, 64, false)},
  };
}

}  // namespace korvan::test
