// The INI files done the plain way: maps of values, a loop of std::getline, one
// insertion after another. What the library does must look the same.
#ifndef KORVAN_TESTS_INI_PLAIN_INI_H_
#define KORVAN_TESTS_INI_PLAIN_INI_H_

#include <strings.h>

#include <cwchar>
#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <utility>

inline int PlainCompare(const std::string& left, const std::string& right) {
  return strcasecmp(left.c_str(), right.c_str());
}
inline int PlainCompare(const std::wstring& left, const std::wstring& right) {
  return wcscasecmp(left.c_str(), right.c_str());
}

template <class Char>
class PlainIni {
 public:
  using String = std::basic_string<Char>;
  struct Less {
    bool operator()(const String& left, const String& right) const {
      return PlainCompare(left, right) < 0;
    }
  };
  using Keys = std::map<String, String, Less>;
  using Sections = std::map<String, Keys, Less>;

  const Sections& sections() const { return sections_; }
  void Clear() { sections_.clear(); }

  void AddSection(const String& name) { sections_[Trimmed(name)]; }
  void AddKey(const String& section, const String& name) {
    sections_[Trimmed(section)][Trimmed(name)];
  }
  void Set(const String& section, const String& name, const String& value) {
    sections_[Trimmed(section)][Trimmed(name)] = value;
  }
  bool HasSection(const String& name) const {
    return sections_.count(Trimmed(name)) != 0;
  }
  const String* Value(const String& section, const String& name) const {
    const auto found = sections_.find(Trimmed(section));
    if (found == sections_.end()) {
      return nullptr;
    }
    const auto key = found->second.find(Trimmed(name));
    return key == found->second.end() ? nullptr : &key->second;
  }
  void RemoveSection(const String& name) { sections_.erase(Trimmed(name)); }
  void RemoveKey(const String& section, const String& name) {
    if (HasSection(section)) {
      sections_[Trimmed(section)].erase(Trimmed(name));
    }
  }
  bool RenameSection(const String& from, const String& to) {
    return Rename(sections_, Trimmed(from), Trimmed(to));
  }
  bool RenameKey(const String& section, const String& from, const String& to) {
    return HasSection(section) &&
           Rename(sections_[Trimmed(section)], Trimmed(from), Trimmed(to));
  }

  void Load(std::basic_istream<Char>& input, bool merge) {
    if (!merge) {
      sections_.clear();
    }
    Keys* section = nullptr;
    String line;
    while (true) {
      std::getline(input, line);
      if (input.fail()) {
        return;
      }
      line.erase(0, line.find_first_not_of(Ascii(" \t")));
      line.erase(line.find_last_not_of(Ascii("\n\r")) + 1);
      if (line.empty() || line.find('[') != 0) {
        continue;
      }
      const auto last = line.find_last_not_of(Ascii(" \t\r\n"));
      if (last != String::npos && line[last] == ']') {
        section = &sections_[Trimmed(line.substr(1, line.size() - 2))];
        continue;
      }
      const auto equals = line.find('=');
      if (equals == String::npos || section == nullptr) {
        continue;
      }
      const String value = line.substr(equals + 1);
      (*section)[Trimmed(line.substr(0, equals))] = value;
    }
  }

  void Save(std::basic_ostream<Char>& output) const {
    const Char line_feed[] = {'\n', 0};
    for (const auto& [section, keys] : sections_) {
      output << Ascii("[") + section + Ascii("]");
      output << line_feed;
      for (const auto& [key, value] : keys) {
        output << key + Ascii("=") + value;
        output << line_feed;
      }
    }
  }

 private:
  static String Ascii(const std::string& text) {
    return String(text.begin(), text.end());
  }

  static String Trimmed(String name) {
    name.erase(name.find_last_not_of(Ascii(" \t")) + 1);
    name.erase(0, name.find_first_not_of(Ascii(" \t")));
    return name;
  }

  template <class Entries>
  static bool Rename(Entries& entries, const String& from, const String& to) {
    const auto found = entries.find(from);
    if (found == entries.end() || entries.count(to) != 0) {
      return false;
    }
    auto content = found->second;
    entries.erase(found);
    entries.emplace(to, std::move(content));
    return true;
  }

  Sections sections_;
};

#endif  // KORVAN_TESTS_INI_PLAIN_INI_H_
