#include "exporter/materials/LoadCxp.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <istream>
#include <locale>
#include <system_error>

#include "exporter/base/DebugLog.h"
#include "exporter/base/ProcessState.h"
#include "exporter/materials/ReadCxp.h"
#include "exporter/materials/TextStreambuf.h"

namespace mapexport {
namespace {

bool OpenForReading(const char* path, std::filebuf& file) {
  // Opening or reading a pipe or a device may never end; a folder can be opened on some platforms.
  std::error_code unknown;
  const std::filesystem::file_status status = std::filesystem::status(path, unknown);
  const bool isOther = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
  return !isOther && file.open(path, std::ios::in) != nullptr;
}

bool ReadFile(const char* path, TextureNames& names) {
  std::filebuf file;
  file.pubimbue(std::locale::classic());  // the host's global locale may convert characters
  if (!OpenForReading(path, file)) return false;
  TextStreambuf text(file);
  std::istream input(&text);
  // Of its own accord a stream takes what fails for the end of the file.
  input.exceptions(std::ios::badbit);
  try {
    ReadCxp(input, names);
  } catch (const std::ios::failure&) {
    return false;
  }
  return true;
}

}  // namespace

void LoadCxp() {
  const CStr& path = State().options.cxpFilename;
  TextureNames names;
  if (!ReadFile(path.data(), names)) {
    DebugLog& log = DebugLog::Instance();
    log.Line() << "Could not load CXP file " << path.data() << '\n' << std::flush;
    log.Emit();
    return;
  }
  TextureNames& transparent = State().transparentTextures;
  for (std::size_t i = 0; i < names.Count(); ++i) transparent.Append(names[i]);
}

}  // namespace mapexport
