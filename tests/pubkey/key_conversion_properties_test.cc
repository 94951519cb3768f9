// The conversions beside the plain model, with random input.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"

namespace korvan::test {
namespace {

// Bytes that often look like an OCTET STRING, whole or a little off.
rc::Gen<Bytes> NearlyOctetStrings() {
  return rc::gen::map(
      rc::gen::tuple(
          rc::gen::arbitrary<Bytes>(), rc::gen::inRange(0, 300),
          rc::gen::element<unsigned char>(0x04, 0x04, 0x24, 0x84, 0x30, 0x1F),
          rc::gen::inRange(0, 6), rc::gen::inRange(-2, 3)),
      [](const auto& parts) {
        const auto& [tail, length, identifier, form, off] = parts;
        const auto octet = [size = length](int shift) {
          return static_cast<unsigned char>(size >> shift);
        };
        const Bytes kForms[] = {{octet(0)},
                                {0x81, octet(0)},
                                {0x82, octet(8), octet(0)},
                                {0x83, 0, octet(8), octet(0)},
                                {0x84, 0, 0, octet(8), octet(0)},
                                {0x80}};
        Bytes content = tail;
        content.resize(static_cast<std::size_t>(std::max(0, length + off)));
        return Bytes{identifier} + kForms[form] + content;
      });
}

rc::Gen<Bytes> Keys() {
  return rc::gen::oneOf(rc::gen::arbitrary<Bytes>(), NearlyOctetStrings());
}

RC_GTEST_PROP(KeyConversion, AnyKeyGivesTheBlobThatTheModelMakes, ()) {
  const Bytes parameters = *rc::gen::arbitrary<Bytes>();
  const Bytes bits = *Keys();
  const Bytes blob = ModelBlob(0x2E23, parameters, bits);
  RC_ASSERT(Convert(kGost2001, parameters, bits) ==
            (Converted{1, kUntouchedError, blob, SizeOf(blob)}));
}

RC_GTEST_PROP(KeyConversion, AnyBytesAreSplitAsTheModelDoes, ()) {
  const auto key_size = *rc::gen::inRange(0u, 400u);
  const auto algorithm = *rc::gen::oneOf(rc::gen::just(0x2E29u),
                                         rc::gen::arbitrary<unsigned int>());
  Bytes blob = *rc::gen::oneOf(
      rc::gen::arbitrary<Bytes>(),
      rc::gen::map(rc::gen::arbitrary<Bytes>(), [&](const Bytes& tail) {
        Bytes rest = tail;
        rest.resize(key_size + tail.size() - tail.size() / 2);
        return ModelHeader(algorithm, key_size * 8 + 3) + rest;
      }));
  RC_ASSERT(Encode(blob) == ModelEncode(blob));
}

RC_GTEST_PROP(KeyConversion, AnUnwrappedKeyComesBackWrapped, ()) {
  const Bytes parameters = *rc::gen::arbitrary<Bytes>();
  Bytes content = *rc::gen::arbitrary<Bytes>();
  content.resize(*rc::gen::inRange<std::size_t>(1, 256));
  const Bytes bits = ModelOctetString(content);
  const Encoded back =
      Encode(Convert(kGost2001, parameters, bits).blob.value());
  RC_ASSERT(back.key == bits);
  RC_ASSERT(back.parameters.value_or(Bytes{}) == parameters);
}

RC_GTEST_PROP(KeyConversion, ABareKeyComesBackUnlessItLooksWrapped, ()) {
  const Bytes bits = *Keys();
  const Encoded back = Encode(Convert(kOwnGost94, {}, bits).blob.value());
  RC_ASSERT(back.key == ModelKey(bits));
}

}  // namespace
}  // namespace korvan::test
