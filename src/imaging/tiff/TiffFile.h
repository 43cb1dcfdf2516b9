#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "foundation/OutputFile.h"
#include "imaging/lzw/lossless.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/tiff/tiff_page_plan.h"

namespace orvane {

/// Writes TIFF files: classic TIFF 6.0, little-endian when made here. One object serves one imaging
/// instance and remembers the end of the file that grows under it, so that an append costs the same
/// for every page; it checks before each append that the file is still as it left it, and else
/// finds the end by walking the directories.
class TiffFile {
 public:
  /// Writes `path` anew with one page. An older file of that name is replaced, never written into.
  /// A failed write leaves no file.
  void create(const std::wstring& path, const EncodedImage& image);

  /// Adds a page at the end of `path`, creating it when it is missing; a file of another program
  /// keeps its byte order and its kind (classic or BigTIFF). The earlier pages' bytes stay, and the
  /// file is a valid one at every moment. A failed append, an append to a file that is no TIFF, to
  /// a symbolic link or a file with a second hard link, and one that would pass 4 GiB in a classic
  /// TIFF throw Failure and leave the file as it was.
  void append(const std::wstring& path, const EncodedImage& image);

  /// The same for a page that is encoded when the file is open, in the byte order that 16-bit
  /// samples need there: the file's own. What `encode` throws leaves the file as it was.
  void append(const std::wstring& path, const std::function<EncodedImage(SampleOrder)>& encode);

  /// Removes page `page`, from 1, and its data: the file shrinks, the other pages keep their strips
  /// byte for byte. Written through a FileReplacement. Throws Failure for a page that is not there
  /// and for the only page of a file.
  static void deletePage(const std::wstring& path, std::int32_t page);

 private:
  struct End {  ///< the remembered end of a growing file
    std::wstring path;
    FileStamp stamp;
    TiffForm form;
    std::uint64_t nextLink = 0;  ///< where the offset of the next directory goes
    std::uint32_t pages = 0;
  };
  End endOf(const OutputFile& file, const FileStamp& stamp) const;
  void appendTo(OutputFile& file, const EncodedImage& image);
  void createWith(OutputFile (*creation)(const std::wstring&), const std::wstring& path,
                  const EncodedImage& image, TiffSubfile subfile);

  End end_;
};

}  // namespace orvane
