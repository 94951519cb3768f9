// The string table: 169 texts, each known by a number, and the search for one.
// LoadString_korvan copies texts for callers; the OID registry names many of
// its records by the numbers of texts.
#ifndef KORVAN_RESOURCES_TEXTS_H_
#define KORVAN_RESOURCES_TEXTS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string_view>

namespace korvan::resources {

// The characters stand in the row itself: a pointer to them would be one more
// relocation at every load of the library.
struct TextRow {
  template <std::size_t kSize>
  consteval TextRow(std::uint16_t text_number, const char (&literal)[kSize])
      : number(text_number), length(kSize - 1) {
    std::copy_n(literal, kSize - 1, characters);
  }

  constexpr std::string_view Text() const { return {characters, length}; }

  std::uint16_t number;
  std::uint8_t length;
  char characters[46] = {};
};

// "Parametrs", "Addresss", "Sur Name" and the two blanks of 56 are how these
// texts are known. So are the twins 8091 and 8532, 8092 and 8531. They stay.
// "%1!s!" and its like are inserts for the message formatter of the caller.
// clang-format off
inline constexpr TextRow kTextRows[] = {
//   number, text
    {   1, "Quorin CSP"},
    {   2, "%1!s!\n\n%2!u!: %3!s!"},
    {   3, "%1!s!\n\n%2!u!: %3!s! (%4!s!)"},
    {  10, "GOST R 34.11-94 (Quorin 2)"},
    {  15, "GOST R 34.11-94"},
    {  20, "GOST R 34.10-94 (Quorin 2)"},
    {  25, "GOST R 34.10-94"},
    {  30, "GOST R 34.10-2001"},
    {  35, "GOST 28147-89 (Quorin 2)"},
    {  36, "GOST 28147-89 (Quorin 2) MAC"},
    {  37, "GOST 28147-89 MAC"},
    {  38, "DES (Quorin 2)"},
    {  39, "Triple DES (Quorin 2)"},
    {  40, "GOST 28147-89"},
    {  41, "RC6 (Quorin 2)"},
    {  42, "AES (Quorin 2)"},
    {  43, "RC6"},
    {  44, "AES"},
    {  45, "GOST R 34.10/34.11-94 (Quorin 2)"},
    {  50, "GOST R 34.10/34.11-94"},
    {  55, "GOST R 34.10/34.11-2001"},
    {  56, "GOST R 34.10 - 94  Quorin Ver. 2.8"},
    {  57, "GOST R 34.10 - 94 Verba - O"},
    {  58, "GOST R 34.10 - 94 Parameters 2"},
    {  59, "GOST R 34.10 - 94 Parametrs 3"},
    {  60, "GOST R 34.10 - 2001 Default parameters"},
    {  61, "GOST R 34.10 - 2001 Oskar"},
    {  62, "GOST R 34.10 - 2001 Parametrs 3"},
    {  63, "DH Default parameters"},
    {  64, "DH Parameters 2"},
    {  65, "DH Parameters 3"},
    {  66, "EDH Default parameters"},
    {  67, "EDH Parameters 2"},
    {  68, "GOST R 34.10-94 DH"},
    {  69, "GOST R 34.10-2001 DH"},
    { 101, "password.ico"},
    { 102, "device.ico"},
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
// clang-format on

// All numbers lie in two dense ranges, so a row is found by one subtraction in
// 704 bytes.
inline constexpr std::uint16_t kLowNumbers = 103;
inline constexpr std::uint16_t kFirstHighNumber = 8000;
inline constexpr std::uint16_t kHighNumbers = 601;

// Where a number stands if both ranges are put together. A number outside them
// stands where 0 does, which has no text.
constexpr unsigned int PlaceOf(unsigned int number) {
  unsigned int place = 0;
  if (number < kLowNumbers) {
    place = number;
  }
  if (number - kFirstHighNumber < kHighNumbers) {
    place = number - kFirstHighNumber + kLowNumbers;
  }
  return place;
}

using TextRowNumber = std::uint8_t;
inline constexpr TextRowNumber kNoTextRow = 0xFF;

consteval std::array<TextRowNumber, kLowNumbers + kHighNumbers>
TextRowsByPlace() {
  std::array<TextRowNumber, kLowNumbers + kHighNumbers> rows{};
  rows.fill(kNoTextRow);
  for (std::size_t row = 0; row < std::size(kTextRows); ++row) {
    rows[PlaceOf(kTextRows[row].number)] = static_cast<TextRowNumber>(row);
  }
  return rows;
}
inline constexpr auto kTextRowsByPlace = TextRowsByPlace();

// The row whose text has that number, or kNoTextRow.
constexpr TextRowNumber FindTextRow(unsigned int number) {
  return kTextRowsByPlace[PlaceOf(number)];
}

static_assert(std::size(kTextRows) == 169 && std::size(kTextRows) < kNoTextRow);
static_assert(std::ranges::adjacent_find(kTextRows, std::greater_equal{},
                                         &TextRow::number) ==
                  std::end(kTextRows),
              "numbers ascend, each stands once");
static_assert(std::ranges::all_of(kTextRows, [](const TextRow& row) {
  return &kTextRows[FindTextRow(row.number)] == &row;
}));
static_assert(std::ranges::all_of(
    std::array{0U, 4U, 103U, 7999U, 8031U, 8601U, 0xFFFFFFFFU},
    [](unsigned int number) { return FindTextRow(number) == kNoTextRow; }));
static_assert(kTextRows[FindTextRow(8048)].Text() == "Common Name");

}  // namespace korvan::resources

#endif  // KORVAN_RESOURCES_TEXTS_H_
