// The exported text helpers.
#include <korvan/text.h>

#include <cstdlib>
#include <string>

namespace korvan {
namespace {

template <class String>
void TrimRight(String& text, const String& set);
template <class String>
void TrimLeft(String& text, const String& set);

}  // namespace

void RTrim(std::string& text, const std::string& set) { TrimRight(text, set); }

void RTrim(std::wstring& text, const std::wstring& set) {
  TrimRight(text, set);
}

void LTrim(std::string& text, const std::string& set) { TrimLeft(text, set); }

void LTrim(std::wstring& text, const std::wstring& set) { TrimLeft(text, set); }

void Trim(std::string& text, const std::string& set) {
  RTrim(text, set);
  LTrim(text, set);
}

void Trim(std::wstring& text, const std::wstring& set) {
  RTrim(text, set);
  LTrim(text, set);
}

// Both conversions ignore what the C library says of them: the length of the
// result does not depend on it.

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

namespace {

// If every character goes, find_last_not_of returns npos, and npos + 1 is 0.
template <class String>
void TrimRight(String& text, const String& set) {
  text.erase(text.find_last_not_of(set) + 1);
}

template <class String>
void TrimLeft(String& text, const String& set) {
  text.erase(0, text.find_first_not_of(set));
}

}  // namespace
}  // namespace korvan
