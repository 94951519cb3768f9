// Documents, sections, keys, texts and streams may lie anywhere, and what only
// reads a document does not write to it.
#include <korvan/ini_file.h>

#include <string>
#include <vector>

#include "ini/shown.h"
#include "ini/width.h"
#include "support/folder.h"
#include "support/places.h"

namespace korvan::test {
namespace {

const String kText = "[Base]\n[k=v\n[l=w\n[Other]\n"_t;
constexpr char kContent[] = "Base{[k=v|[l=w} Other{}";

// Looks at a document that can't be written.
Operation Look(const char* name, const char* result,
               std::string (*look)(const File&)) {
  return {name, result, [=](Arguments& arguments) {
            const File& file = arguments.ReadObject<File>();
            StringInput input(kText);
            const_cast<File&>(file).Load(input);
            arguments.Ready();
            return look(file);
          }};
}

// Changes a document.
Operation Change(const char* name, const char* result, void (*change)(File&)) {
  return {name, result, [=](Arguments& arguments) {
            File& file = arguments.WrittenObject<File>();
            StringInput input(kText);
            file.Load(input);
            change(file);
            return ContentOf(file);
          }};
}

std::string NameOrNone(const Section* section) {
  return section == nullptr ? "none" : Shown(section->GetSectionName());
}

const std::vector<Operation> kDocuments = {
    Look("GetSections", kContent, ContentOf<File>),
    Look("GetSection", "Base none",
         [](const File& file) {
           return NameOrNone(file.GetSection("BASE"_t)) + ' ' +
                  NameOrNone(file.GetSection("None"_t));
         }),
    Look("GetKeyValue", "v",
         [](const File& file) {
           return Shown(file.GetKeyValue("base"_t, "[K"_t));
         }),
    // No const function, but one that only reads.
    Look("Save to a stream", "same",
         [](const File& file) {
           StringOutput output;
           const_cast<File&>(file).Save(output);
           return std::string(output.str() == kText ? "same" : "else");
         }),
    Change("AddSection", "Base{[k=v|[l=w} Other{} Third{}",
           [](File& file) { file.AddSection(" Third "_t); }),
    Change("RemoveSection", "Other{}",
           [](File& file) { file.RemoveSection("BASE"_t); }),
    Change("RemoveSection by pointer", "Other{}",
           [](File& file) { file.RemoveSection(file.GetSection("Base"_t)); }),
    Change("RemoveAllSections", "",
           [](File& file) { file.RemoveAllSections(); }),
    Change("RenameSection", "First{[k=v|[l=w} Other{}",
           [](File& file) { file.RenameSection("Base"_t, "First"_t); }),
    Change("RenameKey", "Base{[l=w|[m=v} Other{}",
           [](File& file) { file.RenameKey("Base"_t, "[k"_t, "[m"_t); }),
    Change("SetKeyValue", "Base{[k=x|[l=w} Other{}",
           [](File& file) { file.SetKeyValue("Base"_t, "[k"_t, "x"_t); }),
#if !KORVAN_TEST_WIDE
    Change("SetKeyValueDword", "Base{[k=7|[l=w} Other{}",
           [](File& file) {
             file.SetKeyValueDword("Base", "[k", 7);
             EXPECT_EQ(file.GetKeyValueDword("Base", "[k"), 7u);
           }),
#endif
    Change("SetSectionName", "First{[k=v|[l=w} Other{}",
           [](File& file) {
             file.GetSection("Base"_t)->SetSectionName("First"_t);
           }),
};

// Sections and keys that no document holds.
const std::vector<Operation> kApart = {
    {"section that is looked at", "Base v none",
     [](Arguments& arguments) {
       const Section& section =
           arguments.ReadObject<Section>(nullptr, "Base"_t);
       const_cast<Section&>(section).SetKeyValue("[k"_t, "v"_t);
       arguments.Ready();
       return Shown(section.GetSectionName()) + ' ' +
              Shown(section.GetKeyValue("[K"_t)) + ' ' +
              (section.GetKey("[l"_t) == nullptr &&
                       section.GetKeys().size() == 1
                   ? "none"
                   : "more");
     }},
    {"section that is changed", "1 1 0 false",
     [](Arguments& arguments) {
       Section& section = arguments.WrittenObject<Section>(nullptr, "Base"_t);
       section.AddKey("[k"_t);
       section.AddKey("[l"_t);
       section.RemoveKey("[K"_t);
       std::string sizes = std::to_string(section.GetKeys().size());
       section.RemoveKey(section.AddKey("[m"_t));
       sizes += ' ' + std::to_string(section.GetKeys().size());
       section.RemoveAllKeys();
       sizes += ' ' + std::to_string(section.GetKeys().size());
       return sizes + (section.SetSectionName("x"_t) ? " true" : " false");
     }},
    {"key", "[k v false",
     [](Arguments& arguments) {
       Key& key = arguments.WrittenObject<Key>(nullptr, "[k"_t);
       key.SetValue("v"_t);
       const bool is_renamed = key.SetKeyName("[l"_t);
       return Shown(key.GetKeyName()) + ' ' + Shown(key.GetValue()) +
              (is_renamed ? " true" : " false");
     }},
    {"key that is looked at", "[k ",
     [](Arguments& arguments) {
       const Key& key = arguments.ReadObject<Key>(nullptr, "[k"_t);
       arguments.Ready();
       return Shown(key.GetKeyName()) + ' ' + Shown(key.GetValue());
     }},
    {"removal of namesakes", "Other{}",
     [](Arguments& arguments) {
       File& file = arguments.WrittenObject<File>();
       file.SetKeyValue("Other"_t, "[k"_t, "v"_t);
       file.AddSection("Base"_t);
       const Key& key = arguments.ReadObject<Key>(nullptr, "[K"_t);
       const Section& section =
           arguments.ReadObject<Section>(nullptr, "BASE"_t);
       arguments.Ready();
       file.GetSection("Other"_t)->RemoveKey(const_cast<Key*>(&key));
       file.RemoveSection(const_cast<Section*>(&section));
       return ContentOf(file);
     }},
    {"owners", "true true",
     [](Arguments& arguments) {
       // Only observed while names stay.
       const File& file = arguments.ReadObject<File>();
       const Section& section =
           arguments.ReadObject<Section>(const_cast<File*>(&file), "Base"_t);
       const Key& key =
           arguments.ReadObject<Key>(const_cast<Section*>(&section), "[k"_t);
       arguments.Ready();
       return std::string(section.GetSectionName() == "Base"_t ? "true"
                                                               : "false") +
              (key.GetKeyName() == "[k"_t ? " true" : " false");
     }},
    {"order of names", "false true",
     [](Arguments& arguments) {
       const Less& less = arguments.ReadObject<Less>();
       const String& left = arguments.ReadObject<String>("name"_t);
       const String& right = arguments.ReadObject<String>(
           "NAME THAT IS TOO LONG FOR THE STRING ITSELF"_t);
       arguments.Ready();
       return std::string(less(right, left) ? "true" : "false") +
              (less(left, right) ? " true" : " false");
     }},
};

const std::vector<Operation> kStreams = {
    {"Load from a stream", kContent,
     [](Arguments& arguments) {
       File& file = arguments.WrittenObject<File>();
       auto& input = arguments.WrittenObject<StringInput>(kText);
       file.Load(input);
       return ContentOf(file);
     }},
    {"load by the operator", kContent,
     [](Arguments& arguments) {
       File& file = arguments.WrittenObject<File>();
       auto& input = arguments.WrittenObject<StringInput>(kText);
       EXPECT_EQ(&(input >> file), &input);
       return ContentOf(file);
     }},
    {"merge by the operator", "Base{[k=v|[l=w} Other{} Third{}",
     [](Arguments& arguments) {
       File& file = arguments.WrittenObject<File>();
       file.AddSection("Third"_t);
       auto& input = arguments.WrittenObject<StringInput>(kText);
       EXPECT_EQ(&(input >> Merge(file)), &input);
       return ContentOf(file);
     }},
    {"save by the operator", "same",
     [](Arguments& arguments) {
       File& file = arguments.WrittenObject<File>();
       StringInput input(kText);
       file.Load(input);
       auto& output = arguments.WrittenObject<StringOutput>();
       EXPECT_EQ(&(output << file), &output);
       return std::string(output.str() == kText ? "same" : "else");
     }},
    {"files by name", kContent,
     [](Arguments& arguments) {
       const Folder folder;
       File& file = arguments.WrittenObject<File>();
       StringInput input(kText);
       file.Load(input);
       const String& name =
           arguments.ReadObject<String>(Text(folder / "a.ini"));
       arguments.Ready();
       EXPECT_TRUE(file.Save(name));
       file.RemoveAllSections();
       EXPECT_TRUE(file.Load(name));
       return ContentOf(file);
     }},
};

TEST(IniPlacement, DocumentsDoTheSameWhereverTheyLie) {
  ExpectTheSameEverywhere(kDocuments);
}

TEST(IniPlacement, SectionsAndKeysDoTheSameWhereverTheyLie) {
  ExpectTheSameEverywhere(kApart);
}

TEST(IniPlacement, StreamsAndFilesAreTheSameWhereverTheirArgumentsLie) {
  ExpectTheSameEverywhere(kStreams);
}

}  // namespace
}  // namespace korvan::test
