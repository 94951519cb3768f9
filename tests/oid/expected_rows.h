// What the registry must hold, row by row in search order, stated apart from
// the library's own tables.
#ifndef KORVAN_TESTS_OID_EXPECTED_ROWS_H_
#define KORVAN_TESTS_OID_EXPECTED_ROWS_H_

#include <cstddef>
#include <vector>

namespace korvan::test {

struct ExpectedRow {
  unsigned int group;
  const char* oid;
  unsigned int text_number;  // 0: the name is a literal
  const wchar_t* name;       // null: the text is missing
  unsigned int algid;
  std::vector<unsigned int> extra;
  const wchar_t* cng;
  const wchar_t* cng_extra;
  unsigned int mark;

  unsigned int SecondAlgid() const { return extra.empty() ? 0 : extra[0]; }
};

struct ExpectedGroup {
  unsigned int id;
  int count;
};

extern const ExpectedGroup kExpectedGroups[9];
extern const std::vector<ExpectedRow> kExpectedRows;

}  // namespace korvan::test

#endif  // KORVAN_TESTS_OID_EXPECTED_ROWS_H_
