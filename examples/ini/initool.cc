// Reads and edits INI files from the command line, and loses nothing unasked.

#include <fcntl.h>
#include <korvan/ini_file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <iostream>
#include <locale>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

constexpr int kDone = 0;
constexpr int kNotFound = 1;
constexpr int kBadUsage = 2;
constexpr int kWouldLose = 3;
constexpr int kFailed = 4;

constexpr char kUsage[] =
    R"(usage: initool [--wide] get     FILE SECTION KEY
       initool [--wide] list    FILE [SECTION]
       initool [OPTION] set     FILE SECTION KEY VALUE
       initool [OPTION] rename  FILE SECTION [KEY] NEW-NAME
       initool [OPTION] remove  FILE SECTION [KEY]
       initool [OPTION] merge   FILE OTHER-FILE

  --wide    the file is text in the encoding of the locale, and names are the
            same in any case in any alphabet; without it, it is bytes
  --lossy   write FILE even where lines are lost by it

set and merge make FILE where there is none; merge takes from OTHER-FILE.

WHAT IS READ. This format's reader takes two kinds of lines:
    [Section]     begins with "[", and ends with "]"
    [key=value    begins with "[", holds "=", and does not end with "]"
and the second only below one of the first. It skips everything else silently:
comments, and the ordinary "key=value" too. The "[" belongs to the key's name:
    initool set f.ini Main '[key' value      is read back by
    initool get f.ini Main '[key'
whereas a key named "key" would be written as "key=value", which nobody finds
again here, and the next change of the file would drop it.

WHAT IS WRITTEN. Only what was read, in order of the names: no comments and no
blank lines, and of a key that occurs twice the last value. So a change is
refused, and the file stays as it is,
  - where the reader skipped lines of FILE, which would be lost;
  - where what is to be written would not be read back as it is.
--lossy writes all the same, and says what was lost. The text goes to a new
file beside FILE, to the disk, and only then in place of FILE, with its owner
and permission bits: a full disk or a crash leaves the old text or the new. A
symbolic link stays one. Other hard links to FILE keep the old text.

Exit status: 0 done; 1 no such section or key, or the new name is taken; 2 bad
usage; 3 refused, because lines would be lost; 4 a file can't be read or
written, or isn't text in the encoding of the locale.
)";

// Why a command ends without being done.
class Refusal : public std::runtime_error {
 public:
  Refusal(int status, const std::string& why)
      : std::runtime_error(why), status_(status) {}
  int status() const { return status_; }

 private:
  int status_;
};

[[noreturn]] void FailWith(int error, const std::string& path,
                           const char* what) {
  throw Refusal(kFailed, path + ": " + what + ": " +
                             std::generic_category().message(error));
}

void Note(const std::string& text) { std::cerr << "initool: " << text << '\n'; }

std::string Lines(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " line" : " lines");
}

void Print(const std::string& text) {
  std::cout << text << std::flush;
  if (!std::cout) {
    throw Refusal(kFailed, "can't write the output");
  }
}

// Files, as bytes.

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

std::optional<std::string> ReadFile(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) {
    if (errno == ENOENT) {
      return std::nullopt;
    }
    FailWith(errno, path, "can't open");
  }
  std::string bytes;
  char block[1 << 16];
  while (true) {
    const ssize_t taken = read(file.get(), block, sizeof block);
    if (taken == 0) {
      return bytes;
    }
    if (taken > 0) {
      bytes.append(block, static_cast<std::size_t>(taken));
    } else if (errno != EINTR) {
      FailWith(errno, path, "can't read");
    }
  }
}

// Where a file is to be written so that symbolic links to it stay.
std::filesystem::path PlaceOf(const std::string& path) {
  std::filesystem::path place = path;
  for (int links = 0; std::filesystem::is_symlink(place); ++links) {
    if (links == 40) {
      FailWith(ELOOP, path, "can't write");
    }
    place = place.parent_path() / std::filesystem::read_symlink(place);
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
        FailWith(errno, purpose_, "can't write");
      }
    }
    if (fsync(descriptor_.get()) != 0 || !descriptor_.Close()) {
      FailWith(errno, purpose_, "can't write");
    }
  }

  void PutInto(const std::filesystem::path& place) {
    if (rename(path_.c_str(), place.c_str()) != 0) {
      FailWith(errno, purpose_, "can't replace it");
    }
    path_.clear();
  }

 private:
  const std::string purpose_;  // the file that it is to be, for messages
  std::string path_;
  Descriptor descriptor_;
};

void WriteFile(const std::string& path, const std::string& bytes) {
  const std::filesystem::path place = PlaceOf(path);
  const std::filesystem::path folder =
      place.has_parent_path() ? place.parent_path() : ".";
  struct stat present = {};
  const bool exists = stat(place.c_str(), &present) == 0;
  if (!exists && errno != ENOENT) {
    FailWith(errno, path, "can't write");
  }
  if (exists && !S_ISREG(present.st_mode)) {
    throw Refusal(kFailed, path + ": is no regular file, so not replaced");
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
    FailWith(errno, folder,
             "the new text is in place, but not yet on the disk");
  }
}

// What differs between narrow and wide text: how bytes become text.

struct Narrow {
  using File = korvan::CIniFileA;
  using String = std::string;

  static std::optional<String> Decode(const std::string& bytes) {
    return bytes;
  }
  static std::optional<std::string> Encode(const String& text) { return text; }
};

struct Wide {
  using File = korvan::CIniFileW;
  using String = std::wstring;
  using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;

  // A wide file stream passes over an undecodable end of a file in silence,
  // which would then be lost.
  static std::optional<String> Decode(const std::string& bytes) {
    const std::locale locale;
    String text(bytes.size(), L'\0');
    std::mbstate_t state = {};
    const char* rest = bytes.data();
    wchar_t* end = text.data();
    const auto result = std::use_facet<Conversion>(locale).in(
        state, rest, bytes.data() + bytes.size(), rest, end,
        text.data() + text.size(), end);
    // A character that the end cuts off is taken in without an error.
    if (result != Conversion::ok || !std::mbsinit(&state)) {
      return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
  }

  static std::optional<std::string> Encode(const String& text) {
    const std::locale locale;
    const Conversion& conversion = std::use_facet<Conversion>(locale);
    std::string bytes(
        text.size() * static_cast<std::size_t>(conversion.max_length()), '\0');
    std::mbstate_t state = {};
    const wchar_t* rest = text.data();
    char* end = bytes.data();
    const auto result =
        conversion.out(state, rest, text.data() + text.size(), rest, end,
                       bytes.data() + bytes.size(), end);
    if (result != Conversion::ok) {
      return std::nullopt;
    }
    bytes.resize(static_cast<std::size_t>(end - bytes.data()));
    return bytes;
  }
};

// The commands, for text of either kind.

struct Call {
  bool is_lossy = false;
  std::string command;
  std::vector<std::string> arguments;

  const std::string& path() const { return arguments[0]; }
};

template <class Twin>
class Tool {
 public:
  explicit Tool(const Call& call) : call_(call) {}

  int Run() {
    const std::string& command = call_.command;
    const bool may_create = command == "set" || command == "merge";
    LoadFile(may_create);
    for (std::size_t i = 1; i < call_.arguments.size(); ++i) {
      names_.push_back(Decode(call_.arguments[i], "argument"));
    }
    if (command == "get") {
      Print(Encode(FindKey()->GetValue() + LineFeed()));
    } else if (command == "list") {
      List();
    } else {
      if (command == "set") {
        file_.SetKeyValue(names_[0], names_[1], names_[2]);
      }
      if (command == "rename") {
        Rename();
      }
      if (command == "remove") {
        Remove();
      }
      if (command == "merge") {
        Merge();
      }
      Save();
    }
    return kDone;
  }

 private:
  using File = typename Twin::File;
  using String = typename Twin::String;
  using Char = typename String::value_type;
  using Section = std::remove_pointer_t<typename File::Sections::mapped_type>;
  using Key = std::remove_pointer_t<typename Section::Keys::mapped_type>;

  static String LineFeed() { return File::LF; }

  static String Decode(const std::string& bytes, const std::string& what) {
    if (std::optional<String> text = Twin::Decode(bytes)) {
      return *text;
    }
    throw Refusal(kFailed, what + " '" + bytes.substr(0, 40) +
                               "' isn't text in the encoding of the locale");
  }

  static std::string Encode(const String& text) {
    if (std::optional<std::string> bytes = Twin::Encode(text)) {
      return *bytes;
    }
    throw Refusal(kFailed,
                  "there is no encoding in the locale for all of the text");
  }

  static void Load(File& file, const String& text, bool is_merged) {
    std::basic_istringstream<Char> stream(text);
    file.Load(stream, is_merged);
  }

  static String TextOf(File& file) {
    std::basic_ostringstream<Char> stream;
    file.Save(stream);
    return stream.str();
  }

  static String ReadText(const std::string& path, bool may_be_missing) {
    const std::optional<std::string> bytes = ReadFile(path);
    if (!bytes && !may_be_missing) {
      throw Refusal(kFailed, path + ": no such file");
    }
    const std::optional<String> text = Twin::Decode(bytes.value_or(""));
    if (!text) {
      throw Refusal(kFailed,
                    path + ": isn't text in the encoding of the locale");
    }
    return *text;
  }

  void LoadFile(bool may_be_missing) {
    const String text = ReadText(call_.path(), may_be_missing);
    Load(file_, text, false);
    skipped_ = CountSkipped(text);
  }

  // How many lines, beside blank ones, the reader finds nothing in. It is
  // asked itself, line by line.
  static std::size_t CountSkipped(const String& text) {
    static constexpr Char kBlanks[] = {' ', '\t', '\r', '\0'};
    std::size_t skipped = 0;
    String header;
    File file;
    String line;
    std::basic_istringstream<Char> lines(text);
    while (std::getline(lines, line)) {
      if (line.find_first_not_of(kBlanks) == String::npos) {
        continue;
      }
      Load(file, line, false);
      if (!file.GetSections().empty()) {
        header = line + LineFeed();
        continue;
      }
      Load(file, header + line, false);
      if (header.empty() ||
          file.GetSections().begin()->second->GetKeys().empty()) {
        ++skipped;
      }
    }
    return skipped;
  }

  // What to know when something is missing that a look at the file shows.
  std::string Hint() const {
    return skipped_ == 0 ? ""
                         : " (" + Lines(skipped_) + " of " + call_.path() +
                               " can't be read by this format; see --help)";
  }

  Section* FindSection() const {
    Section* const section = file_.GetSection(names_[0]);
    if (section == nullptr) {
      throw Refusal(kNotFound,
                    "no section '" + call_.arguments[1] + "'" + Hint());
    }
    return section;
  }

  Key* FindKey() const {
    const Section* const section = FindSection();
    Key* const key = section->GetKey(names_[1]);
    if (key == nullptr) {
      const std::string& name = call_.arguments[2];
      const bool lacks_bracket =
          section->GetKey(Char{'['} + names_[1]) != nullptr;
      throw Refusal(
          kNotFound,
          "no key '" + name + "' in section '" + call_.arguments[1] + "'" +
              (lacks_bracket ? ", but '[" + name + "' is there" : Hint()));
    }
    return key;
  }

  void List() {
    if (names_.empty()) {
      Print(Encode(TextOf(file_)));
    } else {
      String text;
      for (const auto& key : FindSection()->GetKeys()) {
        text += key.first + Char{'='} + key.second->GetValue() + LineFeed();
      }
      Print(Encode(text));
    }
    if (skipped_ != 0) {
      Note(Lines(skipped_) + " of " + call_.path() +
           " can't be read by this format and " +
           (skipped_ == 1 ? "is" : "are") + " not listed; see --help");
    }
  }

  void Rename() {
    const bool is_done = names_.size() == 2
                             ? FindSection()->SetSectionName(names_[1])
                             : FindKey()->SetKeyName(names_[2]);
    if (!is_done) {
      throw Refusal(kNotFound,
                    "the name '" + call_.arguments.back() + "' is taken");
    }
  }

  void Remove() {
    if (names_.size() == 1) {
      file_.RemoveSection(FindSection());
    } else {
      FindSection()->RemoveKey(FindKey());
    }
  }

  void Merge() {
    const std::string& other = call_.arguments[1];
    const String text = ReadText(other, false);
    Load(file_, text, true);
    if (const std::size_t skipped = CountSkipped(text); skipped != 0) {
      Note(Lines(skipped) + " of " + other +
           " can't be read by this format and " +
           (skipped == 1 ? "is" : "are") + " not merged; see --help");
    }
  }

  // The lines of a text that do not give back what they were written for.
  std::vector<String> LinesNotReadBack(const String& text) const {
    File read_back;
    Load(read_back, text, false);
    std::vector<String> lines;
    for (const auto& [section_name, section] : file_.GetSections()) {
      const Section* const found = read_back.GetSection(section_name);
      if (found == nullptr || found->GetSectionName() != section_name) {
        lines.push_back(Char{'['} + section_name + Char{']'});
      }
      for (const auto& [key_name, key] : section->GetKeys()) {
        const Key* const again =
            found == nullptr ? nullptr : found->GetKey(key_name);
        if (again == nullptr || again->GetKeyName() != key_name ||
            again->GetValue() != key->GetValue()) {
          lines.push_back(key_name + Char{'='} + key->GetValue());
        }
      }
    }
    return lines;
  }

  void Save() {
    const String text = TextOf(file_);
    if (skipped_ != 0) {
      Lose(Lines(skipped_) + " of " + call_.path() +
           " can't be read by this format");
    }
    if (const auto lines = LinesNotReadBack(text); !lines.empty()) {
      Lose(Lines(lines.size()) + " of the new text can't be read back: '" +
           Encode(lines.front()) + "'" +
           (lines.size() == 1 ? "" : " and so on"));
    }
    WriteFile(call_.path(), Encode(text));
  }

  void Lose(const std::string& what) const {
    if (!call_.is_lossy) {
      throw Refusal(kWouldLose, what + " and would be lost; nothing is " +
                                    "written without --lossy, see --help");
    }
    Note(what + " and is lost, as --lossy allows");
  }

  const Call& call_;
  File file_;
  std::size_t skipped_ = 0;
  std::vector<String> names_;
};

int BadUsage(const std::string& why) {
  Note(why);
  std::cerr << '\n' << kUsage;
  return kBadUsage;
}

struct Command {
  const char* name;
  std::size_t least_arguments;
  std::size_t most_arguments;
};

constexpr Command kCommands[] = {{"get", 3, 3},    {"list", 1, 2},
                                 {"set", 4, 4},    {"rename", 3, 4},
                                 {"remove", 2, 3}, {"merge", 2, 2}};

const Command* FindCommand(const std::string& name) {
  for (const Command& command : kCommands) {
    if (name == command.name) {
      return &command;
    }
  }
  return nullptr;
}

int Run(std::vector<std::string> words) {
  Call call;
  bool is_wide = false;
  auto word = words.begin();
  for (; word != words.end() && word->rfind("--", 0) == 0; ++word) {
    if (*word == "--help") {
      Print(kUsage);
      return kDone;
    }
    if (*word == "--wide") {
      is_wide = true;
    } else if (*word == "--lossy") {
      call.is_lossy = true;
    } else {
      return BadUsage("unknown option '" + *word + "'");
    }
  }
  if (word == words.end()) {
    return BadUsage("a command is needed");
  }
  call.command = *word;
  call.arguments.assign(word + 1, words.end());
  const Command* const command = FindCommand(call.command);
  if (command == nullptr) {
    return BadUsage("unknown command '" + call.command + "'");
  }
  if (call.arguments.size() < command->least_arguments ||
      call.arguments.size() > command->most_arguments) {
    return BadUsage("'" + call.command + "' takes other arguments");
  }
  return is_wide ? Tool<Wide>(call).Run() : Tool<Narrow>(call).Run();
}

void UseTheUsersLocale() {
  try {
    std::locale::global(std::locale(""));
  } catch (const std::runtime_error&) {
    Note("the locale of the environment is unknown; ASCII it is");
  }
}

}  // namespace

int main(int argc, char** argv) {
  UseTheUsersLocale();
  try {
    return Run({argv + 1, argv + argc});
  } catch (const Refusal& refusal) {
    Note(refusal.what());
    return refusal.status();
  } catch (const std::filesystem::filesystem_error& error) {
    Note(error.path1().string() + ": " + error.code().message());
    return kFailed;
  } catch (const std::bad_alloc&) {
    Note("out of memory");
    return kFailed;
  }
}
