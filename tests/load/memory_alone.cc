// A process that has nothing but memory: looks records up, reads texts,
// converts keys and edits a document, and exits with 0 if all answers are
// right.
//
//   memory_alone                      between marks for strace
//   memory_alone in_empty_root FOLDER where there is no file
//   memory_alone under_strict_seccomp where the kernel kills whoever calls it
#include <korvan/korvan.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <locale>
#include <sstream>
#include <string>

namespace {

bool FindsRecords() {
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

bool ReadsTexts() {
  char text[256] = {};
  return LoadString_korvan(nullptr, 8048, text, sizeof(text)) == 11 &&
         std::strcmp(text, "Common Name") == 0 &&
         LoadString_korvan(nullptr, 4, text, sizeof(text)) == 0;
}

bool ConvertsTexts() {
  std::string text = " text ";
  korvan::Trim(text, " ");
  return text == "text" && korvan::str_to_wstr(text) == L"text" &&
         korvan::wstr_to_str(L"text") == text;
}

bool ConvertsKeys() {
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

bool EditsDocuments() {
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

void Require(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
  }
}

// Twice: what is loaded lazily, and what is there.
bool WorksInMemory() {
  for (int round = 0; round < 2; ++round) {
    if (!FindsRecords() || !ReadsTexts() || !ConvertsTexts() ||
        !ConvertsKeys() || !EditsDocuments()) {
      return false;
    }
  }
  return true;
}

// Shows in a trace, and does nothing.
void Mark(const char* mark) {
  if (write(-1, mark, std::strlen(mark)) == 0) {
    std::abort();
  }
}

bool EntersEmptyRoot(const char* folder) {
  return (geteuid() == 0 || unshare(CLONE_NEWUSER) == 0) &&
         chroot(folder) == 0 && chdir("/") == 0 && access("/usr", F_OK) != 0;
}

// Memory that malloc has already is all that there will be.
bool EntersStrictSeccomp() {
  constexpr int kRoom = 8 << 20;
  if (mallopt(M_MMAP_THRESHOLD, 2 * kRoom) == 0 ||
      mallopt(M_TRIM_THRESHOLD, 2 * kRoom) == 0) {
    return false;
  }
  void* volatile room = std::malloc(kRoom);
  std::free(room);
  return room != nullptr && prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  Mark("main");
  // Whatever comes of it: a process may well be started with a nonsense LANG.
  std::setlocale(LC_ALL, "");
  // The first stream of a process makes this, under a lock of its own, and its
  // first allocation asks for a random number.
  const std::locale streams;
  void* volatile allocation = std::malloc(1);
  std::free(allocation);
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "in_empty_root") {
    Require(argc == 3 && EntersEmptyRoot(argv[2]), "no empty root can be made");
  } else if (mode == "under_strict_seccomp") {
    Require(EntersStrictSeccomp(), "strict seccomp can't be entered");
  }
  Mark("work");
  const bool works = WorksInMemory();
  Mark("end");
  if (mode == "under_strict_seccomp") {
    // The only way out that is open.
    syscall(SYS_exit, works ? 0 : 1);
  }
  Require(works, "an answer is wrong");
}
