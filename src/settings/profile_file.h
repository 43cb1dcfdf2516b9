#pragma once

#include <string>
#include <string_view>

/// The text of an INI file, in bytes of code page 936.
///
/// A section begins with a line "[name]"; a key is a line "key=value" below it. Names are compared
/// without regard to case, and the first of equal names counts. A line that begins with ";" is a
/// comment. Blanks around names and values are ignored.
namespace orvane {

/// Returns the value of a key without one pair of enclosing quotes (" or '), or an empty text if
/// the key is missing.
std::string profileValue(std::string_view content, std::string_view section, std::string_view key);

/// Returns `content` with the value of a key replaced. A new key is added at the end of its
/// section, a new section at the end of the file. All other bytes are kept. New lines end as the
/// first line of the file does, or with CR LF if it has no line end.
std::string withProfileValue(std::string_view content, std::string_view section,
                             std::string_view key, std::string_view value);

}  // namespace orvane
