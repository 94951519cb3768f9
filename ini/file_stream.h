// The files that documents are loaded from and saved to.
#ifndef KORVAN_INI_FILE_STREAM_H_
#define KORVAN_INI_FILE_STREAM_H_

#include <cstddef>
#include <fstream>
#include <ios>
#include <memory>
#include <string>

#include "ini/twins.h"

namespace korvan::ini {

// A file stream, open unless the file could not be opened.
//
// A file without conversion is moved in large blocks. With a conversion the
// size of the blocks would show: if it fails, what is lost depends on where a
// block began.
template <class Stream>
class FileStream {
 public:
  using Char = typename Stream::char_type;

  explicit FileStream(const std::basic_string<Char>& name) {
    if (IsFileUnconverted<Char>(stream_.getloc())) {
      block_ = std::make_unique_for_overwrite<Char[]>(kBlockSize);
      stream_.rdbuf()->pubsetbuf(block_.get(), kBlockSize);
    }
    stream_.open(FileName(name), std::ios_base::binary);
  }

  bool is_open() const { return stream_.is_open(); }
  Stream& stream() { return stream_; }

 private:
  static constexpr std::size_t kBlockSize = std::size_t{1} << 16;

  // Outlives the stream, which uses it to its end.
  std::unique_ptr<Char[]> block_;
  Stream stream_;
};

template <class Char>
using InputFile = FileStream<std::basic_ifstream<Char>>;

template <class Char>
using OutputFile = FileStream<std::basic_ofstream<Char>>;

}  // namespace korvan::ini

#endif  // KORVAN_INI_FILE_STREAM_H_
