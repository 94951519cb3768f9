// Names and values are made of numbers, padded to one width.

#include "ini/texts.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>

namespace texts {
namespace {

// Of a fixed width, so that the order of the numbers is that of the names.
std::string Padded(std::size_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

std::vector<std::size_t> Numbers(std::size_t from, std::size_t to,
                                 bool is_shuffled, std::mt19937& random) {
  std::vector<std::size_t> numbers(to - from);
  std::iota(numbers.begin(), numbers.end(), from);
  if (is_shuffled) {
    std::shuffle(numbers.begin(), numbers.end(), random);
  }
  return numbers;
}

}  // namespace

std::size_t KeysBefore(const Content& content, std::size_t section) {
  return content.keys * section / content.sections;
}

std::vector<Place> PlacesOf(const Content& content) {
  std::mt19937 random(1);
  std::vector<Place> places;
  places.reserve(content.keys);
  for (const std::size_t section :
       Numbers(0, content.sections, content.is_shuffled, random)) {
    for (const std::size_t key :
         Numbers(KeysBefore(content, section), KeysBefore(content, section + 1),
                 content.is_shuffled, random)) {
      places.push_back({section, key});
    }
  }
  return places;
}

std::string SectionName(const Content& content, std::size_t section) {
  return (content.is_ascii ? "Section" : "Раздел") + Padded(section, 4);
}

std::string KeyName(const Content& content, Syntax syntax, std::size_t key) {
  return std::string(syntax == Syntax::kBracketed ? "[" : "") +
         (content.is_ascii ? "Key" : "Ключ") + Padded(key, 7);
}

std::string Value(const Content& content, std::size_t key) {
  return (content.is_ascii ? "value " : "значение ") + Padded(key, 7);
}

std::string OtherKeyName(const Content& content, Syntax syntax,
                         std::size_t key) {
  return KeyName(content, syntax, key) + "b";
}

std::string OtherValue(const Content& content, std::size_t key) {
  return Value(content, key) + "b";
}

std::string TextOf(const Content& content, Syntax syntax) {
  std::string text;
  std::size_t section = content.sections;
  for (const Place& place : PlacesOf(content)) {
    if (place.section != section) {
      section = place.section;
      text.append("[").append(SectionName(content, section)).append("]\n");
    }
    text.append(KeyName(content, syntax, place.key)).append("=");
    text.append(Value(content, place.key)).append("\n");
  }
  return text;
}

std::string SkippedText(std::size_t size, Syntax syntax) {
  static constexpr char kWords[] =
      "the provider looks here for its containers, and for the paths of "
      "readers that a service may have been told of; see the manual";
  std::mt19937 random(1);
  std::string page = "[Section]\n";
  for (unsigned int line = 0; line < 1000; ++line) {
    const bool is_comment = syntax == Syntax::kPlain || line % 2 == 0;
    page.append(is_comment ? "# setting" : "setting");
    page.append(Padded(line % 100, 2)).append(" = ");
    page.append(kWords, 10 + random() % (sizeof kWords - 11));
    page += '\n';
  }
  std::string text;
  text.reserve(size + page.size());
  while (text.size() < size) {
    text += page;
  }
  return text;
}

std::string LongLineText(std::size_t size, Syntax syntax) {
  return std::string("[Section]\n") +
         (syntax == Syntax::kBracketed ? "[Key=" : "Key=") +
         std::string(size, 'v') + "\n";
}

template <>
std::string Decoded<char>(const std::string& utf8) {
  return utf8;
}

template <>
std::wstring Decoded<wchar_t>(const std::string& utf8) {
  std::wstring wide(utf8.size(), L'\0');
  const std::size_t size =
      std::mbstowcs(wide.data(), utf8.c_str(), wide.size());
  if (size == static_cast<std::size_t>(-1)) {
    std::abort();
  }
  wide.resize(size);
  return wide;
}

}  // namespace texts
