// The key conversions beside the least that any code can do, which is to
// allocate and copy, and beside two libraries that do the nearest to it: they
// decode an RSA key whose modulus is as long as the key.
//
// A benchmark is named "row/competitor/bytes"; bench/rows.py lists the rows.
#include <benchmark/benchmark.h>
#include <keyhi.h>
#include <korvan/oid_info.h>
#include <korvan/public_key.h>
#include <mbedtls/asn1.h>
#include <openssl/asn1.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <secitem.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// One kind of key: what a certificate holds of it, and the blob of that.
struct Key {
  std::string oid;
  Bytes parameters;
  Bytes bits;
  // An RSA key with a modulus as long as the key, for the libraries that know
  // no GOST.
  int rsa_bits;

  CERT_PUBLIC_KEY_INFO info() {
    CERT_PUBLIC_KEY_INFO info = {};
    info.Algorithm.pszObjId = oid.data();
    info.Algorithm.Parameters = {static_cast<DWORD>(parameters.size()),
                                 parameters.data()};
    info.PublicKey = {static_cast<DWORD>(bits.size()), bits.data(), 0};
    return info;
  }

  Bytes blob() {
    const CERT_PUBLIC_KEY_INFO from = info();
    unsigned char* made = nullptr;
    unsigned int size = 0;
    if (korvan::KRVConvertPublicKeyInfo(0, &from, 0, 0, &made, &size) == 0) {
      throw std::runtime_error("the key does not convert");
    }
    const Bytes blob(made, made + size);
    std::free(made);
    return blob;
  }
};

// SEQUENCE of the OIDs of a signature and of a hash parameter set.
const Bytes kGostParameters = {0x30, 0x12, 0x06, 0x07, 0x2A, 0x85, 0x03,
                               0x02, 0x02, 0x23, 0x01, 0x06, 0x07, 0x2A,
                               0x85, 0x03, 0x02, 0x02, 0x1E, 0x01};

Key KeyOf(const benchmark::State& state) {
  switch (state.range(0)) {
    case 64:
      return {"1.2.643.2.2.19", kGostParameters,
              Bytes{0x04, 0x40} + Bytes(64, 0x5A), 512};
    case 128:
      return {"1.2.643.2.2.19", kGostParameters,
              Bytes{0x04, 0x81, 0x80} + Bytes(128, 0x5A), 1024};
    default:
      return {"1.2.840.113549.1.1.1",
              {0x05, 0x00},
              Bytes{0x30, 0x82, 0x01, 0x0A} + Bytes(266, 0x5A),
              2048};
  }
}

void Keys(benchmark::internal::Benchmark* bench) {
  bench->Arg(64)->Arg(128)->Arg(270);
}

std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> RsaKey(int bits) {
  return {EVP_RSA_gen(static_cast<std::size_t>(bits)), EVP_PKEY_free};
}

// SubjectPublicKeyInfo in DER.
Bytes EncodedInfo(const EVP_PKEY* key) {
  unsigned char* der = nullptr;
  const int size = i2d_PUBKEY(key, &der);
  const Bytes encoded(der, der + size);
  OPENSSL_free(der);
  return encoded;
}

// Key to blob.

void KeyToBlob(benchmark::State& state) {
  Key key = KeyOf(state);
  const CERT_PUBLIC_KEY_INFO info = key.info();
  for (auto _ : state) {
    unsigned char* blob = nullptr;
    unsigned int size = 0;
    korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size);
    benchmark::DoNotOptimize(blob);
    std::free(blob);
  }
}
BENCHMARK(KeyToBlob)->Name("key_to_blob/ours")->Apply(Keys);

void KeyToBlobFloor(benchmark::State& state) {
  const Bytes blob = KeyOf(state).blob();
  for (auto _ : state) {
    std::size_t size = blob.size();
    benchmark::DoNotOptimize(size);
    void* const copy = std::malloc(size);
    std::memcpy(copy, blob.data(), size);
    benchmark::DoNotOptimize(copy);
    benchmark::ClobberMemory();
    std::free(copy);
  }
}
BENCHMARK(KeyToBlobFloor)->Name("key_to_blob/floor")->Apply(Keys);

// What mbedTLS has for it: a function that reads a tag and a length.
void KeyToBlobByMbedTls(benchmark::State& state) {
  Key key = KeyOf(state);
  const int tag = key.bits.front();
  for (auto _ : state) {
    unsigned char* at = key.bits.data();
    std::size_t size = 0;
    if (mbedtls_asn1_get_tag(&at, at + key.bits.size(), &size, tag) != 0) {
      state.SkipWithError("mbedTLS does not read the key");
      break;
    }
    auto* const copy = static_cast<unsigned char*>(
        std::malloc(16 + key.parameters.size() + size));
    std::memset(copy, 0, 16);
    std::memcpy(copy + 16, key.parameters.data(), key.parameters.size());
    std::memcpy(copy + 16 + key.parameters.size(), at, size);
    benchmark::DoNotOptimize(copy);
    benchmark::ClobberMemory();
    std::free(copy);
  }
}
BENCHMARK(KeyToBlobByMbedTls)->Name("key_to_blob/yardstick")->Apply(Keys);

void KeyToBlobByOpenSsl(benchmark::State& state) {
  const Bytes info = EncodedInfo(RsaKey(KeyOf(state).rsa_bits).get());
  for (auto _ : state) {
    const unsigned char* at = info.data();
    EVP_PKEY* const key =
        d2i_PUBKEY(nullptr, &at, static_cast<long>(info.size()));
    BIO* const blob = BIO_new(BIO_s_mem());
    benchmark::DoNotOptimize(i2b_PublicKey_bio(blob, key));
    BIO_free(blob);
    EVP_PKEY_free(key);
  }
}
BENCHMARK(KeyToBlobByOpenSsl)->Name("key_to_blob/OpenSSL")->Apply(Keys);

void KeyToBlobByNss(benchmark::State& state) {
  Bytes info = EncodedInfo(RsaKey(KeyOf(state).rsa_bits).get());
  SECItem item = {siBuffer, info.data(),
                  static_cast<unsigned int>(info.size())};
  for (auto _ : state) {
    CERTSubjectPublicKeyInfo* const decoded =
        SECKEY_DecodeDERSubjectPublicKeyInfo(&item);
    SECKEYPublicKey* const key = SECKEY_ExtractPublicKey(decoded);
    if (key == nullptr) {
      state.SkipWithError("NSS does not read the key");
      break;
    }
    SECKEY_DestroyPublicKey(key);
    SECKEY_DestroySubjectPublicKeyInfo(decoded);
  }
}
BENCHMARK(KeyToBlobByNss)->Name("key_to_blob/NSS")->Apply(Keys);

// Blob to key.

void BlobToKey(benchmark::State& state) {
  const Bytes blob = KeyOf(state).blob();
  for (auto _ : state) {
    unsigned char* key = nullptr;
    unsigned char* parameters = nullptr;
    unsigned int key_size = 0;
    unsigned int parameters_size = 0;
    korvan::KRVEncodePublicKeyAndParametrs(
        0, nullptr, blob.data(), static_cast<unsigned int>(blob.size()), 0, 0,
        &key, &key_size, &parameters, &parameters_size);
    benchmark::DoNotOptimize(key);
    benchmark::DoNotOptimize(parameters);
    std::free(key);
    std::free(parameters);
  }
}
BENCHMARK(BlobToKey)->Name("blob_to_key/ours")->Apply(Keys);

void BlobToKeySizes(benchmark::State& state) {
  const Bytes blob = KeyOf(state).blob();
  for (auto _ : state) {
    unsigned int key_size = 0;
    unsigned int parameters_size = 0;
    korvan::KRVEncodePublicKeyAndParametrs(
        0, nullptr, blob.data(), static_cast<unsigned int>(blob.size()), 0, 0,
        nullptr, &key_size, nullptr, &parameters_size);
    benchmark::DoNotOptimize(key_size);
    benchmark::DoNotOptimize(parameters_size);
  }
}
BENCHMARK(BlobToKeySizes)->Name("blob_to_key_sizes/ours")->Arg(64);

// The key's length stands in the last word of the header, and the length of the
// parameters is what is left.
void BlobToKeySizesFloor(benchmark::State& state) {
  constexpr std::size_t kLengthAt = 12;
  const Bytes blob = KeyOf(state).blob();
  for (auto _ : state) {
    unsigned int key_bits = 0;
    std::memcpy(&key_bits, blob.data() + kLengthAt, sizeof key_bits);
    unsigned int parameters_size =
        static_cast<unsigned int>(blob.size()) - 16 - key_bits / 8;
    benchmark::DoNotOptimize(key_bits);
    benchmark::DoNotOptimize(parameters_size);
  }
}
BENCHMARK(BlobToKeySizesFloor)->Name("blob_to_key_sizes/floor")->Arg(64);

void BlobToKeyFloor(benchmark::State& state) {
  const Key key = KeyOf(state);
  const Bytes content(key.bits.size() + (state.range(0) == 270 ? 4 : 0));
  for (auto _ : state) {
    std::size_t sizes[] = {content.size(), key.parameters.size()};
    benchmark::DoNotOptimize(sizes);
    void* const bits = std::malloc(sizes[0]);
    std::memcpy(bits, content.data(), sizes[0]);
    benchmark::DoNotOptimize(bits);
    void* const parameters = std::malloc(sizes[1]);
    std::memcpy(parameters, key.parameters.data(), sizes[1]);
    benchmark::DoNotOptimize(parameters);
    benchmark::ClobberMemory();
    std::free(bits);
    std::free(parameters);
  }
}
BENCHMARK(BlobToKeyFloor)->Name("blob_to_key/floor")->Apply(Keys);

// What OpenSSL has for it: a function that writes a tag and a length, and one
// that copies bytes.
void BlobToKeyByOpenSslParts(benchmark::State& state) {
  const Key key = KeyOf(state);
  const Bytes content(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    int size = static_cast<int>(content.size());
    benchmark::DoNotOptimize(size);
    auto* const bits =
        static_cast<unsigned char*>(OPENSSL_malloc(static_cast<std::size_t>(
            ASN1_object_size(0, size, V_ASN1_OCTET_STRING))));
    unsigned char* at = bits;
    ASN1_put_object(&at, 0, size, V_ASN1_OCTET_STRING, V_ASN1_UNIVERSAL);
    std::memcpy(at, content.data(), static_cast<std::size_t>(size));
    benchmark::DoNotOptimize(bits);
    void* const parameters =
        OPENSSL_memdup(key.parameters.data(), key.parameters.size());
    benchmark::DoNotOptimize(parameters);
    benchmark::ClobberMemory();
    OPENSSL_free(bits);
    OPENSSL_free(parameters);
  }
}
BENCHMARK(BlobToKeyByOpenSslParts)->Name("blob_to_key/yardstick")->Apply(Keys);

void BlobToKeyByOpenSsl(benchmark::State& state) {
  const auto rsa = RsaKey(KeyOf(state).rsa_bits);
  BIO* const out = BIO_new(BIO_s_mem());
  i2b_PublicKey_bio(out, rsa.get());
  char* written = nullptr;
  const long size = BIO_get_mem_data(out, &written);
  const Bytes blob(written, written + size);
  BIO_free(out);
  for (auto _ : state) {
    const unsigned char* at = blob.data();
    EVP_PKEY* const key = b2i_PublicKey(&at, static_cast<long>(blob.size()));
    unsigned char* info = nullptr;
    if (i2d_PUBKEY(key, &info) <= 0) {
      state.SkipWithError("OpenSSL does not read its blob");
      break;
    }
    OPENSSL_free(info);
    EVP_PKEY_free(key);
  }
}
BENCHMARK(BlobToKeyByOpenSsl)->Name("blob_to_key/OpenSSL")->Apply(Keys);

}  // namespace
