// The narrow and the wide class have the same members.
#include <gtest/gtest.h>
#include <korvan/ini_file.h>

#include <istream>
#include <ostream>
#include <string>
#include <type_traits>

namespace korvan::test {
namespace {

struct Narrow {
  using File = CIniFileA;
  using Section = File::CIniSectionA;
  using Key = Section::CIniKeyA;
};

struct Wide {
  using File = CIniFileW;
  using Section = File::CIniSectionW;
  using Key = Section::CIniKeyW;
};

// The wide type that stands where a narrow one does.
template <class T>
struct WidenType {
  using Type = T;
};
template <class T>
using Widen = typename WidenType<T>::Type;
template <>
struct WidenType<std::string> {
  using Type = std::wstring;
};
template <>
struct WidenType<std::istream> {
  using Type = std::wistream;
};
template <>
struct WidenType<std::ostream> {
  using Type = std::wostream;
};
template <>
struct WidenType<Narrow::File> {
  using Type = Wide::File;
};
template <>
struct WidenType<Narrow::Section> {
  using Type = Wide::Section;
};
template <>
struct WidenType<Narrow::Key> {
  using Type = Wide::Key;
};
template <>
struct WidenType<Narrow::File::Sections> {
  using Type = Wide::File::Sections;
};
template <>
struct WidenType<Narrow::Section::Keys> {
  using Type = Wide::Section::Keys;
};
template <class T>
struct WidenType<T*> {
  using Type = Widen<T>*;
};
template <class T>
struct WidenType<T&> {
  using Type = Widen<T>&;
};
template <class T>
struct WidenType<const T> {
  using Type = const Widen<T>;
};
template <class R, class C, class... A>
struct WidenType<R (C::*)(A...)> {
  using Type = Widen<R> (Widen<C>::*)(Widen<A>...);
};
template <class R, class C, class... A>
struct WidenType<R (C::*)(A...) const> {
  using Type = Widen<R> (Widen<C>::*)(Widen<A>...) const;
};

template <class NarrowMember, class WideMember>
constexpr bool AreTwins(NarrowMember, WideMember) {
  return std::is_same_v<Widen<NarrowMember>, WideMember>;
}

TEST(IniTwins, FilesHaveTheSameMembersInBothWidths) {
  EXPECT_TRUE(AreTwins(&Narrow::File::AddSection, &Wide::File::AddSection));
  EXPECT_TRUE(AreTwins(&Narrow::File::GetSection, &Wide::File::GetSection));
  EXPECT_TRUE(AreTwins(&Narrow::File::GetSections, &Wide::File::GetSections));
  EXPECT_TRUE(AreTwins(&Narrow::File::RemoveAllSections,
                       &Wide::File::RemoveAllSections));
  EXPECT_TRUE(
      AreTwins(&Narrow::File::RenameSection, &Wide::File::RenameSection));
  EXPECT_TRUE(AreTwins(&Narrow::File::SetKeyValue, &Wide::File::SetKeyValue));
  EXPECT_TRUE(AreTwins(&Narrow::File::GetKeyValue, &Wide::File::GetKeyValue));
  EXPECT_TRUE(AreTwins(&Narrow::File::RenameKey, &Wide::File::RenameKey));
  EXPECT_TRUE((std::is_same_v<decltype(Narrow::File::LF), const char* const>));
  EXPECT_TRUE((std::is_same_v<decltype(Wide::File::LF), const wchar_t* const>));
}

TEST(IniTwins, SectionsHaveTheSameMembersInBothWidths) {
  EXPECT_TRUE(AreTwins(&Narrow::Section::AddKey, &Wide::Section::AddKey));
  EXPECT_TRUE(AreTwins(&Narrow::Section::GetKey, &Wide::Section::GetKey));
  EXPECT_TRUE(AreTwins(&Narrow::Section::GetKeys, &Wide::Section::GetKeys));
  EXPECT_TRUE(
      AreTwins(&Narrow::Section::RemoveAllKeys, &Wide::Section::RemoveAllKeys));
  EXPECT_TRUE(AreTwins(&Narrow::Section::GetSectionName,
                       &Wide::Section::GetSectionName));
  EXPECT_TRUE(AreTwins(&Narrow::Section::SetSectionName,
                       &Wide::Section::SetSectionName));
  EXPECT_TRUE(
      AreTwins(&Narrow::Section::SetKeyValue, &Wide::Section::SetKeyValue));
  EXPECT_TRUE(
      AreTwins(&Narrow::Section::GetKeyValue, &Wide::Section::GetKeyValue));
}

TEST(IniTwins, KeysHaveTheSameMembersInBothWidths) {
  EXPECT_TRUE(AreTwins(&Narrow::Key::GetKeyName, &Wide::Key::GetKeyName));
  EXPECT_TRUE(AreTwins(&Narrow::Key::SetKeyName, &Wide::Key::SetKeyName));
  EXPECT_TRUE(AreTwins(&Narrow::Key::GetValue, &Wide::Key::GetValue));
  EXPECT_TRUE(AreTwins(&Narrow::Key::SetValue, &Wide::Key::SetValue));
}

}  // namespace
}  // namespace korvan::test
