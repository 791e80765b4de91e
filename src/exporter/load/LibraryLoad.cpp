// Runs the library's entry function when the library is loaded and when it goes away.

#include "exporter/base/ProcessState.h"
#include "exporter/plugin/EntryPoints.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/Resources.h"
#include "host/Resources.h"

namespace mapexport {
namespace {

[[gnu::constructor]] void OnLoad() {
  HINSTANCE module = nullptr;
  try {
    module = AttachModule(kResources);
    LibraryEntry(module);
  } catch (...) {
    // No exception gets through the system's loader. Without a module the library has no class.
    State().module = nullptr;
    DetachModule(module);
  }
}

[[gnu::destructor]] void OnUnload() {
  HINSTANCE module = State().module;
  if (module == nullptr) return;  // the load failed
  LibraryEntry(module);
  DetachModule(module);
}

}  // namespace
}  // namespace mapexport
