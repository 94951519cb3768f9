#include <korvan/text.h>

#include <cstdlib>
#include <string>

namespace korvan {
namespace {

// Where no character stays, find_last_not_of gives npos, and npos + 1 is 0.
template <class String>
void TrimRight(String& text, const String& set) {
  text.erase(text.find_last_not_of(set) + 1);
}

template <class String>
void TrimLeft(String& text, const String& set) {
  text.erase(0, text.find_first_not_of(set));
}

}  // namespace

void RTrim(std::string& text, const std::string& set) { TrimRight(text, set); }

void RTrim(std::wstring& text, const std::wstring& set) {
  TrimRight(text, set);
}

void LTrim(std::string& text, const std::string& set) { TrimLeft(text, set); }

void LTrim(std::wstring& text, const std::wstring& set) { TrimLeft(text, set); }

void Trim(std::string& text, const std::string& set) {
  TrimRight(text, set);
  TrimLeft(text, set);
}

void Trim(std::wstring& text, const std::wstring& set) {
  TrimRight(text, set);
  TrimLeft(text, set);
}

// The result's length is part of the contract, so what the C library says of
// the conversion is of no use.
std::string wstr_to_str(const std::wstring& text) {
  std::string converted(text.size(), '\0');
  static_cast<void>(
      std::wcstombs(converted.data(), text.c_str(), converted.size()));
  return converted;
}

std::wstring str_to_wstr(const std::string& text) {
  std::wstring converted(text.size(), L'\0');
  static_cast<void>(
      std::mbstowcs(converted.data(), text.c_str(), converted.size()));
  return converted;
}

}  // namespace korvan
