// Keys that do not come back from a blob as they went in.
#include <korvan/korvan.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

// Prints the sizes of a bit string, of the key in its blob and of the bit
// string that comes back.
static bool Show(const char* what, const char* oid,
                 std::vector<unsigned char> bits, std::size_t size) {
  bits.resize(size, 0x5A);
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = const_cast<char*>(oid);  // only read
  info.PublicKey = {DWORD(size), bits.data(), 0};
  unsigned char* blob = nullptr;
  unsigned char* back = nullptr;
  unsigned int blob_size = 0;
  unsigned int back_size = 0;
  unsigned int parameters_size = 0;
  const bool done =
      korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &blob_size) &&
      korvan::KRVEncodePublicKeyAndParametrs(0, nullptr, blob, blob_size, 0, 0,
                                             &back, &back_size, nullptr,
                                             &parameters_size);
  std::printf("%s: %zu, in the blob %u, back %u\n", what, size, blob_size - 16,
              back_size);
  std::free(blob);
  std::free(back);
  return done;
}

int main() {
  const char* const gost2001 = "1.2.643.2.2.19";
  const char* const own94 = "1.3.6.1.4.1.86913.2.1.2.2";  // 0x2E29
  const char* const rsa = "1.2.840.113549.1.1.1";
  const bool done =
      Show("unwrapped, and wrapped again", gost2001, {0x04, 0x40}, 66) &&
      Show("one byte over, which is lost", gost2001, {0x04, 0x3F}, 66) &&
      Show("a longer header than needed", gost2001, {0x04, 0x81, 0x40}, 67) &&
      Show("one byte short, taken whole", gost2001, {0x04, 0x40}, 65) &&
      Show("an RSA key, taken whole", rsa, {0x30, 0x82, 1, 0x0A}, 270) &&
      Show("0x2E29, bare", own94, {}, 128) &&
      Show("0x2E29, in an OCTET STRING", own94, {0x04, 0x81, 0x80}, 131);
  return done && std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// unwrapped, and wrapped again: 66, in the blob 64, back 66
// one byte over, which is lost: 66, in the blob 63, back 65
// a longer header than needed: 67, in the blob 64, back 66
// one byte short, taken whole: 65, in the blob 65, back 67
// an RSA key, taken whole: 270, in the blob 270, back 274
// 0x2E29, bare: 128, in the blob 128, back 128
// 0x2E29, in an OCTET STRING: 131, in the blob 128, back 128
