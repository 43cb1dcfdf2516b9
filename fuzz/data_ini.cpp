// Reads, changes and writes a settings file. A change must affect its key only, and settings that
// were loaded completely and saved must load and save as the same bytes.
#include "fuzz/Workshop.h"
#include "settings/ExportForm.h"
#include "settings/mdlINI.h"
#include "settings/stored_settings.h"

using namespace orvane;
using namespace orvane::mdlINI;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Workshop shop;
  const std::string content(reinterpret_cast<const char*>(data), size);
  const std::string changed = withProfileValue(content, "Commit", "SaveFileType", "7");
  fuzz::require(profileValue(changed, "Commit", "SaveFileType") == "7", "the key was not changed");
  fuzz::require(withProfileValue(changed, "Commit", "SaveFileType", "7") == changed,
                "the change is not stable");
  for (const char* key : {"IsMutiPage", "LiuShuiHao"}) {
    fuzz::require(profileValue(changed, "Commit", key) == profileValue(content, "Commit", key),
                  "another key was changed");
  }
  shop.put("data.ini", data, size);
  std::string saved[3];  // an invalid value ends the first load
  for (std::string& bytes : saved) {
    ExportForm form;
    LoadExportSettings(form);
    SaveExportSettings(form);
    bytes = shop.bytesOf("data.ini");
  }
  fuzz::require(saved[1] == saved[2], "loading and saving changes the settings");
  return 0;
}
