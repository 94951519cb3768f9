/// @file
/// INI files: a document of named sections, each with named keys, each with a
/// value. It exists for narrow text, `CIniFileA`, and for wide text,
/// `CIniFileW`.
///
///     korvan::CIniFileA settings;
///     settings.SetKeyValue("Provider", "[Type", "75");
///     const bool opened = settings.Save(std::string("provider.ini"));
///
/// What surprises:
///   - THE READER TAKES KEY LINES ONLY WHERE THEY BEGIN WITH "[". The writer
///     writes "name=value", and the reader skips such a line as it skips a
///     comment. So a document that was saved and is loaded again has all its
///     sections, but only those of its keys whose names begin with "[".
///   - Names are compared without regard to case, by the C library in its
///     current locale, up to the first NUL; the first spelling stays. That
///     locale is the process's, or the calling thread's own where `uselocale`
///     gave it one. It must be the same as long as a document lives: else its
///     maps would no longer be in order.
///   - WIDE NAMES MUST BE UTF-32. Of units of 0x80000000 and more `wcscasecmp`
///     makes no order (1 < 0x60000000 < 0xC0000000 < 1), so names with such
///     units may stand twice in a document, and a search may miss them.
///     Nothing worse happens: no entry is lost and none is freed twice.
///   - Names lose the spaces and tabs at their ends wherever they are given.
///     Values are kept as they are.
///   - A document owns its sections and a section its keys. Pointers to them
///     are borrowed: valid until the section or key is removed, which loading
///     without merge does to all of them. Renaming keeps them.
///
/// When allocation fails, `std::bad_alloc` (for a text too long for a string
/// `std::length_error`) passes through to the caller, and the document is as
/// it was before the call: the strong guarantee. Only a load keeps what it had
/// read by then. Where the streams of the standard library allocate, as for a
/// line that is longer than their buffer, they take the failure for one of the
/// stream: its state tells, and a load or save by name ends silently.
///
/// Documents that are not shared may be used by different threads at the same
/// time. One document may be read by several threads as long as none changes
/// it: each operation says at its end whether it reads or changes.
///
/// The text format is told in docs/ini_format.md.
#ifndef KORVAN_INI_FILE_H_
#define KORVAN_INI_FILE_H_

#include <korvan/export.h>
#include <korvan/text.h>

#include <iosfwd>
#include <map>
#include <string>

#if defined(__GLIBCXX__) && defined(_GLIBCXX_DEBUG)
#error "korvan's maps are not those of _GLIBCXX_DEBUG: compile without it"
#endif

namespace korvan {

/// Orders narrow names: by `strcasecmp` on their C strings, in the C library's
/// current locale. What stands after a NUL does not count.
struct KORVAN_API ci_less_a {
  /// Compares two names.
  ///
  ///     assert(korvan::ci_less_a()("Alpha", "BETA"));
  ///     assert(!korvan::ci_less_a()("beta", "BETA"));
  ///
  /// @param left   a name.
  /// @param right  another.
  /// @return whether `left` comes before `right`.
  /// @errors{None.}
  /// @ownership{Both strings stay the caller's.}
  /// @threads{Any thread, as long as none changes the process's locale.}
  /// @nothrow
  bool operator()(const std::string& left, const std::string& right) const;
};

/// As `ci_less_a`, with `wcscasecmp` on wide names. An order only of names
/// whose units are below 0x80000000, as those of UTF-32 are.
struct KORVAN_API ci_less_w {
  /// Compares two names.
  ///
  ///     assert(korvan::ci_less_w()(L"Alpha", L"BETA"));
  ///
  /// @param left   a name.
  /// @param right  another.
  /// @return whether `left` comes before `right`.
  /// @errors{None.}
  /// @ownership{Both strings stay the caller's.}
  /// @threads{Any thread, as long as none changes the process's locale.}
  /// @nothrow
  bool operator()(const std::wstring& left, const std::wstring& right) const;
};

/// An INI document of narrow text.
class KORVAN_API CIniFileA {
 public:
  /// A section of a document: a name and the keys under it.
  class KORVAN_API CIniSectionA {
   public:
    /// A key of a section: a name and a value.
    class KORVAN_API CIniKeyA {
     public:
      /// Makes a key with the empty value, which no section holds.
      /// `CIniSectionA::AddKey` is the way to a key that one does.
      ///
      ///     korvan::CIniFileA::CIniSectionA::CIniKeyA lone(nullptr, "Type");
      ///     assert(lone.GetValue().empty());
      ///
      /// @param owner  the section the key belongs to; only observed, and must
      ///               outlive the key's renaming.
      /// @param name   the name, taken as it is.
      /// @errors{None.}
      /// @par Ownership
      /// The owner is only observed. The new object is the
      /// caller's.
      /// @changes
      CIniKeyA(CIniSectionA* owner, std::string name);

      /// Leaves the owner alone: a key that a section holds is removed by
      /// `RemoveKey`, never by `delete`.
      ///
      ///     using Key = korvan::CIniFileA::CIniSectionA::CIniKeyA;
      ///     { const Key gone(nullptr, "Type"); }
      ///
      /// @errors{None.}
      /// @ownership{Pointers to the key are no longer valid.}
      /// @threads{No other thread may use the key.}
      /// @nothrow
      ~CIniKeyA();

      CIniKeyA(const CIniKeyA&) = delete;
      CIniKeyA& operator=(const CIniKeyA&) = delete;

      /// Tells the name.
      ///
      ///     assert(key->GetKeyName() == "[Type");
      ///
      /// @return a copy of the name.
      /// @errors{None.}
      /// @ownership{The copy is the caller's.}
      /// @reads
      std::string GetKeyName() const;

      /// Renames the key. The key and the pointers to it stay.
      ///
      ///     assert(key->SetKeyName("[Kind"));
      ///     assert(!key->SetKeyName("[KIND"));
      ///
      /// @param name  the new name; any text, the empty one too.
      /// @return false, with nothing changed, where the section has a key of
      ///         that name in any case, ITS OWN PRESENT NAME INCLUDED ("k" to
      ///         "K" is refused), or where the owner is null.
      /// @errors{The name is taken, or there is no owner: false.}
      /// @par Ownership
      /// The text is copied. A KEY THAT NO SECTION HOLDS BECOMES ITS OWNER'S by
      /// that, which deletes it in the end: it must come from `new`. One of its
      /// former name that the section holds stays there.
      /// @changes
      bool SetKeyName(std::string name);

      /// Tells the value.
      ///
      ///     assert(key->GetValue() == "75");
      ///
      /// @return a copy of the value.
      /// @errors{None.}
      /// @ownership{The copy is the caller's.}
      /// @reads
      std::string GetValue() const;

      /// Replaces the value.
      ///
      ///     key->SetValue("80");
      ///
      /// @param value  the new value, kept as it is, blanks included.
      /// @errors{None.}
      /// @ownership{The text is copied.}
      /// @changes
      void SetValue(std::string value);

     private:
      // A document and a section see the texts of the keys below them without
      // a copy.
      friend class CIniFileA;
      friend class CIniSectionA;

      std::string name_;
      std::string value_;
      CIniSectionA* owner_;
    };

    /// The keys of a section by name, in case-insensitive order.
    typedef std::map<std::string, CIniKeyA*, ci_less_a> Keys;

    /// Makes a section without keys, which no document holds.
    /// `CIniFileA::AddSection` is the way to a section that one does.
    ///
    ///     korvan::CIniFileA::CIniSectionA apart(nullptr, "Provider");
    ///     assert(apart.GetKeys().empty());
    ///
    /// @param owner  the document the section belongs to; only observed, and
    ///               must outlive the section's renaming.
    /// @param name   the name, taken as it is.
    /// @errors{None.}
    /// @ownership{The new object is the caller's, until it is renamed.}
    /// @threads{Any thread. The owner is only observed.}
    /// @throws std::bad_alloc or std::length_error when allocation fails.
    CIniSectionA(CIniFileA* owner, std::string name);

    /// Destroys the section's keys. Leaves the owner alone: a section that a
    /// document holds is removed by `RemoveSection`, never by `delete`.
    ///
    ///     { const korvan::CIniFileA::CIniSectionA gone(nullptr, "Main"); }
    ///
    /// @errors{None.}
    /// @ownership{Pointers to the section and its keys are no longer valid.}
    /// @threads{No other thread may use the section.}
    /// @nothrow
    ~CIniSectionA();

    CIniSectionA(const CIniSectionA&) = delete;
    CIniSectionA& operator=(const CIniSectionA&) = delete;

    /// Finds the key of a name, or creates it with the empty value.
    ///
    ///     auto* key = section->AddKey("[Type");
    ///     assert(section->AddKey("[TYPE") == key);
    ///
    /// @param name  the name; any text, the empty one too. An existing key
    ///              keeps its own spelling.
    /// @return the key, never null; borrowed.
    /// @errors{None.}
    /// @ownership{Borrowed from the section.}
    /// @changes
    CIniKeyA* AddKey(std::string name);

    /// Finds the key of a name.
    ///
    ///     assert(section->GetKey("[type") == key);
    ///
    /// @param name  the name.
    /// @return the key, borrowed; null where there is none.
    /// @errors{No such key: null.}
    /// @ownership{Borrowed from the section.}
    /// @reads
    CIniKeyA* GetKey(std::string name) const;

    /// Destroys the key of a name, if there is one.
    ///
    ///     section->RemoveKey("[Kind");
    ///
    /// @param name  the name.
    /// @errors{None: no such key is none.}
    /// @ownership{Pointers to the key are no longer valid.}
    /// @changes
    void RemoveKey(std::string name);

    /// Destroys the key of this section that has THE SAME NAME as `key`. The
    /// name decides, not the pointer: given a key of another section, this
    /// section's key of that name goes, and the argument stays.
    ///
    ///     section->RemoveKey(section->GetKey("[Name"));
    ///
    /// @param key  a living key; not looked at where the section has no keys.
    ///             Null does nothing.
    /// @errors{None: no such key is none.}
    /// @ownership{Pointers to the key that goes are no longer valid.}
    /// @changes
    void RemoveKey(CIniKeyA* key);

    /// Destroys all keys.
    ///
    ///     section->RemoveAllKeys();
    ///     assert(section->GetKeys().empty());
    ///
    /// @errors{None.}
    /// @ownership{Pointers to the keys are no longer valid.}
    /// @threads{One thread, while no other uses the document.}
    /// @nothrow
    void RemoveAllKeys();

    /// Gives all keys, to walk over.
    ///
    ///     for (const auto& entry : section->GetKeys()) {
    ///       assert(entry.first == entry.second->GetKeyName());
    ///     }
    ///
    /// @return the keys themselves, no copy.
    /// @errors{None.}
    /// @ownership{Borrowed from the section.}
    /// @threads{Any thread, while none changes the document.}
    /// @nothrow
    const Keys& GetKeys() const;

    /// Tells the name.
    ///
    ///     assert(section->GetSectionName() == "Provider");
    ///
    /// @return a copy of the name.
    /// @errors{None.}
    /// @ownership{The copy is the caller's.}
    /// @reads
    std::string GetSectionName() const;

    /// Renames the section. The section, its keys and the pointers to them
    /// stay.
    ///
    ///     assert(section->SetSectionName("Main"));
    ///     assert(!section->SetSectionName("MAIN"));
    ///
    /// @param name  the new name; any text, the empty one too.
    /// @return false, with nothing changed, where the document has a section
    ///         of that name in any case, ITS OWN PRESENT NAME INCLUDED
    ///         ("Main" to "MAIN" is refused), or where the owner is null.
    /// @errors{The name is taken, or there is no owner: false.}
    /// @par Ownership
    /// The text is copied. A SECTION THAT NO DOCUMENT HOLDS BECOMES ITS OWNER'S
    /// by that, which deletes it in the end: it must come from `new`. One of
    /// its former name that the document holds stays there.
    /// @changes
    bool SetSectionName(std::string name);

    /// Gives the key of a name a value, and creates the key where there is
    /// none.
    ///
    ///     section->SetKeyValue("[Name", "GOST");
    ///
    /// @param key    the key's name.
    /// @param value  the value, kept as it is.
    /// @errors{None.}
    /// @ownership{The texts are copied.}
    /// @changes
    void SetKeyValue(std::string key, std::string value);

    /// Tells the value of a key.
    ///
    ///     assert(section->GetKeyValue("[name") == "GOST");
    ///     assert(section->GetKeyValue("none").empty());
    ///
    /// @param key  the key's name.
    /// @return a copy of the key's value; empty where there is no such key.
    /// @par Errors
    /// No such key: an empty text, as of a key without a value.
    /// `GetKey` tells them apart.
    /// @ownership{The copy is the caller's.}
    /// @reads
    std::string GetKeyValue(std::string key) const;

   private:
    friend class CIniFileA;

    CIniFileA* owner_;
    std::string name_;
    Keys keys_;
  };

  /// Selects merging in `stream >> CIniFileA::CIniMergeA(document)`.
  class KORVAN_API CIniMergeA {
   public:
    /// Refers to a document.
    ///
    ///     std::istringstream more("[Main]\n[Type=81\n");
    ///     more >> korvan::CIniFileA::CIniMergeA(settings);
    ///     assert(settings.GetKeyValue("Main", "[Type") == "81");
    ///
    /// @param file  the document to merge into; only referred to.
    /// @errors{None.}
    /// @ownership{The document must outlive this.}
    /// @threads{Any thread.}
    /// @nothrow
    explicit CIniMergeA(CIniFileA& file) : file_(file) {}

   private:
    /// @cond
    friend KORVAN_API std::istream& operator>>(std::istream& input,
                                               CIniMergeA merge);
    /// @endcond

    CIniFileA& file_;
  };

  /// The sections of a document by name, in case-insensitive order.
  typedef std::map<std::string, CIniSectionA*, ci_less_a> Sections;

  /// What ends every line that is written: "\n".
  static const char* const LF;

  /// Makes an empty document.
  ///
  ///     korvan::CIniFileA settings;
  ///     assert(settings.GetSections().empty());
  ///
  /// @errors{None.}
  /// @ownership{The document is the caller's.}
  /// @threads{Any thread.}
  /// @nothrow
  CIniFileA();

  /// Destroys the sections and their keys.
  ///
  ///     { korvan::CIniFileA gone; }
  ///
  /// @errors{None.}
  /// @ownership{Pointers to sections and keys are no longer valid.}
  /// @threads{No other thread may use the document.}
  /// @nothrow
  ~CIniFileA();

  CIniFileA(const CIniFileA&) = delete;
  CIniFileA& operator=(const CIniFileA&) = delete;

  /// Reads INI text from a stream, to its end or to the first line that can't
  /// be read. Lines that are neither header nor key line are skipped
  /// silently.
  ///
  ///     std::istringstream input("[Provider]\n[Type=75\nname=skipped\n");
  ///     settings.Load(input);
  ///     assert(settings.GetKeyValue("provider", "[type") == "75");
  ///     assert(settings.GetSection("Provider")->GetKey("name") == nullptr);
  ///
  /// The stream is left as a loop of `std::getline` would leave it: failed,
  /// and at its end unless reading broke off. A stream that has failed before
  /// gives no lines. What had been read when the stream failed is in the
  /// document, also when the stream throws because of its `exceptions()`.
  ///
  /// @param input  the stream.
  /// @param merge  false destroys all sections first, even where nothing can
  ///               be read; true adds to them: a header goes on with the
  ///               section of its name, a key line replaces the value of the
  ///               key of its name.
  /// @errors{The stream's state tells of a failed read.}
  /// @par Ownership
  /// The stream stays the caller's. Without merge, pointers to the
  /// document's sections and keys are no longer valid.
  /// @threads{One thread, while no other uses the document or the stream.}
  /// @throws std::bad_alloc or std::length_error when allocation fails, and
  ///         what the stream throws. What was read stays in the document.
  void Load(std::istream& input, bool merge = false);

  /// Opens a file and reads it as `Load` from a stream does.
  ///
  ///     assert(!settings.Load(std::string("/no/such/file.ini")));
  ///
  /// @param file_name  the name, as `std::ifstream` takes it.
  /// @param merge      as above.
  /// @return whether the file could be opened. Where it could not, the
  ///         document stays as it is, WITHOUT MERGE TOO; where it could, the
  ///         result is true WHATEVER HAPPENS AFTERWARDS: a directory opens,
  ///         and then gives no lines.
  /// @par Errors
  /// The file can't be opened: false, and `errno` tells why. A read that fails
  /// ends the load silently.
  /// @par Ownership
  /// Without merge, pointers to the document's sections and keys are
  /// no longer valid.
  /// @threads{One thread, while no other uses the document.}
  /// @throws std::bad_alloc or std::length_error when allocation fails. What
  ///         was read by then stays in the document.
  bool Load(const std::string& file_name, bool merge = false);

  /// Writes the document to a stream: for each section, in order, "[name]"
  /// and the line feed, then for each of its keys, in order, "name=value" and
  /// the line feed.
  ///
  ///     std::ostringstream output;
  ///     settings.Save(output);
  ///     assert(output.str() == "[Provider]\n[Type=75\n");
  ///
  /// Nothing is quoted: a name or value with a line feed in it breaks its
  /// line. These are formatted insertions, each line and each line feed one:
  /// the stream's width pads the first. The stream is not flushed, but for a
  /// file buffer whose last write failed; its state tells whether all was
  /// written.
  ///
  /// @param output  the stream.
  /// @errors{The stream's state tells.}
  /// @ownership{The stream stays the caller's.}
  /// @threads{Any thread, while none changes the document or uses the stream.}
  /// @throws std::bad_alloc or std::length_error when allocation fails, and
  ///         what the stream throws because of its `exceptions()`.
  void Save(std::ostream& output);

  /// Writes the document to a file as `Save` to a stream does. An existing
  /// file is emptied first: to lose nothing on a full disk, save to a new
  /// file and rename it.
  ///
  ///     assert(!settings.Save(std::string("/no/such/folder/file.ini")));
  ///
  /// @param file_name  the name, as `std::ofstream` takes it.
  /// @return whether the file could be opened; true WHATEVER HAPPENS
  ///         AFTERWARDS: a full disk, or a character that can't be converted.
  /// @par Errors
  /// The file can't be opened: false, and `errno` tells why. A write that fails
  /// is not told; save to a stream of your own to see it.
  /// @ownership{The document stays as it is.}
  /// @threads{Any thread, while none changes the document.}
  /// @throws std::bad_alloc or std::length_error when allocation fails. THE
  ///         FILE MAY HAVE BEEN EMPTIED by then, or hold the first lines.
  bool Save(const std::string& file_name);

  /// Gives all sections, to walk over.
  ///
  ///     for (const auto& entry : settings.GetSections()) {
  ///       assert(entry.first == entry.second->GetSectionName());
  ///     }
  ///
  /// @return the sections themselves, no copy.
  /// @errors{None.}
  /// @ownership{Borrowed from the document.}
  /// @threads{Any thread, while none changes the document.}
  /// @nothrow
  const Sections& GetSections() const;

  /// Finds the section of a name, or creates it without keys.
  ///
  ///     auto* section = settings.AddSection("Provider");
  ///     assert(settings.AddSection("PROVIDER") == section);
  ///
  /// @param name  the name; any text, the empty one too. An existing section
  ///              keeps its own spelling.
  /// @return the section, never null; borrowed.
  /// @errors{None.}
  /// @ownership{Borrowed from the document.}
  /// @changes
  CIniSectionA* AddSection(std::string name);

  /// Finds the section of a name.
  ///
  ///     assert(settings.GetSection("provider") == section);
  ///     assert(settings.GetSection("Other") == nullptr);
  ///
  /// @param name  the name.
  /// @return the section, borrowed; null where there is none.
  /// @errors{No such section: null.}
  /// @ownership{Borrowed from the document.}
  /// @reads
  CIniSectionA* GetSection(std::string name) const;

  /// Destroys the section of a name and its keys, if there is one.
  ///
  ///     settings.RemoveSection("Main");
  ///
  /// @param name  the name.
  /// @errors{None: no such section is none.}
  /// @ownership{Pointers to it and its keys are no longer valid.}
  /// @changes
  void RemoveSection(std::string name);

  /// Destroys the section of this document that has THE SAME NAME as
  /// `section`. The name decides, not the pointer: given a section of another
  /// document, this document's section of that name goes, and the argument
  /// stays.
  ///
  ///     settings.RemoveSection(settings.GetSection("Main"));
  ///
  /// @param section  a living section; not looked at where the document has
  ///                 no sections. Null does nothing.
  /// @errors{None: no such section is none.}
  /// @ownership{Pointers to it and its keys are no longer valid.}
  /// @changes
  void RemoveSection(CIniSectionA* section);

  /// Destroys all sections and their keys.
  ///
  ///     settings.RemoveAllSections();
  ///     assert(settings.GetSections().empty());
  ///
  /// @errors{None.}
  /// @ownership{Pointers to sections and keys are no longer valid.}
  /// @threads{One thread, while no other uses the document.}
  /// @nothrow
  void RemoveAllSections();

  /// Renames the section of a name, as `CIniSectionA::SetSectionName`.
  ///
  ///     assert(settings.RenameSection("provider", "Main"));
  ///
  /// @param old_name  the section's name.
  /// @param new_name  the new name.
  /// @return false, with nothing changed, where there is no such section or
  ///         the new name is taken, in any case.
  /// @errors{No such section, or a name that is taken: false.}
  /// @ownership{The texts are copied.}
  /// @changes
  bool RenameSection(std::string old_name, std::string new_name);

  /// Gives a key a value, and creates section and key where there are none.
  ///
  ///     settings.SetKeyValue("Main", "[Type", "75");
  ///
  /// @param section  the section's name.
  /// @param key      the key's name.
  /// @param value    the value, kept as it is.
  /// @errors{None.}
  /// @ownership{The texts are copied.}
  /// @changes
  void SetKeyValue(std::string section, std::string key, std::string value);

  /// Tells the value of a key.
  ///
  ///     assert(settings.GetKeyValue("main", "[type") == "75");
  ///
  /// @param section  the section's name.
  /// @param key      the key's name.
  /// @return a copy of the key's value; empty where there is no such section
  ///         or key.
  /// @errors{No such section or key: an empty text.}
  /// @ownership{The copy is the caller's.}
  /// @reads
  std::string GetKeyValue(std::string section, std::string key) const;

  /// Renames a key, as `CIniKeyA::SetKeyName`.
  ///
  ///     assert(settings.RenameKey("Main", "[Type", "[Kind"));
  ///
  /// @param section   the section's name.
  /// @param old_name  the key's name.
  /// @param new_name  the new name.
  /// @return false, with nothing changed, where there is no such section or
  ///         key or the new name is taken, in any case.
  /// @errors{No such section or key, or a name that is taken: false.}
  /// @ownership{The texts are copied.}
  /// @changes
  bool RenameKey(std::string section, std::string old_name,
                 std::string new_name);

  /// Reads a value as a number, as the C library's `sscanf` with "%u" does:
  /// leading white space and a sign are taken, reading stops at the first
  /// character that is no digit.
  ///
  ///     assert(settings.GetKeyValueDword("Main", "[Kind") == 75);
  ///     assert(settings.GetKeyValueDword("Main", "none") == 4294967295);
  ///
  /// It reads 32 BITS, though `SetKeyValueDword` writes 64.
  ///
  /// @param section  the section's name.
  /// @param key      the key's name.
  /// @return the number, 0 to 4294967295; 4294967295 also where there is no
  ///         such section or key or its value holds no number.
  /// @errors{No number: 4294967295, as of a value that says so.}
  /// @ownership{The texts are copied.}
  /// @reads
  unsigned long GetKeyValueDword(std::string section, std::string key) const;

  /// Gives a key a number for its value, in plain decimal digits, all 64 bits
  /// of it, and creates section and key where there are none.
  ///
  ///     settings.SetKeyValueDword("Main", "[Port", 8080);
  ///     assert(settings.GetKeyValue("Main", "[Port") == "8080");
  ///
  /// @param section  the section's name.
  /// @param key      the key's name.
  /// @param value    the number.
  /// @errors{None.}
  /// @ownership{The texts are copied.}
  /// @changes
  void SetKeyValueDword(std::string section, std::string key,
                        unsigned long value);

 private:
  Sections sections_;
};

/// As `CIniFileA`, on wide text.
///
/// It differs in this: names are ordered by `ci_less_w`; file names pass
/// through `wstr_to_str`; a file's bytes become characters, and characters
/// bytes, by the global C++ locale in force at the call; loading ends at the
/// first bytes that it can't convert, and keeps the lines before. The line
/// that has these bytes is dropped or, near the end of the file, taken as if
/// it ended there. Saving ends at the first character that it can't convert.
/// There are no numbers. The examples are those of `CIniFileA`: wide texts
/// begin with L.
class KORVAN_API CIniFileW {
 public:
  /// As `CIniFileA::CIniSectionA`.
  class KORVAN_API CIniSectionW {
   public:
    /// As `CIniFileA::CIniSectionA::CIniKeyA`.
    class KORVAN_API CIniKeyW {
     public:
      /// @copydoc CIniFileA::CIniSectionA::CIniKeyA::CIniKeyA
      CIniKeyW(CIniSectionW* owner, std::wstring name);
      /// @copydoc CIniFileA::CIniSectionA::CIniKeyA::~CIniKeyA
      ~CIniKeyW();

      CIniKeyW(const CIniKeyW&) = delete;
      CIniKeyW& operator=(const CIniKeyW&) = delete;

      /// @copydoc CIniFileA::CIniSectionA::CIniKeyA::GetKeyName
      std::wstring GetKeyName() const;
      /// @copydoc CIniFileA::CIniSectionA::CIniKeyA::SetKeyName
      bool SetKeyName(std::wstring name);
      /// @copydoc CIniFileA::CIniSectionA::CIniKeyA::GetValue
      std::wstring GetValue() const;
      /// @copydoc CIniFileA::CIniSectionA::CIniKeyA::SetValue
      void SetValue(std::wstring value);

     private:
      friend class CIniFileW;
      friend class CIniSectionW;

      std::wstring name_;
      std::wstring value_;
      CIniSectionW* owner_;
    };

    /// As `CIniFileA::CIniSectionA::Keys`.
    typedef std::map<std::wstring, CIniKeyW*, ci_less_w> Keys;

    /// @copydoc CIniFileA::CIniSectionA::CIniSectionA
    CIniSectionW(CIniFileW* owner, std::wstring name);
    /// @copydoc CIniFileA::CIniSectionA::~CIniSectionA
    ~CIniSectionW();

    CIniSectionW(const CIniSectionW&) = delete;
    CIniSectionW& operator=(const CIniSectionW&) = delete;

    /// @copydoc CIniFileA::CIniSectionA::AddKey
    CIniKeyW* AddKey(std::wstring name);
    /// @copydoc CIniFileA::CIniSectionA::GetKey
    CIniKeyW* GetKey(std::wstring name) const;
    /// @copydoc CIniFileA::CIniSectionA::RemoveKey(std::string)
    void RemoveKey(std::wstring name);
    /// @copydoc CIniFileA::CIniSectionA::RemoveKey(CIniKeyA*)
    void RemoveKey(CIniKeyW* key);
    /// @copydoc CIniFileA::CIniSectionA::RemoveAllKeys
    void RemoveAllKeys();
    /// @copydoc CIniFileA::CIniSectionA::GetKeys
    const Keys& GetKeys() const;
    /// @copydoc CIniFileA::CIniSectionA::GetSectionName
    std::wstring GetSectionName() const;
    /// @copydoc CIniFileA::CIniSectionA::SetSectionName
    bool SetSectionName(std::wstring name);
    /// @copydoc CIniFileA::CIniSectionA::SetKeyValue
    void SetKeyValue(std::wstring key, std::wstring value);
    /// @copydoc CIniFileA::CIniSectionA::GetKeyValue
    std::wstring GetKeyValue(std::wstring key) const;

   private:
    friend class CIniFileW;

    CIniFileW* owner_;
    std::wstring name_;
    Keys keys_;
  };

  /// As `CIniFileA::CIniMergeA`.
  class KORVAN_API CIniMergeW {
   public:
    /// @copydoc CIniFileA::CIniMergeA::CIniMergeA
    explicit CIniMergeW(CIniFileW& file) : file_(file) {}

   private:
    /// @cond
    friend KORVAN_API std::wistream& operator>>(std::wistream& input,
                                                CIniMergeW merge);
    /// @endcond

    CIniFileW& file_;
  };

  /// As `CIniFileA::Sections`.
  typedef std::map<std::wstring, CIniSectionW*, ci_less_w> Sections;

  /// @copydoc CIniFileA::LF
  static const wchar_t* const LF;

  /// @copydoc CIniFileA::CIniFileA
  CIniFileW();
  /// @copydoc CIniFileA::~CIniFileA
  ~CIniFileW();

  CIniFileW(const CIniFileW&) = delete;
  CIniFileW& operator=(const CIniFileW&) = delete;

  /// @copydoc CIniFileA::Load(std::istream&,bool)
  void Load(std::wistream& input, bool merge = false);

  /// As `CIniFileA::Load`, with the file name converted by `wstr_to_str` and
  /// the file's bytes by the global C++ locale.
  ///
  ///     korvan::CIniFileW wide;
  ///     assert(!wide.Load(std::wstring(L"/no/such/file.ini")));
  ///
  /// @param file_name  the name; where the conversion leaves NULs, the part
  ///                   before the first counts.
  /// @param merge      as `CIniFileA::Load` takes it.
  /// @return as `CIniFileA::Load`.
  /// @par Errors
  /// As for `CIniFileA::Load`. Bytes that can't be converted end the
  /// load silently.
  /// @ownership{As for `CIniFileA::Load`.}
  /// @threads{As for `CIniFileA::Load`, and none may change the global locale.}
  /// @throws std::bad_alloc or std::length_error as `CIniFileA::Load`.
  bool Load(const std::wstring& file_name, bool merge = false);

  /// @copydoc CIniFileA::Save(std::ostream&)
  void Save(std::wostream& output);

  /// As `CIniFileA::Save`, with the file name converted by `wstr_to_str` and
  /// the characters by the global C++ locale.
  ///
  ///     assert(!wide.Save(std::wstring(L"/no/such/folder/file.ini")));
  ///
  /// @param file_name  the name; where the conversion leaves NULs, the part
  ///                   before the first counts.
  /// @return as `CIniFileA::Save`.
  /// @errors{As for `CIniFileA::Save`.}
  /// @ownership{As for `CIniFileA::Save`.}
  /// @threads{As for `CIniFileA::Save`, and none may change the global locale.}
  /// @throws std::bad_alloc or std::length_error when allocation fails.
  bool Save(const std::wstring& file_name);

  /// @copydoc CIniFileA::GetSections
  const Sections& GetSections() const;
  /// @copydoc CIniFileA::AddSection
  CIniSectionW* AddSection(std::wstring name);
  /// @copydoc CIniFileA::GetSection
  CIniSectionW* GetSection(std::wstring name) const;
  /// @copydoc CIniFileA::RemoveSection(std::string)
  void RemoveSection(std::wstring name);
  /// @copydoc CIniFileA::RemoveSection(CIniSectionA*)
  void RemoveSection(CIniSectionW* section);
  /// @copydoc CIniFileA::RemoveAllSections
  void RemoveAllSections();
  /// @copydoc CIniFileA::RenameSection
  bool RenameSection(std::wstring old_name, std::wstring new_name);
  /// @copydoc CIniFileA::SetKeyValue
  void SetKeyValue(std::wstring section, std::wstring key, std::wstring value);
  /// @copydoc CIniFileA::GetKeyValue
  std::wstring GetKeyValue(std::wstring section, std::wstring key) const;
  /// @copydoc CIniFileA::RenameKey
  bool RenameKey(std::wstring section, std::wstring old_name,
                 std::wstring new_name);

 private:
  Sections sections_;
};

/// Loads a document in place of what it held: `Load(input, false)`.
///
///     std::istringstream text("[Provider]\n");
///     text >> settings;
///     assert(settings.GetSections().size() == 1);
///
/// @param input  the stream.
/// @param file   the document.
/// @return `input`.
/// @errors{As for `Load` from a stream.}
/// @ownership{As for `Load` from a stream.}
/// @threads{As for `Load` from a stream.}
/// @exceptions{As for `Load` from a stream.}
KORVAN_API std::istream& operator>>(std::istream& input, CIniFileA& file);
/// Loads a wide document in place of what it held: `Load(input, false)`.
///
///     std::wistringstream text(L"[Provider]\n");
///     text >> settings;
///     assert(settings.GetSections().size() == 1);
///
/// @param input  the stream.
/// @param file   the document.
/// @return `input`.
/// @errors{As for the narrow one.}
/// @ownership{As for the narrow one.}
/// @threads{As for the narrow one.}
/// @exceptions{As for the narrow one.}
KORVAN_API std::wistream& operator>>(std::wistream& input, CIniFileW& file);

/// Merges into the document that `merge` refers to: `Load(input, true)`.
///
///     std::istringstream second("[Other]\n");
///     second >> korvan::CIniFileA::CIniMergeA(settings);
///     assert(settings.GetSections().size() == 2);
///
/// @param input  the stream.
/// @param merge  refers to the document.
/// @return `input`.
/// @errors{As for `Load` from a stream.}
/// @ownership{As for `Load` from a stream.}
/// @threads{As for `Load` from a stream.}
/// @exceptions{As for `Load` from a stream.}
KORVAN_API std::istream& operator>>(std::istream& input,
                                    CIniFileA::CIniMergeA merge);
/// Merges into the wide document that `merge` refers to: `Load(input, true)`.
///
///     std::wistringstream second(L"[Other]\n");
///     second >> korvan::CIniFileW::CIniMergeW(settings);
///     assert(settings.GetSections().size() == 2);
///
/// @param input  the stream.
/// @param merge  refers to the document.
/// @return `input`.
/// @errors{As for the narrow one.}
/// @ownership{As for the narrow one.}
/// @threads{As for the narrow one.}
/// @exceptions{As for the narrow one.}
KORVAN_API std::wistream& operator>>(std::wistream& input,
                                     CIniFileW::CIniMergeW merge);

/// Writes a document: `Save(output)`.
///
///     std::ostringstream written;
///     written << settings;
///     assert(written.str() == "[Other]\n[Provider]\n");
///
/// @param output  the stream.
/// @param file    the document.
/// @return `output`.
/// @errors{As for `Save` to a stream.}
/// @ownership{As for `Save` to a stream.}
/// @threads{As for `Save` to a stream.}
/// @exceptions{As for `Save` to a stream.}
KORVAN_API std::ostream& operator<<(std::ostream& output, CIniFileA& file);
/// Writes a wide document: `Save(output)`.
///
///     std::wostringstream written;
///     written << settings;
///     assert(written.str() == L"[Other]\n[Provider]\n");
///
/// @param output  the stream.
/// @param file    the document.
/// @return `output`.
/// @errors{As for the narrow one.}
/// @ownership{As for the narrow one.}
/// @threads{As for the narrow one.}
/// @exceptions{As for the narrow one.}
KORVAN_API std::wostream& operator<<(std::wostream& output, CIniFileW& file);

}  // namespace korvan

#endif  // KORVAN_INI_FILE_H_
