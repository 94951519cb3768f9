// Prints the registry's OIDs as gperf's input.

#include <korvan/oid_info.h>

#include <iostream>
#include <set>
#include <string>

int main() {
  std::set<std::string> oids;
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      oids.insert(table.rgRecords[i].pszOID);
    }
  }
  std::cout << "%{\n#include <cstddef>\n#include <cstring>\n%}\n%%\n";
  for (const std::string& oid : oids) {
    std::cout << '"' << oid << "\"\n";
  }
  std::cout << "%%\n"
               "const char* FindInGperf(const char* oid, std::size_t length) "
               "{\n  return Perfect_Hash::in_word_set(oid, length);\n}\n";
  std::cout.flush();
  return std::cout ? 0 : 1;
}
