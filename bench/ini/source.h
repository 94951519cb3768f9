// What a competitor loads and edits: a text, in memory and in a file, and the
// keys that stand in it.

#ifndef KORVAN_BENCH_INI_SOURCE_H_
#define KORVAN_BENCH_INI_SOURCE_H_

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ini/texts.h"

// A file that exists as long as the object, in the folder for temporary files.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text) {
    const int descriptor = mkstemp(path_.data());
    if (descriptor < 0) {
      std::perror("mkstemp");
      std::exit(1);
    }
    close(descriptor);
    std::ofstream(path_, std::ios::binary) << text;
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { unlink(path_.c_str()); }

  const std::string& path() const { return path_; }

 private:
  std::string path_ =
      std::filesystem::temp_directory_path() / "korvan_ini_bench_XXXXXX";
};

// A text in memory that can be read more than once.
template <class Char>
class Source {
 public:
  explicit Source(std::string utf8)
      : bytes_(std::move(utf8)), stream_(texts::Decoded<Char>(bytes_)) {}

  Source(const texts::Content& content, texts::Syntax syntax)
      : Source(texts::TextOf(content, syntax)) {
    content_ = content;
    sizes_ = texts::SizesOf<Char>(content, syntax);
  }

  void Rewind() {
    stream_.clear();
    stream_.seekg(0);
  }

  // In UTF-8.
  const std::string& bytes() const { return bytes_; }
  std::basic_string_view<Char> text() const { return stream_.view(); }
  std::basic_istringstream<Char>& stream() { return stream_; }
  const texts::Content& content() const { return content_; }
  const texts::Sizes& sizes() const { return sizes_; }

 private:
  texts::Content content_ = {};
  texts::Sizes sizes_ = {};
  std::string bytes_;
  std::basic_istringstream<Char> stream_;
};

// One key, in the strings that a competitor takes, and what it is changed to.
template <class Text>
struct Entry {
  texts::Place place;
  Text section, name, value;
  Text other_name, other_value;
};

// The keys of a document, or as many of them as are wanted, in random order.
template <class Document>
std::vector<Entry<typename Document::Text>> ShuffledEntries(
    const texts::Content& content, std::size_t most) {
  constexpr texts::Syntax kSyntax = Document::kSyntax;
  std::vector<texts::Place> places = texts::PlacesOf(content);
  std::shuffle(places.begin(), places.end(), std::mt19937(2));
  places.resize(std::min(places.size(), most));
  std::vector<Entry<typename Document::Text>> entries;
  for (const texts::Place& place : places) {
    entries.push_back(
        {place, Document::TextOf(texts::SectionName(content, place.section)),
         Document::TextOf(texts::KeyName(content, kSyntax, place.key)),
         Document::TextOf(texts::Value(content, place.key)),
         Document::TextOf(texts::OtherKeyName(content, kSyntax, place.key)),
         Document::TextOf(texts::OtherValue(content, place.key))});
  }
  return entries;
}

#endif  // KORVAN_BENCH_INI_SOURCE_H_
