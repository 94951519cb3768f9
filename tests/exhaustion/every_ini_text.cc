// All INI texts of up to seven of the characters that the format knows, and
// some that it does not, alone and after a header, narrow and wide.
#include <korvan/ini_file.h>

#include <cstdint>
#include <iterator>
#include <streambuf>
#include <string>
#include <type_traits>

#include "exhaustion/every.h"
#include "support/plain_ini.h"

namespace korvan::test {
namespace {

constexpr unsigned char kCharacters[] = {'[',  ']', '=', ' ', '\t', '\r',
                                         '\n', 'a', 'A', 0,   0x80};
constexpr int kMostCharacters = 7;

constexpr std::uint64_t Count() {
  std::uint64_t count = 0;
  std::uint64_t texts = 1;
  for (int size = 0; size <= kMostCharacters; ++size) {
    count += texts;
    texts *= std::size(kCharacters);
  }
  return count;
}

// Shows a text to a stream, without a copy.
template <class Char>
class TextBuffer : public std::basic_streambuf<Char> {
 public:
  void Show(std::basic_string<Char>& text) {
    this->setg(text.data(), text.data(), text.data() + text.size());
  }
};

template <class File>
class Check {
 public:
  using String = typename File::Sections::key_type;
  using Char = typename String::value_type;

  explicit Check(const String& header) : header_(header) {}
  Check(const Check& other) : Check(other.header_) {}
  Check& operator=(const Check&) = delete;

  std::string operator()(std::uint64_t number) {
    String text = header_;
    for (std::uint64_t rest = number; rest != 0;
         rest = (rest - 1) / std::size(kCharacters)) {
      text +=
          static_cast<Char>(kCharacters[(rest - 1) % std::size(kCharacters)]);
    }
    Load(text, file_);
    const auto state = input_.rdstate();
    Load(text, plain_);
    return state == input_.rdstate() && IsAsThePlainOne()
               ? ""
               : std::to_string(number);
  }

 private:
  template <class Document>
  void Load(String& text, Document& document) {
    buffer_.Show(text);
    input_.clear();
    document.Load(input_, false);
  }

  bool IsAsThePlainOne() const {
    auto plain = plain_.sections().begin();
    if (file_.GetSections().size() != plain_.sections().size()) {
      return false;
    }
    for (const auto& [name, section] : file_.GetSections()) {
      const auto& [plain_name, plain_keys] = *plain++;
      if (name != plain_name ||
          section->GetKeys().size() != plain_keys.size()) {
        return false;
      }
      auto plain_key = plain_keys.begin();
      for (const auto& [key_name, key] : section->GetKeys()) {
        if (key_name != plain_key->first ||
            key->GetValue() != plain_key->second) {
          return false;
        }
        ++plain_key;
      }
    }
    return true;
  }

  String header_;
  TextBuffer<Char> buffer_;
  std::basic_istream<Char> input_{&buffer_};
  File file_;
  PlainIni<Char> plain_;
};

template <class File>
int LookAt(const char* what, const typename File::Sections::key_type& header) {
  return LookAtEvery(what, Count(), [&] { return Check<File>(header); });
}

}  // namespace
}  // namespace korvan::test

int main() {
  using korvan::CIniFileA;
  using korvan::CIniFileW;
  using korvan::test::LookAt;
  return LookAt<CIniFileA>("narrow texts", "") |
         LookAt<CIniFileA>("narrow texts after a header", "[s]\n") |
         LookAt<CIniFileW>("wide texts", L"") |
         LookAt<CIniFileW>("wide texts after a header", L"[s]\n");
}
