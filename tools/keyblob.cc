// keyblob: turns the public keys of certificates into key blobs, and back.
#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/blob_conversion.h"
#include "tools/command_line.h"
#include "tools/key_report.h"
#include "tools/oid_search.h"
#include "tools/program.h"
#include "tools/public_key_info.h"

namespace korvan::tools {
namespace {

constexpr std::size_t kMostBytes = std::size_t{16} << 20;

struct Order {
  std::string file;
  bool from_blob = false;
  std::optional<std::string> oid;
  bool check = false;
  std::optional<std::string> out;
  Format format = Format::kColumns;
};

// Makes the entry's blob, and goes back from it if asked. Returns the status
// of the entry.
Status Convert(KeyEntry& entry, bool check) {
  try {
    entry.blob = ToBlob(entry.info);
  } catch (const Failure& failure) {
    entry.error = failure.what();
    return failure.status();
  }
  if (!check) {
    return Status::kDone;
  }
  const Pieces pieces = FromBlob(entry.blob);
  const Bytes again =
      EncodedInfo(entry.info.oid, pieces.parameters, pieces.bits);
  const bool is_same = again == entry.info.encoded;
  entry.check =
      Check{again.size(),
            is_same ? "" : ReasonForAnotherWayBack(entry.info, entry.blob)};
  return is_same ? Status::kDone : Status::kRefused;
}

KeyEntry EntryOfBlob(Bytes blob, const std::optional<std::string>& oid) {
  KeyEntry entry{Source::kBlob, {}, std::move(blob), {}, {}, {}};
  const Pieces pieces = FromBlob(entry.blob);
  if (!oid) {
    entry.other_oids = OidsOf(AlgidOf(entry.blob));
    if (entry.other_oids.empty()) {
      throw Failure(Status::kNotFound,
                    "the registry has no public-key algorithm " +
                        Hex(AlgidOf(entry.blob)) + "; --oid gives one");
    }
    entry.info.oid = entry.other_oids.front();
    entry.other_oids.erase(entry.other_oids.begin());
  } else {
    entry.info.oid = *oid;
  }
  entry.info.parameters = pieces.parameters;
  entry.info.bits = pieces.bits;
  entry.info.encoded =
      EncodedInfo(entry.info.oid, pieces.parameters, pieces.bits);
  return entry;
}

std::vector<KeyEntry> EntriesOf(const Order& order) {
  const std::string input = ReadAll(order.file, kMostBytes);
  Bytes bytes(input.begin(), input.end());
  std::vector<KeyEntry> entries;
  try {
    if (order.from_blob) {
      entries.push_back(EntryOfBlob(std::move(bytes), order.oid));
      return entries;
    }
    for (PublicKeyInfo& info : ReadPublicKeyInfos(bytes)) {
      const Source source =
          info.subject ? Source::kCertificate : Source::kPublicKeyInfo;
      entries.push_back({source, std::move(info), {}, {}, {}, {}});
    }
  } catch (const Failure& failure) {
    throw Failure(failure.status(), NameOf(order.file) + ": " + failure.what());
  }
  if (order.out && entries.size() != 1) {
    throw Failure(Status::kRefused,
                  NameOf(order.file) + ": holds " +
                      std::to_string(entries.size()) +
                      " keys, and --out writes the blob of one");
  }
  return entries;
}

Status Answer(const Order& order) {
  if (order.oid && !IsOid(*order.oid)) {
    throw Failure(Status::kUsage, "'" + *order.oid + "' is no OID");
  }
  const bool prints = order.out != "-";
  if (!prints && order.format != Format::kColumns) {
    throw Failure(Status::kUsage,
                  "with '--out -' there is no place for anything else");
  }
  std::vector<KeyEntry> entries = EntriesOf(order);
  Status status = Status::kDone;
  if (!order.from_blob) {
    for (KeyEntry& entry : entries) {
      status = std::max(status, Convert(entry, order.check));
    }
  }
  if (prints) {
    Print(entries, order.format);
    std::cout << std::flush;
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (!entries[i].error.empty()) {
      Note(NameOf(order.file) + ": " + NameOfEntry(entries[i], i + 1) + ": " +
           entries[i].error);
    } else if (order.out) {
      const Bytes& made =
          order.from_blob ? entries[i].info.encoded : entries[i].blob;
      WriteAll(*order.out, {made.begin(), made.end()});
    }
  }
  return status;
}

}  // namespace
}  // namespace korvan::tools

// What CLI11 throws where options are declared wrongly ends the program, as it
// should. NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
  using namespace korvan::tools;
  Order order;
  CLI::App app(
      "Turns the public keys of certificates into key blobs, and back.",
      "keyblob");
  AddCommonOptions(app, order.format);
  app.add_option("FILE", order.file,
                 "Certificates or public keys, DER or PEM (- is stdin)")
      ->required();
  auto* const from_blob = app.add_flag("--from-blob", order.from_blob,
                                       "FILE is a blob; make its public key");
  app.add_option("--oid", order.oid,
                 "Its algorithm, where the ALG_ID has more than one")
      ->type_name("OID")
      ->needs(from_blob);
  app.add_flag("--check", order.check,
               "Go back from the blob; is the public key the same?")
      ->excludes(from_blob);
  app.add_option("--out", order.out,
                 "Write the blob of one key, or with --from-blob the DER")
      ->type_name("FILE");
  return Run(app, argc, argv, [&] { return Answer(order); });
}
