// An INI document written the plain way: maps of values, a loop of
// std::getline, one insertion after another. It is the model that the library
// must look the same as, in the tests and fuzzers, and a peer in the
// benchmarks.
#ifndef KORVAN_TESTS_SUPPORT_PLAIN_INI_H_
#define KORVAN_TESTS_SUPPORT_PLAIN_INI_H_

#include <strings.h>

#include <cwchar>
#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <utility>

namespace korvan::test {

inline int CompareIgnoringCase(const std::string& left,
                               const std::string& right) {
  return strcasecmp(left.c_str(), right.c_str());
}
inline int CompareIgnoringCase(const std::wstring& left,
                               const std::wstring& right) {
  return wcscasecmp(left.c_str(), right.c_str());
}

template <class Char>
class PlainIni {
 public:
  using String = std::basic_string<Char>;
  struct Less {
    bool operator()(const String& left, const String& right) const {
      return CompareIgnoringCase(left, right) < 0;
    }
  };
  using Keys = std::map<String, String, Less>;
  using Sections = std::map<String, Keys, Less>;

  const Sections& sections() const { return sections_; }
  void Clear() { sections_.clear(); }

  void AddSection(String name) { Entered(sections_, std::move(name)); }
  void AddKey(String section, String name) {
    Entered(Entered(sections_, std::move(section)), std::move(name));
  }
  void Set(String section, String name, String value) {
    Entered(Entered(sections_, std::move(section)), std::move(name)) =
        std::move(value);
  }
  bool HasSection(String name) const {
    return sections_.count(Trimmed(std::move(name))) != 0;
  }
  const String* Value(String section, String name) const {
    const auto found = sections_.find(Trimmed(std::move(section)));
    if (found == sections_.end()) {
      return nullptr;
    }
    const auto key = found->second.find(Trimmed(std::move(name)));
    return key == found->second.end() ? nullptr : &key->second;
  }
  void RemoveSection(String name) { sections_.erase(Trimmed(std::move(name))); }
  void RemoveKey(String section, String name) {
    const auto found = sections_.find(Trimmed(std::move(section)));
    if (found != sections_.end()) {
      found->second.erase(Trimmed(std::move(name)));
    }
  }
  bool RenameSection(String from, String to) {
    return Rename(sections_, Trimmed(std::move(from)), Trimmed(std::move(to)));
  }
  bool RenameKey(String section, String from, String to) {
    const auto found = sections_.find(Trimmed(std::move(section)));
    return found != sections_.end() &&
           Rename(found->second, Trimmed(std::move(from)),
                  Trimmed(std::move(to)));
  }

  void Load(std::basic_istream<Char>& input, bool merge) {
    static const String line_ends = {'\n', '\r'};
    static const String white = {' ', '\t', '\r', '\n'};
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
      line.erase(0, line.find_first_not_of(Blanks()));
      line.erase(line.find_last_not_of(line_ends) + 1);
      if (line.empty() || line[0] != '[') {
        continue;
      }
      if (line[line.find_last_not_of(white)] == ']') {
        section = &Entered(sections_, line.substr(1, line.size() - 2));
        continue;
      }
      const auto equals = line.find('=');
      if (equals != String::npos && section != nullptr) {
        String value = line.substr(equals + 1);
        Entered(*section, line.substr(0, equals)) = std::move(value);
      }
    }
  }

  // Each line is one insertion, and each line feed another.
  void Save(std::basic_ostream<Char>& output) const {
    static const String open = {'['};
    static const String close = {']'};
    static const String equals = {'='};
    const Char line_feed[] = {'\n', 0};
    for (const auto& [section, keys] : sections_) {
      output << open + section + close;
      output << line_feed;
      for (const auto& [key, value] : keys) {
        output << key + equals + value;
        output << line_feed;
      }
    }
  }

 private:
  static const String& Blanks() {
    static const String blanks = {' ', '\t'};
    return blanks;
  }

  static String Trimmed(String name) {
    name.erase(name.find_last_not_of(Blanks()) + 1);
    name.erase(0, name.find_first_not_of(Blanks()));
    return name;
  }

  // The entry of a name. Not by `entries[name]`, which loses entries where wide
  // names have no order.
  template <class Entries>
  static typename Entries::mapped_type& Entered(Entries& entries, String name) {
    return entries.insert({Trimmed(std::move(name)), {}}).first->second;
  }

  template <class Entries>
  static bool Rename(Entries& entries, const String& from, String to) {
    if (entries.count(to) != 0) {
      return false;
    }
    auto entry = entries.extract(from);
    if (entry.empty()) {
      return false;
    }
    entry.key() = std::move(to);
    entries.insert(std::move(entry));
    return true;
  }

  Sections sections_;
};

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_PLAIN_INI_H_
