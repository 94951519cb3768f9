// Reads and writes public key infos by OpenSSL. All input is untrusted.
#include "tools/public_key_info.h"

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "tools/program.h"
#include "tools/text.h"

namespace korvan::tools {

namespace {

template <auto kFree>
struct Freer {
  template <class T>
  void operator()(T* object) const {
    kFree(object);
  }
};
template <class T, auto kFree>
using Owned = std::unique_ptr<T, Freer<kFree>>;

void FreeBytes(void* bytes) { OPENSSL_free(bytes); }

// What an i2d function writes; it owns nothing afterwards.
template <class Encode>
Bytes Encoded(Encode encode) {
  unsigned char* der = nullptr;
  const int size = encode(&der);
  const Owned<unsigned char, FreeBytes> owner(der);
  if (size < 0) {
    throw std::bad_alloc();
  }
  return Bytes(der, der + size);
}

std::string DottedOid(const ASN1_OBJECT* oid) {
  const int length = OBJ_obj2txt(nullptr, 0, oid, 1);
  if (length <= 0) {
    return "?";
  }
  std::string dotted(static_cast<std::size_t>(length) + 1, '\0');
  OBJ_obj2txt(dotted.data(), length + 1, oid, 1);
  dotted.pop_back();
  return dotted;
}

// The subject's names as RFC 2253 writes them, in UTF-8.
std::wstring SubjectOf(const X509* certificate) {
  const Owned<BIO, BIO_free> text(BIO_new(BIO_s_mem()));
  char* start = nullptr;
  if (!text ||
      X509_NAME_print_ex(text.get(), X509_get_subject_name(certificate), 0,
                         XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB) < 0) {
    return L"?";
  }
  const long size = BIO_get_mem_data(text.get(), &start);
  return FromUtf8({start, static_cast<std::size_t>(size)});
}

PublicKeyInfo Parts(const X509_PUBKEY* info) {
  PublicKeyInfo parts;
  ASN1_OBJECT* algorithm = nullptr;
  const unsigned char* key = nullptr;
  int key_size = 0;
  X509_ALGOR* identifier = nullptr;
  X509_PUBKEY_get0_param(&algorithm, &key, &key_size, &identifier, info);
  parts.encoded =
      Encoded([&](unsigned char** der) { return i2d_X509_PUBKEY(info, der); });
  parts.oid = DottedOid(algorithm);
  parts.bits.assign(key, key + key_size);
  // The number of unused bits stands before the content, which ends the whole.
  parts.unused_bits = *(parts.encoded.end() - key_size - 1);
  if (identifier->parameter != nullptr) {
    parts.parameters = Encoded([&](unsigned char** der) {
      return i2d_ASN1_TYPE(identifier->parameter, der);
    });
  }
  return parts;
}

// Reads a certificate or a public key info, whichever it is, and moves `at`
// behind it.
std::optional<PublicKeyInfo> ReadOne(const unsigned char*& at,
                                     const unsigned char* end) {
  const unsigned char* const start = at;
  std::optional<PublicKeyInfo> read;
  if (const Owned<X509, X509_free> certificate{
          d2i_X509(nullptr, &at, end - at)}) {
    read = Parts(X509_get_X509_PUBKEY(certificate.get()));
    read->subject = SubjectOf(certificate.get());
  } else {
    at = start;
    if (const Owned<X509_PUBKEY, X509_PUBKEY_free> info{
            d2i_X509_PUBKEY(nullptr, &at, end - at)}) {
      read = Parts(info.get());
      read->encoded.assign(start, at);
    }
  }
  ERR_clear_error();
  return read;
}

[[noreturn]] void FailDamaged(std::size_t number) {
  throw Failure(Status::kRefused, "entry " + std::to_string(number) +
                                      " is damaged, or is no certificate and "
                                      "no public key");
}

std::vector<PublicKeyInfo> ReadDer(const Bytes& file) {
  std::vector<PublicKeyInfo> found;
  const unsigned char* at = file.data();
  const unsigned char* const end = at + file.size();
  while (at != end) {
    std::optional<PublicKeyInfo> read = ReadOne(at, end);
    if (!read) {
      FailDamaged(found.size() + 1);
    }
    found.push_back(std::move(*read));
  }
  return found;
}

std::vector<PublicKeyInfo> ReadPem(const Bytes& file) {
  std::vector<PublicKeyInfo> found;
  const Owned<BIO, BIO_free> text(
      BIO_new_mem_buf(file.data(), static_cast<int>(file.size())));
  for (;;) {
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* data = nullptr;
    long size = 0;
    if (PEM_read_bio(text.get(), &name, &header, &data, &size) != 1) {
      break;
    }
    const Owned<char, FreeBytes> name_owner(name);
    const Owned<char, FreeBytes> header_owner(header);
    const Owned<unsigned char, FreeBytes> data_owner(data);
    const std::string_view kind(name);
    // A trusted certificate has more behind it than the certificate.
    const bool is_trusted = kind == PEM_STRING_X509_TRUSTED;
    if (!is_trusted && kind != PEM_STRING_X509 && kind != PEM_STRING_X509_OLD &&
        kind != PEM_STRING_PUBLIC) {
      continue;
    }
    const unsigned char* at = data;
    std::optional<PublicKeyInfo> read = ReadOne(at, data + size);
    if (!read || (at != data + size && !is_trusted)) {
      FailDamaged(found.size() + 1);
    }
    found.push_back(std::move(*read));
  }
  if (ERR_GET_REASON(ERR_peek_last_error()) != PEM_R_NO_START_LINE) {
    ERR_clear_error();
    FailDamaged(found.size() + 1);
  }
  ERR_clear_error();
  return found;
}

Bytes Joined(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// One value in DER: header and content.
Bytes Value(int tag, bool is_constructed, const Bytes& content) {
  const int size = static_cast<int>(content.size());
  Bytes value(
      static_cast<std::size_t>(ASN1_object_size(is_constructed, size, tag)));
  unsigned char* at = value.data();
  ASN1_put_object(&at, is_constructed, size, tag, V_ASN1_UNIVERSAL);
  value.resize(value.size() - content.size());
  return Joined(std::move(value), content);
}

// Whether it is one value, to its last byte.
bool IsOneValue(const Bytes& der) {
  const unsigned char* at = der.data();
  long size = 0;
  int tag = 0;
  int tag_class = 0;
  const int kind = ASN1_get_object(&at, &size, &tag, &tag_class,
                                   static_cast<long>(der.size()));
  ERR_clear_error();
  return (kind & 0x81) == 0 && at + size == der.data() + der.size();
}

}  // namespace

std::vector<PublicKeyInfo> ReadPublicKeyInfos(const Bytes& file) {
  if (file.empty()) {
    throw Failure(Status::kRefused, "is empty");
  }
  const std::string_view text(reinterpret_cast<const char*>(file.data()),
                              file.size());
  // A certificate may quote a PEM header.
  const unsigned char* at = file.data();
  const bool is_pem =
      text.find("-----BEGIN ") != text.npos && !ReadOne(at, at + file.size());
  std::vector<PublicKeyInfo> found = is_pem ? ReadPem(file) : ReadDer(file);
  if (found.empty()) {
    throw Failure(Status::kRefused,
                  "there is no certificate and no public key in it");
  }
  return found;
}

Bytes EncodedInfo(const std::string& oid, const Bytes& parameters,
                  const Bytes& bits) {
  const Owned<ASN1_OBJECT, ASN1_OBJECT_free> algorithm(
      OBJ_txt2obj(oid.c_str(), 1));
  ERR_clear_error();
  if (!algorithm) {
    throw Failure(Status::kRefused, "'" + oid + "' can't be encoded");
  }
  if (!parameters.empty() && !IsOneValue(parameters)) {
    throw Failure(Status::kRefused,
                  "its parameters are not one value in DER, so there is no "
                  "public key info");
  }
  const Bytes identifier = Encoded([&](unsigned char** der) {
    return i2d_ASN1_OBJECT(algorithm.get(), der);
  });
  return Value(
      V_ASN1_SEQUENCE, true,
      Joined(Value(V_ASN1_SEQUENCE, true, Joined(identifier, parameters)),
             Value(V_ASN1_BIT_STRING, false, Joined(Bytes{0}, bits))));
}

bool IsOid(const std::string& dotted) {
  const Owned<ASN1_OBJECT, ASN1_OBJECT_free> oid(
      OBJ_txt2obj(dotted.c_str(), 1));
  ERR_clear_error();
  return oid != nullptr;
}

std::vector<std::string> OidsIn(const Bytes& der) {
  std::vector<std::string> oids;
  const unsigned char* at = der.data();
  const unsigned char* const end = at + der.size();
  // Goes into a constructed value by going on behind its header, so that no
  // depth of them takes a stack.
  while (at < end) {
    const unsigned char* from = at;
    long size = 0;
    int tag = 0;
    int tag_class = 0;
    const int kind = ASN1_get_object(&at, &size, &tag, &tag_class, end - at);
    if ((kind & 0x80) != 0) {
      break;
    }
    if ((kind & V_ASN1_CONSTRUCTED) != 0) {
      continue;
    }
    at += size;
    if (tag == V_ASN1_OBJECT && tag_class == V_ASN1_UNIVERSAL) {
      if (const Owned<ASN1_OBJECT, ASN1_OBJECT_free> oid{
              d2i_ASN1_OBJECT(nullptr, &from, at - from)}) {
        oids.push_back(DottedOid(oid.get()));
      }
    }
  }
  ERR_clear_error();
  return oids;
}

}  // namespace korvan::tools
