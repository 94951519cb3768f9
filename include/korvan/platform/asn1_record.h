/// @file
/// One ASN.1 record, that is identifier, length and content, read from BER and
/// written in DER (X.690), and the byte buffer that carries it.
///
/// A host process has its own definitions of these two classes. The platform
/// library has some for processes that have none. Clauses are those of X.690
/// (08/2015).
///
/// NO OPERATION IS `noexcept`, destructors apart: a host's definitions take the
/// place of these at load, and a host may throw from each. The key conversions
/// let such an exception through to their caller. (Only the operations of a
/// shared library can be replaced so; those of a linked static one stay.)
#ifndef KORVAN_PLATFORM_ASN1_RECORD_H_
#define KORVAN_PLATFORM_ASN1_RECORD_H_

#include <korvan/export.h>

/// A buffer of bytes that owns what it holds.
///
/// Up to 528 bytes, which a 4096-bit RSA key needs, stand in the object
/// itself; more stand on the heap. Any number of threads may read one buffer
/// at a time; one that changes it must be alone.
class KORVAN_API IdentObj {
 public:
  /// Makes an empty buffer.
  ///
  ///     const IdentObj nothing;
  ///     assert(nothing.length == 0 && nothing.data != nullptr);
  ///
  /// @errors{None.}
  /// @ownership{The buffer is the caller's, its bytes the buffer's.}
  /// @threads{Any thread.}
  /// @exceptions{None. A host's own may throw.}
  IdentObj();

  /// Makes a buffer that holds a copy of `count` bytes.
  ///
  ///     const unsigned char bytes[] = {0x04, 0x02, 0xAA, 0xBB};
  ///     const IdentObj encoded(bytes, sizeof(bytes));
  ///     assert(encoded.length == 4 && encoded.data[2] == 0xAA);
  ///
  /// @param bytes  the bytes; may be null when `count` is 0.
  /// @param count  how many.
  /// @errors{None.}
  /// @ownership{The bytes are copied.}
  /// @threads{Any thread.}
  /// @throws std::bad_alloc when allocation fails.
  IdentObj(const void* bytes, unsigned int count);

  /// Makes an independent copy, as the constructor from bytes does.
  ///
  ///     const IdentObj copy(encoded);
  ///     assert(copy.length == 4 && copy.data != encoded.data);
  ///
  /// @param other  the buffer to copy.
  /// @errors{None.}
  /// @ownership{The bytes are copied.}
  /// @threads{Any thread, while none changes `other`.}
  /// @throws std::bad_alloc when allocation fails.
  IdentObj(const IdentObj& other);

  /// Makes this buffer an independent copy of `other`, which may be this one.
  ///
  ///     IdentObj assigned;
  ///     assigned = encoded;
  ///     assert(assigned.length == 4);
  ///
  /// @param other  the buffer to copy.
  /// @return this buffer.
  /// @errors{None.}
  /// @ownership{The bytes are copied. `data` may be another from then on.}
  /// @threads{One thread, while no other uses this buffer or changes `other`.}
  /// @throws std::bad_alloc when allocation fails, and keeps what it had.
  IdentObj& operator=(const IdentObj& other);

  /// Releases the bytes.
  ///
  ///     { const IdentObj gone; }
  ///
  /// @errors{None.}
  /// @ownership{`data` is no longer valid.}
  /// @threads{No other thread may use the buffer.}
  /// @nothrow
  ~IdentObj();

  unsigned int length;  ///< How many bytes the buffer holds. Only to be read.

  /// The bytes; never null. They stay the buffer's, and stay where they are
  /// until it is assigned to or destroyed. The pointer is only to be read.
  unsigned char* data;

 private:
  friend class CASNTBaseRecord;

  // The most bytes that stand in a record before its content. Every buffer
  // leaves them free before its own bytes, so that a record's encoding is made
  // where its content stands.
  static constexpr unsigned int kHeaderRoom = 16;
  static constexpr unsigned int kMostInPlace = 528;

  void Assign(const void* bytes, unsigned int count);
  // Moves the bytes to the heap, or back into the object.
  void AssignElsewhere(const void* bytes, unsigned int count);

  unsigned char* heap_;  // where the bytes stand if not in `room_`, or null
  unsigned char room_[kHeaderRoom + kMostInPlace];
};

/// Why a record has no content or no encoding to give; 0 where it has.
enum Asn1Status {
  kAsn1Ok = 0,              ///< All is there.
  kAsn1NoRecord = 1,        ///< No tag was set, or no header could be read.
  kAsn1ContentMissing = 2,  ///< The bytes ended before the content did.
  kAsn1TooLong = 3          ///< The encoding would take 4 GiB or more.
};

/// One ASN.1 record: a tag, primitive or constructed, and a content.
///
/// TAGS ARE NUMBERED WITH THEIR CLASS: the number stands in bits 0 to 29, and
/// the two bits that name the class in the identifier octet (8.1.2.2) stand in
/// bits 31 and 30. So a universal tag is its plain number, and only the
/// universal OCTET STRING is 4:
///
///   - universal 4: 0x00000004
///   - application 4: 0x40000004
///   - context-specific 4: 0x80000004
///   - private 4: 0xC0000004
///
/// A new record is BLANK: its tag is 0, it is primitive and without content.
/// One thread at a time may use a record, `GetEncodedRecord` included.
class KORVAN_API CASNTBaseRecord {
 public:
  /// Makes a blank record.
  ///
  ///     CASNTBaseRecord record;
  ///     assert(record.GetTag() == 0);
  ///
  /// @errors{None.}
  /// @ownership{The record is the caller's.}
  /// @threads{Any thread.}
  /// @exceptions{None. A host's own may throw.}
  CASNTBaseRecord();

  CASNTBaseRecord(const CASNTBaseRecord&) = delete;
  CASNTBaseRecord& operator=(const CASNTBaseRecord&) = delete;

  /// Releases the record, and with it all buffers that it gave out.
  ///
  ///     { const CASNTBaseRecord gone; }
  ///
  /// @errors{None.}
  /// @ownership{Buffers that it gave out are no longer valid.}
  /// @threads{No other thread may use the record.}
  /// @nothrow
  ~CASNTBaseRecord();

  /// Reads the first record in `encoded`, in BER with a definite length, and
  /// takes its place. Bytes that follow it are ignored, and lengths that are
  /// written longer than needed are read (8.1.3.5, note 2). No byte past
  /// `encoded.length` is read.
  ///
  ///     assert(record.SetEncodedEntry(encoded));
  ///     assert(record.GetTag() == 4);
  ///
  /// @param encoded  the bytes; they are copied and may go afterwards. They
  ///                 may be this record's own content.
  /// @return true when a whole record was read.
  /// @par Errors
  /// These leave the record blank, so that `GetTag` gives 0 and
  /// `GetRecord` reports `kAsn1NoRecord`:
  ///   - no bytes at all (8.1.1.1);
  ///   - an identifier that the bytes end in, or whose tag number begins with
  ///     seven zero bits (8.1.2.4.2), or gives a number below 31 in the form
  ///     that is for greater ones (8.1.2.2);
  ///   - a tag number of 2^30 or more, which is allowed by 8.1.2.4 but has no
  ///     place in a 32-bit tag;
  ///   - universal tag 0, which marks an end and no record (8.1.5);
  ///   - no length, or one that the bytes end in (8.1.3.5);
  ///   - the indefinite length 0x80 (8.1.3.6), for the content's end would
  ///     have to be searched for;
  ///   - a length in more than four bytes, leading zeros included, the
  ///     reserved 0xFF with it (8.1.3.5).
  ///
  /// A length that goes past the end (8.1.4) leaves the tag, the constructed
  /// bit and the length as they were read, the content empty, and `GetRecord`
  /// reports `kAsn1ContentMissing`.
  /// @ownership{The bytes are copied.}
  /// @threads{One thread, while no other uses the record.}
  /// @throws std::bad_alloc when allocation fails, and keeps what it had.
  ///         MALFORMED BYTES NEVER THROW.
  bool SetEncodedEntry(const IdentObj& encoded);

  /// Returns the tag.
  ///
  ///     assert(record.GetTag() == 0x00000004);
  ///
  /// @return the tag, numbered as said above; 0 for a blank record.
  /// @errors{None.}
  /// @ownership{The result is the caller's.}
  /// @threads{One thread, while no other uses the record.}
  /// @exceptions{None. A host's own may throw.}
  unsigned int GetTag() const;

  /// Returns the length of the content.
  ///
  ///     assert(record.GetEntrySize() == 2);
  ///
  /// @return the length in bytes as the length octets gave it, EVEN WHERE
  ///         FEWER BYTES FOLLOWED; 0 for a blank record.
  /// @errors{None.}
  /// @ownership{The result is the caller's.}
  /// @threads{One thread, while no other uses the record.}
  /// @exceptions{None. A host's own may throw.}
  unsigned int GetEntrySize() const;

  /// Returns the constructed bit (8.1.2.5).
  ///
  ///     assert(!record.GetIsConstraction());
  ///
  /// @return true when it is set; false for a blank record.
  /// @errors{None.}
  /// @ownership{The result is the caller's.}
  /// @threads{One thread, while no other uses the record.}
  /// @exceptions{None. A host's own may throw.}
  bool GetIsConstraction() const;

  /// Returns the content.
  ///
  ///     int status = kAsn1Ok;
  ///     assert(record.GetRecord(&status).length == 2 && status == kAsn1Ok);
  ///
  /// @param status  receives why the content is not there, a value of
  ///                `Asn1Status`; left alone when it is. Must not be null.
  /// @return the content. Where `status` was set it is empty, except for a
  ///         content without a tag: one that `SetEntry` gave to a blank record,
  ///         or that `SetTag(0)` left.
  /// @errors{`*status` tells: see `Asn1Status`.}
  /// @par Ownership
  /// The content is the record's, and valid until the record is
  /// changed or destroyed.
  /// @threads{One thread, while no other uses the record.}
  /// @exceptions{None. A host's own may throw.}
  const IdentObj& GetRecord(int* status) const;

  /// Gives the record a tag and makes it primitive. The content stays.
  ///
  ///     record.SetTag(0x80000001);  // context-specific 1
  ///
  /// @param tag  numbered as said above; 4 makes it a universal OCTET STRING.
  ///             0 leaves the record without a tag.
  /// @errors{None.}
  /// @ownership{Buffers that the record gave out are no longer valid.}
  /// @threads{One thread, while no other uses the record.}
  /// @exceptions{None. A host's own may throw.}
  void SetTag(unsigned int tag);

  /// Gives the record a content. Tag and constructed bit stay.
  ///
  ///     const unsigned char content[] = {0xCC};
  ///     record.SetEntry(content, sizeof(content));
  ///
  /// @param bytes  the content, which is copied; may be null when `count` is
  ///               0, and may be this record's own content.
  /// @param count  its length in bytes.
  /// @errors{None.}
  /// @par Ownership
  /// The content is copied. Buffers that the record gave out are no
  /// longer valid.
  /// @threads{One thread, while no other uses the record.}
  /// @throws std::bad_alloc when allocation fails, and keeps what it had.
  void SetEntry(const void* bytes, unsigned int count);

  /// Returns the record's encoding in DER: identifier, length in its shortest
  /// form (10.1), content.
  ///
  ///     const IdentObj& der = record.GetEncodedRecord(&status);
  ///     assert(der.length == 3 && der.data[0] == 0x81 && der.data[2] == 0xCC);
  ///
  /// @param status  receives why there is no encoding, a value of
  ///                `Asn1Status`; left alone when there is. Must not be null.
  /// @return the encoding, empty where `status` was set.
  /// @errors{`*status` tells: see `Asn1Status`.}
  /// @par Ownership
  /// The encoding is the record's, and valid until the record is
  /// changed, asked for it again or destroyed.
  /// @threads{One thread, while no other uses the record.}
  /// @exceptions{None. A host's own may throw.}
  const IdentObj& GetEncodedRecord(int* status) const;

 private:
  Asn1Status FindStatus() const;

  unsigned int tag_;
  unsigned int size_;
  bool constructed_;
  IdentObj content_;
  mutable IdentObj encoding_;  // bytes of `content_` and those before them
};

#endif  // KORVAN_PLATFORM_ASN1_RECORD_H_
