// How keyblob presents keys.
#include "tools/key_report.h"

#include <korvan/cryptoapi.h>

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "tools/blob_conversion.h"
#include "tools/oid_search.h"
#include "tools/text.h"

namespace korvan::tools {

namespace {

constexpr std::size_t kHexLine = 16;
constexpr std::size_t kHeader = 16;  // of a blob

const char* NameOfSource(Source source) {
  switch (source) {
    case Source::kCertificate:
      return "certificate";
    case Source::kPublicKeyInfo:
      return "public key";
    default:
      return "blob";
  }
}

void Append(std::string& text, unsigned char byte) {
  constexpr char kHexDigits[] = "0123456789abcdef";
  text += kHexDigits[byte >> 4];
  text += kHexDigits[byte & 0xF];
}

std::string HexOf(const Bytes& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    Append(text, byte);
  }
  return text;
}

// Where a line of a dump stands, as four digits or more.
std::string Offset(std::size_t at) {
  std::string text;
  for (int shift = at > 0xFFFF ? 24 : 8; shift >= 0; shift -= 8) {
    Append(text, static_cast<unsigned char>(at >> shift));
  }
  return text;
}

// Prints bytes in hexadecimal, what they are behind the first line.
void PrintDump(const Bytes& bytes, std::size_t from, std::size_t count,
               const std::string& what) {
  for (std::size_t line = 0; line < count; line += kHexLine) {
    std::string text = "    " + Offset(from + line) + " ";
    const std::size_t end = std::min(line + kHexLine, count);
    for (std::size_t i = line; i < end; ++i) {
      text += ' ';
      Append(text, bytes[from + i]);
    }
    if (line == 0 && !what.empty()) {
      text.append(3 * (kHexLine - (end - line)) + 2, ' ');
      text += what;
    }
    std::cout << text << '\n';
  }
}

// Prints the header, whose layout docs/key_blob.md tells, and what follows it.
void PrintBlob(const Bytes& blob) {
  const DWORD bits = BitLengthOf(blob);
  const std::size_t key = bits / 8;
  const std::size_t parameters = blob.size() - kHeader - key;
  PrintDump(blob, 0, 1, "bType, a public key blob");
  PrintDump(blob, 1, 1, "bVersion");
  PrintDump(blob, 2, 2, "reserved");
  PrintDump(blob, 4, 4, "aiKeyAlg, " + Hex(AlgidOf(blob)));
  PrintDump(blob, 8, 4, "magic, \"MAG1\"");
  PrintDump(blob, 12, 4, "bitLen, " + std::to_string(bits));
  PrintDump(blob, kHeader, parameters, "parameters");
  PrintDump(blob, kHeader + parameters, key, "key");
}

// An OID, and the name that the library knows for it, if it does.
std::string Named(const std::string& oid, DWORD group) {
  const std::optional<std::wstring> name = NameOfOid(oid, group);
  return oid + (name ? "  " + Printable(*name) : "");
}

// Breaks a text at blanks, after the label of a line.
std::string Paragraph(const std::string& text) {
  constexpr std::size_t kWidth = 65;
  const std::string indent = "\n              ";
  std::string lines = indent;
  std::size_t column = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t blank = std::min(text.find(' ', at), text.size());
    if (column != 0 && column + 1 + blank - at > kWidth) {
      lines += indent;
      column = 0;
    } else if (column != 0) {
      lines += ' ';
      ++column;
    }
    lines += text.substr(at, blank - at);
    column += blank - at;
    at = blank + 1;
  }
  return lines;
}

void PrintLine(std::string label, const std::string& value) {
  label.resize(12, ' ');
  std::cout << "  " << label << value << '\n';
}

std::string Size(const Bytes& bytes) {
  return std::to_string(bytes.size()) + " bytes";
}

void PrintCheck(const KeyEntry& entry) {
  const std::string before = std::to_string(entry.info.encoded.size());
  if (entry.check->reason.empty()) {
    PrintLine("check", (entry.source == Source::kCertificate
                            ? "the certificate's public key info, "
                            : "the public key info, ") +
                           before + " bytes, comes out byte for byte");
  } else {
    PrintLine("check",
              before + " bytes went in, " + std::to_string(entry.check->size) +
                  " other ones come out." + Paragraph(entry.check->reason));
  }
}

void PrintColumns(const KeyEntry& entry, std::size_t number,
                  std::size_t count) {
  std::cout << Bold(entry.source == Source::kBlob
                        ? "blob"
                        : NameOfEntry(entry, number) + " of " +
                              std::to_string(count))
            << '\n';
  if (entry.info.subject) {
    PrintLine("subject", Printable(*entry.info.subject));
  }
  PrintLine("algorithm", Named(entry.info.oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID));
  for (const std::string& oid : entry.other_oids) {
    PrintLine("  or", Named(oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID));
  }
  if (!entry.error.empty()) {
    return;
  }
  PrintLine("ALG_ID", Hex(AlgidOf(entry.blob)));
  PrintLine("key", std::to_string(BitLengthOf(entry.blob)) + " bits");
  PrintLine("parameters", Size(entry.info.parameters));
  for (const std::string& oid : OidsIn(entry.info.parameters)) {
    std::cout << "                " << Named(oid, 0) << '\n';
  }
  if (entry.source == Source::kBlob) {
    const Bytes& info = entry.info.encoded;
    PrintDump(entry.info.parameters, 0, entry.info.parameters.size(), "");
    PrintLine("bit string", Size(entry.info.bits));
    PrintDump(entry.info.bits, 0, entry.info.bits.size(), "");
    PrintLine("info", Size(info) + ", the public key info in DER");
    PrintDump(info, 0, info.size(), "");
  } else {
    PrintLine("blob", Size(entry.blob));
    PrintBlob(entry.blob);
  }
  if (entry.check) {
    PrintCheck(entry);
  }
}

Json JsonOfOid(const std::string& oid, DWORD group) {
  const std::optional<std::wstring> name = NameOfOid(oid, group);
  return Json{{"oid", oid}, {"name", name ? Json(ToUtf8(*name)) : Json()}};
}

Json JsonOf(const KeyEntry& entry, std::size_t number) {
  Json other_oids = Json::array();
  for (const std::string& oid : entry.other_oids) {
    other_oids.push_back(JsonOfOid(oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID));
  }
  Json parameter_oids = Json::array();
  for (const std::string& oid : OidsIn(entry.info.parameters)) {
    parameter_oids.push_back(JsonOfOid(oid, 0));
  }
  const bool is_made = entry.error.empty();
  const std::optional<std::wstring>& subject = entry.info.subject;
  return Json{
      {"number", number},
      {"source", NameOfSource(entry.source)},
      {"subject", subject ? Json(ToUtf8(*subject)) : Json()},
      {"algorithm", JsonOfOid(entry.info.oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID)},
      {"other_algorithms", other_oids},
      {"algid", is_made ? Json(AlgidOf(entry.blob)) : Json()},
      {"key_bits", is_made ? Json(BitLengthOf(entry.blob)) : Json()},
      {"parameters", HexOf(entry.info.parameters)},
      {"parameter_oids", parameter_oids},
      {"bit_string", HexOf(entry.info.bits)},
      {"public_key_info", HexOf(entry.info.encoded)},
      {"blob", is_made ? Json(HexOf(entry.blob)) : Json()},
      {"check", entry.check ? Json{{"same", entry.check->reason.empty()},
                                   {"size", entry.check->size},
                                   {"reason", entry.check->reason.empty()
                                                  ? Json()
                                                  : Json(entry.check->reason)}}
                            : Json()},
      {"error", is_made ? Json() : Json(ToUtf8(FromUtf8(entry.error)))}};
}

void PrintAsTsv(const std::vector<KeyEntry>& entries) {
  PrintTsv({L"number", L"source", L"subject", L"oid", L"name", L"other_oids",
            L"algid", L"key_bits", L"parameters", L"parameter_oids",
            L"bit_string", L"public_key_info", L"blob", L"check", L"error"});
  const auto joined = [](const std::vector<std::string>& oids) {
    std::string list;
    for (const std::string& oid : oids) {
      list += (list.empty() ? "" : " ") + oid;
    }
    return Wide(list);
  };
  std::size_t number = 0;
  for (const KeyEntry& entry : entries) {
    const bool is_made = entry.error.empty();
    PrintTsv(
        {Wide(std::to_string(++number)), Wide(NameOfSource(entry.source)),
         entry.info.subject.value_or(L""), Wide(entry.info.oid),
         NameOfOid(entry.info.oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID).value_or(L""),
         joined(entry.other_oids),
         is_made ? Wide(Hex(AlgidOf(entry.blob))) : L"",
         is_made ? Wide(std::to_string(BitLengthOf(entry.blob))) : L"",
         Wide(HexOf(entry.info.parameters)),
         joined(OidsIn(entry.info.parameters)), Wide(HexOf(entry.info.bits)),
         Wide(HexOf(entry.info.encoded)), Wide(HexOf(entry.blob)),
         !entry.check                  ? L""
         : entry.check->reason.empty() ? L"same"
                                       : L"other",
         FromUtf8(entry.error)});
  }
}

}  // namespace

std::string NameOfEntry(const KeyEntry& entry, std::size_t number) {
  return NameOfSource(entry.source) + (" " + std::to_string(number));
}

void Print(const std::vector<KeyEntry>& entries, Format format) {
  Json list = Json::array();
  std::size_t number = 0;
  switch (format) {
    case Format::kColumns:
      for (const KeyEntry& entry : entries) {
        PrintColumns(entry, ++number, entries.size());
      }
      break;
    case Format::kJson:
      for (const KeyEntry& entry : entries) {
        list.push_back(JsonOf(entry, ++number));
      }
      PrintJson(Json{{"keys", list}});
      break;
    case Format::kTsv:
      PrintAsTsv(entries);
      break;
  }
}

}  // namespace korvan::tools
