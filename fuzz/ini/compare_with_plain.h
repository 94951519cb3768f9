// Load, save, load: the library beside the plain way of doing it. Whatever
// differs ends the process.
#ifndef KORVAN_FUZZ_INI_COMPARE_WITH_PLAIN_H_
#define KORVAN_FUZZ_INI_COMPARE_WITH_PLAIN_H_

#include <cstddef>
#include <cstdlib>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string>

#include "support/plain_ini.h"

// Gives a text in pieces of one size.
template <class Char>
class PiecesOf : public std::basic_streambuf<Char> {
 public:
  PiecesOf(const std::basic_string<Char>& text, std::size_t size)
      : rest_(text), size_(size) {}

 protected:
  typename std::char_traits<Char>::int_type underflow() override {
    if (this->gptr() == this->egptr()) {
      piece_ = rest_.substr(0, size_);
      rest_.erase(0, size_);
      this->setg(piece_.data(), piece_.data(), piece_.data() + piece_.size());
    }
    return piece_.empty() ? std::char_traits<Char>::eof()
                          : std::char_traits<Char>::to_int_type(*this->gptr());
  }

 private:
  std::basic_string<Char> rest_;
  std::basic_string<Char> piece_;
  std::size_t size_;
};

inline void Expect(bool holds) {
  if (!holds) {
    std::abort();
  }
}

template <class File, class Char>
void ExpectSame(const File& file, const korvan::test::PlainIni<Char>& plain) {
  Expect(file.GetSections().size() == plain.sections().size());
  auto section = file.GetSections().begin();
  for (const auto& [name, keys] : plain.sections()) {
    Expect(section->first == name);
    Expect(section->second->GetSectionName() == name);
    Expect(section->second->GetKeys().size() == keys.size());
    auto key = section->second->GetKeys().begin();
    for (const auto& [key_name, value] : keys) {
      Expect(key->first == key_name);
      Expect(key->second->GetKeyName() == key_name);
      Expect(key->second->GetValue() == value);
      ++key;
    }
    ++section;
  }
}

template <class File, class Char>
void LoadBoth(const std::basic_string<Char>& text, std::size_t size, bool merge,
              File& file, korvan::test::PlainIni<Char>& plain) {
  PiecesOf<Char> pieces(text, size);
  PiecesOf<Char> plain_pieces(text, size);
  std::basic_istream<Char> input(&pieces);
  std::basic_istream<Char> plain_input(&plain_pieces);
  file.Load(input, merge);
  plain.Load(plain_input, merge);
  Expect(input.rdstate() == plain_input.rdstate());
  ExpectSame(file, plain);
}

// `first` tells in what pieces the text comes.
template <class File, class Char>
void LoadSaveLoad(unsigned char first, const std::basic_string<Char>& text) {
  const std::size_t size = first < 64 ? std::size_t{first} + 1 : text.size();
  File file;
  korvan::test::PlainIni<Char> plain;
  LoadBoth(text, size, false, file, plain);

  std::basic_ostringstream<Char> output;
  std::basic_ostringstream<Char> plain_output;
  output << file;
  plain.Save(plain_output);
  Expect(output.str() == plain_output.str());

  File again;
  korvan::test::PlainIni<Char> plain_again;
  LoadBoth(output.str(), size, false, again, plain_again);
  LoadBoth(text, size, true, again, plain_again);
}

#endif  // KORVAN_FUZZ_INI_COMPARE_WITH_PLAIN_H_
