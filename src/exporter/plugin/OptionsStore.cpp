#include "exporter/plugin/OptionsStore.h"

#include <type_traits>

#include "exporter/base/ProcessState.h"

namespace mapexport {
namespace {

constexpr const char* kPath = R"(Software\Corvantis\Talvern\Exporter)";
constexpr const char* kDefaultCxp = R"(C:\Develop\Osprin\release\data\textures\osprin.cxp)";

/// Calls `visit` with the field, the value name and the default of every stored option, in the
/// order in which they are loaded and saved.
template <typename Visit>
void VisitOptions(ExportOptions& options, const Visit& visit) {
  visit(options.weldingDistance, "Welding Distance", 0.1f);
  visit(options.tVertexDistance, "T-Vertex Distance", 10.0f);
  visit(options.weldVertices, "Weld Vertices?", false);
  visit(options.removeTVertices, "Remove t-vertices?", false);
  visit(options.snapDistance, "Snap Distance", 1.0f);
  visit(options.lightingMultiplier, "Lighting Multiplier", 1.0f);
  visit(options.geometryVoxelSize, "Geometry Voxel Size", 1000.0f);
  visit(options.snapToGrid, "Snap To Grid?", false);
  visit(options.cleanVertexAttributes, "Clean vertex attributes?", false);
  visit(options.coordinateSystem, "Export Coordinates", 0);
  visit(options.textureCoordinateMode, "Export Texture Coordinates", 0);
  visit(options.cxpFilename, "CXP Filename", kDefaultCxp);
}

}  // namespace

void LoadOptions(const SettingsKey& settings) {
  VisitOptions(State().options, [&](auto& field, const char* name, const auto& fallback) {
    using Field = std::remove_reference_t<decltype(field)>;
    if constexpr (std::is_same_v<Field, float>) {
      settings.ReadFloat(kPath, name, field, fallback);
    } else if constexpr (std::is_same_v<Field, bool>) {
      settings.ReadBool(kPath, name, field, fallback);
    } else if constexpr (std::is_same_v<Field, std::int32_t>) {
      settings.ReadNumber(kPath, name, field, fallback);
    } else {
      CStr text;
      settings.ReadText(kPath, name, text, fallback);
      field = text;
    }
  });
}

void SaveOptions(const SettingsKey& settings) {
  VisitOptions(State().options, [&](auto& field, const char* name, const auto&) {
    using Field = std::remove_reference_t<decltype(field)>;
    if constexpr (std::is_same_v<Field, float>) {
      settings.WriteFloat(kPath, name, field);
    } else if constexpr (std::is_same_v<Field, bool>) {
      settings.WriteBool(kPath, name, field);
    } else if constexpr (std::is_same_v<Field, std::int32_t>) {
      settings.WriteNumber(kPath, name, field);
    } else {
      settings.WriteText(kPath, name, field.data());
    }
  });
}

}  // namespace mapexport
