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
#include <cstddef>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "mandated_shape.h"
#include "texts.h"

/// @file
/// All who load, search and save the same content, behind one face:
///
///     kName, kSyntax        what the tables call it, which lines it takes
///     Name, NameOf(utf8)    the type in which it wants names
///     Load(source)          from memory: a stream, or what it reads best
///     LoadFile(path)
///     Find(section, key)    the length of the value
///     Save(output), SaveFile(path)
///
/// Names are looked up as they stand in the text, so that it does not matter
/// who minds case (inih, SimpleIni and we do not).

namespace competitors {

/// A text in memory, ready to be read more than once.
template <class Char>
struct Source {
  explicit Source(std::string utf8)
      : bytes(std::move(utf8)), stream(texts::Decoded<Char>(bytes)) {}

  void Rewind() {
    stream.clear();
    stream.seekg(0);
  }

  std::string bytes;
  std::basic_istringstream<Char> stream;
};

template <class Char>
class Ours {
 public:
  static constexpr char kName[] = "ours";
  static constexpr texts::Syntax kSyntax = texts::Syntax::kBracketed;
  using OutputChar = Char;
  using Name = std::basic_string<Char>;

  static Name NameOf(const std::string& utf8) {
    return texts::Decoded<Char>(utf8);
  }

  void Load(Source<Char>& source) { file_.Load(source.stream); }
  void LoadFile(const std::string& path) { file_.Load(Name(Ascii(path))); }
  std::size_t Find(const Name& section, const Name& key) const {
    return file_.GetKeyValue(section, key).size();
  }
  void Save(std::basic_ostream<Char>& output) { file_.Save(output); }
  void SaveFile(const std::string& path) { file_.Save(Name(Ascii(path))); }

 private:
  static Name Ascii(const std::string& text) {
    return Name(text.begin(), text.end());
  }

  std::conditional_t<std::is_same_v<Char, char>, korvan::CIniFileA,
                     korvan::CIniFileW>
      file_;
};

template <class Char>
class Plain {
 public:
  static constexpr char kName[] = "plain";
  static constexpr texts::Syntax kSyntax = texts::Syntax::kBracketed;
  using OutputChar = Char;
  using Name = std::basic_string<Char>;

  static Name NameOf(const std::string& utf8) {
    return texts::Decoded<Char>(utf8);
  }

  void Load(Source<Char>& source) { file_.Load(source.stream); }
  void LoadFile(const std::string& path) {
    std::basic_ifstream<Char> stream(path, std::ios::binary);
    file_.Load(stream);
  }
  std::size_t Find(const Name& section, const Name& key) const {
    return file_.Value(section, key).size();
  }
  void Save(std::basic_ostream<Char>& output) { file_.Save(output); }
  void SaveFile(const std::string& path) {
    std::basic_ofstream<Char> stream(path, std::ios::binary);
    file_.Save(stream);
  }

 private:
  shape::File<Char> file_;
};

/// The tree that minds case: the one that does not asks the locale for each
/// character of each comparison, and is two hundred times slower.
template <class Char>
class PropertyTree {
 public:
  static constexpr char kName[] = "ptree";
  static constexpr texts::Syntax kSyntax = texts::Syntax::kPlain;
  using OutputChar = Char;
  using Name = std::basic_string<Char>;

  static Name NameOf(const std::string& utf8) {
    return texts::Decoded<Char>(utf8);
  }

  void Load(Source<Char>& source) {
    boost::property_tree::read_ini(source.stream, tree_);
  }
  void LoadFile(const std::string& path) {
    boost::property_tree::read_ini(path, tree_);
  }
  std::size_t Find(const Name& section, const Name& key) const {
    const auto found = tree_.find(section);
    const auto value = found->second.find(key);
    return value->second.data().size();
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

/// In its wide form it has ICU's 16-bit characters, as Debian builds it.
template <class Char>
class SimpleIni {
 public:
  static constexpr char kName[] = "simpleini";
  static constexpr texts::Syntax kSyntax = texts::Syntax::kPlain;
  using OutputChar = char;
  using Document =
      std::conditional_t<std::is_same_v<Char, char>, CSimpleIniA, CSimpleIniW>;
  using Unit = std::conditional_t<std::is_same_v<Char, char>, char, UChar>;
  using Name = std::basic_string<Unit>;

  static Name NameOf(const std::string& utf8) {
    const std::basic_string<Char> decoded = texts::Decoded<Char>(utf8);
    return Name(decoded.begin(), decoded.end());
  }

  void Load(Source<Char>& source) {
    file_.LoadData(source.bytes.data(), source.bytes.size());
  }
  void LoadFile(const std::string& path) { file_.LoadFile(path.c_str()); }
  std::size_t Find(const Name& section, const Name& key) const {
    return std::char_traits<Unit>::length(
        file_.GetValue(section.c_str(), key.c_str()));
  }
  void Save(std::ostream& output) { file_.Save(output); }
  void SaveFile(const std::string& path) { file_.SaveFile(path.c_str()); }

 private:
  Document file_{!std::is_same_v<Char, char>};
};

class GKeyFile {
 public:
  static constexpr char kName[] = "glib";
  static constexpr texts::Syntax kSyntax = texts::Syntax::kPlain;
  using OutputChar = char;
  using Name = std::string;

  static Name NameOf(const std::string& utf8) { return utf8; }

  GKeyFile() : file_(g_key_file_new()) {}
  GKeyFile(const GKeyFile&) = delete;
  GKeyFile& operator=(const GKeyFile&) = delete;
  ~GKeyFile() { g_key_file_free(file_); }

  void Load(Source<char>& source) {
    g_key_file_load_from_data(file_, source.bytes.data(), source.bytes.size(),
                              G_KEY_FILE_NONE, nullptr);
  }
  void LoadFile(const std::string& path) {
    g_key_file_load_from_file(file_, path.c_str(), G_KEY_FILE_NONE, nullptr);
  }
  std::size_t Find(const Name& section, const Name& key) const {
    gchar* const value =
        g_key_file_get_value(file_, section.c_str(), key.c_str(), nullptr);
    const std::size_t size = std::char_traits<char>::length(value);
    g_free(value);
    return size;
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

 private:
  ::GKeyFile* file_;
};

/// It can't save, and cuts lines after 200 bytes.
class Inih {
 public:
  static constexpr char kName[] = "inih";
  static constexpr texts::Syntax kSyntax = texts::Syntax::kPlain;
  using Name = std::string;

  static Name NameOf(const std::string& utf8) { return utf8; }

  void Load(Source<char>& source) {
    file_.emplace(source.bytes.data(), source.bytes.size());
  }
  void LoadFile(const std::string& path) { file_.emplace(path); }
  std::size_t Find(const Name& section, const Name& key) const {
    return file_->Get(section, key, "").size();
  }

 private:
  std::optional<INIReader> file_;
};

}  // namespace competitors

#endif  // KORVAN_BENCH_INI_COMPETITORS_H_
