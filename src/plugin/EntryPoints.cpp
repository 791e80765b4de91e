#include "plugin/EntryPoints.h"

#include "plugin/LibraryEntry.h"
#include "plugin/MapExportClassDesc.h"
#include "plugin/ResourceIds.h"
#include "plugin/state/ProcessState.h"

const char* LibDescription() {
  return mapexport::GetResourceString(mapexport::kLibDescriptionText);
}

int LibNumberClasses() {
  return mapexport::State().module == nullptr ? 0 : 1;
}

mapexport::ClassDesc* LibClassDesc(int i) {
  return i == 0 ? &mapexport::GetMapExportClassDesc() : nullptr;
}

std::uint32_t LibVersion() {
  return mapexport::kHostApiVersion;
}
