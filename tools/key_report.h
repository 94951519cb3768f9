// What keyblob prints of keys: columns, TSV or JSON.
#ifndef KORVAN_TOOLS_KEY_REPORT_H_
#define KORVAN_TOOLS_KEY_REPORT_H_

#include <optional>
#include <string>
#include <vector>

#include "tools/program.h"
#include "tools/public_key_info.h"

namespace korvan::tools {

enum class Source { kCertificate, kPublicKeyInfo, kBlob };

// What going back from a blob gave.
struct Check {
  std::size_t size;    // of the public key info that came out
  std::string reason;  // why it is another; empty where it is the same
};

// A key on its way, from a public key info to a blob or back.
struct KeyEntry {
  Source source;
  PublicKeyInfo info;
  Bytes blob;                           // empty after an error
  std::vector<std::string> other_oids;  // that a blob may stand for as well
  std::optional<Check> check;
  std::string error;
};

// "certificate 2", as messages name an entry.
std::string NameOfEntry(const KeyEntry& entry, std::size_t number);

// Prints all entries on standard output.
void Print(const std::vector<KeyEntry>& entries, Format format);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_KEY_REPORT_H_
