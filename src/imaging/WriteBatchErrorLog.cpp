#include <exception>
#include <string>

#include "foundation/ansi_text.h"
#include "foundation/local_time.h"
#include "foundation/mdlFolderAndFile.h"
#include "imaging/PageCleanup.h"

namespace orvane {

void WriteBatchErrorLog(const std::wstring& Message, const std::wstring& FileName) {
  try {
    FileSystemObject& files = mdlFolderAndFile::fileSystem();
    if (!files.FileExists(FileName)) files.CreateFile(FileName);
    files.AppendFile(FileName, toAnsi(timeStamp() + L" :" + Message + L"\r\n\r\n"));
  } catch (const std::exception&) {  // an entry that cannot be written is lost
  }
}

}  // namespace orvane
