// In which encoding file names and files are, and what becomes of text that it
// can't express.
#include <korvan/ini_file.h>

#include <fstream>
#include <locale>
#include <string>
#include <vector>

#include "ini/shown.h"
#include "support/folder.h"
#include "support/locales.h"
#include "support/plain_ini.h"

namespace korvan::test {
namespace {

TEST(IniFileName, NarrowNamesAreOpenedAsTheyAre) {
  const Folder folder;
  const std::string path = folder / "\xFF\xD0\x96.ini";
  korvan::CIniFileA file;
  file.AddSection("Main");
  EXPECT_TRUE(file.Save(path));
  EXPECT_EQ(BytesOf(path), "[Main]\n");
  file.AddSection("Old");
  EXPECT_TRUE(file.Load(path));
  EXPECT_EQ(ContentOf(file), "Main{}");
}

TEST(IniFileName, WideNamesAreConvertedAndMayLoseTheirEnd) {
  const CLocale locale("C.UTF-8");
  const Folder folder;
  const std::string base = folder / "";
  const std::wstring wide_base(base.begin(), base.end());
  korvan::CIniFileW file;
  file.AddSection(L"Main");
  // The converted name has as many bytes as the wide one has characters, so a
  // letter of two bytes pushes out the last one.
  EXPECT_TRUE(file.Save(wide_base + L"\u0416ab"));
  EXPECT_EQ(BytesOf(folder / "\xD0\x96"
                             "a"),
            "[Main]\n");
  file.RemoveAllSections();
  EXPECT_TRUE(file.Load(wide_base + L"\u0416ab"));
  EXPECT_EQ(ContentOf(file), "Main{}");
  // Here it is the letter itself: what is left names the folder.
  EXPECT_FALSE(file.Save(wide_base + L"\u0416"));
}

TEST(IniFileEncoding, NarrowFilesKeepTheirBytesWhateverTheLocale) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  std::string bytes = "[\xD0\x96]\n[k=\xFF\x80\n";
  WriteBytes(path, bytes);
  for (const char* const name : {"C", "C.UTF-8", "ru_RU.KOI8-R"}) {
    const CxxLocale locale(name);
    korvan::CIniFileA file;
    EXPECT_TRUE(file.Load(path));
    EXPECT_EQ(ContentOf(file), "\\d0;\\96;{[k=\\ff;\\80;}");
    EXPECT_TRUE(file.Save(folder / "b.ini"));
    EXPECT_EQ(BytesOf(folder / "b.ini"), bytes);
  }
}

// The conversion of narrow files is the global locale's too, if it has one.
// This one knows no '!'.
class Rot1 : public std::codecvt<char, char, std::mbstate_t> {
 protected:
  bool do_always_noconv() const noexcept override { return false; }
  int do_encoding() const noexcept override { return 1; }
  result do_in(std::mbstate_t&, const char* from, const char* from_end,
               const char*& from_next, char* to, char* to_end,
               char*& to_next) const override {
    return Shift(-1, from, from_end, from_next, to, to_end, to_next);
  }
  result do_out(std::mbstate_t&, const char* from, const char* from_end,
                const char*& from_next, char* to, char* to_end,
                char*& to_next) const override {
    return Shift(+1, from, from_end, from_next, to, to_end, to_next);
  }

 private:
  static result Shift(int by, const char* from, const char* from_end,
                      const char*& from_next, char* to, char* to_end,
                      char*& to_next) {
    for (; from != from_end && to != to_end && *from != '!'; ++from, ++to) {
      *to = static_cast<char>(*from + by);
    }
    from_next = from;
    to_next = to;
    if (from == from_end) {
      return ok;
    }
    return *from == '!' ? error : partial;
  }
};

TEST(IniFileEncoding, NarrowFilesAreConvertedWhereTheLocaleConverts) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  const CxxLocale locale(std::locale(std::locale::classic(), new Rot1));
  korvan::CIniFileA file;
  file.SetKeyValue("Main", "[k", "v");
  EXPECT_TRUE(file.Save(path));
  {
    const CxxLocale plain_locale("C");
    EXPECT_EQ(BytesOf(path), "\\Nbjo^\v\\l>w\v");
  }
  file.AddSection("Old");
  EXPECT_TRUE(file.Load(path));
  EXPECT_EQ(ContentOf(file), "Main{[k=v}");
}

TEST(IniFileEncoding, NarrowBytesThatTheLocaleRefusesEndFilesAsTheyEndStreams) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  const std::string plain_path = folder / "b.ini";
  for (const std::size_t lines : {0u, 1u, 20u, 300u, 1000u, 3000u, 9000u}) {
    std::string text = "[Main]\n";
    for (std::size_t line = 0; line < lines; ++line) {
      text += "[k" + std::to_string(1000000 + line) + "=value\n";
    }
    text += "[l= \n[m=v\n";  // the blank becomes '!'
    for (char& character : text) {
      ++character;
    }
    WriteBytes(path, text);
    korvan::CIniFileA file;
    {
      const CxxLocale locale(std::locale(std::locale::classic(), new Rot1));
      EXPECT_TRUE(file.Load(path));
      PlainIni<char> plain;
      std::ifstream input(path, std::ios_base::binary);
      plain.Load(input, false);
      EXPECT_EQ(ContentOf(file), ContentOf(plain)) << lines;

      file.SetKeyValue("Main", "[l", "!");
      file.SetKeyValue("Main", "[m", std::string(50000, 'm'));
      EXPECT_TRUE(file.Save(path));
      std::ofstream output(plain_path, std::ios_base::binary);
      output << "[Main]"
             << "\n";
      for (const auto& entry : file.GetSection("Main")->GetKeys()) {
        output << entry.first + "=" + entry.second->GetValue() << "\n";
      }
    }
    EXPECT_EQ(BytesOf(path), BytesOf(plain_path)) << lines;
  }
}

TEST(IniFileEncoding, WideFilesAreInTheGlobalLocalesEncoding) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  const std::wstring wide_path(path.begin(), path.end());
  const struct {
    const char* locale;
    const char* bytes;
  } cases[] = {{"C.UTF-8", "[\xD0\x96]\n[k=\xD1\x8F\n"},
               {"ru_RU.KOI8-R", "[\xF6]\n[k=\xD1\n"},
               {"ru_RU.CP1251", "[\xC6]\n[k=\xFF\n"}};
  for (const auto& encoding : cases) {
    const CxxLocale locale(encoding.locale);
    korvan::CIniFileW file;
    file.SetKeyValue(L"\u0416", L"[k", L"\u044F");
    EXPECT_TRUE(file.Save(wide_path));
    EXPECT_EQ(BytesOf(path), encoding.bytes);
    file.AddSection(L"Old");
    EXPECT_TRUE(file.Load(wide_path));
    EXPECT_EQ(ContentOf(file), "\\416;{[k=\\44f;}");
  }
}

TEST(IniFileEncoding, AMarkOfTheEncodingIsACharacterOfTheFirstLine) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  WriteBytes(path, "\xEF\xBB\xBF[a]\n[k=v\n[b]\n");
  const CxxLocale locale("C.UTF-8");
  korvan::CIniFileA narrow;
  EXPECT_TRUE(narrow.Load(path));
  EXPECT_EQ(ContentOf(narrow), "b{}");
  korvan::CIniFileW wide;
  EXPECT_TRUE(wide.Load(std::wstring(path.begin(), path.end())));
  EXPECT_EQ(ContentOf(wide), "b{}");
}

// Bytes that are no characters end the load, and what came before stays. How
// much of the line they stand in is seen depends on where in the file they
// are; the line reader decides.
TEST(IniFileEncoding, UndecodableBytesEndAWideLoadAsTheyEndGetline) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  const std::wstring wide_path(path.begin(), path.end());
  const CxxLocale locale("C.UTF-8");
  const auto expect_agreement = [&](const std::string& bytes) {
    WriteBytes(path, bytes);
    korvan::CIniFileW file;
    EXPECT_TRUE(file.Load(wide_path));
    std::wifstream input(path, std::ios_base::in | std::ios_base::binary);
    PlainIni<wchar_t> plain;
    plain.Load(input, false);
    EXPECT_EQ(ContentOf(file), ContentOf(plain)) << bytes.size();
  };
  std::vector<std::size_t> distances;
  for (const std::size_t edge :
       {5u, 14u, 1024u, 4096u, 8192u, 16384u, 32768u}) {
    for (std::size_t i = 0; i < 9; ++i) {
      distances.push_back(edge - 5 + i);
    }
  }
  for (const std::size_t distance : distances) {
    // A skipped line, then lines of letters of two bytes, cut anywhere.
    std::string before = "[a]\n[b=c\n" + std::string(distance / 2, 'x') + '\n';
    while (before.size() < distance) {
      before += "[\xD0\x96=\xD0\x96\n";
    }
    for (const std::string_view fault : {"\xFF", "\xD0", "\xD0\x96\xFF"}) {
      for (const std::size_t after : {0u, 1u, 9000u}) {
        expect_agreement(before + "[k=v" + std::string(fault) +
                         std::string(after, '\n') + "[l=w");
      }
      expect_agreement(before.substr(0, distance) + std::string(fault));
    }
  }
}

TEST(IniFileEncoding, AnUndecodableByteKeepsWhatCameBefore) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  WriteBytes(path, "[a]\n[k=v\n[l=\xFF\n[m=w\n" + std::string(20000, '\n'));
  const CxxLocale locale("C.UTF-8");
  korvan::CIniFileW file;
  EXPECT_TRUE(file.Load(std::wstring(path.begin(), path.end())));
  EXPECT_EQ(file.GetKeyValue(L"a", L"[k"), L"v");
  EXPECT_EQ(file.GetKeyValue(L"a", L"[m"), L"");
  // What is left of the line is for the standard library to say.
  PlainIni<wchar_t> plain;
  std::wifstream input(path, std::ios_base::binary);
  plain.Load(input, false);
  EXPECT_EQ(ContentOf(file), ContentOf(plain));
}

TEST(IniFileEncoding, ACharacterThatCannotBeConvertedEndsASaveAsItEndsAStream) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  const std::string plain_path = folder / "b.ini";
  for (const std::size_t before :
       {std::size_t{0}, std::size_t{1}, std::size_t{8180}, std::size_t{8185},
        std::size_t{8186}, std::size_t{8187}, std::size_t{20000}}) {
    korvan::CIniFileW file;
    PlainIni<wchar_t> plain;
    const auto set = [&](const std::wstring& key, const std::wstring& value) {
      file.SetKeyValue(L"a", key, value);
      plain.Set(L"a", key, value);
    };
    set(L"k", std::wstring(before, L'v'));
    set(L"l", L"x\u0416y");
    set(L"m", std::wstring(9000, L'w'));
    set(L"n", L"z");
    EXPECT_TRUE(file.Save(std::wstring(path.begin(), path.end())));
    {
      std::wofstream output(plain_path, std::ios_base::binary);
      plain.Save(output);
    }
    EXPECT_EQ(BytesOf(path), BytesOf(plain_path)) << before;
  }
}

TEST(IniFileEncoding, AConversionThatFailsWhenTheFileIsClosedIsNotThrown) {
  const Folder folder;
  const std::string path = folder / "a.ini";
  korvan::CIniFileW file;
  file.AddSection(L"\u0416");
  bool saved = false;
  EXPECT_NO_THROW(saved = file.Save(std::wstring(path.begin(), path.end())));
  EXPECT_TRUE(saved);
  // So is what has been written of it.
  const std::string plain_path = folder / "b.ini";
  try {
    PlainIni<wchar_t> plain;
    plain.AddSection(L"\u0416");
    std::wofstream output(plain_path, std::ios_base::binary);
    plain.Save(output);
    output.close();
  } catch (const std::ios_base::failure&) {
    // libstdc++ throws.
  }
  EXPECT_EQ(BytesOf(path), BytesOf(plain_path));
}

}  // namespace
}  // namespace korvan::test
