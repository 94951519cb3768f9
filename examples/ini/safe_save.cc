// Saves an INI file so that a crash or a full disk leaves the old text or the
// new one, and nothing between.
#include <fcntl.h>
#include <korvan/korvan.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

// Puts a folder's new names on the disk.
static bool SyncFolder(const std::string& folder) {
  const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool done = opened >= 0 && fsync(opened) == 0;
  return opened >= 0 && close(opened) == 0 && done;
}

static bool SaveSafely(korvan::CIniFileA& document, const std::string& folder,
                       const std::string& name) {
  std::ostringstream text;
  document.Save(text);
  const std::string bytes = text.str();
  const std::string place = folder + '/' + name;
  const std::string fresh = place + ".new";
  std::FILE* const file = std::fopen(fresh.c_str(), "wxe");  // x: only if new
  if (file == nullptr) {
    return false;
  }
  bool done =
      !text.fail() &&
      std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() &&
      std::fflush(file) == 0 && fsync(fileno(file)) == 0;
  done = std::fclose(file) == 0 && done &&
         std::rename(fresh.c_str(), place.c_str()) == 0;
  if (!done) {
    std::remove(fresh.c_str());
    return false;
  }
  return SyncFolder(folder);
}

int main() {
  korvan::CIniFileA settings;
  settings.SetKeyValue("Log", "[Level", "2");
  bool done = SaveSafely(settings, ".", "example.ini");
  settings.SetKeyValue("Log", "[Level", "3");
  done = SaveSafely(settings, ".", "example.ini") && done;

  korvan::CIniFileA read;
  read.Load(std::string("example.ini"));
  std::cout << "level " << read.GetKeyValue("Log", "[Level") << '\n';
  std::remove("example.ini");
  return done && std::cout.flush() ? 0 : 1;
}
// It prints:
// level 3
