// Looks an algorithm, attribute, extension or usage up in the OID registry.

#include <korvan/oid_info.h>

#include <cctype>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iomanip>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr int kFound = 0;
constexpr int kNotFound = 1;
constexpr int kBadUsage = 2;
constexpr int kNotWritten = 3;

constexpr char kUsage[] =
    R"(usage: oidinfo --oid OID        [--group ID]   e.g. 1.2.643.2.2.19
       oidinfo --name NAME      [--group ID]   in any case, e.g. "common name"
       oidinfo --algid ALG      [--group ID]   e.g. 0x2E23
       oidinfo --sign HASH,KEY  [--group ID]   e.g. 0x801E,0x2E23
       oidinfo --all

Prints the first record of the registry that matches, in one group or in all;
--all lists the whole registry. Numbers are decimal, or hexadecimal after 0x.
Groups: 1 hash, 2 encryption, 3 public key, 4 signature, 5 name attribute,
6 extension or attribute, 7 key usage, 8 policy, 20 parameter set.

Exit status: 0 found, 1 not found, 2 bad usage, 3 the output cannot be written.
)";

struct GroupName {
  unsigned int id;
  const char* name;
};

constexpr GroupName kGroupNames[] = {
    {CRYPT_HASH_ALG_OID_GROUP_ID, "hash algorithm"},
    {CRYPT_ENCRYPT_ALG_OID_GROUP_ID, "encryption algorithm"},
    {CRYPT_PUBKEY_ALG_OID_GROUP_ID, "public-key algorithm"},
    {CRYPT_SIGN_ALG_OID_GROUP_ID, "signature algorithm"},
    {CRYPT_RDN_ATTR_OID_GROUP_ID, "name attribute"},
    {CRYPT_EXT_OR_ATTR_OID_GROUP_ID, "extension or attribute"},
    {CRYPT_ENHKEY_USAGE_OID_GROUP_ID, "key usage"},
    {CRYPT_POLICY_OID_GROUP_ID, "policy"},
    {korvan::PARAMSET_OID_GROUP_ID, "parameter set"},
};

const char* NameOfGroup(unsigned int id) {
  for (const GroupName& group : kGroupNames) {
    if (group.id == id) {
      return group.name;
    }
  }
  return "unknown group";
}

std::string Narrow(const wchar_t* wide) {
  std::string narrow(std::wcslen(wide) * MB_CUR_MAX, '\0');
  const std::size_t length = std::wcstombs(narrow.data(), wide, narrow.size());
  narrow.resize(length == static_cast<std::size_t>(-1) ? 0 : length);
  return narrow;
}

std::optional<std::wstring> Widen(const std::string& narrow) {
  std::wstring wide(narrow.size(), L'\0');
  const std::size_t length =
      std::mbstowcs(wide.data(), narrow.c_str(), wide.size());
  if (length == static_cast<std::size_t>(-1)) {
    return std::nullopt;
  }
  wide.resize(length);
  return wide;
}

std::string Hex(unsigned int value) {
  std::ostringstream text;
  text << "0x" << std::uppercase << std::hex << std::setw(4)
       << std::setfill('0') << value;
  return text.str();
}

// The whole of `text` as an unsigned 32-bit number.
std::optional<unsigned int> Number(const std::string& text) {
  if (text.empty() || !std::isdigit(static_cast<unsigned char>(text[0]))) {
    return std::nullopt;
  }
  const bool is_hex = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
  char* end = nullptr;
  errno = 0;
  const unsigned long value =
      std::strtoul(text.c_str(), &end, is_hex ? 16 : 10);
  if (*end != '\0' || errno != 0 || value > 0xFFFFFFFF) {
    return std::nullopt;
  }
  return static_cast<unsigned int>(value);
}

// The name of the first record with an ALG_ID, for people.
std::string NameOfAlgid(unsigned int algid) {
  const korvan::COidData* const found =
      korvan::FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algid, 0);
  return found != nullptr && found->pwszName != nullptr
             ? " (" + Narrow(found->pwszName) + ")"
             : "";
}

std::vector<unsigned int> ExtraWords(const korvan::COidData& record) {
  std::vector<unsigned int> words(record.ExtraInfo.cbData / sizeof(DWORD));
  if (!words.empty()) {
    std::memcpy(words.data(), record.ExtraInfo.pbData,
                words.size() * sizeof(DWORD));
  }
  return words;
}

std::string DisplayName(const korvan::COidData& record) {
  return record.pwszName == nullptr ? "(no name)" : Narrow(record.pwszName);
}

void Print(const korvan::COidData& record) {
  const auto line = [](const char* label, const std::string& value) {
    std::cout << "  " << std::left << std::setw(12) << label << value << '\n';
  };
  line("OID", record.pszOID);
  line("name", DisplayName(record));
  line("group",
       std::to_string(record.dwGroupId) + ", " + NameOfGroup(record.dwGroupId));
  if (record.Algid != 0) {
    line("ALG_ID", Hex(record.Algid));
  }
  const std::vector<unsigned int> words = ExtraWords(record);
  if (record.dwGroupId == CRYPT_SIGN_ALG_OID_GROUP_ID && !words.empty()) {
    line("hash", Hex(record.Algid) + NameOfAlgid(record.Algid));
    line("public key", Hex(words[0]) + NameOfAlgid(words[0]));
    if (words.size() > 1) {
      line("flags", Hex(words[1]));
    }
  } else if (!words.empty()) {
    std::string list;
    for (const unsigned int word : words) {
      list += Hex(word) + " ";
    }
    line("extra", list);
  }
  if (record.pwszCNGAlgid[0] != L'\0') {
    line("CNG", Narrow(record.pwszCNGAlgid));
  }
  if (record.pwszCNGExtraAlgid[0] != L'\0') {
    line("CNG extra", Narrow(record.pwszCNGExtraAlgid));
  }
  line("marked", (record.dwOidFlags & 1) != 0 ? "yes" : "no");
}

void PrintAll() {
  // A name that nobody has makes the search load them all.
  wchar_t nobody[] = L"\n";
  korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, nobody, 0);
  std::cout << std::left << std::setw(7) << "group" << std::setw(28) << "OID"
            << std::setw(8) << "ALG_ID"
            << "name\n";
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      const korvan::COidData& record = table.rgRecords[i];
      std::cout << std::left << std::setw(7) << record.dwGroupId
                << std::setw(28) << record.pszOID << std::setw(8)
                << (record.Algid != 0 ? Hex(record.Algid) : "")
                << DisplayName(record) << '\n';
    }
  }
}

int BadUsage(const std::string& why) {
  std::cerr << "oidinfo: " << why << "\n\n" << kUsage;
  return kBadUsage;
}

int PrintFound(unsigned int key_type, void* key, unsigned int group) {
  const korvan::COidData* const found =
      korvan::FindOIDInfo(key_type, key, group);
  if (found == nullptr) {
    std::cerr << "oidinfo: no such record\n";
    return kNotFound;
  }
  Print(*found);
  return kFound;
}

int Run(const std::vector<std::string>& arguments) {
  if (arguments == std::vector<std::string>{"--all"}) {
    PrintAll();
    return kFound;
  }
  if (arguments == std::vector<std::string>{"--help"}) {
    std::cout << kUsage;
    return kFound;
  }
  if (arguments.size() != 2 &&
      !(arguments.size() == 4 && arguments[2] == "--group")) {
    return BadUsage("one key is needed, and a group if any");
  }
  unsigned int group = 0;
  if (arguments.size() == 4) {
    const std::optional<unsigned int> number = Number(arguments[3]);
    if (!number) {
      return BadUsage("'" + arguments[3] + "' is no group");
    }
    group = *number;
  }
  const std::string& kind = arguments[0];
  std::string key = arguments[1];
  if (kind == "--oid") {
    return PrintFound(CRYPT_OID_INFO_OID_KEY, key.data(), group);
  }
  if (kind == "--name") {
    std::optional<std::wstring> name = Widen(key);
    if (!name) {
      return BadUsage("the name can't be read in this locale");
    }
    return PrintFound(CRYPT_OID_INFO_NAME_KEY, name->data(), group);
  }
  if (kind == "--algid") {
    std::optional<unsigned int> algid = Number(key);
    if (!algid) {
      return BadUsage("'" + key + "' is no ALG_ID");
    }
    return PrintFound(CRYPT_OID_INFO_ALGID_KEY, &*algid, group);
  }
  if (kind == "--sign") {
    const std::size_t comma = key.find(',');
    const auto hash = Number(key.substr(0, comma));
    const auto public_key =
        comma == key.npos ? std::nullopt : Number(key.substr(comma + 1));
    if (!hash || !public_key) {
      return BadUsage("'" + key + "' is no pair of ALG_IDs");
    }
    unsigned int pair[] = {*hash, *public_key};
    return PrintFound(CRYPT_OID_INFO_SIGN_KEY, pair, group);
  }
  return BadUsage("unknown option '" + kind + "'");
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  const int status = Run({argv + 1, argv + argc});
  std::cout << std::flush;
  if (!std::cout) {
    std::cerr << "oidinfo: the output cannot be written\n";
    return kNotWritten;
  }
  return status;
}
