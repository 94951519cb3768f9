// All who load, search, edit and save the same content, with one interface, so
// that every benchmark is written once. `Competitor` and the concepts below it
// state that interface.

#ifndef KORVAN_BENCH_INI_COMPETITORS_H_
#define KORVAN_BENCH_INI_COMPETITORS_H_

#include <INIReader.h>
#include <glib.h>
#include <korvan/ini_file.h>
#define SI_CONVERT_ICU
#define SI_SUPPORT_IOSTREAMS
#include <SimpleIni.h>

#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <concepts>
#include <cstddef>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "ini/source.h"
#include "ini/texts.h"
#include "support/plain_ini.h"

namespace competitors {

// What each competitor has: its name in the reports, the syntax it reads, the
// characters of the text it loads, and the strings in which it takes names and
// values. Find returns the length of the value. Names are looked up as they
// stand in the text, so that it does not matter who ignores case.
template <class T>
concept Competitor = requires(T document, const T& loaded,
                              const std::string& utf8,
                              Source<typename T::Char>& source,
                              const Entry<typename T::Text>& entry) {
  { T::kName } -> std::convertible_to<std::string>;
  { T::kSyntax } -> std::convertible_to<texts::Syntax>;
  { T::TextOf(utf8) } -> std::same_as<typename T::Text>;
  document.Load(source);
  document.LoadFile(source, utf8);
  { loaded.Find(entry) } -> std::same_as<std::size_t>;
};

template <class T>
concept CanSave = Competitor<T> &&
    requires(T document, std::basic_ostream<typename T::OutputChar>& output,
             const std::string& path) {
  document.Save(output);
  document.SaveFile(path);
};

// List walks all keys and returns the total length of their names and values.
template <class T>
concept CanEdit = CanSave<T> && requires(T document, const T& loaded,
                                         const Entry<typename T::Text>& entry) {
  document.Overwrite(entry);
  document.Add(entry);
  document.Remove(entry);
  { loaded.List() } -> std::same_as<std::size_t>;
};

template <class T>
concept CanRename = CanEdit<T> &&
    requires(T document, const Entry<typename T::Text>& entry) {
  document.Rename(entry);
};

// The types of a competitor that loads text of `CharType` and takes strings of
// `Unit`.
template <texts::Syntax kItsSyntax, class CharType, class Unit = CharType>
struct Types {
  static constexpr texts::Syntax kSyntax = kItsSyntax;
  using Char = CharType;
  using OutputChar = CharType;
  using Text = std::basic_string<Unit>;

  static Text TextOf(const std::string& utf8) {
    const std::basic_string<Char> decoded = texts::Decoded<Char>(utf8);
    return Text(decoded.begin(), decoded.end());
  }
};

template <class Char>
class Ours : public Types<texts::Syntax::kBracketed, Char> {
 public:
  static constexpr char kName[] = "ours";
  using Text = std::basic_string<Char>;

  void Load(Source<Char>& source) { file_.Load(source.stream()); }
  void LoadFile(const Source<Char>&, const std::string& path) {
    file_.Load(Ours::TextOf(path));
  }
  std::size_t Find(const Entry<Text>& entry) const {
    return file_.GetKeyValue(entry.section, entry.name).size();
  }

  void Save(std::basic_ostream<Char>& output) { file_.Save(output); }
  void SaveFile(const std::string& path) { file_.Save(Ours::TextOf(path)); }

  void Overwrite(const Entry<Text>& entry) {
    file_.SetKeyValue(entry.section, entry.name, entry.other_value);
  }
  void Add(const Entry<Text>& entry) {
    file_.SetKeyValue(entry.section, entry.other_name, entry.value);
  }
  void Remove(const Entry<Text>& entry) {
    file_.GetSection(entry.section)->RemoveKey(entry.name);
  }
  void Rename(const Entry<Text>& entry) {
    file_.RenameKey(entry.section, entry.name, entry.other_name);
  }
  std::size_t List() const {
    std::size_t size = 0;
    for (const auto& [section_name, section] : file_.GetSections()) {
      for (const auto& [name, key] : section->GetKeys()) {
        size += name.size() + key->GetValue().size();
      }
    }
    return size;
  }

 private:
  std::conditional_t<std::is_same_v<Char, char>, korvan::CIniFileA,
                     korvan::CIniFileW>
      file_;
};

template <class Char>
class Plain : public Types<texts::Syntax::kBracketed, Char> {
 public:
  static constexpr char kName[] = "plain maps";
  using Text = std::basic_string<Char>;

  void Load(Source<Char>& source) { file_.Load(source.stream(), false); }
  void LoadFile(const Source<Char>&, const std::string& path) {
    std::basic_ifstream<Char> stream(path, std::ios::binary);
    file_.Load(stream, false);
  }
  std::size_t Find(const Entry<Text>& entry) const {
    const Text* const value = file_.Value(entry.section, entry.name);
    // By value, as the library gives it.
    return value == nullptr ? 0 : Text(*value).size();
  }

  void Save(std::basic_ostream<Char>& output) { file_.Save(output); }
  void SaveFile(const std::string& path) {
    std::basic_ofstream<Char> stream(path, std::ios::binary);
    file_.Save(stream);
  }

  void Overwrite(const Entry<Text>& entry) {
    file_.Set(entry.section, entry.name, entry.other_value);
  }
  void Add(const Entry<Text>& entry) {
    file_.Set(entry.section, entry.other_name, entry.value);
  }
  void Remove(const Entry<Text>& entry) {
    file_.RemoveKey(entry.section, entry.name);
  }
  void Rename(const Entry<Text>& entry) {
    file_.RenameKey(entry.section, entry.name, entry.other_name);
  }
  std::size_t List() const {
    std::size_t size = 0;
    for (const auto& [section, keys] : file_.sections()) {
      for (const auto& [name, value] : keys) {
        size += name.size() + value.size();
      }
    }
    return size;
  }

 private:
  korvan::test::PlainIni<Char> file_;
};

// The tree that minds case: the one that does not asks the locale for each
// character of each comparison, and is two hundred times slower.
template <class Char>
class PropertyTree : public Types<texts::Syntax::kPlain, Char> {
 public:
  static constexpr char kName[] = "Boost ptree";
  using Text = std::basic_string<Char>;

  void Load(Source<Char>& source) {
    boost::property_tree::read_ini(source.stream(), tree_);
  }
  void LoadFile(const Source<Char>&, const std::string& path) {
    boost::property_tree::read_ini(path, tree_);
  }
  std::size_t Find(const Entry<Text>& entry) const {
    const auto section = tree_.find(entry.section);
    if (section == tree_.not_found()) {
      return 0;
    }
    const auto key = section->second.find(entry.name);
    return key == section->second.not_found() ? 0 : key->second.data().size();
  }

  void Save(std::basic_ostream<Char>& output) {
    boost::property_tree::write_ini(output, tree_);
  }
  void SaveFile(const std::string& path) {
    boost::property_tree::write_ini(path, tree_);
  }

 private:
  std::conditional_t<std::is_same_v<Char, char>, boost::property_tree::ptree,
                     boost::property_tree::wptree>
      tree_;
};

// In its wide form it has ICU's 16-bit characters, as Debian builds it.
template <class Char>
using UnitOfSimpleIni =
    std::conditional_t<std::is_same_v<Char, char>, char, UChar>;

template <class Char>
class SimpleIni
    : public Types<texts::Syntax::kPlain, Char, UnitOfSimpleIni<Char>> {
 public:
  static constexpr char kName[] = "SimpleIni";
  using OutputChar = char;
  using Unit = UnitOfSimpleIni<Char>;
  using Text = std::basic_string<Unit>;

  void Load(Source<Char>& source) {
    file_.LoadData(source.bytes().data(), source.bytes().size());
  }
  void LoadFile(const Source<Char>&, const std::string& path) {
    file_.LoadFile(path.c_str());
  }
  std::size_t Find(const Entry<Text>& entry) const {
    const Unit* const value =
        file_.GetValue(entry.section.c_str(), entry.name.c_str());
    return value == nullptr ? 0 : SizeOf(value);
  }

  void Save(std::ostream& output) { file_.Save(output); }
  void SaveFile(const std::string& path) { file_.SaveFile(path.c_str()); }

  void Overwrite(const Entry<Text>& entry) {
    file_.SetValue(entry.section.c_str(), entry.name.c_str(),
                   entry.other_value.c_str());
  }
  void Add(const Entry<Text>& entry) {
    file_.SetValue(entry.section.c_str(), entry.other_name.c_str(),
                   entry.value.c_str());
  }
  void Remove(const Entry<Text>& entry) {
    file_.Delete(entry.section.c_str(), entry.name.c_str());
  }
  std::size_t List() const {
    std::size_t size = 0;
    typename Document::TNamesDepend sections;
    file_.GetAllSections(sections);
    for (const auto& section : sections) {
      for (const auto& [name, value] : *file_.GetSection(section.pItem)) {
        size += SizeOf(name.pItem) + SizeOf(value);
      }
    }
    return size;
  }

 private:
  using Document =
      std::conditional_t<std::is_same_v<Char, char>, CSimpleIniA, CSimpleIniW>;

  static std::size_t SizeOf(const Unit* text) {
    return std::char_traits<Unit>::length(text);
  }

  Document file_{!std::is_same_v<Char, char>};
};

class GKeyFile : public Types<texts::Syntax::kPlain, char> {
 public:
  static constexpr char kName[] = "GLib";

  GKeyFile() : file_(g_key_file_new()) {}
  GKeyFile(const GKeyFile&) = delete;
  GKeyFile& operator=(const GKeyFile&) = delete;
  ~GKeyFile() { g_key_file_free(file_); }

  void Load(Source<char>& source) {
    g_key_file_load_from_data(file_, source.bytes().data(),
                              source.bytes().size(), G_KEY_FILE_NONE, nullptr);
  }
  void LoadFile(const Source<char>&, const std::string& path) {
    g_key_file_load_from_file(file_, path.c_str(), G_KEY_FILE_NONE, nullptr);
  }
  std::size_t Find(const Entry<Text>& entry) const {
    return SizeOfValue(entry.section.c_str(), entry.name.c_str());
  }

  void Save(std::ostream& output) {
    gsize size = 0;
    gchar* const text = g_key_file_to_data(file_, &size, nullptr);
    output.write(text, static_cast<std::streamsize>(size));
    g_free(text);
  }
  void SaveFile(const std::string& path) {
    std::ofstream stream(path, std::ios::binary);
    Save(stream);
  }

  void Overwrite(const Entry<Text>& entry) {
    g_key_file_set_value(file_, entry.section.c_str(), entry.name.c_str(),
                         entry.other_value.c_str());
  }
  void Add(const Entry<Text>& entry) {
    g_key_file_set_value(file_, entry.section.c_str(), entry.other_name.c_str(),
                         entry.value.c_str());
  }
  void Remove(const Entry<Text>& entry) {
    g_key_file_remove_key(file_, entry.section.c_str(), entry.name.c_str(),
                          nullptr);
  }
  std::size_t List() const {
    std::size_t size = 0;
    gchar** const sections = g_key_file_get_groups(file_, nullptr);
    for (gchar** section = sections; *section != nullptr; ++section) {
      gchar** const names =
          g_key_file_get_keys(file_, *section, nullptr, nullptr);
      for (gchar** name = names; *name != nullptr; ++name) {
        size += Text::traits_type::length(*name) + SizeOfValue(*section, *name);
      }
      g_strfreev(names);
    }
    g_strfreev(sections);
    return size;
  }

 private:
  std::size_t SizeOfValue(const gchar* section, const gchar* name) const {
    gchar* const value = g_key_file_get_value(file_, section, name, nullptr);
    const std::size_t size =
        value == nullptr ? 0 : Text::traits_type::length(value);
    g_free(value);
    return size;
  }

  ::GKeyFile* file_;
};

// It can neither save nor edit, and cuts lines after 200 bytes.
class Inih : public Types<texts::Syntax::kPlain, char> {
 public:
  static constexpr char kName[] = "inih";

  void Load(Source<char>& source) {
    file_.emplace(source.bytes().data(), source.bytes().size());
  }
  void LoadFile(const Source<char>&, const std::string& path) {
    file_.emplace(path);
  }
  std::size_t Find(const Entry<Text>& entry) const {
    return file_->Get(entry.section, entry.name, "").size();
  }

 private:
  std::optional<INIReader> file_;
};

}  // namespace competitors

#endif  // KORVAN_BENCH_INI_COMPETITORS_H_
