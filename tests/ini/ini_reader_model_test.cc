// The reader compared with a loop of std::getline: whatever the stream does,
// nobody can tell the two apart.
#include <korvan/ini_file.h>
#include <rapidcheck.h>

#include <string>
#include <vector>

#include "ini/hostile_buffers.h"
#include "ini/shown.h"
#include "ini/width.h"
#include "support/settings.h"

namespace korvan::test {
namespace {

constexpr std::ios_base::iostate kMasks[] = {
    std::ios_base::goodbit,
    std::ios_base::badbit,
    std::ios_base::eofbit,
    std::ios_base::failbit,
    std::ios_base::badbit | std::ios_base::eofbit,
    std::ios_base::badbit | std::ios_base::failbit,
    std::ios_base::eofbit | std::ios_base::failbit,
    std::ios_base::badbit | std::ios_base::eofbit | std::ios_base::failbit};

// A document to merge into, or to be replaced.
template <class AnyFile>
std::string LoadOver(const LoadCase& load, AnyFile& file) {
  LoadCase before;
  before.text = "[Main]\n[k=old\n[Old]\n[q=1\n"_t;
  Load(before, file);
  return Load(load, file);
}

// `[k=]` cut anywhere, blanks that a cut leaves at a line's ends, a last line
// without an end: with each text every fault falls at every character.
constexpr std::string_view kTexts[] = {
    "[a]\n[k=v\n",
    "[a]\r\n [k = v \r\n\n#x\n[l=w]\n[m=]x",
    "x\n[a]\n\t [long name of a key=long value of a key, with blanks ]\r\r\n",
    "[a]\n[=\n[==\n[k=\r\n[l",
    "\n\n[\n]\n[]\n[] \n[ ]=\n=[\n",
};

TEST(IniReaderModel, TheReaderMeetsAFaultAtAnyCharacterAsGetlineDoes) {
  for (const std::string_view text : kTexts) {
    std::vector<LoadCase> loads = {{}};
    loads.front().text = Text(text);
    Vary(loads, &LoadCase::pieces, {{}, {1}, {0}, {2}, {5}, {11}, {1, 0, 9}});
    Vary(loads, &LoadCase::fault, NumbersUpTo(text.size()));
    Vary(loads, &LoadCase::exceptions,
         std::vector(std::begin(kMasks), std::end(kMasks)));
    for (LoadCase& load : loads) {
      load.merge = load.fault % 2 == 0;
      load.tied = load.fault % 3 == 0;
      File file;
      PlainFile plain;
      ASSERT_EQ(LoadOver(load, file), LoadOver(load, plain))
          << text << "\nfault at " << load.fault << ", mask"
          << Shown(load.exceptions);
    }
  }
}

TEST(IniReaderModel, TheReaderLooksLikeGetlineWithoutAFault) {
  for (const std::string_view text : kTexts) {
    std::vector<LoadCase> loads = {{}};
    loads.front().text = Text(text);
    Vary(loads, &LoadCase::pieces, {{}, {1}, {0}, {2}, {5}, {11}, {1, 0, 9}});
    Vary(loads, &LoadCase::exceptions,
         std::vector(std::begin(kMasks), std::end(kMasks)));
    Vary(loads, &LoadCase::merge, {false, true});
    Vary(loads, &LoadCase::tied, {false, true});
    for (const LoadCase& load : loads) {
      File file;
      PlainFile plain;
      ASSERT_EQ(LoadOver(load, file), LoadOver(load, plain))
          << text << "\nmask" << Shown(load.exceptions);
    }
  }
}

rc::Gen<std::string> AnyText() {
  return rc::gen::map(
      rc::gen::container<std::vector<std::string>>(
          rc::gen::element<std::string>(
              "[", "[", "]", "=", "\n", "\n", "\n", "\r", " ", "\t", "k", "K",
              "Main", "[Main]\n", "[k=v\n", "#", std::string(1, '\0'), "\v",
              "\xC3\xA9", "a text that is too long to be kept inline")),
      [](const std::vector<std::string>& tokens) {
        std::string text;
        for (const std::string& token : tokens) {
          text += token;
        }
        return text;
      });
}

TEST(IniReaderModel, TheReaderLooksLikeGetlineOnAnyTextInAnyPieces) {
  const bool holds = rc::check([] {
    LoadCase load;
    load.text = Text(*AnyText());
    load.pieces = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, 60));
    load.fault = *rc::gen::weightedElement<std::size_t>(
        {{3, kNever}, {1, load.text.size() / 2}, {1, load.text.size()}});
    load.exceptions = *rc::gen::elementOf(std::vector<std::ios_base::iostate>(
        std::begin(kMasks), std::end(kMasks)));
    load.merge = *rc::gen::arbitrary<bool>();
    load.tied = *rc::gen::weightedElement<bool>({{4, false}, {1, true}});
    File file;
    PlainFile plain;
    RC_ASSERT(LoadOver(load, file) == LoadOver(load, plain));
  });
  EXPECT_TRUE(holds);
}

// Long enough that lines are cut by the buffers of the standard streams, too.
TEST(IniReaderModel, TheReaderLooksLikeGetlineOnLongTexts) {
  const bool holds = rc::check([] {
    std::string text;
    const auto lengths = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, 20000));
    for (const std::size_t length : lengths) {
      const std::string filler(length, 'x');
      text += *rc::gen::element<std::string>(
          "[" + filler + "]\n", "[k=" + filler + "\n", "[" + filler + "=v\n",
          "#" + filler + "\n", "[k=" + filler + "]\r\n", filler);
    }
    LoadCase load;
    load.text = Text(text);
    load.pieces = {*rc::gen::inRange<std::size_t>(1, 9000)};
    File file;
    PlainFile plain;
    RC_ASSERT(Load(load, file) == Load(load, plain));
  });
  EXPECT_TRUE(holds);
}

}  // namespace
}  // namespace korvan::test
