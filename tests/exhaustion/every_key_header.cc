// All first three bytes of public keys, at lengths about those where the form
// of a header changes, and all keys of up to two bytes.
#include <korvan/public_key.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include "exhaustion/every.h"
#include "pubkey/model.h"

namespace korvan::test {
namespace {

constexpr std::uint64_t kHeaders = std::uint64_t{1} << 24;

class Check {
 public:
  explicit Check(unsigned int size) : bits_(Counted(size)) {
    info_.Algorithm.pszObjId = oid_;
  }
  Check(const Check& other) : Check(SizeOf(other.bits_)) {}
  Check& operator=(const Check&) = delete;
  ~Check() { std::free(blob_); }

  std::string operator()(std::uint64_t header) {
    for (std::size_t i = 0; i < 3 && i < bits_.size(); ++i) {
      bits_[i] = static_cast<unsigned char>(header >> (8 * i));
    }
    info_.PublicKey = {SizeOf(bits_), bits_.data(), 0};
    // It frees the blob of the call before.
    const int result =
        KRVConvertPublicKeyInfo(0, &info_, 0, 0, &blob_, &blob_size_);
    const Bytes expected = ModelBlob(0x2E23, {}, bits_);
    if (result == 1 && blob_size_ == expected.size() &&
        std::memcmp(blob_, expected.data(), expected.size()) == 0) {
      return "";
    }
    return "a key of " + std::to_string(bits_.size()) +
           " bytes, which begins " + std::to_string(header);
  }

 private:
  char oid_[15] = "1.2.643.2.2.19";
  CERT_PUBLIC_KEY_INFO info_ = {};
  Bytes bits_;
  unsigned char* blob_ = nullptr;
  unsigned int blob_size_ = 0;
};

int LookAt(unsigned int size, std::uint64_t count) {
  const std::string what = "keys of " + std::to_string(size) + " bytes";
  return LookAtEvery(what.c_str(), count, [&] { return Check(size); });
}

}  // namespace
}  // namespace korvan::test

int main() {
  using korvan::test::kHeaders;
  using korvan::test::LookAt;
  int status = LookAt(0, 1) | LookAt(1, 1 << 8) | LookAt(2, 1 << 16);
  for (const unsigned int size : {3U, 4U, 66U, 67U, 129U, 130U, 131U, 132U,
                                  133U, 257U, 258U, 259U, 260U}) {
    status |= LookAt(size, kHeaders);
  }
  return status;
}
