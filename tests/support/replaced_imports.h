// Replaces functions that the libraries of this process import, by changing
// their tables of imports. Other than a definition in the program, it leaves
// the callers alone that are not chosen, and a sanitizer's functions in place.
#ifndef KORVAN_TESTS_SUPPORT_REPLACED_IMPORTS_H_
#define KORVAN_TESTS_SUPPORT_REPLACED_IMPORTS_H_

#include <span>
#include <string_view>

namespace korvan::test {

struct Import {
  std::string_view name;  // the symbol's
  void* stand_in;
};

template <class Function>
void* Address(Function* function) {
  return reinterpret_cast<void*>(function);
}

// Replaces the imports in the libraries, and in the program, whose path (the
// program's is empty) is chosen. Ends the process where none is found.
void ReplaceImports(std::span<const Import> imports,
                    bool (*is_chosen)(std::string_view path));

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_REPLACED_IMPORTS_H_
