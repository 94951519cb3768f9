// Prints the registry's records as JSON, with the searches that find each of
// them: by OID and so on, in its own group.
#include <korvan/korvan.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

using korvan::COidData;

std::string Quoted(const std::string& ascii) {
  std::string quoted = "\"";
  for (const char character : ascii) {
    if (character == '"' || character == '\\') {
      quoted += '\\';
    }
    quoted += character;
  }
  return quoted + '"';
}

std::string Quoted(const wchar_t* text) {
  return text == nullptr ? "null" : Quoted(korvan::wstr_to_str(text));
}

std::string Words(const CRYPT_DATA_BLOB& bytes) {
  std::string words;
  for (DWORD at = 0; at < bytes.cbData; at += sizeof(DWORD)) {
    DWORD word = 0;
    std::memcpy(&word, bytes.pbData + at, sizeof(word));
    words += (words.empty() ? "" : ", ") + std::to_string(word);
  }
  return "[" + words + "]";
}

std::string FoundBy(const COidData& record) {
  std::string oid = record.pszOID;
  std::wstring name = record.pwszName == nullptr ? L"" : record.pwszName;
  std::array<ALG_ID, 2> pair = {record.Algid, 0};
  if (record.ExtraInfo.cbData >= sizeof(ALG_ID)) {
    std::memcpy(&pair[1], record.ExtraInfo.pbData, sizeof(ALG_ID));
  }
  const struct {
    const char* what;
    unsigned int key_type;
    void* key;
  } searches[] = {
      {"OID", CRYPT_OID_INFO_OID_KEY, oid.data()},
      {"name", CRYPT_OID_INFO_NAME_KEY, name.data()},
      {"ALG_ID", CRYPT_OID_INFO_ALGID_KEY, pair.data()},
      {"pair", CRYPT_OID_INFO_SIGN_KEY, pair.data()},
  };
  std::string found;
  for (const auto& search : searches) {
    if (korvan::FindOIDInfo(search.key_type, search.key, record.dwGroupId) ==
        &record) {
      found += (found.empty() ? "" : ", ") + Quoted(std::string(search.what));
    }
  }
  return "[" + found + "]";
}

}  // namespace

int main() {
  // A name that is nowhere: the search loads all names.
  wchar_t nowhere[] = L"\n";
  korvan::FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, nowhere, 0);
  const char* separator = "[";
  for (const korvan::OID_TABLE_INFO& table : korvan::oid_registry) {
    for (int i = 0; i < table.cRecords; ++i) {
      const COidData& record = table.rgRecords[i];
      std::printf(
          "%s\n{\"group\": %u, \"oid\": %s, \"name\": %s, \"algid\": %u, "
          "\"extra\": %s, \"cng\": %s, \"cng_extra\": %s, \"marked\": %s, "
          "\"found_by\": %s}",
          separator, table.dwGroupId,
          Quoted(std::string(record.pszOID)).c_str(),
          Quoted(record.pwszName).c_str(), record.Algid,
          Words(record.ExtraInfo).c_str(), Quoted(record.pwszCNGAlgid).c_str(),
          Quoted(record.pwszCNGExtraAlgid).c_str(),
          (record.dwOidFlags & 1) != 0 ? "true" : "false",
          FoundBy(record).c_str());
      separator = ",";
    }
  }
  return std::printf("\n]\n") > 0 && std::fflush(stdout) == 0 ? 0 : 1;
}
