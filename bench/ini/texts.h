#ifndef KORVAN_BENCH_INI_TEXTS_H_
#define KORVAN_BENCH_INI_TEXTS_H_

#include <cstddef>
#include <string>
#include <vector>

/// @file
/// The texts that the benchmarks load: the same content in the syntax of each
/// competitor.

namespace texts {

enum class Syntax {
  kBracketed,  // "[key=value", as our reader takes it
  kPlain,      // "key=value", as all others do
};

/// How the keys of a document are spread and ordered.
struct Content {
  std::size_t keys;
  std::size_t sections;
  bool is_shuffled;
  bool is_ascii;  // else names and values are Cyrillic, in UTF-8
};

/// Where a key stands.
struct Place {
  std::size_t section;
  std::size_t key;
};

/// The places of all keys in the order of the text, or of sorted text.
std::vector<Place> PlacesOf(const Content& content);

std::string SectionName(const Content& content, std::size_t section);
std::string KeyName(const Content& content, Syntax syntax, std::size_t key);
std::string Value(const Content& content, std::size_t key);

std::string TextOf(const Content& content, Syntax syntax);

/// About `size` bytes of comments and of lines that our reader skips (for the
/// others all of it comments), with a header now and then.
std::string SkippedText(std::size_t size, Syntax syntax);

/// A header and one key with a value of `size` bytes.
std::string LongLineText(std::size_t size, Syntax syntax);

/// UTF-8 as the characters of a string of either width.
template <class Char>
std::basic_string<Char> Decoded(const std::string& utf8);

}  // namespace texts

#endif  // KORVAN_BENCH_INI_TEXTS_H_
