// The record classes of a host process such as the library is loaded into:
// the calls that the library makes are the same as those of its own platform,
// all else differs.
#ifndef HOST_PLATFORM_ASN1_RECORD_H_
#define HOST_PLATFORM_ASN1_RECORD_H_

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

#endif  // HOST_PLATFORM_ASN1_RECORD_H_
