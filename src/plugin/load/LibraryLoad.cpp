// Runs the library's entry function when the library is loaded and when it goes away.

#include <new>

#include "host/Resources.h"
#include "plugin/EntryPoints.h"
#include "plugin/LibraryEntry.h"
#include "plugin/Resources.h"
#include "plugin/state/ProcessState.h"

namespace mapexport {
namespace {

[[gnu::constructor]] void OnLoad() {
  try {
    LibraryEntry(AttachModule(kResources));
  } catch (const std::bad_alloc&) {
    // No exception gets through the system's loader. Without a module the library has no class.
  }
}

[[gnu::destructor]] void OnUnload() {
  HINSTANCE module = State().module;
  LibraryEntry(module);
  DetachModule(module);
}

}  // namespace
}  // namespace mapexport
