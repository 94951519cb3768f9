// Whatever a pointer points to may lie anywhere: lookups, texts, key
// conversions, text helpers and the bundled platform. ini_placement_test.cc has
// the documents.
#include <gtest/gtest.h>
#include <korvan/korvan.h>
#include <korvan/platform/asn1_record.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "support/places.h"

namespace korvan::test {
namespace {

// "OID name", or "none".
std::string Shown(const COidData* found) {
  if (found == nullptr) {
    return "none";
  }
  std::string shown = found->pszOID;
  shown += ' ';
  for (const wchar_t* c = found->pwszName; c != nullptr && *c != 0; ++c) {
    shown += static_cast<char>(*c);
  }
  return shown;
}

std::string Shown(bool holds) { return holds ? "true" : "false"; }

std::string Hex(const unsigned char* bytes, std::size_t count) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string shown;
  for (std::size_t i = 0; i < count; ++i) {
    shown += kDigits[bytes[i] >> 4];
    shown += kDigits[bytes[i] & 15];
  }
  return shown;
}

// Takes an output buffer of the library's.
std::string Taken(unsigned char* buffer, unsigned int size) {
  const std::string shown = buffer == nullptr ? "none" : Hex(buffer, size);
  std::free(buffer);
  return shown;
}

// A table of one record of a caller's own, whose name is a number.
struct OwnTable {
  explicit OwnTable(Arguments& arguments) {
    COidData record = {};
    record.pszOID = arguments.ReadText("2.999.1");
    record.pwszName = reinterpret_cast<LPCWSTR>(std::size_t{8048});
    record.Algid = 0x8004;
    record.ExtraInfo = {
        4, static_cast<unsigned char*>(arguments.ReadNumbers({0x2400}))};
    own = arguments.Written(record);
    table = arguments.Read(OID_TABLE_INFO{3, 1, own});
  }
  OwnTable(const OwnTable&) = delete;
  OwnTable& operator=(const OwnTable&) = delete;
  ~OwnTable() {
    if ((own->dwOidFlags & 2) != 0) {
      delete[] own->pwszName;
    }
  }

  COidData* own;
  const OID_TABLE_INFO* table;
};

// The same search in the registry, in a caller's own table and in a record.
Operation Search(const char* name, const char* result, unsigned int type,
                 unsigned int group, void* (*make_key)(Arguments&)) {
  return {name, result, [=](Arguments& arguments) {
            void* const key = make_key(arguments);
            arguments.Ready();
            COidData* const found = FindOIDInfo(type, key, group);
            EXPECT_EQ(FindOIDInfoInternal(type, key, group), found);
            for (const OID_TABLE_INFO& table : oid_registry) {
              if (table.dwGroupId == group) {
                EXPECT_EQ(FindOIDInfoInternal(table, type, key), found);
              }
            }
            return Shown(found);
          }};
}

Operation OwnSearch(const char* name, const char* result, unsigned int type,
                    void* (*make_key)(Arguments&)) {
  return {name, result, [=](Arguments& arguments) {
            void* const key = make_key(arguments);
            const OwnTable own(arguments);
            arguments.Ready();
            const bool matches = MatchOidInfo(*own.own, type, key);
            COidData* const found = FindOIDInfoInternal(*own.table, type, key);
            EXPECT_EQ(found == own.own, matches);
            return Shown(found);
          }};
}

const std::vector<Operation> kLookups = {
    Search("search by OID", "1.2.643.2.2.19 GOST R 34.10-2001", 1, 3,
           [](Arguments& a) -> void* { return a.ReadText("1.2.643.2.2.19"); }),
    Search("search by an OID that is a part", "none", 1, 0,
           [](Arguments& a) -> void* { return a.ReadText("1.2.643.2.2.1"); }),
    Search("search by a short OID", "none", 1, 0,
           [](Arguments& a) -> void* { return a.ReadText("1"); }),
    Search("search by name", "2.5.4.3 Common Name", 2, 6,
           [](Arguments& a) -> void* { return a.ReadText(L"COMMON NAME"); }),
    Search("search by a name that is a part", "none", 2, 0,
           [](Arguments& a) -> void* { return a.ReadText(L"Common"); }),
    Search("search by a name of other letters", "none", 2, 0,
           [](Arguments& a) -> void* { return a.ReadText(L"\u0416"); }),
    Search("search by the empty name", "1.2.840.113549.1.9.9 ", 2, 0,
           [](Arguments& a) -> void* { return a.ReadText(L""); }),
    Search("search by ALG_ID", "1.2.643.2.2.19 GOST R 34.10-2001", 3, 3,
           [](Arguments& a) { return a.ReadNumbers({0x2E23}); }),
    Search("search by pair", "1.2.840.113549.1.1.5 sha1RSA", 4, 4,
           [](Arguments& a) {
             return a.ReadNumbers({0x8004, 0x2400});
           }),
    OwnSearch("own search by OID", "2.999.1 Common Name", 1,
              [](Arguments& a) -> void* { return a.ReadText("2.999.1"); }),
    OwnSearch("own search by name", "2.999.1 Common Name", 2,
              [](Arguments& a) -> void* { return a.ReadText(L"common name"); }),
    OwnSearch("own search by ALG_ID", "2.999.1 Common Name", 3,
              [](Arguments& a) { return a.ReadNumbers({0x8004}); }),
    OwnSearch("own search by pair", "2.999.1 Common Name", 4,
              [](Arguments& a) {
                return a.ReadNumbers({0x8004, 0x2400});
              }),
    {"load of a name", "2.999.1 Common Name, registry as it was",
     [](Arguments& arguments) {
       const OwnTable own(arguments);
       arguments.Ready();
       InitOidInfoWorker(*own.own, 8048);
       // A record that is taken for a row makes the index wrong.
       wchar_t name[] = L"common name";
       const bool is_found =
           Shown(FindOIDInfo(2, name, 6)) == "2.5.4.3 Common Name";
       return Shown(own.own) +
              (is_found ? ", registry as it was" : ", registry spoilt");
     }},
};

const std::vector<Operation> kTexts = {
    {"copy of a text", "11 Common Name#",
     [](Arguments& arguments) {
       void* const module = arguments.Read(1);
       unsigned char* const buffer = arguments.WrittenBytes(12);
       arguments.Ready();
       const int count =
           LoadString_korvan(module, 8048, reinterpret_cast<char*>(buffer), 12);
       return std::to_string(count) + ' ' + std::string(buffer, buffer + 12);
     }},
    {"copy of a part of a text", "6 Common",
     [](Arguments& arguments) {
       unsigned char* const buffer = arguments.WrittenBytes(6);
       const int count =
           LoadString_korvan(nullptr, 8048, reinterpret_cast<char*>(buffer), 6);
       return std::to_string(count) + ' ' + std::string(buffer, buffer + 6);
     }},
    {"copy of a text that is missing", "0 00",
     [](Arguments& arguments) {
       unsigned char* const buffer = arguments.WrittenBytes(1);
       const int count =
           LoadString_korvan(nullptr, 4, reinterpret_cast<char*>(buffer), 0);
       return std::to_string(count) + ' ' + Hex(buffer, 1);
     }},
};

constexpr unsigned char kKey[] = {0x04, 0x03, 0x11, 0x12, 0x13};
constexpr unsigned char kParameters[] = {0x05, 0x00};
constexpr unsigned char kBlob[] = {
    0x06, 0x20, 0,    0,   0x23, 0x2E, 0, 0,  // PUBLICKEYSTRUC
    'M',  'A',  'G',  '1', 24,   0,    0, 0,  // 24 bits
    0x05, 0x00,                               // parameters
    0x11, 0x12, 0x13,                         // key
};

Operation Conversion(const char* name, const char* result, const char* oid,
                     bool has_earlier_buffer) {
  return {
      name, result, [=](Arguments& arguments) {
        CERT_PUBLIC_KEY_INFO info = {};
        info.Algorithm.pszObjId = arguments.ReadText(oid);
        info.Algorithm.Parameters = {
            sizeof(kParameters),
            arguments.Read(kParameters, sizeof(kParameters))};
        info.PublicKey = {sizeof(kKey), arguments.Read(kKey, sizeof(kKey)), 0};
        const auto* const placed = arguments.Read(info);
        auto** const blob = arguments.Written(static_cast<unsigned char*>(
            has_earlier_buffer ? std::malloc(1) : nullptr));
        auto* const size = arguments.Written(0u);
        arguments.Ready();
        const int converted =
            KRVConvertPublicKeyInfo(0, placed, 0, 0, blob, size);
        return std::to_string(converted) + ' ' + Taken(*blob, *size);
      }};
}

std::string Split(Arguments& arguments, const unsigned char* blob,
                  unsigned int blob_size, bool have_earlier_buffers) {
  const auto earlier = [&] {
    return static_cast<unsigned char*>(have_earlier_buffers ? std::malloc(1)
                                                            : nullptr);
  };
  const char* const unused = arguments.ReadText("unused");
  const unsigned char* const placed = arguments.Read(blob, blob_size);
  auto** const key = arguments.Written(earlier());
  auto* const key_size = arguments.Written(0u);
  auto** const parameters = arguments.Written(earlier());
  auto* const parameters_size = arguments.Written(0u);
  arguments.Ready();
  const int split =
      KRVEncodePublicKeyAndParametrs(0, unused, placed, blob_size, 0, 0, key,
                                     key_size, parameters, parameters_size);
  std::string shown = std::to_string(split) + ' ' + Taken(*key, *key_size);
  return shown + ' ' + Taken(*parameters, *parameters_size);
}

const std::vector<Operation> kKeys = {
    Conversion("key to blob", "1 06200000232E00004D414731180000000500111213",
               "1.2.643.2.2.19", false),
    Conversion("key to blob in the place of another",
               "1 06200000232E00004D414731180000000500111213", "1.2.643.2.2.19",
               true),
    Conversion("key of no algorithm", "0 none", "1.2.3", true),
    {"blob to key", "1 0403111213 0500",
     [](Arguments& arguments) {
       return Split(arguments, kBlob, sizeof(kBlob), false);
     }},
    {"blob to key in the place of another", "1 0403111213 0500",
     [](Arguments& arguments) {
       return Split(arguments, kBlob, sizeof(kBlob), true);
     }},
    {"blob that is cut", "0 none none",
     [](Arguments& arguments) { return Split(arguments, kBlob, 18, true); }},
    {"sizes alone", "1 5 2",
     [](Arguments& arguments) {
       const unsigned char* const blob = arguments.Read(kBlob, sizeof(kBlob));
       auto* const key_size = arguments.Written(0u);
       auto* const parameters_size = arguments.Written(0u);
       arguments.Ready();
       const int split = KRVEncodePublicKeyAndParametrs(
           0, nullptr, blob, sizeof(kBlob), 0, 0, nullptr, key_size, nullptr,
           parameters_size);
       return std::to_string(split) + ' ' + std::to_string(*key_size) + ' ' +
              std::to_string(*parameters_size);
     }},
};

template <class String>
Operation Trimming(const char* name, const char* result,
                   void (*trim)(String&, const String&), const String& text,
                   const String& set) {
  return {name, result, [=](Arguments& arguments) {
            auto& placed = arguments.WrittenObject<String>(text);
            const auto& placed_set = arguments.ReadObject<String>(set);
            arguments.Ready();
            trim(placed, placed_set);
            return std::string(placed.begin(), placed.end());
          }};
}

// Long texts lie on the heap, short ones in the string itself.
const std::string kShort = " \tabc \t";
const std::wstring kWideShort = L" a ";
const std::string kLong = " \tabcdefghijklmnopqrstuvwxyz \t";
const std::wstring kWideLong = L" \tabcdefghijklmnopqrstuvwxyz \t";
constexpr char kTrimmed[] = "abcdefghijklmnopqrstuvwxyz";

const std::vector<Operation> kTextHelpers = {
    Trimming<std::string>("RTrim", " \tabc", RTrim, kShort, " \t"),
    Trimming<std::string>("LTrim", "abc \t", LTrim, kShort, " \t"),
    Trimming<std::string>("Trim", "abc", Trim, kShort, " \t"),
    Trimming<std::string>("Trim of a long text", kTrimmed, Trim, kLong, " \t"),
    Trimming<std::string>("Trim of a long set", "abcdefghijklmnopqrstuvwxyz",
                          Trim, kLong, " \t!#$%&'()*+,-./0123456789"),
    Trimming<std::wstring>("wide RTrim", " a", RTrim, kWideShort, L" \t"),
    Trimming<std::wstring>("wide LTrim", "a ", LTrim, kWideShort, L" \t"),
    Trimming<std::wstring>("wide Trim", "a", Trim, kWideShort, L" \t"),
    Trimming<std::wstring>("wide Trim of a long text", kTrimmed, Trim,
                           kWideLong, L" \t"),
    {"wstr_to_str", kTrimmed,
     [](Arguments& arguments) {
       const auto& text =
           arguments.ReadObject<std::wstring>(std::wstring(kWideLong, 2, 26));
       arguments.Ready();
       return wstr_to_str(text);
     }},
    {"str_to_wstr", kTrimmed,
     [](Arguments& arguments) {
       const auto& text =
           arguments.ReadObject<std::string>(std::string(kTrimmed));
       arguments.Ready();
       const std::wstring wide = str_to_wstr(text);
       return std::string(wide.begin(), wide.end());
     }},
};

// The record classes are the caller's, too, with bytes that he gives them.
const std::vector<Operation> kRecords = {
    {"IdentObj", "0403111213",
     [](Arguments& arguments) {
       const unsigned char* const bytes = arguments.Read(kKey, sizeof(kKey));
       const auto& made =
           arguments.ReadObject<IdentObj>(bytes, unsigned{sizeof(kKey)});
       auto& copy = arguments.WrittenObject<IdentObj>(made);
       auto& assigned = arguments.WrittenObject<IdentObj>();
       arguments.Ready();
       assigned = made;
       EXPECT_EQ(Hex(copy.data, copy.length),
                 Hex(assigned.data, assigned.length));
       return Hex(assigned.data, assigned.length);
     }},
    {"a record that is read", "4 3 0 111213 7",
     [](Arguments& arguments) {
       const auto& encoded =
           arguments.ReadObject<IdentObj>(kKey, unsigned{sizeof(kKey)});
       auto& record = arguments.WrittenObject<CASNTBaseRecord>();
       auto* const status = arguments.Written(7);
       arguments.Ready();
       record.SetEncodedEntry(encoded);
       const IdentObj& content = record.GetRecord(status);
       return std::to_string(record.GetTag()) + ' ' +
              std::to_string(record.GetEntrySize()) + ' ' +
              std::to_string(record.GetIsConstraction()) + ' ' +
              Hex(content.data, content.length) + ' ' + std::to_string(*status);
     }},
    {"a record that is made", "0403111213 7",
     [](Arguments& arguments) {
       const unsigned char* const bytes = arguments.Read(kKey + 2, 3);
       auto& record = arguments.WrittenObject<CASNTBaseRecord>();
       auto* const status = arguments.Written(7);
       arguments.Ready();
       record.SetTag(4);
       record.SetEntry(bytes, 3);
       const IdentObj& encoding = record.GetEncodedRecord(status);
       return Hex(encoding.data, encoding.length) + ' ' +
              std::to_string(*status);
     }},
};

// The last of all: it takes the names.
const std::vector<Operation> kCleanup = {
    {"cleanup", "true",
     [](Arguments& arguments) {
       char oid[] = "1.2.643.2.2.19";
       COidData* const found = FindOIDInfo(1, oid, 3);
       CleanupOidInfo();  // InitOidInfoWorker frees no former name
       InitOidInfoWorker(*found, 30);
       auto* const helper =
           ::new (arguments.WrittenBytes(1)) COidInfoCleanupHelper;
       helper->~COidInfoCleanupHelper();
       return Shown(found->pwszName == nullptr);
     }},
};

TEST(Placement, LookupsGiveTheSameWhereverTheirArgumentsLie) {
  ExpectTheSameEverywhere(kLookups);
}

TEST(Placement, TextsAreTheSameWhereverTheyAreCopiedTo) {
  ExpectTheSameEverywhere(kTexts);
}

TEST(Placement, KeysAreConvertedAlikeWhereverTheyLie) {
  ExpectTheSameEverywhere(kKeys);
}

TEST(Placement, TextHelpersDoTheSameWhereverTheTextsLie) {
  ExpectTheSameEverywhere(kTextHelpers);
}

TEST(Placement, RecordsDoTheSameWhereverTheyLie) {
  ExpectTheSameEverywhere(kRecords);
}

TEST(Placement, TheCleanupHelperCleansUpWhereverItLies) {
  ExpectTheSameEverywhere(kCleanup);
}

}  // namespace
}  // namespace korvan::test
