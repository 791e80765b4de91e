#include "materials/LoadCxp.h"

#include <filesystem>
#include <fstream>
#include <istream>
#include <system_error>

#include "materials/ReadCxp.h"
#include "parse/TextStreambuf.h"
#include "plugin/state/DebugLog.h"
#include "plugin/state/ProcessState.h"

namespace mapexport {
namespace {

bool OpenForReading(const char* path, std::filebuf& file) {
  // A folder can be opened on some platforms, but never read.
  std::error_code unknown;
  return !std::filesystem::is_directory(path, unknown) && file.open(path, std::ios::in) != nullptr;
}

}  // namespace

void LoadCxp() {
  const CStr& path = State().options.cxpFilename;
  std::filebuf file;
  if (!OpenForReading(path.data(), file)) {
    DebugLog& log = DebugLog::Instance();
    log.Line() << "Could not load CXP file " << path.data() << '\n' << std::flush;
    log.Emit();
    return;
  }
  TextStreambuf text(file);
  std::istream input(&text);
  ReadCxp(input, State().transparentTextures);
}

}  // namespace mapexport
