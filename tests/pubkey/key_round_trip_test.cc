// The keys of real certificates, converted to blobs and back.
#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/engine.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"

namespace korvan::test {
namespace {

using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

Certificate ReadDer(const std::string& name) {
  std::ifstream file(std::string(KORVAN_EXAMPLE_DATA "/") + name,
                     std::ios::binary);
  const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
  const unsigned char* at = bytes.data();
  return Certificate(d2i_X509(nullptr, &at, static_cast<long>(bytes.size())),
                     X509_free);
}

struct PublicKey {
  std::string oid;
  Bytes parameters;
  Bytes bits;
};

PublicKey PublicKeyOf(const X509_PUBKEY* info) {
  ASN1_OBJECT* algorithm = nullptr;
  const unsigned char* bits = nullptr;
  int size = 0;
  X509_ALGOR* identifier = nullptr;
  X509_PUBKEY_get0_param(&algorithm, &bits, &size, &identifier, info);
  char oid[128] = {};
  OBJ_obj2txt(oid, sizeof(oid), algorithm, 1);
  PublicKey key{oid, {}, Bytes(bits, bits + size)};
  if (identifier->parameter != nullptr) {
    unsigned char* der = nullptr;
    const int length = i2d_ASN1_TYPE(identifier->parameter, &der);
    key.parameters.assign(der, der + length);
    OPENSSL_free(der);
  }
  return key;
}

// The key comes back as it was.
void ExpectSymmetric(const PublicKey& key) {
  const Converted there = Convert(key.oid.c_str(), key.parameters, key.bits);
  ASSERT_EQ(there.result, 1) << key.oid;
  const Encoded back = Encode(*there.blob);
  EXPECT_EQ(back.key, key.bits);
  EXPECT_EQ(back.parameters.value_or(Bytes{}), key.parameters);
}

// The key was taken whole, so it comes back inside an OCTET STRING.
void ExpectWrappedAnew(const PublicKey& key) {
  const Converted there = Convert(key.oid.c_str(), key.parameters, key.bits);
  ASSERT_EQ(there.result, 1) << key.oid;
  const Encoded back = Encode(*there.blob);
  EXPECT_EQ(back.key, ModelOctetString(key.bits));
  EXPECT_EQ(back.parameters.value_or(Bytes{}), key.parameters);
}

TEST(KeyRoundTrip, TheKeyOfAGost2001CertificateComesBack) {
  const Certificate certificate = ReadDer("gost2001-A.der");
  ASSERT_NE(certificate, nullptr);
  const PublicKey key = PublicKeyOf(X509_get_X509_PUBKEY(certificate.get()));
  EXPECT_EQ(key.oid, kGost2001);
  ExpectSymmetric(key);
}

TEST(KeyRoundTrip, KeysThatWereNoOctetStringComeBackWrapped) {
  for (const char* const name : {"rsa2048.der", "dsa2048.der"}) {
    const Certificate certificate = ReadDer(name);
    ASSERT_NE(certificate, nullptr);
    ExpectWrappedAnew(PublicKeyOf(X509_get_X509_PUBKEY(certificate.get())));
  }
}

TEST(KeyRoundTrip, AnEllipticCurveThatTheRegistryDoesNotKnowIsRefused) {
  const Certificate certificate = ReadDer("ecp256.der");
  ASSERT_NE(certificate, nullptr);
  const PublicKey key = PublicKeyOf(X509_get_X509_PUBKEY(certificate.get()));
  EXPECT_EQ(Convert(key.oid.c_str(), key.parameters, key.bits).error,
            NTE_BAD_ALGID);
}

TEST(
    KeyRoundTrip,
    EveryRsaKeyOfTheSystemsCertificatesComesBackWrappedAndAllOthersAreRefused) {
  constexpr char kBundle[] = "/etc/ssl/certs/ca-certificates.crt";
  const std::unique_ptr<BIO, decltype(&BIO_free)> bundle(
      BIO_new_file(kBundle, "r"), BIO_free);
  if (bundle == nullptr) {
    GTEST_SKIP() << "the system has no " << kBundle;
  }
  int rsa = 0;
  int others = 0;
  while (X509* const one =
             PEM_read_bio_X509(bundle.get(), nullptr, nullptr, nullptr)) {
    const Certificate certificate(one, X509_free);
    const PublicKey key = PublicKeyOf(X509_get_X509_PUBKEY(one));
    if (key.oid == kRsa) {
      ++rsa;
      ExpectWrappedAnew(key);
    } else {
      ++others;
      EXPECT_EQ(Convert(key.oid.c_str(), key.parameters, key.bits).error,
                NTE_BAD_ALGID)
          << key.oid;
    }
  }
  EXPECT_GT(rsa, 20);
  EXPECT_GT(others, 0);
}

// The keys are made by the test, in certificates that are signed with them.
TEST(KeyRoundTrip, TheKeysOfNewGost2001CertificatesComeBack) {
  ENGINE_load_dynamic();
  ENGINE* const gost = ENGINE_by_id("gost");
  if (gost == nullptr || ENGINE_init(gost) != 1) {
    GTEST_SKIP() << "OpenSSL's gost engine cannot be loaded";
  }
  ENGINE_set_default(gost, ENGINE_METHOD_ALL);
  for (const char* const parameter_set : {"A", "B", "C", "XA", "XB"}) {
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
        EVP_PKEY_CTX_new_id(NID_id_GostR3410_2001, gost), EVP_PKEY_CTX_free);
    ASSERT_NE(context, nullptr);
    ASSERT_EQ(EVP_PKEY_keygen_init(context.get()), 1);
    ASSERT_GT(EVP_PKEY_CTX_ctrl_str(context.get(), "paramset", parameter_set),
              0);
    EVP_PKEY* made = nullptr;
    ASSERT_EQ(EVP_PKEY_keygen(context.get(), &made), 1);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        made, EVP_PKEY_free);
    const Certificate certificate(X509_new(), X509_free);
    X509_set_version(certificate.get(), 2);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
    ASSERT_EQ(X509_set_pubkey(certificate.get(), key.get()), 1);
    const EVP_MD* const digest = EVP_get_digestbyname("md_gost94");
    ASSERT_NE(digest, nullptr);
    ASSERT_GT(X509_sign(certificate.get(), key.get(), digest), 0);
    unsigned char* der = nullptr;
    const int size = i2d_X509(certificate.get(), &der);
    ASSERT_GT(size, 0);
    const unsigned char* at = der;
    const Certificate read(d2i_X509(nullptr, &at, size), X509_free);
    OPENSSL_free(der);
    ASSERT_NE(read, nullptr);
    const PublicKey info = PublicKeyOf(X509_get_X509_PUBKEY(read.get()));
    EXPECT_EQ(info.oid, kGost2001);
    EXPECT_EQ(Convert(info.oid.c_str(), info.parameters, info.bits)
                  .blob.value()
                  .size(),
              16 + info.parameters.size() + 64);
    ExpectSymmetric(info);
  }
  ENGINE_finish(gost);
  ENGINE_free(gost);
}

}  // namespace
}  // namespace korvan::test
