// The operations of INI documents and of the text helpers, in both widths.
// After a failure an operation of a document has done nothing, and can be tried
// again; only a load keeps the lines that it had read, and a save may have
// written a part.
#include <korvan/ini_file.h>
#include <korvan/text.h>

#include <algorithm>
#include <clocale>
#include <ios>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "allocations/operation.h"
#include "ini/shown.h"
#include "support/folder.h"
#include "support/plain_ini.h"

namespace korvan::test {
namespace {

struct Narrow {
  using Char = char;
  using File = CIniFileA;
  using Section = File::CIniSectionA;
  using Key = Section::CIniKeyA;
  using Merge = File::CIniMergeA;
  using Less = ci_less_a;
  static std::string Named(const std::string& name) { return name; }
};

struct Wide {
  using Char = wchar_t;
  using File = CIniFileW;
  using Section = File::CIniSectionW;
  using Key = Section::CIniKeyW;
  using Merge = File::CIniMergeW;
  using Less = ci_less_w;
  // The wide twin of a narrow function.
  static std::string Named(const std::string& name) {
    static const std::regex narrow_class("(File|Section|Key|Merge)A\\b");
    static const std::regex narrow_type("std::(string|istream|ostream)");
    static const std::regex narrow_less("ci_less_a");
    return std::regex_replace(
        std::regex_replace(std::regex_replace(name, narrow_class, "$1W"),
                           narrow_type, "std::w$1"),
        narrow_less, "ci_less_w");
  }
};

template <class Width>
class Table {
 public:
  static std::vector<Operation> Rows() {
    Table table;
    table.AddKeys();
    table.AddSections();
    table.AddDocuments();
    table.AddLoads();
    table.AddSaves();
    table.AddTextHelpers();
    return table.rows_;
  }

 private:
  using Char = typename Width::Char;
  using File = typename Width::File;
  using Section = typename Width::Section;
  using Key = typename Width::Key;
  using Plain = PlainIni<Char>;
  using String = std::basic_string<Char>;
  using InputStream = std::basic_istream<Char>;
  using OutputStream = std::basic_ostream<Char>;
  using StringInput = std::basic_istringstream<Char>;
  using StringOutput = std::basic_ostringstream<Char>;

  static String Text(std::string_view ascii) {
    return String(ascii.begin(), ascii.end());
  }

  // Long, so that each of them takes a request of the heap.
  inline static const String kSection =
      Text("a section with a name too long to be inline");
  inline static const String kKey =
      Text("[a key with a name too long to be inline");
  inline static const String kValue =
      Text("a value with a text too long to be inline");
  inline static const String kNew =
      Text("a new text that is too long to be kept inline");
  // Short, so that the section and the key of these names are there, too.
  inline static const String kOther = Text("Oth");
  inline static const String kShort = Text("k");

  static void Fill(File& file) {
    file.SetKeyValue(kSection, kKey, Text("v"));
    file.SetKeyValue(kSection, kShort, kValue);
    file.SetKeyValue(kOther, kShort, Text("v"));
  }
  static void Fill(Plain& plain) {
    plain.Set(kSection, kKey, Text("v"));
    plain.Set(kSection, kShort, kValue);
    plain.Set(kOther, kShort, Text("v"));
  }
  static Section& SectionOf(File& file) { return *file.GetSection(kSection); }
  static Key& KeyOf(File& file) { return *SectionOf(file).GetKey(kKey); }

  void Add(const std::string& function, const std::string& how, bool allocates,
           std::function<void(Trial&)> run) {
    rows_.push_back({Width::Named(function), how, allocates, false, run});
  }

  // An operation on a filled document. `prepare` makes the arguments and
  // returns the call; `change` does the same to a plain document.
  template <class Prepare, class Change>
  void AddEdit(const std::string& function, const std::string& how,
               bool allocates, Prepare prepare, Change change) {
    Add(function, how, allocates, [=](Trial& trial) {
      Plain plain;
      Fill(plain);
      const std::string before = ContentOf(plain);
      change(plain);
      const std::string after = ContentOf(plain);
      File file;
      Fill(file);
      trial(prepare(file));
      trial.ExpectBadAllocIfRefused();
      EXPECT_EQ(ContentOf(file), trial.Refused() ? before : after);
      if (trial.Refused()) {
        prepare(file)();
        EXPECT_EQ(ContentOf(file), after);
      }
    });
  }

  static void NoChange(Plain& /*plain*/) {}

  void AddKeys() {
    const std::string key = "korvan::CIniFileA::CIniSectionA::CIniKeyA::";
    AddEdit(
        key + "CIniKeyA(korvan::CIniFileA::CIniSectionA*, std::string)", "",
        false,
        [](File& file) {
          return [&section = SectionOf(file), name = kNew]() mutable {
            const Key made(&section, std::move(name));
          };
        },
        NoChange);
    AddEdit(
        key + "~CIniKeyA()", "", false,
        [](File&) { return [] { const Key made(nullptr, String()); }; },
        NoChange);
    AddEdit(
        key + "GetKeyName() const", "", true,
        [](File& file) {
          return [&key = KeyOf(file)] { EXPECT_EQ(key.GetKeyName(), kKey); };
        },
        NoChange);
    AddEdit(
        key + "GetValue() const", "", true,
        [](File& file) {
          return [&key = *SectionOf(file).GetKey(kShort)] {
            EXPECT_EQ(key.GetValue(), kValue);
          };
        },
        NoChange);
    AddEdit(
        key + "SetKeyName(std::string)", "", true,
        [](File& file) {
          return [&key = KeyOf(file), name = kNew]() mutable {
            EXPECT_TRUE(key.SetKeyName(std::move(name)));
          };
        },
        [](Plain& plain) { plain.RenameKey(kSection, kKey, kNew); });
    AddEdit(
        key + "SetKeyName(std::string)", "to a taken name", true,
        [](File& file) {
          return [&key = KeyOf(file), name = kKey]() mutable {
            EXPECT_FALSE(key.SetKeyName(std::move(name)));
          };
        },
        NoChange);
    AddEdit(
        key + "SetValue(std::string)", "", false,
        [](File& file) {
          return [&key = KeyOf(file), value = kNew]() mutable {
            key.SetValue(std::move(value));
          };
        },
        [](Plain& plain) { plain.Set(kSection, kKey, kNew); });
  }

  void AddSections() {
    const std::string section = "korvan::CIniFileA::CIniSectionA::";
    AddEdit(
        section + "CIniSectionA(korvan::CIniFileA*, std::string)", "", false,
        [](File& file) {
          return [&file, name = kNew]() mutable {
            const Section made(&file, std::move(name));
          };
        },
        NoChange);
    AddEdit(
        section + "~CIniSectionA()", "", false,
        [](File&) { return [] { const Section made(nullptr, String()); }; },
        NoChange);
    AddEdit(
        section + "AddKey(std::string)", "", true,
        [](File& file) {
          return [&section = SectionOf(file), name = kNew]() mutable {
            section.AddKey(std::move(name));
          };
        },
        [](Plain& plain) { plain.AddKey(kSection, kNew); });
    AddEdit(
        section + "AddKey(std::string)", "of a key that is there", false,
        [](File& file) {
          return [&section = SectionOf(file), name = kKey]() mutable {
            section.AddKey(std::move(name));
          };
        },
        NoChange);
    AddEdit(
        section + "GetKey(std::string) const", "", false,
        [](File& file) {
          return [&section = SectionOf(file), name = kKey]() mutable {
            EXPECT_NE(section.GetKey(std::move(name)), nullptr);
          };
        },
        NoChange);
    AddEdit(
        section + "GetKeyValue(std::string) const", "", true,
        [](File& file) {
          return [&section = SectionOf(file)]() mutable {
            EXPECT_EQ(section.GetKeyValue(Text("k")), kValue);
          };
        },
        NoChange);
    AddEdit(
        section + "GetKeys() const", "", false,
        [](File& file) {
          return [&section = SectionOf(file)] {
            EXPECT_EQ(section.GetKeys().size(), 2u);
          };
        },
        NoChange);
    AddEdit(
        section + "GetSectionName() const", "", true,
        [](File& file) {
          return [&section = SectionOf(file)] {
            EXPECT_EQ(section.GetSectionName(), kSection);
          };
        },
        NoChange);
    AddEdit(
        section + "RemoveAllKeys()", "", false,
        [](File& file) {
          return [&section = SectionOf(file)] { section.RemoveAllKeys(); };
        },
        [](Plain& plain) {
          plain.RemoveKey(kSection, kKey);
          plain.RemoveKey(kSection, kShort);
        });
    AddEdit(
        section +
            "RemoveKey(korvan::CIniFileA::CIniSectionA::"
            "CIniKeyA*)",
        "", false,
        [](File& file) {
          return
              [&section = SectionOf(file), key = SectionOf(file).GetKey(kKey)] {
                section.RemoveKey(key);
              };
        },
        [](Plain& plain) { plain.RemoveKey(kSection, kKey); });
    AddEdit(
        section + "RemoveKey(std::string)", "", false,
        [](File& file) {
          return [&section = SectionOf(file), name = kKey]() mutable {
            section.RemoveKey(std::move(name));
          };
        },
        [](Plain& plain) { plain.RemoveKey(kSection, kKey); });
    AddEdit(
        section + "SetKeyValue(std::string, std::string)", "", true,
        [](File& file) {
          return [&section = SectionOf(file), name = kNew,
                  value = kValue]() mutable {
            section.SetKeyValue(std::move(name), std::move(value));
          };
        },
        [](Plain& plain) { plain.Set(kSection, kNew, kValue); });
    AddEdit(
        section + "SetSectionName(std::string)", "", true,
        [](File& file) {
          return [&section = SectionOf(file), name = kNew]() mutable {
            EXPECT_TRUE(section.SetSectionName(std::move(name)));
          };
        },
        [](Plain& plain) { plain.RenameSection(kSection, kNew); });
  }

  void AddDocuments() {
    const std::string file = "korvan::CIniFileA::";
    AddEdit(
        file + "CIniFileA()", "", false,
        [](File&) { return [] { const File made; }; }, NoChange);
    AddEdit(
        file + "~CIniFileA()", "", false,
        [](File&) { return [] { const File made; }; }, NoChange);
    AddEdit(
        file + "AddSection(std::string)", "", true,
        [](File& document) {
          return [&document, name = kNew]() mutable {
            document.AddSection(std::move(name));
          };
        },
        [](Plain& plain) { plain.AddSection(kNew); });
    AddEdit(
        file + "AddSection(std::string)", "of a section that is there", false,
        [](File& document) {
          return [&document, name = kSection]() mutable {
            document.AddSection(std::move(name));
          };
        },
        NoChange);
    AddEdit(
        file + "GetKeyValue(std::string, std::string) const", "", true,
        [](File& document) {
          return [&document, name = kSection]() mutable {
            EXPECT_EQ(document.GetKeyValue(std::move(name), Text("k")), kValue);
          };
        },
        NoChange);
    AddEdit(
        file + "GetSection(std::string) const", "", false,
        [](File& document) {
          return [&document, name = kSection]() mutable {
            EXPECT_NE(document.GetSection(std::move(name)), nullptr);
          };
        },
        NoChange);
    AddEdit(
        file + "GetSections() const", "", false,
        [](File& document) {
          return [&document] { EXPECT_EQ(document.GetSections().size(), 2u); };
        },
        NoChange);
    AddEdit(
        file + "RemoveAllSections()", "", false,
        [](File& document) {
          return [&document] { document.RemoveAllSections(); };
        },
        [](Plain& plain) { plain.Clear(); });
    AddEdit(
        file + "RemoveSection(korvan::CIniFileA::CIniSectionA*)", "", false,
        [](File& document) {
          return [&document, &section = SectionOf(document)] {
            document.RemoveSection(&section);
          };
        },
        [](Plain& plain) { plain.RemoveSection(kSection); });
    AddEdit(
        file + "RemoveSection(std::string)", "", false,
        [](File& document) {
          return [&document, name = kSection]() mutable {
            document.RemoveSection(std::move(name));
          };
        },
        [](Plain& plain) { plain.RemoveSection(kSection); });
    AddEdit(
        file + "RenameSection(std::string, std::string)", "", true,
        [](File& document) {
          return [&document, from = kSection, to = kNew]() mutable {
            EXPECT_TRUE(document.RenameSection(std::move(from), std::move(to)));
          };
        },
        [](Plain& plain) { plain.RenameSection(kSection, kNew); });
    AddEdit(
        file + "RenameKey(std::string, std::string, std::string)", "", true,
        [](File& document) {
          return [&document, section = kSection, from = kKey,
                  to = kNew]() mutable {
            EXPECT_TRUE(document.RenameKey(std::move(section), std::move(from),
                                           std::move(to)));
          };
        },
        [](Plain& plain) { plain.RenameKey(kSection, kKey, kNew); });
    const auto set = [](const String& section, const String& key) {
      return [=](File& document) {
        return
            [&document, section = section, key = key, value = kNew]() mutable {
              document.SetKeyValue(std::move(section), std::move(key),
                                   std::move(value));
            };
      };
    };
    const std::string set_name =
        file + "SetKeyValue(std::string, std::string, std::string)";
    AddEdit(set_name, "in a new section", true, set(kNew, kKey),
            [](Plain& plain) { plain.Set(kNew, kKey, kNew); });
    AddEdit(set_name, "of a new key", true, set(kSection, kNew),
            [](Plain& plain) { plain.Set(kSection, kNew, kNew); });
    AddEdit(set_name, "of a key that is there", false, set(kSection, kKey),
            [](Plain& plain) { plain.Set(kSection, kKey, kNew); });
    AddNumbers();
  }

  // Wide documents have none.
  void AddNumbers() {
    if constexpr (std::is_same_v<Width, Narrow>) {
      AddEdit(
          "korvan::CIniFileA::SetKeyValueDword(std::string, std::string, "
          "unsigned long)",
          "", true,
          [](File& document) {
            return [&document, section = kNew, key = kKey]() mutable {
              document.SetKeyValueDword(std::move(section), std::move(key),
                                        10000000000000000000u);
            };
          },
          [](Plain& plain) {
            plain.Set(kNew, kKey, Text("10000000000000000000"));
          });
      AddEdit(
          "korvan::CIniFileA::GetKeyValueDword(std::string, std::string) const",
          "", false,
          [](File& document) {
            return [&document, section = kSection, key = kKey]() mutable {
              EXPECT_EQ(
                  document.GetKeyValueDword(std::move(section), std::move(key)),
                  4294967295u);
            };
          },
          NoChange);
    }
  }

  // Lines with texts that take the heap, and a run of keys in no order, which
  // are entered at once.
  static std::vector<std::string> Lines() {
    std::vector<std::string> lines = {
        "[a section with a name too long to be inline]\n",
        "[a key with a name too long to be inline=and a value, long, too\n",
        "[another key, its name is too long to be inline=v\n",
        "# a comment that is too long to be kept inline, too\n"};
    for (int i = 0; i < 20; ++i) {
      lines.push_back("[k" + std::to_string(10 + i * 7 % 20) +
                      (i % 3 == 0 ? " that has a name too long to be inline=v\n"
                                  : "=a value too long to be inline\n"));
    }
    lines.push_back("[a second section, its name too long to be inline]\n");
    return lines;
  }

  static std::string AllLines() {
    std::string all;
    for (const std::string& line : Lines()) {
      all += line;
    }
    return all;
  }

  // What a document has after none, the first, the first two and so on of the
  // lines.
  static const std::vector<std::string>& Loaded(bool merge) {
    static const std::vector<std::string> merged = LoadedLineByLine(true);
    static const std::vector<std::string> replaced = LoadedLineByLine(false);
    return merge ? merged : replaced;
  }

  static std::vector<std::string> LoadedLineByLine(bool merge) {
    std::vector<std::string> contents;
    std::string text;
    const auto load = [&] {
      Plain plain;
      Fill(plain);
      StringInput input(Text(text));
      plain.Load(input, merge);
      contents.push_back(ContentOf(plain));
    };
    load();
    for (const std::string& line : Lines()) {
      text += line;
      load();
    }
    return contents;
  }

  // A load keeps the lines that it had read, and throws what it fails by, or
  // leaves it in the stream: the line reader does not throw.
  static void ExpectLinesBefore(const Trial& trial, bool merge,
                                const std::string& content) {
    const std::vector<std::string>& loaded = Loaded(merge);
    if (!trial.Refused()) {
      EXPECT_EQ(content, loaded.back());
    } else {
      EXPECT_GE(std::ranges::count(loaded, content), 1) << content;
    }
    if (!trial.Thrown().empty()) {
      EXPECT_EQ(trial.Thrown(), "bad_alloc");
      EXPECT_TRUE(trial.Refused());
    }
  }

  // A load from a stream, with the stream's buffer as the text alone makes it.
  template <class Load>
  void AddStreamLoad(const std::string& function, const std::string& how,
                     bool merge, std::ios_base::iostate exceptions, Load load) {
    Add(function, how, true, [=](Trial& trial) {
      File file;
      Fill(file);
      StringInput input(Text(AllLines()));
      input.exceptions(exceptions);
      trial([&] { load(input, file); });
      ExpectLinesBefore(trial, merge, ContentOf(file));
      if (trial.Refused() && trial.Thrown().empty()) {
        // Some of the reader's own work can be done without.
        EXPECT_TRUE((input.bad() && exceptions == std::ios_base::goodbit) ||
                    ContentOf(file) == Loaded(merge).back());
      }
      StringInput again(Text(AllLines()));
      load(again, file);
      EXPECT_EQ(ContentOf(file), Loaded(merge).back());
    });
  }

  void AddLoads() {
    const std::string load = "korvan::CIniFileA::Load";
    const auto replace = [](InputStream& input, File& file) {
      file.Load(input);
    };
    const auto add = [](InputStream& input, File& file) {
      file.Load(input, true);
    };
    AddStreamLoad(load + "(std::istream&, bool)", "", false,
                  std::ios_base::goodbit, replace);
    AddStreamLoad(load + "(std::istream&, bool)", "with merge", true,
                  std::ios_base::goodbit, add);
    AddStreamLoad(load + "(std::istream&, bool)", "of a stream that throws",
                  true, std::ios_base::badbit, add);
    AddStreamLoad("korvan::operator>>(std::istream&, korvan::CIniFileA&)", "",
                  false, std::ios_base::goodbit,
                  [](InputStream& input, File& file) { input >> file; });
    AddStreamLoad(
        "korvan::operator>>(std::istream&, korvan::CIniFileA::CIniMergeA)", "",
        true, std::ios_base::goodbit, [](InputStream& input, File& file) {
          input >> typename Width::Merge(file);
        });
    for (const bool merge : {false, true}) {
      Add(load + "(std::string const&, bool)", merge ? "with merge" : "", true,
          [=](Trial& trial) { LoadAFile(trial, merge); });
    }
  }

  static void LoadAFile(Trial& trial, bool merge) {
    const Folder folder;
    WriteBytes(folder / "a.ini", AllLines());
    const String path = Text(folder / "a.ini");
    File file;
    Fill(file);
    const std::string before = ContentOf(file);
    bool opened = false;
    trial([&] { opened = file.Load(path, merge); });
    const std::string content = ContentOf(file);
    if (!opened && content == before) {
      // No memory to open it: that is thrown, or the C library reported it.
      EXPECT_TRUE(trial.Refused());
      EXPECT_TRUE(trial.Thrown() == "bad_alloc" || !trial.RefusedNew());
    } else {
      ExpectLinesBefore(trial, merge, content);
      EXPECT_EQ(opened, trial.Thrown().empty());
    }
    EXPECT_TRUE(file.Load(path, merge));
    EXPECT_EQ(ContentOf(file), Loaded(merge).back());
  }

  static std::string SavedWhole() {
    Plain plain;
    Fill(plain);
    StringOutput output;
    plain.Save(output);
    const String text = output.str();
    return std::string(text.begin(), text.end());
  }

  // A save throws what it fails by, or leaves it in the stream: an insertion
  // does not throw. What was written is a part of the text.
  template <class Save>
  void AddStreamSave(const std::string& function, const std::string& how,
                     std::ios_base::iostate exceptions, int width, Save save) {
    Add(function, how, true, [=](Trial& trial) {
      File file;
      Fill(file);
      const std::string before = ContentOf(file);
      const std::string whole = SavedWhole();
      StringOutput output;
      output.exceptions(exceptions);
      output.width(width);
      trial([&] { save(output, file); });
      EXPECT_EQ(ContentOf(file), before);
      const String written = output.str();
      const std::string text(written.begin(), written.end());
      if (!trial.Refused()) {
        EXPECT_EQ(trial.Thrown(), "");
        EXPECT_EQ(text, whole);
      } else {
        EXPECT_TRUE(whole.starts_with(text)) << text;
        EXPECT_TRUE(trial.Thrown() == "bad_alloc" ||
                    (output.bad() && exceptions == std::ios_base::goodbit))
            << trial.Thrown();
      }
      StringOutput again;
      save(again, file);
      EXPECT_EQ(again.str(), Text(whole));
    });
  }

  void AddSaves() {
    const std::string save = "korvan::CIniFileA::Save";
    const auto save_to = [](OutputStream& output, File& file) {
      file.Save(output);
    };
    const auto good = std::ios_base::goodbit;
    AddStreamSave(save + "(std::ostream&)", "", good, 0, save_to);
    AddStreamSave(save + "(std::ostream&)", "that takes a width", good, 1,
                  save_to);
    AddStreamSave(save + "(std::ostream&)", "that throws",
                  std::ios_base::badbit, 0, save_to);
    AddStreamSave("korvan::operator<<(std::ostream&, korvan::CIniFileA&)", "",
                  good, 0,
                  [](OutputStream& output, File& file) { output << file; });
    Add(save + "(std::string const&)", "", true, SaveAFile);
  }

  static void SaveAFile(Trial& trial) {
    const Folder folder;
    const std::string old = "what was there\n";
    WriteBytes(folder / "a.ini", old);
    const String path = Text(folder / "a.ini");
    File file;
    Fill(file);
    const std::string before = ContentOf(file);
    bool opened = false;
    trial([&] { opened = file.Save(path); });
    EXPECT_EQ(ContentOf(file), before);
    const std::string bytes = BytesOf(folder / "a.ini");
    if (!trial.Refused()) {
      EXPECT_TRUE(opened);
      EXPECT_EQ(bytes, SavedWhole());
    } else if (trial.Thrown().empty() && !opened) {
      EXPECT_FALSE(trial.RefusedNew());
      EXPECT_EQ(bytes, old);
    } else {
      EXPECT_TRUE(trial.Thrown() == "bad_alloc" || opened);
      EXPECT_TRUE(!opened || bytes == SavedWhole() || !trial.RefusedNew());
      EXPECT_TRUE(bytes == old || SavedWhole().starts_with(bytes)) << bytes;
    }
    EXPECT_TRUE(file.Save(path));
    EXPECT_EQ(BytesOf(folder / "a.ini"), SavedWhole());
  }

  void AddTextHelpers() {
    AddEdit(
        "korvan::ci_less_a::operator()(std::string const&, std::string const&) "
        "const",
        "", false,
        [](File&) {
          return [] { EXPECT_TRUE(typename Width::Less()(kKey, kValue)); };
        },
        NoChange);
    const auto add_trim = [this](const std::string& name, auto trim) {
      this->AddEdit(
          "korvan::" + name + "(std::string&, std::string const&)", "", false,
          [trim](File&) {
            return [trim, text = Text("  ") + kNew + Text("  "),
                    set = Text(" ")]() mutable {
              trim(text, set);
              EXPECT_LT(text.size(), kNew.size() + 4);
            };
          },
          NoChange);
    };
    add_trim("RTrim",
             [](String& text, const String& set) { RTrim(text, set); });
    add_trim("LTrim",
             [](String& text, const String& set) { LTrim(text, set); });
    add_trim("Trim", [](String& text, const String& set) { Trim(text, set); });
    AddConversion();
  }

  // From this width to the other.
  void AddConversion() {
    const auto convert = [](const String& text) {
      if constexpr (std::is_same_v<Width, Narrow>) {
        return str_to_wstr(text);
      } else {
        return wstr_to_str(text);
      }
    };
    const std::string name = std::is_same_v<Width, Narrow>
                                 ? "korvan::str_to_wstr(std::string const&)"
                                 : "korvan::wstr_to_str(std::string const&)";
    AddEdit(
        name, "", true,
        [=](File&) {
          return [=] { EXPECT_EQ(convert(kNew).size(), kNew.size()); };
        },
        NoChange);
    // The C library then has memory to get for its converter. It goes without
    // where there is none, for as long as the locale is loaded.
    rows_.push_back({Width::Named(name), "first of a locale", true, true,
                     [=](Trial& trial) {
                       ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
                       std::size_t size = 0;
                       trial([&] { size = convert(kNew).size(); });
                       EXPECT_EQ(trial.Thrown(),
                                 trial.RefusedNew() ? "bad_alloc" : "");
                       EXPECT_EQ(size, trial.RefusedNew() ? 0 : kNew.size());
                       const auto converted = convert(kNew);
                       EXPECT_TRUE(std::ranges::equal(converted, kNew));
                     }});
  }

  std::vector<Operation> rows_;
};

}  // namespace

std::vector<Operation> NarrowOperations() { return Table<Narrow>::Rows(); }
std::vector<Operation> WideOperations() { return Table<Wide>::Rows(); }

}  // namespace korvan::test
