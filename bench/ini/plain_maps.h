// A document as one would first write it: maps in a map, std::getline, and
// strings by value.

#ifndef KORVAN_BENCH_INI_PLAIN_MAPS_H_
#define KORVAN_BENCH_INI_PLAIN_MAPS_H_

#include <strings.h>

#include <cwchar>
#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <utility>

template <class Char>
class PlainMaps {
 public:
  using String = std::basic_string<Char>;

  struct Less {
    bool operator()(const std::string& left, const std::string& right) const {
      return strcasecmp(left.c_str(), right.c_str()) < 0;
    }
    bool operator()(const std::wstring& left, const std::wstring& right) const {
      return wcscasecmp(left.c_str(), right.c_str()) < 0;
    }
  };

  using Keys = std::map<String, String, Less>;
  using Sections = std::map<String, Keys, Less>;

  // Takes the lines that the library takes.
  void Load(std::basic_istream<Char>& input) {
    static const String blanks = {' ', '\t'};
    static const String line_ends = {'\n', '\r'};
    static const String white = {' ', '\t', '\r', '\n'};
    Keys* keys = nullptr;
    String line;
    while (std::getline(input, line)) {
      line.erase(0, line.find_first_not_of(blanks));
      line.erase(line.find_last_not_of(line_ends) + 1);
      if (line.empty() || line[0] != '[') {
        continue;
      }
      if (line[line.find_last_not_of(white)] == ']') {
        keys = &sections_[Trimmed(line.substr(1, line.size() - 2))];
        continue;
      }
      const auto equals = line.find('=');
      if (equals != String::npos && keys != nullptr) {
        (*keys)[Trimmed(line.substr(0, equals))] = line.substr(equals + 1);
      }
    }
  }

  void Save(std::basic_ostream<Char>& output) const {
    for (const auto& [section, keys] : sections_) {
      output << Char{'['} << section << Char{']'} << Char{'\n'};
      for (const auto& [name, value] : keys) {
        output << name << Char{'='} << value << Char{'\n'};
      }
    }
  }

  String Value(String section, String name) const {
    const auto keys = sections_.find(section);
    if (keys == sections_.end()) {
      return String();
    }
    const auto key = keys->second.find(name);
    return key == keys->second.end() ? String() : key->second;
  }

  void Set(String section, String name, String value) {
    sections_[std::move(section)][std::move(name)] = std::move(value);
  }

  void Remove(String section, String name) {
    const auto keys = sections_.find(section);
    if (keys != sections_.end()) {
      keys->second.erase(name);
    }
  }

  bool Rename(String section, String old_name, String new_name) {
    const auto keys = sections_.find(section);
    if (keys == sections_.end() || keys->second.contains(new_name)) {
      return false;
    }
    auto key = keys->second.extract(old_name);
    if (key.empty()) {
      return false;
    }
    key.key() = std::move(new_name);
    keys->second.insert(std::move(key));
    return true;
  }

  const Sections& sections() const { return sections_; }

 private:
  static String Trimmed(String name) {
    static const String blanks = {' ', '\t'};
    name.erase(name.find_last_not_of(blanks) + 1);
    name.erase(0, name.find_first_not_of(blanks));
    return name;
  }

  Sections sections_;
};

#endif  // KORVAN_BENCH_INI_PLAIN_MAPS_H_
