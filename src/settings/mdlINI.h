#pragma once

#include <string>
#include <string_view>

/// INI files in code page 936.
///
/// A section begins with a line "[name]"; a key is a line "key=value" below it. Names are compared
/// without regard to case, and the first of equal names counts. A line that begins with ";" is a
/// comment. Blanks around names and values are ignored.
namespace orvane::mdlINI {

/// The path text of the settings file; empty until the settings have been loaded.
extern std::wstring IniFilePath;

/// Writes one key of an INI file in code page 936. The file is created if it is missing. An empty
/// `sValue` leaves nothing after the "=" of the key. If the file cannot be written, it stays
/// unchanged and no error is reported.
///
/// `sSection`, `sKey` and `sValue` are converted to the code page and back: a character that it
/// cannot represent becomes "?", and so does a line end.
void WriteIniValue(const std::wstring& sIniFile, std::wstring& sSection, std::wstring& sKey,
                   std::wstring& sValue);

/// Reads one key: at most 1023 bytes of code page 936, up to a NUL. If the key is missing or empty,
/// `sDefault` is written to it and returned, even if it could not be written. Any other failure
/// gives the empty text. The parameters are converted as in `WriteIniValue`.
std::wstring ReadIniValue(const std::wstring& sIniFile, std::wstring& sSection, std::wstring& sKey,
                          std::wstring& sDefault);

/// Returns the value of a key without one pair of enclosing quotes (" or '), or an empty text if
/// the key is missing.
std::string profileValue(std::string_view content, std::string_view section, std::string_view key);

/// Returns `content` with the value of a key replaced. A new key is added at the end of its
/// section, a new section at the end of the file. All other bytes are kept. New lines end as the
/// first line of the file does, or with CR LF if it has no line end.
std::string withProfileValue(std::string_view content, std::string_view section,
                             std::string_view key, std::string_view value);

}  // namespace orvane::mdlINI
