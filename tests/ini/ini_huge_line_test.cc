// A line of over 4 GiB among key lines in no order, which are entered at once.
// The text itself takes little memory: all but its ends is one piece of memory
// that is mapped again and again. Its value, and a copy of it, take 8 GiB.
#include <korvan/ini_file.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <streambuf>
#include <string>
#include <string_view>
#include <system_error>

#include "ini/key_lines.h"
#include "ini/width.h"

namespace korvan::test {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 20;
constexpr std::size_t kPieces = (std::size_t{UINT32_MAX} + 1) / kPiece;

// kPieces pieces of 'v' between two texts, as the whole get area of a buffer.
class HugeText : public std::streambuf {
 public:
  HugeText(std::string_view beginning, std::string_view end) {
    Check(pieces_ != -1 && ftruncate(pieces_, kPiece) == 0);
    Check(text_ != MAP_FAILED);
    for (std::size_t i = 0; i < kPieces; ++i) {
      Map(1 + i, MAP_SHARED, pieces_);
    }
    char* const first = Piece(1);
    std::string(kPiece, 'v').copy(first, kPiece);
    Map(0, MAP_PRIVATE | MAP_ANONYMOUS, -1);
    Map(1 + kPieces, MAP_PRIVATE | MAP_ANONYMOUS, -1);
    beginning.copy(first - beginning.size(), beginning.size());
    char* const behind = Piece(1 + kPieces);
    end.copy(behind, end.size());
    setg(first - beginning.size(), first - beginning.size(),
         behind + end.size());
  }
  HugeText(const HugeText&) = delete;
  HugeText& operator=(const HugeText&) = delete;
  ~HugeText() override {
    munmap(text_, kSize);
    close(pieces_);
  }

 private:
  static constexpr std::size_t kSize = (1 + kPieces + 1) * kPiece;

  static void Check(bool succeeded) {
    if (!succeeded) {
      throw std::system_error(errno, std::generic_category());
    }
  }

  char* Piece(std::size_t i) const {
    return static_cast<char*>(text_) + i * kPiece;
  }

  void Map(std::size_t i, int flags, int file) {
    Check(mmap(Piece(i), kPiece, PROT_READ | PROT_WRITE, MAP_FIXED | flags,
               file, 0) != MAP_FAILED);
  }

  int pieces_ = memfd_create("pieces", MFD_CLOEXEC);
  void* text_ = mmap(nullptr, kSize, PROT_NONE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
};

TEST(IniHugeLine, OneOfOver4GiBIsKeptWhole) {
  HugeText text("[Main]\n" + KeyLines(20, "v") + "[huge=", "vv\n[a=b\n");
  std::istream input(&text);
  File file;
  file.Load(input);
  EXPECT_EQ(file.GetSection("Main")->GetKeys().size(), 22u);
  EXPECT_EQ(file.GetKeyValue("Main", "[a"), "b");
  const std::string value = file.GetKeyValue("Main", "[huge");
  ASSERT_EQ(value.size(), kPieces * kPiece + 2);
  // All characters are the same.
  EXPECT_EQ(value[0], 'v');
  EXPECT_EQ(std::memcmp(value.data(), value.data() + 1, value.size() - 1), 0);
}

}  // namespace
}  // namespace korvan::test
