// The examples of <korvan/text.h>.
#include "reference/reference.h"

int main() {
  std::string right = "[name] \t";
  korvan::RTrim(right, " \t");
  assert(right == "[name]");

  std::wstring wide_right = L"[name] \t";
  korvan::RTrim(wide_right, L" \t");
  assert(wide_right == L"[name]");

  std::string left = "\t [name]";
  korvan::LTrim(left, " \t");
  assert(left == "[name]");

  std::wstring wide_left = L"\t [name]";
  korvan::LTrim(wide_left, L" \t");
  assert(wide_left == L"[name]");

  std::string both = "00100";
  korvan::Trim(both, "0");
  assert(both == "1");

  std::wstring wide_both = L"00100";
  korvan::Trim(wide_both, L"0");
  assert(wide_both == L"1");

  assert(korvan::wstr_to_str(L"name") == "name");

  assert(korvan::str_to_wstr("name") == L"name");
}
