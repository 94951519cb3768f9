#ifndef KORVAN_INI_FILE_STREAM_H_
#define KORVAN_INI_FILE_STREAM_H_

#include <cstddef>
#include <ios>
#include <memory>
#include <string>

#include "ini/twins.h"

namespace korvan::ini {

/// An open file, or one that could not be opened. It moves large blocks where
/// that makes no difference but speed.
template <class Stream>
class FileStream {
 public:
  template <class String>
  FileStream(const String& name, std::ios_base::openmode mode) {
    using Char = typename Stream::char_type;
    if (AnyBlockWillDo(Char{}, stream_.getloc())) {
      block_ = std::make_unique_for_overwrite<Char[]>(kBlockSize);
      stream_.rdbuf()->pubsetbuf(block_.get(), kBlockSize);
    }
    stream_.open(FileName(name), mode | std::ios_base::binary);
  }

  bool is_open() const { return stream_.is_open(); }
  Stream& stream() { return stream_; }

 private:
  static constexpr std::size_t kBlockSize = std::size_t{1} << 16;

  // The stream uses the block to its end: it must go first.
  std::unique_ptr<typename Stream::char_type[]> block_;
  Stream stream_;
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_FILE_STREAM_H_
