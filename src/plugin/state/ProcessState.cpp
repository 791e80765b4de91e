#include "plugin/state/ProcessState.h"

#include "host/System.h"

namespace mapexport {

ProcessState::ProcessState() : random(TheSystem().GetTickCount()) {}

ProcessState& State() {
  static ProcessState state;
  return state;
}

}  // namespace mapexport
