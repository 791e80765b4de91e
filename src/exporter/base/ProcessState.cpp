#include "exporter/base/ProcessState.h"

namespace mapexport {

ProcessState& State() {
  static ProcessState state;
  return state;
}

}  // namespace mapexport
