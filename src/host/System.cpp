#include "host/System.h"

#include <cassert>

namespace mapexport {
namespace {

System* installed = nullptr;

}  // namespace

void InstallSystem(System* system) {
  installed = system;
}

System& TheSystem() {
  assert(installed != nullptr);
  return *installed;
}

}  // namespace mapexport
