#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Paths. Inside the program a path is a text with `\` as separator, joined without normalisation.
/// These functions convert it to and from the native form; they ask nothing of the disk.
///
/// A byte of a native name that is not UTF-8, and a `\` in a native name, become the code point
/// U+DC00 + byte. Every name on the disk therefore has exactly one text, which converts back to the
/// same bytes.
namespace orvane {

/// The native path of a path text, for system calls: `\` becomes `/`; nothing else is changed. A
/// text that begins with `\` is absolute. Throws Failure if the text contains a NUL or cannot be
/// encoded.
std::string nativePath(std::wstring_view pathText);

/// The native path of a path text as people read it: without dots and doubled separators, and with
/// U+FFFD for a byte that is not UTF-8. Throws as `nativePath` does.
std::wstring nativeText(std::wstring_view pathText);

/// The path text of a native path, such as the program's folder: `/` becomes `\`.
std::wstring pathText(const std::filesystem::path& native);

/// The text of one directory entry's name.
std::wstring entryText(std::string_view entryName);

}  // namespace orvane
