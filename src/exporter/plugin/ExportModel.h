// The container of one export.
#pragma once

#include <ostream>

#include "exporter/geometry/GroupList.h"
#include "exporter/materials/MaterialsList.h"
#include "host/INode.h"

namespace mapexport {

/// The geometry groups and the materials of one export. Made at the start of an export run; then
/// Gather once, PostProcess once, one of the writers at most once. The running export's model is
/// the process's current scene.
class ExportModel {
 public:
  explicit ExportModel(TimeValue modelTime) : time(modelTime) {}
  ExportModel(const ExportModel&) = delete;
  ExportModel& operator=(const ExportModel&) = delete;

  /// Gathers the node and every node below it into one group, named after the node, "NONE" when its
  /// name is empty. Nothing happens without a node.
  virtual void Gather(INode* node);
  /// Writes the model file with QOB group records to a seekable binary stream, whose state is
  /// ignored.
  virtual void WriteQob(std::ostream& stream);
  /// The same with the second group records.
  virtual void WriteKob(std::ostream& stream);
  virtual ~ExportModel() = default;

  /// Runs the geometry passes over every group: two-sided copies, welding and removal of slivers
  /// and degenerate faces when `weldVertices` is set, merging of equal attributes when
  /// `cleanVertexAttributes` is set. Shows a cursor for each stage, logs the time of each, and with
  /// welding on shows the counts before and after in a message box.
  void PostProcess(bool weldVertices, float weldingDistance, bool cleanVertexAttributes);

  const TimeValue time;  ///< what the model is evaluated at
  GroupList groups;
  MaterialsList materials;
};

}  // namespace mapexport
