#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace orvane {

/// The options of an export. While the program runs they live on `frmMain`; between runs of the
/// program they live in `data.ini`.
struct ExportSettings {
  std::wstring PerName;                ///< read and kept in the file; nothing uses it
  std::wstring SavePath;               ///< output folder, a path text
  std::int16_t SaveFileType = 0;       ///< 0 TIFF, 1 JPEG, 2 PDF
  bool IsMutiPage = false;             ///< one multi-page file a document, else one file a page
  std::int16_t CompressionType = 0;    ///< 0 compress, 1 do not compress
  std::int16_t CompressionRatios = 0;  ///< 0, 1 or 2: selects the JPEG factors
  std::wstring ReNameFormat;           ///< the naming pattern last selected
  std::wstring ReNameSp1;              ///< separator behind the batch name
  std::wstring ReNameSp2;              ///< separator in front of the page number
  bool IsCreateDocFolder = false;      ///< a folder for each document
  bool IsCreateBatchFolder = false;    ///< a folder for each batch
};

}  // namespace orvane

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
