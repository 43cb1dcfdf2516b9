#pragma once

#include <string>

namespace orvane::mdlINI {

/// The path text of the settings file; empty until the settings have been loaded.
extern std::wstring IniFilePath;

/// Writes one key of an INI file in code page 936; the file is created when it is missing. An empty
/// `sValue` leaves the key with nothing behind its "=". What cannot be written is lost without a
/// word, and the file then stays as it was.
///
/// `sSection`, `sKey` and `sValue` come back as they went through the code page: a character that
/// it cannot hold is a "?". A line end in them becomes a "?" as well, since the file is made of
/// lines.
void WriteIniValue(const std::wstring& sIniFile, std::wstring& sSection, std::wstring& sKey,
                   std::wstring& sValue);

/// Reads one key: at most 1023 bytes of code page 936, and no further than a NUL. A key that is
/// missing or empty is written with `sDefault`, which is then the value, also when it could not be
/// stored. Any failure gives the empty text. The texts come back as in `WriteIniValue`.
std::wstring ReadIniValue(const std::wstring& sIniFile, std::wstring& sSection, std::wstring& sKey,
                          std::wstring& sDefault);

}  // namespace orvane::mdlINI
