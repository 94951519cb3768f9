// A use of each of the library's services, by answers that are known.
#ifndef KORVAN_TESTS_LOAD_EVERY_SERVICE_H_
#define KORVAN_TESTS_LOAD_EVERY_SERVICE_H_

#include <korvan/korvan.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <sstream>
#include <string>

namespace korvan::test {

inline bool FindsRecords() {
  char oid[] = "1.2.643.2.2.19";
  const korvan::COidData* const by_oid = korvan::FindOIDInfo(
      CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  ALG_ID algid = 0x2E23;
  const korvan::COidData* const by_algid = korvan::FindOIDInfo(
      CRYPT_OID_INFO_ALGID_KEY, &algid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  // To find nothing loads all names, and to fold this one asks the C library.
  wchar_t unknown[] = L"\u0416";
  wchar_t known[] = L"common name";
  const korvan::COidData* const by_name =
      korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, known, 0);
  return korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, unknown, 0) == nullptr &&
         by_oid != nullptr && by_algid == by_oid &&
         std::wcscmp(by_oid->pwszName, L"GOST R 34.10-2001") == 0 &&
         by_name != nullptr && std::strcmp(by_name->pszOID, "2.5.4.3") == 0;
}

inline bool ReadsTexts() {
  char text[256] = {};
  return LoadString_korvan(nullptr, 8048, text, sizeof(text)) == 11 &&
         std::strcmp(text, "Common Name") == 0 &&
         LoadString_korvan(nullptr, 4, text, sizeof(text)) == 0;
}

inline bool ConvertsTexts() {
  std::string text = " text ";
  korvan::Trim(text, " ");
  return text == "text" && korvan::str_to_wstr(text) == L"text" &&
         korvan::wstr_to_str(L"text") == text;
}

inline bool ConvertsKeys() {
  char oid[] = "1.2.643.2.2.19";
  unsigned char key[66] = {0x04, 0x40};  // OCTET STRING, 64 bytes
  unsigned char parameters[] = {0x05, 0x00};
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.Algorithm.Parameters = {sizeof(parameters), parameters};
  info.PublicKey = {sizeof(key), key, 0};
  unsigned char* blob = nullptr;
  unsigned char* key_back = nullptr;
  unsigned char* parameters_back = nullptr;
  unsigned int blob_size = 0;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  const bool same =
      korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &blob_size) == 1 &&
      korvan::KRVEncodePublicKeyAndParametrs(
          0, nullptr, blob, blob_size, 0, 0, &key_back, &key_size,
          &parameters_back, &parameters_size) == 1 &&
      key_size == sizeof(key) && std::memcmp(key_back, key, sizeof(key)) == 0 &&
      parameters_size == sizeof(parameters);
  std::free(key_back);
  std::free(parameters_back);
  std::free(blob);
  return same;
}

inline bool EditsDocuments() {
  std::istringstream input("[Main]\n[key=value\n");
  korvan::CIniFileA narrow;
  narrow.Load(input);
  std::ostringstream output;
  narrow.Save(output);
  korvan::CIniFileW wide;
  wide.SetKeyValue(L"Main", L"key", L"value");
  return output.str() == "[Main]\n[key=value\n" &&
         wide.GetKeyValue(L"MAIN", L"KEY") == L"value";
}

// Lookups are apart: once the library has cleaned up, the names that were
// loaded are gone.
inline bool OtherServicesWork() {
  return ReadsTexts() && ConvertsTexts() && ConvertsKeys() && EditsDocuments();
}

inline bool EveryServiceWorks() {
  return FindsRecords() && OtherServicesWork();
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_LOAD_EVERY_SERVICE_H_
