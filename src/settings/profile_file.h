#pragma once

#include <string>
#include <string_view>

/// The text of an INI file, in bytes of code page 936.
///
/// A section is a line "[name]", a key is a line "key=value" below it; both names compare without
/// regard to case, and of equal ones the first counts. A line that begins with ";" is a comment.
/// Blanks around names and values do not count.
namespace orvane {

/// The value of a key, without one pair of enclosing quotes (" or '). Empty when there is none.
std::string profileValue(std::string_view content, std::string_view section, std::string_view key);

/// `content` with the value of a key replaced. A new key comes to the end of its section, a new
/// section to the end of the file. Every other line stays byte for byte, with its line end; new
/// lines end as the first line of the file does, with CR LF in a file without any.
std::string withProfileValue(std::string_view content, std::string_view section,
                             std::string_view key, std::string_view value);

}  // namespace orvane
