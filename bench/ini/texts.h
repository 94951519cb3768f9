// The texts that the benchmarks load: the same content in the syntax of each
// competitor. All names of a kind and all values of a content have the same
// length, so that a text can be cut without looking at it.

#ifndef KORVAN_BENCH_INI_TEXTS_H_
#define KORVAN_BENCH_INI_TEXTS_H_

#include <cstddef>
#include <string>
#include <vector>

namespace texts {

enum class Syntax {
  kBracketed,  // "[key=value", which the library reads
  kPlain,      // "key=value", which all others read
};

// UTF-8 as the characters of a string of either width.
template <class Char>
std::basic_string<Char> Decoded(const std::string& utf8);

// How the keys of a document are spread and ordered.
struct Content {
  std::size_t keys;
  std::size_t sections;
  bool is_shuffled;
  bool is_ascii;  // else names and values are Cyrillic, in UTF-8
};

// A key and its section, counted in the order of their names.
struct Place {
  std::size_t section;
  std::size_t key;
};

// The keys that come before those of a section.
std::size_t KeysBefore(const Content& content, std::size_t section);

// The places of all keys in the order of the text.
std::vector<Place> PlacesOf(const Content& content);

std::string SectionName(const Content& content, std::size_t section);
std::string KeyName(const Content& content, Syntax syntax, std::size_t key);
std::string Value(const Content& content, std::size_t key);

// The lengths of the names and values, in characters.
struct Sizes {
  std::size_t section;
  std::size_t name;
  std::size_t value;
};

template <class Char>
Sizes SizesOf(const Content& content, Syntax syntax) {
  return {Decoded<Char>(SectionName(content, 0)).size(),
          Decoded<Char>(KeyName(content, syntax, 0)).size(),
          Decoded<Char>(Value(content, 0)).size()};
}

// What the benchmarks change names and values to: one character longer, and
// in the same order.
std::string OtherKeyName(const Content& content, Syntax syntax,
                         std::size_t key);
std::string OtherValue(const Content& content, std::size_t key);

std::string TextOf(const Content& content, Syntax syntax);

// About `size` bytes of comments and of lines that the library skips (for the
// others all of it comments), with a header now and then.
std::string SkippedText(std::size_t size, Syntax syntax);

// A header and one key with a value of `size` bytes.
std::string LongLineText(std::size_t size, Syntax syntax);

}  // namespace texts

#endif  // KORVAN_BENCH_INI_TEXTS_H_
