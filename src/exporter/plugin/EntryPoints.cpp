#include "exporter/plugin/EntryPoints.h"

#include "exporter/base/ProcessState.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/MapExportClassDesc.h"
#include "exporter/plugin/ResourceIds.h"

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
