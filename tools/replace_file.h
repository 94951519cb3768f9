// Replaces a file so that a full disk or a crash leaves the old text or the
// new, and nothing between.
#ifndef KORVAN_TOOLS_REPLACE_FILE_H_
#define KORVAN_TOOLS_REPLACE_FILE_H_

#include <string>

namespace korvan::tools {

// Puts `bytes` into the file `path`, or makes it. The bytes go to a new file
// beside it, to the disk, and only then in its place, with its owner, group and
// permission bits. A symbolic link stays one; other hard links to the file keep
// the old text. Throws a Failure of kInputOutput that names the file: it is
// then as it was, or the message says that the new text is in place.
void ReplaceFile(const std::string& path, const std::string& bytes);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_REPLACE_FILE_H_
