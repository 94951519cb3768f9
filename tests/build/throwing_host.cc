// A host whose own record classes and last-error function throw, from each of
// their operations in turn. The library must let the exception through, leak
// nothing and leave the outputs as they are documented.
//
// The library was compiled against the headers of the bundled platform; this
// program has declarations of its own, as a host does.
#include <korvan/public_key.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

struct Fault {
  const char* operation;
};

// The operation that is to throw, and at which of its calls.
const char* faulty_operation = "";
int calls_until_fault = 0;

void Enter(const char* operation) {
  if (std::strcmp(operation, faulty_operation) == 0 &&
      --calls_until_fault == 0) {
    throw Fault{operation};
  }
}

int objects_alive = 0;
unsigned int last_error = 0;

}  // namespace

extern "C" {

void SetLastError(unsigned int code) {
  Enter("SetLastError");
  last_error = code;
}

unsigned int GetLastError() { return last_error; }
}

// No larger than the bundled classes, with the two members that callers read
// at the same places.
class IdentObj {
 public:
  IdentObj() : length(0), data(nullptr) { ++objects_alive; }
  IdentObj(const void* bytes, unsigned int count);
  IdentObj(const IdentObj& other) = delete;
  IdentObj& operator=(const IdentObj& other);
  ~IdentObj();

  unsigned int length;
  unsigned char* data;

 private:
  void Copy(const void* bytes, unsigned int count) {
    data = static_cast<unsigned char*>(std::malloc(count));
    std::memcpy(data, bytes, count);
    length = count;
  }
};

IdentObj::IdentObj(const void* bytes, unsigned int count) {
  Enter("IdentObj");
  Copy(bytes, count);
  ++objects_alive;
}

IdentObj& IdentObj::operator=(const IdentObj& other) {
  Enter("operator=");
  std::free(data);
  Copy(other.data, other.length);
  return *this;
}

IdentObj::~IdentObj() {
  std::free(data);
  --objects_alive;
}

class CASNTBaseRecord {
 public:
  CASNTBaseRecord();
  ~CASNTBaseRecord();
  bool SetEncodedEntry(const IdentObj& encoded);
  unsigned int GetTag() const;
  unsigned int GetEntrySize() const;
  bool GetIsConstraction() const;
  const IdentObj& GetRecord(int* status) const;
  void SetTag(unsigned int tag);
  void SetEntry(const void* bytes, unsigned int count);
  const IdentObj& GetEncodedRecord(int* status) const;

 private:
  IdentObj* content_;
};

CASNTBaseRecord::CASNTBaseRecord() {
  Enter("CASNTBaseRecord");
  content_ = new IdentObj;
}
CASNTBaseRecord::~CASNTBaseRecord() { delete content_; }

// The program gives it OCTET STRINGs with headers of two bytes only.
bool CASNTBaseRecord::SetEncodedEntry(const IdentObj& encoded) {
  Enter("SetEncodedEntry");
  *content_ = IdentObj(encoded.data + 2, encoded.length - 2);
  return true;
}
unsigned int CASNTBaseRecord::GetTag() const {
  Enter("GetTag");
  return 4;
}
unsigned int CASNTBaseRecord::GetEntrySize() const {
  Enter("GetEntrySize");
  return content_->length;
}
bool CASNTBaseRecord::GetIsConstraction() const {
  Enter("GetIsConstraction");
  return false;
}
const IdentObj& CASNTBaseRecord::GetRecord(int* /*status*/) const {
  Enter("GetRecord");
  return *content_;
}
void CASNTBaseRecord::SetTag(unsigned int /*tag*/) { Enter("SetTag"); }
void CASNTBaseRecord::SetEntry(const void* bytes, unsigned int count) {
  Enter("SetEntry");
  *content_ = IdentObj(bytes, count);
}
const IdentObj& CASNTBaseRecord::GetEncodedRecord(int* /*status*/) const {
  Enter("GetEncodedRecord");
  return *content_;
}

namespace {

constexpr unsigned int kUntouched = 77;

int failures = 0;

void Expect(bool holds, const std::string& what) {
  if (!holds) {
    std::printf("not so, with %s throwing at call %d: %s\n", faulty_operation,
                calls_until_fault, what.c_str());
    ++failures;
  }
}

unsigned char* EarlierBuffer() {
  return static_cast<unsigned char*>(std::malloc(8));
}

// Converts the key of `oid`. Returns whether an exception came through.
bool ConvertThrows(const char* oid) {
  unsigned char bits[66] = {0x04, 0x40};  // OCTET STRING, 64 bytes
  char algorithm[32] = {};
  std::strcpy(algorithm, oid);
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = algorithm;
  info.PublicKey.pbData = bits;
  info.PublicKey.cbData = sizeof(bits);
  unsigned char* blob = EarlierBuffer();
  unsigned int size = kUntouched;
  bool threw = false;
  try {
    const int done =
        korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size);
    Expect((done == 1) == (blob != nullptr && size == 80), "a blob of 80");
  } catch (const Fault& fault) {
    threw = std::strcmp(fault.operation, faulty_operation) == 0;
    Expect(blob == nullptr, "the earlier blob is freed, and null");
    Expect(size == kUntouched, "the blob's size is untouched");
  }
  std::free(blob);
  return threw;
}

// Asks for a blob of 2^32 bytes, whose size is 0 in 32 bits: that is no memory,
// and the outputs are those of this failure though nobody can be told of it.
void FailToTellOfNoMemory() {
  faulty_operation = "SetLastError";
  calls_until_fault = 1;
  unsigned char bits[66] = {0x04, 0x40};
  char oid[] = "1.2.643.2.2.19";
  CERT_PUBLIC_KEY_INFO info = {};
  info.Algorithm.pszObjId = oid;
  info.Algorithm.Parameters = {0xFFFFFFB0, bits};
  info.PublicKey = {sizeof(bits), bits, 0};
  unsigned char* blob = EarlierBuffer();
  unsigned int size = kUntouched;
  bool threw = false;
  try {
    korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size);
  } catch (const Fault&) {
    threw = true;
  }
  Expect(threw && blob == nullptr && size == 0,
         "the size that there is no memory for, and no blob");
  std::free(blob);
}

// Splits a blob of 64 key bytes and 8 parameter bytes. Returns the same.
bool EncodeThrows() {
  unsigned char blob[88] = {0x06, 0x20, 0, 0, 0x23, 0x2E, 0, 0};
  blob[13] = 0x02;  // 512 bits
  unsigned char* key = EarlierBuffer();
  unsigned char* parameters = EarlierBuffer();
  unsigned int key_size = kUntouched;
  unsigned int parameters_size = kUntouched;
  bool threw = false;
  try {
    const int done = korvan::KRVEncodePublicKeyAndParametrs(
        0, nullptr, blob, sizeof(blob), 0, 0, &key, &key_size, &parameters,
        &parameters_size);
    Expect(done == 1 && key_size == 64 && parameters_size == 8,
           "64 bytes of key and 8 of parameters");
  } catch (const Fault& fault) {
    threw = std::strcmp(fault.operation, faulty_operation) == 0;
    Expect(key == nullptr && parameters == nullptr,
           "the earlier buffers are freed, and null");
    Expect(key_size == kUntouched && parameters_size == kUntouched,
           "the sizes are untouched");
  }
  std::free(key);
  std::free(parameters);
  return threw;
}

// Runs both conversions twice. Returns how many calls threw.
int Throws(const char* operation, int call) {
  faulty_operation = operation;
  calls_until_fault = call;
  int threw = 0;
  for (int round = 0; round < 2; ++round) {
    threw += ConvertThrows("1.2.643.2.2.19");
    threw += ConvertThrows("1.2.3");  // no such algorithm
    threw += EncodeThrows();
    Expect(objects_alive == 0, "no object of the host is left");
  }
  return threw;
}

constexpr const char* kOperations[] = {
    "IdentObj", "operator=",    "CASNTBaseRecord",   "SetEncodedEntry",
    "GetTag",   "GetEntrySize", "GetIsConstraction", "GetRecord",
    "SetTag",   "SetEntry",     "GetEncodedRecord",  "SetLastError",
};

// Has each call of each operation throw. Returns how many calls there are.
int ThrowFromEachCall() {
  int calls = 0;
  for (const char* const operation : kOperations) {
    int call = 1;
    int threw = Throws(operation, call);
    while (calls_until_fault <= 0) {  // it was called so often
      Expect(threw == 1, "the exception arrives, once");
      ++calls;
      threw = Throws(operation, ++call);
    }
    Expect(call > 1, "it is called");
  }
  return calls;
}

}  // namespace

int main() {
  Expect(Throws("none", 1) == 0, "nothing throws unless it is told to");
  FailToTellOfNoMemory();
  const int calls = ThrowFromEachCall();  // what is kept for good is there now
  const auto before = mallinfo2().uordblks;
  for (int round = 0; round < 50; ++round) {
    ThrowFromEachCall();
  }
  Expect(mallinfo2().uordblks == before, "no memory is left behind");
  std::printf("%d calls of %zu operations threw, %d failures\n", calls,
              std::size(kOperations), failures);
  return failures == 0 ? 0 : 1;
}
