// The record classes of a host process such as the library is loaded into:
// the calls that the library makes are the same as those of its own platform,
// all else differs.
#ifndef HOST_PLATFORM_ASN1_RECORD_H_
#define HOST_PLATFORM_ASN1_RECORD_H_

#include <string>

class IdentObj {
 public:
  IdentObj();
  IdentObj(const void* bytes, unsigned int count);
  IdentObj(const IdentObj&) = delete;
  IdentObj& operator=(const IdentObj& other);
  ~IdentObj();

  const void* data;  // null for an empty buffer
  unsigned int length;
};

class CASNTBaseRecord {
 public:
  CASNTBaseRecord();
  CASNTBaseRecord(const CASNTBaseRecord&) = delete;
  CASNTBaseRecord& operator=(const CASNTBaseRecord&) = delete;
  ~CASNTBaseRecord();

  // Throws a std::string for bytes that are no record.
  void SetEncodedEntry(const IdentObj& encoded);
  unsigned int GetTag() const;
  unsigned int GetEntrySize() const;
  bool GetIsConstraction() const;
  const IdentObj& GetRecord(int* status) const;
  void SetTag(unsigned int tag);
  void SetEntry(const void* bytes, unsigned int count);
  const IdentObj& GetEncodedRecord(int* status) const;

 private:
  struct State;
  State* state_;
};

// What the host is told to do, by the test in whose process it lives.
struct HostFaults {
  bool throw_for_malformed = false;  // SetEncodedEntry, else it reports
  int throw_at_call = 0;             // the nth call of all throws; 0 is none
  int content_status = 0;            // what GetRecord sets
  int encoding_status = 0;           // what GetEncodedRecord sets
  int content_excess = 0;            // GetRecord gives so many bytes more
  int content_size = -1;             // what GetEntrySize tells, if not negative
  int calls = 0;                     // counted
  int alive = 0;                     // buffers and records not yet destroyed
};
extern HostFaults host_faults;

#endif  // HOST_PLATFORM_ASN1_RECORD_H_
