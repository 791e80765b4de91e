#include "exporter/plugin/EntryPoints.h"

#include <new>

#include "exporter/base/ProcessState.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/MapExporter.h"
#include "exporter/plugin/ResourceIds.h"

namespace mapexport {
namespace {

/// The descriptor of the library's one class. It has no state.
class MapExportClassDesc final : public ClassDesc {
 public:
  int IsPublic() override { return 1; }
  void* Create(bool /*loading*/) override {
    return static_cast<SceneExport*>(new (std::nothrow) MapExporter());
  }
  int BeginCreate(Interface* /*hostInterface*/) override { return 0; }
  int EndCreate(Interface* /*hostInterface*/) override { return 0; }
  const char* ClassName() override { return GetResourceString(kClassNameText); }
  std::uint32_t SuperClassID() override { return kSceneExportSuperClassID; }
  Class_ID ClassID() override { return {0x12B50709, 0x1DC2636B}; }
  const char* Category() override { return GetResourceString(kCategoryText); }
  bool OkToCreate(Interface* /*hostInterface*/) override { return true; }
  bool HasClassParams() override { return false; }
  void EditClassParams(HWND /*owner*/) override {}
  void ResetClassParams(bool /*fileReset*/) override {}
  int Reserved13() override { return 0; }
  int Reserved14(std::intptr_t /*argument*/) override { return 0; }
  int Reserved15(std::intptr_t /*argument*/) override { return 0; }
};

}  // namespace
}  // namespace mapexport

const char* LibDescription() {
  return mapexport::GetResourceString(mapexport::kLibDescriptionText);
}

int LibNumberClasses() {
  return mapexport::State().module == nullptr ? 0 : 1;
}

mapexport::ClassDesc* LibClassDesc(int i) {
  static mapexport::MapExportClassDesc descriptor;
  return i == 0 ? &descriptor : nullptr;
}

std::uint32_t LibVersion() {
  return mapexport::kHostApiVersion;
}
