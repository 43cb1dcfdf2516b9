#pragma once

#include <string>

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

}  // namespace orvane::mdlINI
