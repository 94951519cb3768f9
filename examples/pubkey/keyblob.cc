// Turns the public keys of certificates into key blobs, and back.

#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>
#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kBadUsage = 2;

constexpr char kUsage[] =
    R"(usage: keyblob CERTIFICATE [--out FILE] [--check]
       keyblob --back BLOB

Prints the public key of each certificate in CERTIFICATE, a PEM or DER file of
one or several, and the key blob that it makes.
--out FILE   writes the blob; CERTIFICATE must then hold one certificate
--check      goes back from the blob, and says whether the certificate's public
             key info comes out byte for byte
--back BLOB  turns a blob into the bit string's content and the parameters

Exit status: 0 done, 1 something failed or came out otherwise, 2 bad usage.
)";

using Bytes = std::vector<unsigned char>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

// What ends the work on a file or a certificate, in words for its user.
using Failure = std::runtime_error;

// Frees what the library hands out.
struct Freer {
  void operator()(unsigned char* buffer) const { std::free(buffer); }
};
using HandedOut = std::unique_ptr<unsigned char, Freer>;

Bytes ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) {
    throw Failure(std::strerror(errno));
  }
  std::ostringstream text;
  if (!(text << file.rdbuf())) {
    throw Failure("nothing can be read from it");
  }
  const std::string read = text.str();
  return Bytes(read.begin(), read.end());
}

void WriteFile(const std::string& name, const Bytes& bytes) {
  std::ofstream file(name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    throw Failure(name + ": cannot be written");
  }
}

std::vector<Certificate> PemCertificates(const Bytes& bytes) {
  std::vector<Certificate> found;
  const std::unique_ptr<BIO, decltype(&BIO_free)> text(
      BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())), BIO_free);
  while (X509* const one =
             PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr)) {
    found.emplace_back(one, X509_free);
  }
  if (ERR_GET_REASON(ERR_peek_last_error()) != PEM_R_NO_START_LINE) {
    throw Failure("certificate " + std::to_string(found.size() + 1) +
                  " is damaged");
  }
  ERR_clear_error();
  return found;
}

std::vector<Certificate> DerCertificates(const Bytes& bytes) {
  std::vector<Certificate> found;
  const unsigned char* at = bytes.data();
  const unsigned char* const end = at + bytes.size();
  while (at != end) {
    X509* const one = d2i_X509(nullptr, &at, end - at);
    if (one == nullptr) {
      throw Failure("certificate " + std::to_string(found.size() + 1) +
                    " is damaged, or this is no certificate");
    }
    found.emplace_back(one, X509_free);
  }
  return found;
}

std::vector<Certificate> Certificates(const Bytes& bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()),
                              bytes.size());
  std::vector<Certificate> found =
      text.find("-----BEGIN ") == std::string_view::npos
          ? DerCertificates(bytes)
          : PemCertificates(bytes);
  if (found.empty()) {
    throw Failure("there is no certificate in it");
  }
  return found;
}

std::string DottedOid(const ASN1_OBJECT* oid) {
  std::string dotted(
      static_cast<std::size_t>(OBJ_obj2txt(nullptr, 0, oid, 1)) + 1, '\0');
  OBJ_obj2txt(dotted.data(), static_cast<int>(dotted.size()), oid, 1);
  dotted.pop_back();
  return dotted;
}

// The OID and the name that the library knows for it, if it does.
std::string Named(std::string oid, unsigned int group) {
  const korvan::COidData* const found =
      korvan::FindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid.data(), group);
  char name[256] = {};
  if (found == nullptr || found->pwszName == nullptr ||
      std::wcstombs(name, found->pwszName, sizeof(name) - 1) ==
          static_cast<std::size_t>(-1)) {
    return oid;
  }
  return oid + "  " + name;
}

// A certificate's public key info in its pieces.
struct PublicKeyInfo {
  Bytes encoded;  // whole, in DER
  std::string oid;
  Bytes parameters;
  Bytes bits;

  explicit PublicKeyInfo(const X509* certificate) {
    const X509_PUBKEY* const info = X509_get_X509_PUBKEY(certificate);
    unsigned char* der = nullptr;
    const int size = i2d_X509_PUBKEY(info, &der);
    ASN1_OBJECT* algorithm = nullptr;
    const unsigned char* key = nullptr;
    int key_size = 0;
    X509_ALGOR* identifier = nullptr;
    if (size <= 0 || X509_PUBKEY_get0_param(&algorithm, &key, &key_size,
                                            &identifier, info) != 1) {
      throw Failure("its public key cannot be read");
    }
    encoded.assign(der, der + size);
    OPENSSL_free(der);
    oid = DottedOid(algorithm);
    bits.assign(key, key + key_size);
    if (identifier->parameter != nullptr) {
      der = nullptr;
      const int length = i2d_ASN1_TYPE(identifier->parameter, &der);
      parameters.assign(der, der + length);
      OPENSSL_free(der);
    }
  }
};

Bytes Blob(PublicKeyInfo& key) {
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = key.oid.data();
  info.Algorithm.Parameters = {static_cast<DWORD>(key.parameters.size()),
                               key.parameters.data()};
  info.PublicKey = {static_cast<DWORD>(key.bits.size()), key.bits.data(), 0};
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  if (korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size) == 0) {
    switch (GetLastError()) {
      case NTE_BAD_ALGID:
        throw Failure(Named(key.oid, 0) +
                      " is no public-key algorithm of the registry");
      case NTE_NO_MEMORY:
        throw Failure("no memory for a blob of " + std::to_string(size) +
                      " bytes");
      default:
        throw Failure("last error " + std::to_string(GetLastError()));
    }
  }
  const HandedOut owner(blob);
  return Bytes(blob, blob + size);
}

// What a blob comes from.
struct Pieces {
  Bytes bits;
  Bytes parameters;
};

Pieces Split(const Bytes& blob) {
  unsigned char* key = nullptr;
  unsigned char* parameters = nullptr;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  const int done = korvan::KRVEncodePublicKeyAndParametrs(
      0, nullptr, blob.data(), static_cast<unsigned int>(blob.size()), 0, 0,
      &key, &key_size, &parameters, &parameters_size);
  const HandedOut key_owner(key);
  const HandedOut parameters_owner(parameters);
  if (done == 0) {
    throw Failure(GetLastError() == NTE_BAD_KEY
                      ? "it is too short for a blob and its key"
                      : "last error " + std::to_string(GetLastError()));
  }
  Pieces pieces;
  pieces.bits.assign(key, key + key_size);
  if (parameters != nullptr) {
    pieces.parameters.assign(parameters, parameters + parameters_size);
  }
  return pieces;
}

// One record in DER: header and content.
Bytes Record(int tag, bool constructed, const Bytes& content) {
  const int size = static_cast<int>(content.size());
  Bytes record(
      static_cast<std::size_t>(ASN1_object_size(constructed, size, tag)));
  unsigned char* at = record.data();
  ASN1_put_object(&at, constructed, size, tag, V_ASN1_UNIVERSAL);
  std::memcpy(at, content.data(), content.size());
  return record;
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// SubjectPublicKeyInfo in DER (RFC 5280, 4.1).
Bytes EncodedInfo(const std::string& oid, const Pieces& pieces) {
  ASN1_OBJECT* const algorithm = OBJ_txt2obj(oid.c_str(), 1);
  unsigned char* der = nullptr;
  const int size = i2d_ASN1_OBJECT(algorithm, &der);
  const Bytes identifier(der, der + size);
  OPENSSL_free(der);
  ASN1_OBJECT_free(algorithm);
  return Record(V_ASN1_SEQUENCE, true,
                Record(V_ASN1_SEQUENCE, true, identifier + pieces.parameters) +
                    Record(V_ASN1_BIT_STRING, false, Bytes{0} + pieces.bits));
}

// Prints the OIDs in DER records, those inside constructed ones too.
void PrintOids(const unsigned char* at, const unsigned char* end) {
  while (at < end) {
    const unsigned char* const record = at;
    long size = 0;
    int tag = 0;
    int tag_class = 0;
    const int kind = ASN1_get_object(&at, &size, &tag, &tag_class, end - at);
    if ((kind & 0x80) != 0) {
      ERR_clear_error();
      return;
    }
    if ((kind & V_ASN1_CONSTRUCTED) != 0) {
      PrintOids(at, at + size);
    } else if (tag == V_ASN1_OBJECT && tag_class == V_ASN1_UNIVERSAL) {
      const unsigned char* from = record;
      if (ASN1_OBJECT* const oid =
              d2i_ASN1_OBJECT(nullptr, &from, at + size - record)) {
        std::cout << "                " << Named(DottedOid(oid), 0) << '\n';
        ASN1_OBJECT_free(oid);
      }
    }
    at += size;
  }
}

constexpr std::size_t kHexLine = 16;

// Prints a field of the blob, its name on the first line.
void PrintField(const Bytes& blob, std::size_t from, std::size_t count,
                const std::string& name) {
  for (std::size_t line = 0; line < count; line += kHexLine) {
    std::printf("    %04zx ", from + line);
    const std::size_t end = std::min(line + kHexLine, count);
    for (std::size_t i = line; i < end; ++i) {
      std::printf(" %02x", blob[from + i]);
    }
    if (line == 0 && !name.empty()) {
      std::printf("%*s  %s", static_cast<int>(3 * (kHexLine - (end - line))),
                  "", name.c_str());
    }
    std::printf("\n");
  }
}

unsigned int NumberAt(const Bytes& blob, std::size_t at) {
  unsigned int number = 0;
  for (std::size_t i = 4; i > 0; --i) {
    number = number << 8 | blob[at + i - 1];
  }
  return number;
}

std::string Hex(unsigned int number) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%04X", number);
  return text;
}

// Prints the header, whose layout docs/key_blob.md tells, and what follows it.
void PrintBlob(const Bytes& blob) {
  const unsigned int bits = NumberAt(blob, 12);
  const std::size_t key = bits / 8;
  const std::size_t parameters = blob.size() - 16 - key;
  std::cout << "  blob        " << blob.size() << " bytes\n" << std::flush;
  PrintField(blob, 0, 1, "bType, a public key blob");
  PrintField(blob, 1, 1, "bVersion");
  PrintField(blob, 2, 2, "reserved");
  PrintField(blob, 4, 4, "aiKeyAlg, " + Hex(NumberAt(blob, 4)));
  PrintField(blob, 8, 4, "magic, \"MAG1\"");
  PrintField(blob, 12, 4, "bitLen, " + std::to_string(bits));
  PrintField(blob, 16, parameters, "parameters");
  PrintField(blob, 16 + parameters, key, "key");
  std::fflush(stdout);
}

// Why a key does not come back as it was.
const char* ReasonForAnotherWayBack(const PublicKeyInfo& key,
                                    const Bytes& blob) {
  const bool unwrapped = NumberAt(blob, 12) / 8 != key.bits.size();
  const bool bare = NumberAt(blob, 4) == 0x2E29;
  if (!unwrapped && !bare) {
    return R"(
              The key is no OCTET STRING with a header of two or three bytes,
              so the blob has it whole; and on the way back the key of every
              algorithm but 0x2E29 is put into an OCTET STRING.)";
  }
  if (bare) {
    return R"(
              The key is an OCTET STRING and was unwrapped; and on the way back
              the key of 0x2E29 is not wrapped again.)";
  }
  return R"(
              The key's OCTET STRING is not in DER, and comes back so.)";
}

// Goes back from the blob and tells what came out; true if it is the same.
bool Check(const PublicKeyInfo& key, const Bytes& blob) {
  const Bytes again = EncodedInfo(key.oid, Split(blob));
  if (again == key.encoded) {
    std::cout << "  check       the certificate's public key info, "
              << again.size() << " bytes, comes out byte for byte\n";
    return true;
  }
  std::cout << "  check       " << key.encoded.size() << " bytes went in, "
            << again.size() << " other ones come out."
            << ReasonForAnotherWayBack(key, blob) << '\n';
  return false;
}

struct Order {
  std::string certificates;
  std::string back;
  std::string out;
  bool check = false;
};

bool Show(const X509* certificate, const Order& order) {
  char subject[256] = {};
  X509_NAME_oneline(X509_get_subject_name(certificate), subject,
                    sizeof(subject) - 1);
  std::cout << "  subject     " << subject << '\n';
  PublicKeyInfo key(certificate);
  const Bytes blob = Blob(key);
  std::cout << "  algorithm   " << Named(key.oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID)
            << "\n  ALG_ID      " << Hex(NumberAt(blob, 4))
            << "\n  key         " << NumberAt(blob, 12) << " bits"
            << "\n  parameters  " << key.parameters.size() << " bytes\n";
  PrintOids(key.parameters.data(),
            key.parameters.data() + key.parameters.size());
  PrintBlob(blob);
  if (!order.out.empty()) {
    WriteFile(order.out, blob);
  }
  return !order.check || Check(key, blob);
}

bool ShowAll(const Order& order) {
  const auto certificates = Certificates(ReadFile(order.certificates));
  if (!order.out.empty() && certificates.size() != 1) {
    throw Failure("it holds " + std::to_string(certificates.size()) +
                  " certificates, and --out writes the blob of one");
  }
  bool all_well = true;
  for (std::size_t i = 0; i < certificates.size(); ++i) {
    std::cout << "certificate " << i + 1 << " of " << certificates.size()
              << '\n';
    try {
      all_well &= Show(certificates[i].get(), order);
    } catch (const Failure& failure) {
      std::cout << std::flush;
      std::cerr << "keyblob: " << order.certificates << ", certificate "
                << i + 1 << ": " << failure.what() << '\n';
      all_well = false;
    }
  }
  return all_well;
}

bool ShowBack(const Order& order) {
  const Pieces pieces = Split(ReadFile(order.back));
  std::cout << "bit string's content, " << pieces.bits.size() << " bytes\n"
            << std::flush;
  PrintField(pieces.bits, 0, pieces.bits.size(), "");
  std::printf("parameters, %zu bytes\n", pieces.parameters.size());
  PrintField(pieces.parameters, 0, pieces.parameters.size(), "");
  std::fflush(stdout);
  PrintOids(pieces.parameters.data(),
            pieces.parameters.data() + pieces.parameters.size());
  return true;
}

std::optional<Order> OrderFrom(const std::vector<std::string>& arguments) {
  Order order;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const bool more = i + 1 < arguments.size();
    if (arguments[i] == "--check") {
      order.check = true;
    } else if (arguments[i] == "--out" && more && order.out.empty()) {
      order.out = arguments[++i];
    } else if (arguments[i] == "--back" && more && order.back.empty()) {
      order.back = arguments[++i];
    } else if (arguments[i].rfind("--", 0) != 0 && order.certificates.empty()) {
      order.certificates = arguments[i];
    } else {
      return std::nullopt;
    }
  }
  const bool back = !order.back.empty();
  if (back == !order.certificates.empty() ||
      (back && (order.check || !order.out.empty()))) {
    return std::nullopt;
  }
  return order;
}

// What was printed may only now fail to be written.
int Finish(int status) {
  std::cout << std::flush;
  if (!std::cout || std::ferror(stdout) != 0) {
    std::cerr << "keyblob: the output cannot be written\n";
    return kFailed;
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments == std::vector<std::string>{"--help"}) {
    std::cout << kUsage;
    return Finish(kDone);
  }
  const std::optional<Order> order = OrderFrom(arguments);
  if (!order) {
    std::cerr << kUsage;
    return kBadUsage;
  }
  const bool back = !order->back.empty();
  try {
    const bool well = back ? ShowBack(*order) : ShowAll(*order);
    return Finish(well ? kDone : kFailed);
  } catch (const std::exception& failure) {
    std::cerr << "keyblob: " << (back ? order->back : order->certificates)
              << ": " << failure.what() << '\n';
    return kFailed;
  }
}
