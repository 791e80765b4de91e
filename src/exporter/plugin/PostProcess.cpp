#include <array>
#include <cstdio>

#include "exporter/base/ProcessState.h"
#include "exporter/base/StopWatch.h"
#include "exporter/geometry/RemoveDegenerateFaces.h"
#include "exporter/geometry/WeldVertices.h"
#include "exporter/plugin/CurrentExport.h"
#include "exporter/plugin/ExportModel.h"
#include "exporter/plugin/ResourceIds.h"
#include "host/System.h"

namespace mapexport {
namespace {

/// Faces, vertices and attributes of all groups.
struct Counts {
  int faces = 0;
  int vertices = 0;
  int attributes = 0;

  void Add(const GeometryGroup& group) {
    faces += static_cast<int>(group.faces.size());
    vertices += static_cast<int>(group.vertices.size());
    attributes += static_cast<int>(group.attributes.size());
  }
};

void ShowResults(const Counts& before, const Counts& after) {
  std::array<char, 256> text;
  std::snprintf(text.data(), text.size(),
                "%d faces, %d vertices, %d attributes -> %d faces, %d vertices, %d attributes\n"
                "(Change = %d faces, %d vertices, %d attributes)",
                before.faces, before.vertices, before.attributes, after.faces, after.vertices,
                after.attributes, after.faces - before.faces, after.vertices - before.vertices,
                after.attributes - before.attributes);
  TheSystem().MessageBox(nullptr, text.data(), "Results");
}

}  // namespace

void ExportModel::PostProcess(bool weldVertices, float weldingDistance,
                              bool cleanVertexAttributes) {
  System& system = TheSystem();
  StopWatch total;
  total.Start();
  const HCURSOR weldCursor = system.LoadCursor(State().module, kWeldCursor);
  const HCURSOR cleanCursor = system.LoadCursor(State().module, kCleanCursor);

  Counts before;
  Counts after;
  for (std::size_t i = 0; i < groups.Count(); ++i) {
    GeometryGroup& group = *groups.At(i);
    StopWatch groupWatch;
    StopWatch passWatch;
    groupWatch.Start();
    DuplicateTwoSidedFaces(group);
    before.Add(group);

    system.SetCursor(weldCursor);
    if (weldVertices) {
      passWatch.Start();
      if (WeldVertices(group, weldingDistance)) RemoveDegenerateFaces(group);
      passWatch.Stop();
      passWatch.Report("\t\tWeldVertices()");
    }
    system.SetCursor(cleanCursor);
    if (cleanVertexAttributes) {
      passWatch.Start();
      CleanVertexAttributes(group);
      passWatch.Stop();
      passWatch.Report("\t\tCleanVertexAttributes()");
    }
    groupWatch.Stop();
    groupWatch.Report("\t\tPostProcessing()");
    after.Add(group);
  }
  total.Stop();
  total.Report("\t\tTotal PostProcessing()");
  // The file is written under the wait cursor.
  system.SetCursor(system.LoadCursor(nullptr, IDC_WAIT));
  if (weldVertices) ShowResults(before, after);
}

}  // namespace mapexport
