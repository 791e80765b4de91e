#include "exporter/plugin/MapExporter.h"

#include <exception>

#include "exporter/base/DebugLog.h"
#include "exporter/base/PathString.h"
#include "exporter/base/ProcessState.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/OptionsStore.h"
#include "exporter/plugin/ResourceIds.h"
#include "exporter/plugin/RunExport.h"

namespace mapexport {
namespace {

/// The output path, with ".map" when it has no extension.
PathString OutputName(const char* name) {
  const PathString path(name);
  PathString extension = path.Extension();
  extension.LowerCase();
  return extension == "" ? path + ".map" : path;
}

/// Reports to the debug log why an export ended; silent when even that fails.
void LogException(const char* reason) noexcept {
  try {
    DebugLog& log = DebugLog::Instance();
    log.Line() << "Export ended by an exception: " << reason << '\n' << std::flush;
    log.Emit();
  } catch (...) {
  }
}

}  // namespace

int MapExporter::ExtCount() {
  return 2;
}

const char* MapExporter::Ext(int i) {
  switch (i) {
    case 0:
      return "qob";
    case 1:
      return "kob";
    default:
      return "";
  }
}

const char* MapExporter::LongDesc() {
  return GetResourceString(kLongDescText);
}

const char* MapExporter::ShortDesc() {
  return GetResourceString(kShortDescText);
}

const char* MapExporter::AuthorName() {
  return GetResourceString(kAuthorText);
}

const char* MapExporter::CopyrightMessage() {
  return GetResourceString(kNoticeText);
}

const char* MapExporter::OtherMessage1() {
  return "";
}

const char* MapExporter::OtherMessage2() {
  return "";
}

unsigned MapExporter::Version() {
  return 100;
}

void MapExporter::ShowAbout(HWND /*owner*/) {}

int MapExporter::DoExport(const char* name, ExpInterface* /*exportInterface*/,
                          Interface* hostInterface, bool /*suppressPrompts*/) {
  try {
    Export(name, *hostInterface);
  } catch (const std::exception& error) {
    LogException(error.what());
  } catch (...) {
    LogException("of an unknown kind");
  }
  return 1;
}

void MapExporter::Export(const char* name, Interface& host) {
  LoadOptions(settings_);

  ProcessState& state = State();
  state.currentInterface = &host;
  state.currentTime = host.GetTime();
  INode* root = host.GetRootNode();
  DebugLog::Instance().Open("ExportDebug.txt");

  if (RunExport(OutputName(name), root, state.currentTime)) {
    TheSystem().MessageBox(nullptr, "Scene exported successfully.\n", "Text Scene Export");
  }
  SaveOptions(settings_);
}

}  // namespace mapexport
