#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The boundary to the file system. Inside the program a path is a text with `\` as separator,
/// joined without normalisation; only these functions know the native form.
///
/// A byte of a native name that is not UTF-8, and a `\` that is part of a native name, travel as
/// one code point each from U+DC00 up (U+DC00 + byte), so that every name on the disk has exactly
/// one text and comes back byte for byte.
namespace orvane {

/// The native path of a path text: `\` becomes `/`, a `/` stays, nothing else is touched. A text
/// that begins with `\` is absolute. Throws Failure for a text with a NUL in it.
std::filesystem::path nativePath(std::wstring_view pathText);

/// The path text of a native path from outside (a chosen folder, the program's own folder):
/// `/` becomes `\`.
std::wstring pathText(const std::filesystem::path& native);

/// The text of one directory entry's name.
std::wstring entryText(std::string_view entryName);

}  // namespace orvane
