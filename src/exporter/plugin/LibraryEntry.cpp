#include "exporter/plugin/LibraryEntry.h"

#include "exporter/base/ProcessState.h"
#include "host/System.h"

namespace mapexport {

bool LibraryEntry(HINSTANCE module) {
  ProcessState& state = State();
  state.module = module;
  if (!state.initialised) {
    state.initialised = true;
    state.random.Seed(TheSystem().GetTickCount());
    TheSystem().InitCustomControls(module);
    TheSystem().InitCommonControls();
  }
  return true;
}

const char* GetResourceString(int id) {
  ProcessState& state = State();
  if (state.module == nullptr) return nullptr;
  const int length = LoadString(state.module, id, state.stringBuffer.data(),
                                static_cast<int>(state.stringBuffer.size()));
  return length == 0 ? nullptr : state.stringBuffer.data();
}

}  // namespace mapexport
