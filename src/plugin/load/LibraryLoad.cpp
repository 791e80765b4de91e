// Runs the library's entry function when the library is loaded and when it goes away.

#include "host/Resources.h"
#include "plugin/EntryPoints.h"
#include "plugin/LibraryEntry.h"
#include "plugin/Resources.h"
#include "plugin/state/ProcessState.h"

namespace mapexport {
namespace {

[[gnu::constructor]] void OnLoad() {
  LibraryEntry(AttachModule(kResources));
}

[[gnu::destructor]] void OnUnload() {
  HINSTANCE module = State().module;
  LibraryEntry(module);
  DetachModule(module);
}

}  // namespace
}  // namespace mapexport
