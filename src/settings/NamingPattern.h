#pragma once

#include <array>

/// The naming patterns, in list order. The text is the key: the operator sees it and the naming
/// rule compares against it.
namespace orvane {

inline constexpr const wchar_t* kNameOfDocument = L"档案（件）名称";
inline constexpr const wchar_t* kNameOfPage = L"页码";
inline constexpr const wchar_t* kNameOfDocumentAndPage = L"档案（件）名称 + 页码";
inline constexpr const wchar_t* kNameOfBatchAndDocument = L"档案名称 + 档案（件）名称";
inline constexpr const wchar_t* kNameOfBatchDocumentAndPage = L"档案名称 + 档案（件）名称 + 页码";

/// What the list offers for one file a page.
inline constexpr std::array kAllNamingPatterns{kNameOfDocument, kNameOfPage, kNameOfDocumentAndPage,
                                               kNameOfBatchAndDocument,
                                               kNameOfBatchDocumentAndPage};

/// What the list offers for one multi-page file a document.
inline constexpr std::array kMultiPageNamingPatterns{kNameOfDocument, kNameOfBatchAndDocument};

}  // namespace orvane
