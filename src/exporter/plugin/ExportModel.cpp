#include "exporter/plugin/ExportModel.h"

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

#include "exporter/geometry/GroupPart.h"
#include "exporter/modelwriter/WriteModelFile.h"
#include "exporter/plugin/CurrentExport.h"

namespace mapexport {
namespace {

using WriteGroup = void(GeometryGroup&, BinaryWriter&);

/// Names for the parts of groups, different from each other and from the groups'.
class PartNames {
 public:
  explicit PartNames(const GroupList& groups) {
    for (std::size_t i = 0; i < groups.Count(); ++i) taken_.emplace(groups.At(i)->name.View());
  }

  /// Part `i` of a group: its name, then NAME_2, NAME_3, ..., without those that are taken.
  CStr NameOf(const CStr& group, std::size_t i) {
    if (i == 0) {
      number_ = 2;
      return group;
    }
    std::string name;
    do {
      name = std::string(group.View()) + '_' + std::to_string(number_++);
    } while (!taken_.insert(name).second);
    return CStr(std::string_view(name));
  }

 private:
  std::unordered_set<std::string> taken_;
  std::size_t number_ = 2;
};

void WriteParts(const GeometryGroup& group, const GroupParts& parts, PartNames& names,
                WriteGroup* writeGroup, BinaryWriter& out) {
  PartMaker maker(group);
  for (std::size_t i = 0; i < parts.Count(); ++i) {
    GeometryGroup& part = maker.Make(parts.FacesOf(i));
    part.name = names.NameOf(group.name, i);
    writeGroup(part, out);
  }
}

/// Prepares and writes one group, or part of one, after the other, so that the lists of one are in
/// memory at a time.
void WriteModel(const ExportModel& model, bool hasFaceTable, WriteGroup* writeGroup,
                std::ostream& stream) {
  std::vector<GroupParts> parts;
  std::size_t count = 0;
  for (std::size_t i = 0; i < model.groups.Count(); ++i) {
    count += parts.emplace_back(SplitGroup(*model.groups.At(i), hasFaceTable)).Count();
  }
  BinaryWriter out(stream);
  const SizeField geometrySize = BeginModelFile(model.materials, count, out);
  PartNames names(model.groups);
  for (std::size_t i = 0; i < model.groups.Count(); ++i) {
    GeometryGroup& group = *model.groups.At(i);
    if (parts[i].IsWhole()) {
      writeGroup(group, out);
    } else {
      WriteParts(group, parts[i], names, writeGroup, out);
    }
  }
  EndModelFile(geometrySize, out);
}

}  // namespace

void ExportModel::Gather(INode* node) {
  if (node == nullptr) return;
  CStr name = node->GetName();
  if (name.Length() == 0) name = "NONE";
  GatherGroup(groups, *node, name);
}

void ExportModel::WriteQob(std::ostream& stream) {
  WriteModel(*this, false, WriteQobRecord, stream);
}

void ExportModel::WriteKob(std::ostream& stream) {
  WriteModel(*this, true, WriteKobRecord, stream);
}

}  // namespace mapexport
