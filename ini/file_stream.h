// The files that documents are loaded from and saved to.
//
// A file without conversion is moved in large blocks. With a conversion the
// size of the blocks would show: if it fails, what is lost depends on where a
// block began.
#ifndef KORVAN_INI_FILE_STREAM_H_
#define KORVAN_INI_FILE_STREAM_H_

#include <cxxabi.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <ios>
#include <istream>
#include <locale>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "ini/twins.h"

namespace korvan::ini {

constexpr std::size_t kBlockSize = std::size_t{1} << 16;

// While it lives, its thread is not cancelled: that would end the process in a
// destructor.
class Uncancelled {
 public:
  Uncancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &former_); }
  Uncancelled(const Uncancelled&) = delete;
  Uncancelled& operator=(const Uncancelled&) = delete;
  ~Uncancelled() { pthread_setcancelstate(former_, nullptr); }

 private:
  int former_;
};

// A file whose characters are its bytes. It can read ahead of the stream, so
// that more lines lie in its area at once than a block holds.
class ByteFile final : public std::streambuf {
 public:
  explicit ByteFile(const std::string& name)
      : block_(std::make_unique_for_overwrite<char[]>(kBlockSize)),
        descriptor_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ByteFile(const ByteFile&) = delete;
  ByteFile& operator=(const ByteFile&) = delete;
  ~ByteFile() override {
    if (is_open()) {
      const Uncancelled uncancelled;
      ::close(descriptor_);
    }
  }

  bool is_open() const { return descriptor_ >= 0; }

  // How many bytes a read would find: of a regular file, the rest of it. Nobody
  // knows of others; then it is as many as the block holds.
  std::size_t BytesAhead() const {
    struct stat status;
    if (::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
      return size_;
    }
    const off_t place = ::lseek(descriptor_, 0, SEEK_CUR);
    return static_cast<std::size_t>(std::max<off_t>(status.st_size - place, 0));
  }

  // Adds the bytes ahead to the area, until it holds `most` bytes. Returns
  // false, with nothing changed, if there is nothing to add. Throws
  // std::bad_alloc.
  bool ReadAhead(std::size_t most) {
    const auto unread = static_cast<std::size_t>(egptr() - gptr());
    const std::size_t size = std::min(unread + BytesAhead(), most);
    if (size <= unread) {
      return false;
    }
    auto block = std::make_unique_for_overwrite<char[]>(size);
    std::copy(gptr(), egptr(), block.get());
    std::size_t end = unread;
    while (end != size && Read(block.get() + end, size - end)) {
      end += static_cast<std::size_t>(last_read_);
    }
    if (end == unread) {
      return false;
    }
    block_ = std::move(block);
    size_ = size;
    setg(block_.get(), block_.get(), block_.get() + end);
    return true;
  }

 protected:
  // Throws on an error, as a std::filebuf does: the stream then drops the line
  // that the error has cut.
  int_type underflow() override {
    const bool has_read = Read(block_.get(), size_);
    if (last_read_ < 0) {
      throw std::ios_base::failure("error reading the file");
    }
    setg(block_.get(), block_.get(), block_.get() + last_read_);
    return has_read ? traits_type::to_int_type(block_[0]) : traits_type::eof();
  }

 private:
  // Returns false at the end of the file, after an error, and after either. A
  // terminal or a growing file may go on behind its end: that is for the next
  // load.
  bool Read(char* place, std::size_t size) {
    if (last_read_ > 0) {
      do {
        last_read_ = ::read(descriptor_, place, size);
      } while (last_read_ < 0 && errno == EINTR);
    }
    return last_read_ > 0;
  }

  std::unique_ptr<char[]> block_;
  std::size_t size_ = kBlockSize;
  ssize_t last_read_ = 1;  // 0 at the end, negative after an error
  int descriptor_;
};

// Returns null if the buffer is not one of a file whose characters are its
// bytes.
template <class Char>
ByteFile* AsByteFile(std::basic_streambuf<Char>& buffer) {
  if constexpr (std::is_same_v<Char, char>) {
    return typeid(buffer) == typeid(ByteFile) ? static_cast<ByteFile*>(&buffer)
                                              : nullptr;
  } else {
    return nullptr;
  }
}

// A file to load from. It is open unless it could not be opened.
template <class Char>
class InputFile {
 public:
  explicit InputFile(const std::basic_string<Char>& name) {
    if constexpr (std::is_same_v<Char, char>) {
      if (IsFileUnconverted<Char>(std::locale())) {
        auto bytes = std::make_unique<ByteFile>(name);
        is_open_ = bytes->is_open();
        buffer_ = std::move(bytes);
        stream_.rdbuf(buffer_.get());
        return;
      }
    }
    auto converted = std::make_unique<std::basic_filebuf<Char>>();
    is_open_ =
        converted->open(FileName(name),
                        std::ios_base::in | std::ios_base::binary) != nullptr;
    buffer_ = std::move(converted);
    stream_.rdbuf(buffer_.get());
  }

  bool is_open() const { return is_open_; }
  std::basic_istream<Char>& stream() { return stream_; }

 private:
  bool is_open_ = false;
  std::unique_ptr<std::basic_streambuf<Char>> buffer_;
  std::basic_istream<Char> stream_{nullptr};
};

// A file to save to. It is open unless it could not be opened.
template <class Char>
class OutputFile {
 public:
  explicit OutputFile(const std::basic_string<Char>& name) {
    if (IsFileUnconverted<Char>(stream_.getloc())) {
      block_ = std::make_unique_for_overwrite<Char[]>(kBlockSize);
      stream_.rdbuf()->pubsetbuf(block_.get(), kBlockSize);
    }
    stream_.open(FileName(name), std::ios_base::binary);
  }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() {
    // An exception may have left it open.
    const Uncancelled uncancelled;
    Close();
  }

  bool is_open() const { return stream_.is_open(); }
  std::basic_ostream<Char>& stream() { return stream_; }

  // Writes what is left and closes the file; an error has no effect. A thread
  // may be cancelled in the write. libstdc++ does that by an exception.
  void Close() {
#ifdef __GLIBCXX__
    try {
      stream_.close();
    } catch (const abi::__forced_unwind&) {
      throw;
    } catch (...) {  // of the locale's conversion
    }
#endif
  }

 private:
  // Outlives the stream, which uses it to its end.
  std::unique_ptr<Char[]> block_;
  std::basic_ofstream<Char> stream_;
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_FILE_STREAM_H_
