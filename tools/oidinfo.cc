// oidinfo: looks algorithms, attributes, extensions and usages up in the OID
// registry, by OID, by name, by ALG_ID or by the pair of a signature.
#include <korvan/oid_info.h>

#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/command_line.h"
#include "tools/oid_report.h"
#include "tools/oid_search.h"
#include "tools/program.h"
#include "tools/text.h"

namespace korvan::tools {
namespace {

constexpr std::size_t kMostBytesOfKeys = std::size_t{1} << 20;

struct Order {
  std::optional<std::string> key;
  std::optional<std::string> forced[4];  // by --oid, --name, --algid, --sign
  std::optional<std::string> group;
  bool all = false;
  Format format = Format::kColumns;
};

std::string Listed(const std::vector<std::wstring>& texts) {
  std::string list;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    list += (i == 0                  ? ""
             : i + 1 == texts.size() ? " or "
                                     : ", ") +
            ("'" + Printable(texts[i]) + "'");
  }
  return list;
}

// What the results do not say by themselves.
void Explain(const Lookup& lookup) {
  if (!lookup.hidden.empty()) {
    Note("the case rules of this locale hide the name " +
         Listed(lookup.hidden));
  }
  if (!lookup.records.empty()) {
    return;
  }
  const std::string in_group =
      lookup.group != 0 ? " in group " + std::to_string(lookup.group) : "";
  if (!lookup.key) {
    Note("no record" + in_group);
    return;
  }
  Note("no record" + in_group + " has the " +
       NameOfType(lookup.key->type).name + " '" + lookup.key->text + "'" +
       (lookup.suggestions.empty()
            ? ""
            : "; is it " + Listed(lookup.suggestions) + "?"));
}

Lookup LookUp(Key key, DWORD group) {
  Lookup lookup;
  lookup.records = Matches(key, group);
  lookup.returned = FindOIDInfo(key.type, key.Data(), group);
  lookup.hidden = HiddenNames(key, group);
  if (lookup.records.empty() && lookup.hidden.empty()) {
    lookup.suggestions = Nearest(key, group);
  }
  lookup.key = std::move(key);
  lookup.group = group;
  return lookup;
}

// The keys that `text` stands for: itself, or the lines of standard input.
std::vector<Key> KeysOf(const std::string& text, std::optional<DWORD> type) {
  std::vector<std::string> lines = {text};
  if (text == "-") {
    const std::string input = ReadAll(text, kMostBytesOfKeys);
    if (input.find('\0') != input.npos) {
      throw Failure(Status::kRefused, "standard input: is no text");
    }
    lines = CLI::detail::split(input, '\n');
    std::erase(lines, "");
  }
  std::vector<Key> keys;
  keys.reserve(lines.size());
  for (const std::string& line : lines) {
    keys.push_back(type ? KeyOfType(*type, line) : KeyByForm(line));
  }
  return keys;
}

Status Answer(const Order& order) {
  const std::optional<DWORD> group =
      order.group ? Number(*order.group) : DWORD{0};
  if (!group) {
    throw Failure(Status::kUsage, "'" + *order.group + "' is no group");
  }
  std::vector<Key> keys;
  int given = order.all ? 1 : 0;
  if (order.key) {
    keys = KeysOf(*order.key, std::nullopt);
    ++given;
  }
  for (const TypeName& type : kTypeNames) {
    if (const auto& key = order.forced[type.type - 1]) {
      keys = KeysOf(*key, type.type);
      ++given;
    }
  }
  if (given > 1) {
    throw Failure(Status::kUsage, "one key is enough, and none with --all");
  }
  if (given == 0 && !order.group) {
    throw Failure(Status::kUsage, "a key is missing, or --group or --all");
  }
  std::vector<Lookup> lookups;
  lookups.reserve(keys.size() + 1);
  for (Key& key : keys) {
    lookups.push_back(LookUp(std::move(key), *group));
  }
  if (given == 0 || order.all) {
    Lookup list;
    list.group = *group;
    list.records = RecordsOf(*group);
    lookups.push_back(std::move(list));
  }
  Print(lookups, order.format);
  std::cout << std::flush;
  Status status = Status::kDone;
  for (const Lookup& lookup : lookups) {
    Explain(lookup);
    if (lookup.records.empty()) {
      status = Status::kNotFound;
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
      "Looks up algorithms, attributes and usages in the OID registry.",
      "oidinfo");
  AddCommonOptions(app, order.format);
  app.add_option("KEY", order.key,
                 "OID, name, ALG_ID or HASH,KEY; - reads one a line");
  app.add_option("--oid", order.forced[0], "Look an OID up, 2.5.4.3")
      ->type_name("OID");
  app.add_option("--name", order.forced[1], "A name in any case, 'common name'")
      ->type_name("NAME");
  app.add_option("--algid", order.forced[2], "An ALG_ID, 0x2E23 or 11811")
      ->type_name("ALG_ID");
  app.add_option("--sign", order.forced[3], "Two of a signature, 0x8004,0x2400")
      ->type_name("HASH,KEY");
  app.add_option("--group", order.group,
                 "Search in a group, or list it: 1 to 8, 20")
      ->type_name("N");
  app.add_flag("--all", order.all, "List the whole registry");
  return Run(app, argc, argv, [&] { return Answer(order); });
}
