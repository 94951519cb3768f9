// A folder for the files of a test, and files as bytes.
#ifndef KORVAN_TESTS_SUPPORT_FOLDER_H_
#define KORVAN_TESTS_SUPPORT_FOLDER_H_

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <sstream>
#include <string>
#include <string_view>

namespace korvan::test {

// A new empty folder, removed with the files in it.
class Folder {
 public:
  Folder() : path_(testing::TempDir() + "korvan-test-XXXXXX") {
    EXPECT_NE(mkdtemp(path_.data()), nullptr) << path_;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }

  std::string operator/(std::string_view name) const {
    return path_ + "/" + std::string(name);
  }

 private:
  std::string path_;
};

inline std::string BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

inline void WriteBytes(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  EXPECT_TRUE(file) << path;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_FOLDER_H_
