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

namespace korvan {

/// Erases the characters of `set` from the right end of `text`.
///
/// Characters inside the text stay. A text of nothing but such characters
/// becomes empty; an empty set changes nothing.
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip, each standing for itself; order and
///              repetitions do not matter. It may be `text` itself.
KORVAN_API void RTrim(std::string& text, const std::string& set);

/// As the narrow `RTrim`, on wide text.
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
KORVAN_API void RTrim(std::wstring& text, const std::wstring& set);

/// Erases the characters of `set` from the left end of `text`; otherwise as
/// `RTrim`.
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
KORVAN_API void LTrim(std::string& text, const std::string& set);

/// As the narrow `LTrim`, on wide text.
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
KORVAN_API void LTrim(std::wstring& text, const std::wstring& set);

/// Erases the characters of `set` from both ends of `text`: `RTrim`, then
/// `LTrim`.
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
KORVAN_API void Trim(std::string& text, const std::string& set);

/// As the narrow `Trim`, on wide text.
///
/// @param text  the text, changed in place.
/// @param set   the characters to strip.
KORVAN_API void Trim(std::wstring& text, const std::wstring& set);

/// Converts wide text to the multibyte encoding of the C library's current
/// locale, with `wcstombs`.
///
/// The result ALWAYS HAS AS MANY BYTES AS `text` HAS CHARACTERS. What is not
/// filled is NUL: after the last whole character that fits, where characters
/// take several bytes; after the last character that can be converted, where
/// one can't; after the first NUL of `text`. Nothing reports it. ASCII text
/// comes out as it is.
///
/// @param text  the text to convert.
/// @return the converted text, the caller's.
/// @throws std::bad_alloc or std::length_error when allocation fails.
KORVAN_API std::string wstr_to_str(const std::wstring& text);

/// Converts text in the multibyte encoding of the C library's current locale
/// to wide characters, with `mbstowcs`.
///
/// The result ALWAYS HAS AS MANY CHARACTERS AS `text` HAS BYTES. What is not
/// filled is NUL: multibyte sequences give fewer characters than they have
/// bytes, an invalid sequence ends the conversion, and so does a NUL. Nothing
/// reports it.
///
/// @param text  the text to convert.
/// @return the converted text, the caller's.
/// @throws std::bad_alloc or std::length_error when allocation fails.
KORVAN_API std::wstring str_to_wstr(const std::string& text);

}  // namespace korvan

#endif  // KORVAN_TEXT_H_
