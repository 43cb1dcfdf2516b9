// A settings file is read, changed and written. One change must reach its key and no other, and
// settings that were loaded whole and saved must load and save as the same bytes.
#include "fuzz/Workshop.h"
#include "settings/ExportSettingsFile.h"
#include "settings/profile_file.h"

using namespace orvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Workshop shop;
  const std::string content(reinterpret_cast<const char*>(data), size);
  const std::string changed = withProfileValue(content, "Commit", "SaveFileType", "7");
  fuzz::require(profileValue(changed, "Commit", "SaveFileType") == "7", "the key");
  fuzz::require(withProfileValue(changed, "Commit", "SaveFileType", "7") == changed, "not stable");
  for (const char* key : {"IsMutiPage", "LiuShuiHao"}) {
    fuzz::require(profileValue(changed, "Commit", key) == profileValue(content, "Commit", key),
                  "another key");
  }
  shop.put("data.ini", data, size);
  std::string saved[3];  // a value that is none ends the first load
  for (std::string& bytes : saved) {
    ExportForm form;
    LoadExportSettings(form);
    SaveExportSettings(form);
    bytes = shop.bytesOf("data.ini");
  }
  fuzz::require(saved[1] == saved[2], "settings change by being loaded and saved");
  return 0;
}
