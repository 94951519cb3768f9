// The string table: every text, cut and whole, and its errors.
#include <gtest/gtest.h>
#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <climits>
#include <cstring>
#include <map>
#include <string>
#include <thread>

#include "support/untouched_error.h"

namespace korvan::test {
namespace {

// The texts, stated apart from the library's own table.
const std::map<unsigned int, std::string> kTexts = {
    {1, "Quorin CSP"},
    {2, "%1!s!\n\n%2!u!: %3!s!"},
    {3, "%1!s!\n\n%2!u!: %3!s! (%4!s!)"},
    {10, "GOST R 34.11-94 (Quorin 2)"},
    {15, "GOST R 34.11-94"},
    {20, "GOST R 34.10-94 (Quorin 2)"},
    {25, "GOST R 34.10-94"},
    {30, "GOST R 34.10-2001"},
    {35, "GOST 28147-89 (Quorin 2)"},
    {36, "GOST 28147-89 (Quorin 2) MAC"},
    {37, "GOST 28147-89 MAC"},
    {38, "DES (Quorin 2)"},
    {39, "Triple DES (Quorin 2)"},
    {40, "GOST 28147-89"},
    {41, "RC6 (Quorin 2)"},
    {42, "AES (Quorin 2)"},
    {43, "RC6"},
    {44, "AES"},
    {45, "GOST R 34.10/34.11-94 (Quorin 2)"},
    {50, "GOST R 34.10/34.11-94"},
    {55, "GOST R 34.10/34.11-2001"},
    {56, "GOST R 34.10 - 94  Quorin Ver. 2.8"},
    {57, "GOST R 34.10 - 94 Verba - O"},
    {58, "GOST R 34.10 - 94 Parameters 2"},
    {59, "GOST R 34.10 - 94 Parametrs 3"},
    {60, "GOST R 34.10 - 2001 Default parameters"},
    {61, "GOST R 34.10 - 2001 Oskar"},
    {62, "GOST R 34.10 - 2001 Parametrs 3"},
    {63, "DH Default parameters"},
    {64, "DH Parameters 2"},
    {65, "DH Parameters 3"},
    {66, "EDH Default parameters"},
    {67, "EDH Parameters 2"},
    {68, "GOST R 34.10-94 DH"},
    {69, "GOST R 34.10-2001 DH"},
    {101, "password.ico"},
    {102, "device.ico"},
    {8000, "Authority Key Identifier"},
    {8001, "Key Attributes"},
    {8002, "Key Usage Restriction"},
    {8003, "Subject Alternative Name"},
    {8004, "Issuer Alternative Name"},
    {8005, "Basic Constraints"},
    {8006, "Key Usage"},
    {8007, "Certificate Policies"},
    {8008, "Subject Key Identifier"},
    {8009, "CRL Reason Code"},
    {8010, "CRL Distribution Points"},
    {8011, "Enhanced Key Usage"},
    {8012, "Authority Information Access"},
    {8013, "Certificate Extensions"},
    {8014, "Next Update Location"},
    {8015, "Yes or No Trust"},
    {8016, "Email Address"},
    {8017, "Unstructured Name"},
    {8018, "Content Type"},
    {8019, "Message Digest"},
    {8020, "Signing Time"},
    {8021, "Counter Sign"},
    {8022, "Challenge Password"},
    {8023, "Unstructured Addresss"},
    {8024, "SMIME Capabilities"},
    {8025, "Prefer Signed Data"},
    {8026, "CPS"},
    {8027, "User Notice"},
    {8028, "On-line Certificate Status Protocol"},
    {8029, "Certification Authority Issuer"},
    {8030, "Certificate Template Name"},
    {8032, "Certificate Type"},
    {8033, "Certificate Manifold"},
    {8034, "Netscape Cert Type"},
    {8035, "Netscape Base URL"},
    {8036, "Netscape Revocation URL"},
    {8037, "Netscape CA Revocation URL"},
    {8038, "Netscape Cert Renewal URL"},
    {8039, "Netscape CA Policy URL"},
    {8040, "Netscape SSL ServerName"},
    {8041, "Netscape Comment"},
    {8042, "SpcSpAgencyInfo"},
    {8043, "SpcFinancialCriteria"},
    {8044, "SpcMinimalCriteria"},
    {8045, "Country/Region"},
    {8046, "Organization"},
    {8047, "Organizational Unit"},
    {8048, "Common Name"},
    {8049, "Locality"},
    {8050, "State Or Province"},
    {8051, "Title"},
    {8052, "Given Name"},
    {8053, "Initials"},
    {8054, "Sur Name"},
    {8055, "Domain Component"},
    {8056, "Street Address"},
    {8057, "Identifier"},
    {8058, "CA Version"},
    {8059, "Serialized Signature Serial Number"},
    {8060, "Principal Name"},
    {8061, "Windows Product Update"},
    {8062, "Enrollment Name Value Pair"},
    {8063, "OS Version"},
    {8064, "Enrollment CSP"},
    {8065, "CRL Number"},
    {8066, "Delta CRL Indicator"},
    {8067, "Issuing Distribution Point"},
    {8068, "Freshest CRL"},
    {8069, "Name Constraints"},
    {8070, "Policy Mappings"},
    {8071, "Policy Constraints"},
    {8072, "Cross-Certificate Distribution Points"},
    {8073, "Application Policies"},
    {8074, "Application Policy Mappings"},
    {8075, "Application Policy Constraints"},
    {8076, "CMC Data"},
    {8077, "CMC Response"},
    {8078, "Unsigned CMC Request"},
    {8079, "CMC Status Info"},
    {8080, "CMC Extensions"},
    {8081, "CMC Attributes"},
    {8082, "PKCS 7 Data"},
    {8083, "PKCS 7 Signed"},
    {8084, "PKCS 7 Enveloped"},
    {8085, "PKCS 7 Signed Enveloped"},
    {8086, "PKCS 7 Digested"},
    {8087, "PKCS 7 Encrypted"},
    {8088, "Previous CA Certificate Hash"},
    {8089, "Virtual Base CRL Number"},
    {8090, "Next CRL Publish"},
    {8091, "CA Encryption Certificate"},
    {8092, "Key Recovery Agent"},
    {8093, "Certificate Template Information"},
    {8094, "Enterprise Root OID"},
    {8095, "Dummy Signer"},
    {8096, "Encrypted Private Key"},
    {8097, "Published CRL Locations"},
    {8098, "Enforce Certificate Chain Policy"},
    {8200, "Postal Address"},
    {8201, "Pseudonym"},
    {8500, "Server Authentication"},
    {8501, "Client Authentication"},
    {8502, "Code Signing"},
    {8503, "Secure Email"},
    {8504, "Time Stamping"},
    {8505, "Microsoft Trust List Signing"},
    {8506, "Microsoft Time Stamping"},
    {8507, "IP security end system"},
    {8508, "IP security tunnel termination"},
    {8509, "IP security user"},
    {8512, "Encrypting File System"},
    {8513, "Windows Hardware Driver Verification"},
    {8514, "Windows System Component Verification"},
    {8515, "OEM Windows System Component Verification"},
    {8516, "Embedded Windows System Component Verification"},
    {8517, "Key Pack Licenses"},
    {8518, "License Server Verification"},
    {8519, "Smart Card Logon"},
    {8520, "Digital Rights"},
    {8521, "Qualified Subordination"},
    {8522, "Key Recovery"},
    {8523, "Document Signing"},
    {8524, "IP security IKE intermediate"},
    {8525, "File Recovery"},
    {8527, "Root List Signer"},
    {8528, "All application policies"},
    {8529, "Directory Service Email Replication"},
    {8530, "Certificate Request Agent"},
    {8531, "Key Recovery Agent"},
    {8532, "CA Encryption Certificate"},
    {8533, "Lifetime Signing"},
    {8600, "All issuance policies"},
};

// A buffer larger than any text, filled with what no text holds.
std::string Filled() { return std::string(300, '#'); }

TEST(LoadString, ATextIsCopiedButNeverATerminator) {
  std::string buffer(12, '#');
  EXPECT_EQ(LoadString_korvan(nullptr, 8048, &buffer[0], 12), 11);
  EXPECT_EQ(buffer, "Common Name#");
}

TEST(LoadString, ExactlyTheStatedTextsAreKnown) {
  EXPECT_EQ(kTexts.size(), 169u);
  for (unsigned int id = 0; id < 0x20000; ++id) {
    std::string buffer = Filled();
    SetLastError(kUntouchedError);
    const int length = LoadString_korvan(nullptr, id, &buffer[0], 300);
    const auto text = kTexts.find(id);
    if (text == kTexts.end()) {
      ASSERT_EQ(length, 0) << id;
      ASSERT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << id;
    } else {
      ASSERT_EQ(buffer.substr(0, static_cast<std::size_t>(length)),
                text->second);
      ASSERT_EQ(GetLastError(), kUntouchedError) << id;
    }
  }
}

TEST(LoadString, NoMoreThanTheSizeIsCopiedAndNothingBeyondIsTouched) {
  for (const auto& [id, text] : kTexts) {
    const int length = static_cast<int>(text.size());
    for (int size = 0; size <= length + 3; ++size) {
      const int copied = size < length ? size : length;
      std::string expected = Filled();
      expected.replace(0, static_cast<std::size_t>(copied), text, 0,
                       static_cast<std::size_t>(copied));
      std::string buffer = Filled();
      SetLastError(kUntouchedError);
      ASSERT_EQ(LoadString_korvan(nullptr, id, &buffer[0], size), copied);
      ASSERT_EQ(buffer, expected) << id << ", size " << size;
      ASSERT_EQ(GetLastError(), kUntouchedError);
    }
  }
}

TEST(LoadString, ANegativeSizeSetsNoLimit) {
  for (const auto& [id, text] : kTexts) {
    for (int size : {-1, -2, -255, INT_MIN}) {
      std::string expected = Filled();
      expected.replace(0, text.size(), text);
      std::string buffer = Filled();
      SetLastError(kUntouchedError);
      ASSERT_EQ(LoadString_korvan(nullptr, id, &buffer[0], size),
                static_cast<int>(text.size()));
      ASSERT_EQ(buffer, expected) << id << ", size " << size;
      ASSERT_EQ(GetLastError(), kUntouchedError);
    }
  }
}

TEST(LoadString, ASizeOf0CopiesNothingAndIsNoError) {
  char buffer = '#';
  SetLastError(kUntouchedError);
  EXPECT_EQ(LoadString_korvan(nullptr, 8048, &buffer, 0), 0);
  EXPECT_EQ(buffer, '#');
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

TEST(LoadString, AnUnknownNumberZeroesTheFirstByteWhateverTheSize) {
  for (unsigned int id :
       {0u, 4u, 8031u, 8526u, 8601u, 0x80000001u, 0xFFFFFFFFu}) {
    for (int size : {-1, INT_MIN, 0, 1, 100, INT_MAX}) {
      char buffer[2] = {'#', '#'};
      SetLastError(kUntouchedError);
      EXPECT_EQ(LoadString_korvan(nullptr, id, buffer, size), 0);
      EXPECT_EQ(buffer[0], '\0');
      EXPECT_EQ(buffer[1], '#');
      EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
  }
}

TEST(LoadString, ANullBufferIsRefused) {
  for (unsigned int id : {8048u, 0u}) {
    for (int size : {-1, 0, 100}) {
      SetLastError(kUntouchedError);
      EXPECT_EQ(LoadString_korvan(nullptr, id, nullptr, size), 0);
      EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
  }
}

TEST(LoadString, TheModuleIsIgnored) {
  char buffer[12] = {};
  EXPECT_EQ(LoadString_korvan(buffer, 8048, buffer, 11), 11);
  EXPECT_STREQ(buffer, "Common Name");
}

TEST(LoadString, OddTextsStayAsTheyAreKnown) {
  char buffer[64] = {};
  EXPECT_EQ(LoadString_korvan(nullptr, 2, buffer, 63), 19);
  EXPECT_STREQ(buffer, "%1!s!\n\n%2!u!: %3!s!");
  EXPECT_EQ(LoadString_korvan(nullptr, 56, buffer, 63), 34);
  EXPECT_STREQ(buffer, "GOST R 34.10 - 94  Quorin Ver. 2.8");
}

TEST(LoadString, AFailureSetsTheLastErrorOfItsOwnThreadOnly) {
  SetLastError(kUntouchedError);
  unsigned int set_there = 0;
  std::thread([&] {
    LoadString_korvan(nullptr, 8048, nullptr, 0);
    set_there = GetLastError();
  }).join();
  EXPECT_EQ(set_there, ERROR_INVALID_PARAMETER);
  EXPECT_EQ(GetLastError(), kUntouchedError);
}

}  // namespace
}  // namespace korvan::test
