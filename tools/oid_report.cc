// How oidinfo presents records.
#include "tools/oid_report.h"

#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>

#include "tools/text.h"

namespace korvan::tools {

namespace {

struct GroupName {
  DWORD id;
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
    {PARAMSET_OID_GROUP_ID, "parameter set"},
};

std::string NameOfGroup(DWORD id) {
  for (const GroupName& group : kGroupNames) {
    if (group.id == id) {
      return group.name;
    }
  }
  return "unknown group";
}

// A record as all formats present it.
struct Row {
  explicit Row(const COidData& record)
      : oid(record.pszOID),
        group(record.dwGroupId),
        algid(record.Algid),
        cng(record.pwszCNGAlgid),
        cng_extra(record.pwszCNGExtraAlgid),
        is_marked((record.dwOidFlags & 1) != 0) {
    if (record.pwszName != nullptr) {
      name = record.pwszName;
    }
    words.resize(record.ExtraInfo.cbData / sizeof(DWORD));
    if (!words.empty()) {
      std::memcpy(words.data(), record.ExtraInfo.pbData,
                  words.size() * sizeof(DWORD));
    }
    // What these words are is told in <korvan/oid_info.h>.
    if (group == CRYPT_SIGN_ALG_OID_GROUP_ID && !words.empty()) {
      hash = algid;
      public_key = words[0];
      if (words.size() > 1) {
        flags = words[1];
      }
    }
  }

  std::string oid;
  std::optional<std::wstring> name;
  DWORD group;
  ALG_ID algid;  // 0 for none
  std::vector<DWORD> words;
  std::optional<ALG_ID> hash;  // these three of a signature
  std::optional<ALG_ID> public_key;
  std::optional<DWORD> flags;
  std::wstring cng;
  std::wstring cng_extra;
  bool is_marked;
};

std::string HexWords(const std::vector<DWORD>& words) {
  std::string list;
  for (const DWORD word : words) {
    list += (list.empty() ? "" : " ") + Hex(word);
  }
  return list;
}

std::string Named(ALG_ID algid) {
  const std::optional<std::wstring> name = NameOfAlgid(algid);
  return Hex(algid) + (name ? " (" + Printable(*name) + ")" : "");
}

void PrintRecord(const Row& row) {
  const auto line = [](std::string label, const std::string& value) {
    label.resize(12, ' ');
    std::cout << "  " << label << value << '\n';
  };
  line("OID", row.oid);
  line("name", row.name ? Printable(*row.name) : "(no name)");
  line("group", std::to_string(row.group) + ", " + NameOfGroup(row.group));
  if (row.algid != 0) {
    line("ALG_ID", Hex(row.algid));
  }
  if (row.hash) {
    line("hash", Named(*row.hash));
    line("public key", Named(*row.public_key));
    if (row.flags) {
      line("flags", Hex(*row.flags));
    }
  } else if (!row.words.empty()) {
    line("extra", HexWords(row.words));
  }
  if (!row.cng.empty()) {
    line("CNG", Printable(row.cng));
  }
  if (!row.cng_extra.empty()) {
    line("CNG extra", Printable(row.cng_extra));
  }
  line("marked", row.is_marked ? "yes" : "no");
}

void PrintColumns(const Lookup& lookup) {
  if (lookup.key) {
    for (std::size_t i = 0; i < lookup.records.size(); ++i) {
      std::cout << Bold(Printable(lookup.key->text) + ": " +
                        std::to_string(i + 1) + " of " +
                        std::to_string(lookup.records.size()))
                << (lookup.records[i] == lookup.returned
                        ? ", the one that FindOIDInfo returns\n"
                        : "\n");
      PrintRecord(Row(*lookup.records[i]));
    }
    return;
  }
  if (lookup.records.empty()) {
    return;
  }
  const auto line = [](std::string group, std::string oid, std::string algid,
                       const std::string& name) {
    group.resize(7, ' ');
    oid.resize(28, ' ');
    algid.resize(8, ' ');
    return group + oid + algid + name;
  };
  std::cout << Bold(line("group", "OID", "ALG_ID", "name")) << '\n';
  for (const COidData* const record : lookup.records) {
    const Row row(*record);
    std::cout << line(std::to_string(row.group), row.oid,
                      row.algid != 0 ? Hex(row.algid) : "",
                      row.name ? Printable(*row.name) : "(no name)")
              << '\n';
  }
}

std::string KindOf(const Lookup& lookup) {
  return lookup.key          ? NameOfType(lookup.key->type).option
         : lookup.group != 0 ? "group"
                             : "all";
}

// The key as it was given, which need not be text.
std::wstring TextOf(const Key& key) {
  return FromLocale(key.text).value_or(FromUtf8(key.text));
}

void PrintAsTsv(const std::vector<Lookup>& lookups) {
  PrintTsv({L"key", L"kind", L"returned", L"oid", L"name", L"group",
            L"group_name", L"algid", L"extra", L"hash", L"public_key", L"flags",
            L"cng", L"cng_extra", L"marked"});
  const auto hex = [](std::optional<DWORD> number) {
    return number ? Wide(Hex(*number)) : L"";
  };
  const auto answer = [](bool yes) { return yes ? L"yes" : L"no"; };
  for (const Lookup& lookup : lookups) {
    for (const COidData* const record : lookup.records) {
      const Row row(*record);
      PrintTsv({lookup.key ? TextOf(*lookup.key) : L"", Wide(KindOf(lookup)),
                lookup.key ? answer(record == lookup.returned) : L"",
                Wide(row.oid), row.name.value_or(L""),
                Wide(std::to_string(row.group)), Wide(NameOfGroup(row.group)),
                row.algid != 0 ? Wide(Hex(row.algid)) : L"",
                Wide(HexWords(row.words)), hex(row.hash), hex(row.public_key),
                hex(row.flags), row.cng, row.cng_extra, answer(row.is_marked)});
    }
  }
}

Json JsonOf(const std::vector<std::wstring>& texts) {
  Json list = Json::array();
  for (const std::wstring& text : texts) {
    list.push_back(ToUtf8(text));
  }
  return list;
}

Json JsonOf(const Row& row, const Json& returned) {
  const auto number = [](std::optional<DWORD> value) {
    return value ? Json(*value) : Json();
  };
  const auto text = [](const std::wstring& value) {
    return value.empty() ? Json() : Json(ToUtf8(value));
  };
  const auto algorithm = [](std::optional<ALG_ID> algid) {
    if (!algid) {
      return Json();
    }
    const std::optional<std::wstring> name = NameOfAlgid(*algid);
    return Json{{"algid", *algid},
                {"name", name ? Json(ToUtf8(*name)) : Json()}};
  };
  return Json{{"returned", returned},
              {"oid", row.oid},
              {"name", row.name ? Json(ToUtf8(*row.name)) : Json()},
              {"group", row.group},
              {"group_name", NameOfGroup(row.group)},
              {"algid", row.algid != 0 ? Json(row.algid) : Json()},
              {"extra", row.words},
              {"hash", algorithm(row.hash)},
              {"public_key", algorithm(row.public_key)},
              {"flags", number(row.flags)},
              {"cng", text(row.cng)},
              {"cng_extra", text(row.cng_extra)},
              {"marked", row.is_marked}};
}

void PrintAsJson(const std::vector<Lookup>& lookups) {
  Json list = Json::array();
  for (const Lookup& lookup : lookups) {
    Json records = Json::array();
    for (const COidData* const record : lookup.records) {
      records.push_back(JsonOf(
          Row(*record), lookup.key ? Json(record == lookup.returned) : Json()));
    }
    list.push_back(
        {{"key", lookup.key ? Json(ToUtf8(TextOf(*lookup.key))) : Json()},
         {"kind", KindOf(lookup)},
         {"group", lookup.group != 0 ? Json(lookup.group) : Json()},
         {"records", records},
         {"suggestions", JsonOf(lookup.suggestions)},
         {"hidden", JsonOf(lookup.hidden)}});
  }
  PrintJson(Json{{"lookups", list}});
}

}  // namespace

void Print(const std::vector<Lookup>& lookups, Format format) {
  switch (format) {
    case Format::kColumns:
      for (const Lookup& lookup : lookups) {
        PrintColumns(lookup);
      }
      break;
    case Format::kJson:
      PrintAsJson(lookups);
      break;
    case Format::kTsv:
      PrintAsTsv(lookups);
      break;
  }
}

}  // namespace korvan::tools
