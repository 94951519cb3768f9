// The steps of replacing a file: find its place, write a new file beside it,
// rename that.
#include "tools/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/program.h"

namespace korvan::tools {

namespace {

[[noreturn]] void FailWith(int error, const std::string& path,
                           const char* what) {
  throw Failure(
      Status::kInputOutput,
      path + ": " + what + ": " + std::generic_category().message(error));
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) {
      close(number_);
    }
  }

  int get() const { return number_; }
  // Some file systems tell only here that they could not write.
  bool Close() { return close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

// Where a file is to be written so that symbolic links to it stay.
std::filesystem::path PlaceOf(const std::string& path) {
  std::filesystem::path place = path;
  std::error_code error;
  for (int links = 0; std::filesystem::is_symlink(place, error); ++links) {
    if (links == 40) {
      FailWith(ELOOP, path, "can't be written");
    }
    place = place.parent_path() / std::filesystem::read_symlink(place, error);
    if (error) {
      FailWith(error.value(), path, "can't be written");
    }
  }
  return place;
}

// A new file, which goes away again unless it is put into a place.
class NewFile {
 public:
  NewFile(const std::filesystem::path& folder, std::string purpose)
      : purpose_(std::move(purpose)),
        path_(folder / ".initool-XXXXXX"),
        descriptor_(mkostemp(path_.data(), O_CLOEXEC)) {
    if (descriptor_.get() < 0) {
      FailWith(errno, purpose_, "can't make a file beside it");
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (!path_.empty()) {
      unlink(path_.c_str());
    }
  }

  void TakeOwnerAndMode(const struct stat& from) {
    struct stat own = {};
    if (fstat(descriptor_.get(), &own) != 0 ||
        ((own.st_uid != from.st_uid || own.st_gid != from.st_gid) &&
         fchown(descriptor_.get(), from.st_uid, from.st_gid) != 0)) {
      FailWith(errno, purpose_, "can't keep its owner");
    }
    SetMode(from.st_mode & 07777);
  }

  void SetMode(mode_t mode) {
    if (fchmod(descriptor_.get(), mode) != 0) {
      FailWith(errno, purpose_, "can't keep its permission bits");
    }
  }

  void Write(const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
      const ssize_t written =
          write(descriptor_.get(), bytes.data() + done, bytes.size() - done);
      if (written >= 0) {
        done += static_cast<std::size_t>(written);
      } else if (errno != EINTR) {
        FailWith(errno, purpose_, "can't be written");
      }
    }
    if (fsync(descriptor_.get()) != 0 || !descriptor_.Close()) {
      FailWith(errno, purpose_, "can't be written");
    }
  }

  void PutInto(const std::filesystem::path& place) {
    if (rename(path_.c_str(), place.c_str()) != 0) {
      FailWith(errno, purpose_, "can't be replaced");
    }
    path_.clear();
  }

 private:
  const std::string purpose_;  // the file that it is to be, for messages
  std::string path_;
  Descriptor descriptor_;
};

}  // namespace

void ReplaceFile(const std::string& path, const std::string& bytes) {
  const std::filesystem::path place = PlaceOf(path);
  const std::filesystem::path folder =
      place.has_parent_path() ? place.parent_path() : ".";
  struct stat present = {};
  const bool exists = stat(place.c_str(), &present) == 0;
  if (!exists && errno != ENOENT) {
    FailWith(errno, path, "can't be written");
  }
  if (exists && !S_ISREG(present.st_mode)) {
    throw Failure(Status::kInputOutput,
                  path + ": is no regular file, so not replaced");
  }
  NewFile file(folder, path);
  if (exists) {
    file.TakeOwnerAndMode(present);
  } else {
    const mode_t masked = umask(0);
    umask(masked);
    file.SetMode(0666 & ~masked);
  }
  file.Write(bytes);
  file.PutInto(place);
  // Only now would a crash not bring the old text back.
  const Descriptor directory(
      open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.get() < 0 || fsync(directory.get()) != 0) {
    FailWith(errno, path,
             "the new text is in place, but maybe not yet on the disk");
  }
}

}  // namespace korvan::tools
