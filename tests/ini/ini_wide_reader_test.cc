// A wide character may equal the value that stands for the end of a text.
#include <korvan/ini_file.h>

#include <cwchar>
#include <string>

#include "ini/hostile_buffers.h"

namespace korvan::test {
namespace {

TEST(IniWideReader, ACharacterThatEqualsTheEndOfTextIsTakenAsGetlineTakesIt) {
  const auto end = static_cast<wchar_t>(WEOF);
  for (std::size_t size = 0; size < 16; ++size) {
    for (const std::wstring& text :
         {std::wstring(L"[a]\n") + end + L"[b]\n[c]\n",
          std::wstring(L"[a]\n[b") + end + L"]\n[c]\n",
          std::wstring(L"[a]\n[k=") + end + L"v\n[c]\n",
          std::wstring(L"[a]\n[k=v") + end + L"\n[c]\n",
          std::wstring(L"[a]\n[k=vwxyzvwxyz") + end + L"v\n[c]\n"}) {
      LoadCase load;
      load.text = text;
      load.pieces = {size};
      File file;
      PlainFile plain;
      EXPECT_EQ(Load(load, file), Load(load, plain))
          << Shown(text) << ", pieces of " << size;
    }
  }
}

}  // namespace
}  // namespace korvan::test
