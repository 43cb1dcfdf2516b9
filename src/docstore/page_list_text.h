#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The text of a `Doc.dat`: each page name is followed by "$", and nothing else is in it.
namespace orvane {

/// Reads the page list of a document of the current batch and logs nothing. `pages` becomes a new
/// list once it is known that there is a file. Throws Failure with the text that
/// `Document::LoadDocument` logs.
void readPageList(const std::wstring& sDocName, std::optional<std::vector<std::wstring>>& pages);

/// Adds the names in `text` to `pages`. What follows the last "$" is no item, and an item that is
/// empty or made of spaces is none either; all others keep their spaces. Throws Failure for more
/// than 32767 separators, when the items up to there have been added.
void appendPages(std::wstring_view text, std::vector<std::wstring>& pages);

/// The text that names `pages` in their order.
std::wstring pageListText(const std::vector<std::wstring>& pages);

/// `text` without the spaces (U+0020 and nothing else) at both ends.
std::wstring_view withoutOuterSpaces(std::wstring_view text);

}  // namespace orvane
