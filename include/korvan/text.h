/// @file
/// Text helpers of the INI library: trimming a string in place, and turning
/// wide text into narrow text and back.
///
/// None of them keeps any state. The trims may be called by any thread on its
/// own strings; the conversions too, as long as no thread changes the
/// process's locale meanwhile.
#ifndef KORVAN_TEXT_H_
#define KORVAN_TEXT_H_

#include <korvan/export.h>

#include <string>

#if defined(__GLIBCXX__) && !_GLIBCXX_USE_CXX11_ABI
#error "korvan needs the C++11 strings: compile with _GLIBCXX_USE_CXX11_ABI=1"
#endif

namespace korvan {

/// Erases the characters of `set` from the right end of `text`.
///
///     std::string right = "[name] \t";
///     korvan::RTrim(right, " \t");
///     assert(right == "[name]");
///
/// Characters inside the text stay. A text of nothing but such characters
/// becomes empty; an empty set changes nothing.
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip, each standing for itself; order and
///              repetitions do not matter. It may be `text` itself.
/// @errors{None.}
/// @ownership{Both strings stay the caller's.}
/// @threads{Any thread, on strings that no other thread uses meanwhile.}
/// @nothrow
KORVAN_API void RTrim(std::string& text, const std::string& set);

/// As the narrow `RTrim`, on wide text.
///
///     std::wstring wide_right = L"[name] \t";
///     korvan::RTrim(wide_right, L" \t");
///     assert(wide_right == L"[name]");
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
/// @errors{None.}
/// @ownership{As for the narrow `RTrim`.}
/// @threads{As for the narrow `RTrim`.}
/// @nothrow
KORVAN_API void RTrim(std::wstring& text, const std::wstring& set);

/// Erases the characters of `set` from the left end of `text`; otherwise as
/// `RTrim`.
///
///     std::string left = "\t [name]";
///     korvan::LTrim(left, " \t");
///     assert(left == "[name]");
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
/// @errors{None.}
/// @ownership{As for the narrow `RTrim`.}
/// @threads{As for the narrow `RTrim`.}
/// @nothrow
KORVAN_API void LTrim(std::string& text, const std::string& set);

/// As the narrow `LTrim`, on wide text.
///
///     std::wstring wide_left = L"\t [name]";
///     korvan::LTrim(wide_left, L" \t");
///     assert(wide_left == L"[name]");
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
/// @errors{None.}
/// @ownership{As for the narrow `RTrim`.}
/// @threads{As for the narrow `RTrim`.}
/// @nothrow
KORVAN_API void LTrim(std::wstring& text, const std::wstring& set);

/// Erases the characters of `set` from both ends of `text`: `RTrim`, then
/// `LTrim`.
///
///     std::string both = "00100";
///     korvan::Trim(both, "0");
///     assert(both == "1");
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
/// @errors{None.}
/// @ownership{As for the narrow `RTrim`.}
/// @threads{As for the narrow `RTrim`.}
/// @nothrow
KORVAN_API void Trim(std::string& text, const std::string& set);

/// As the narrow `Trim`, on wide text.
///
///     std::wstring wide_both = L"00100";
///     korvan::Trim(wide_both, L"0");
///     assert(wide_both == L"1");
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
/// @errors{None.}
/// @ownership{As for the narrow `RTrim`.}
/// @threads{As for the narrow `RTrim`.}
/// @nothrow
KORVAN_API void Trim(std::wstring& text, const std::wstring& set);

/// Converts wide text to the multibyte encoding of the C library's current
/// locale, with `wcstombs`.
///
///     assert(korvan::wstr_to_str(L"name") == "name");
///
/// The result ALWAYS HAS AS MANY BYTES AS `text` HAS CHARACTERS. What is not
/// filled is NUL: after the last whole character that fits, where characters
/// take several bytes; after the last character that can be converted, where
/// one can't; after the first NUL of `text`. Nothing reports it. ASCII text
/// comes out as it is. In other encodings than UTF-8, Shift JIS for one, the C
/// library may also write THE FIRST BYTES OF THE CHARACTER THAT DOES NOT FIT.
///
/// @param text  the text to convert.
/// @return the converted text, the caller's.
/// @par Errors
/// None is reported: what can't be converted is missing from the
/// result.
/// @ownership{The result is the caller's.}
/// @par Threads
/// Any thread, as long as none changes the process's locale
/// meanwhile.
/// @throws std::bad_alloc or std::length_error when allocation fails.
KORVAN_API std::string wstr_to_str(const std::wstring& text);

/// Converts text in the multibyte encoding of the C library's current locale
/// to wide characters, with `mbstowcs`.
///
///     assert(korvan::str_to_wstr("name") == L"name");
///
/// The result ALWAYS HAS AS MANY CHARACTERS AS `text` HAS BYTES. What is not
/// filled is NUL: multibyte sequences give fewer characters than they have
/// bytes, an invalid sequence ends the conversion, and so does a NUL. Nothing
/// reports it.
///
/// @param text  the text to convert.
/// @return the converted text, the caller's.
/// @par Errors
/// None is reported: what can't be converted is missing from the
/// result.
/// @ownership{The result is the caller's.}
/// @par Threads
/// Any thread, as long as none changes the process's locale
/// meanwhile.
/// @throws std::bad_alloc or std::length_error when allocation fails.
KORVAN_API std::wstring str_to_wstr(const std::string& text);

}  // namespace korvan

#endif  // KORVAN_TEXT_H_
