// The examples of <korvan/platform/asn1_record.h>.
#include "reference/reference.h"

int main() {
  const IdentObj nothing;
  assert(nothing.length == 0 && nothing.data != nullptr);

  const unsigned char bytes[] = {0x04, 0x02, 0xAA, 0xBB};
  const IdentObj encoded(bytes, sizeof(bytes));
  assert(encoded.length == 4 && encoded.data[2] == 0xAA);

  const IdentObj copy(encoded);
  assert(copy.length == 4 && copy.data != encoded.data);

  IdentObj assigned;
  assigned = encoded;
  assert(assigned.length == 4);

  { const IdentObj gone; }

  { const CASNTBaseRecord gone; }

  CASNTBaseRecord record;
  assert(record.GetTag() == 0);

  assert(record.SetEncodedEntry(encoded));
  assert(record.GetTag() == 4);

  assert(record.GetTag() == 0x00000004);

  assert(record.GetEntrySize() == 2);

  assert(!record.GetIsConstraction());

  int status = kAsn1Ok;
  assert(record.GetRecord(&status).length == 2 && status == kAsn1Ok);

  record.SetTag(0x80000001);  // context-specific 1

  const unsigned char content[] = {0xCC};
  record.SetEntry(content, sizeof(content));

  const IdentObj& der = record.GetEncodedRecord(&status);
  assert(der.length == 3 && der.data[0] == 0x81 && der.data[2] == 0xCC);
}
