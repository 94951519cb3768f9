// This host's byte buffers and ASN.1 records.
#ifndef HOST_ASN1_RECORD_H_
#define HOST_ASN1_RECORD_H_

#include <vector>

class IdentObj {
 public:
  IdentObj() = default;
  IdentObj(const void* bytes, unsigned int count);
  IdentObj(const IdentObj& other) : IdentObj(other.data, other.length) {}
  IdentObj& operator=(IdentObj other);

  unsigned int length = 0;
  const unsigned char* data = nullptr;

 private:
  std::vector<unsigned char> bytes_;
};

class CASNTBaseRecord {
 public:
  bool SetEncodedEntry(const IdentObj& encoded);
  unsigned int GetTag() const { return tag_; }
  unsigned int GetEntrySize() const { return content_.length; }
  bool GetIsConstraction() const { return is_constructed_; }
  const IdentObj& GetRecord(int* status) const;

  void SetTag(unsigned int tag) { tag_ = tag; }
  void SetEntry(const void* bytes, unsigned int count);
  const IdentObj& GetEncodedRecord(int* status) const;

 private:
  unsigned int tag_ = 0;
  bool is_constructed_ = false;
  IdentObj content_;
  mutable IdentObj encoding_;
};

#endif  // HOST_ASN1_RECORD_H_
