#include "exporter/geometry/Gather.h"

#include <memory>
#include <string_view>

#include "exporter/geometry/FaceFlags.h"

namespace mapexport {
namespace {

/// The view that render meshes are made for: 640 x 480 pixels, from straight above, one pixel per
/// unit.
class ExportView : public View {
 public:
  ExportView() {
    screenW = 640;
    screenH = 480;
    worldToView.IdentityMatrix();
  }
  Point2 ViewToScreen(Point3 p) override { return {p.x, p.y}; }
};

CStr LowerCaseName(const INode& node) {
  CStr name = node.GetName();
  name.toLower();
  return name;
}

bool BeginsWith(const CStr& text, std::string_view start) {
  return text.View().starts_with(start);
}

/// Gathers the node's own mesh. False when the walk ends at this node.
bool GatherOwnMesh(GroupList& groupList, GeometryGroup& group, INode& node,
                   const GatherContext& context) {
  const TimeValue time = context.time;
  Object* object = node.EvalWorldState(time, true);
  if (object == nullptr || !object->CanConvertToType(kTriObjectClassID)) return true;

  ExportView view;
  bool needDelete = false;
  const Mesh* mesh = static_cast<GeomObject*>(object)->GetRenderMesh(time, &node, view, needDelete);
  const std::unique_ptr<const Mesh> owned(needDelete ? mesh : nullptr);
  if (mesh == nullptr || mesh->faces.empty()) return false;
  GatherMesh(groupList, group, node, *mesh, context);
  return true;
}

}  // namespace

GeometryGroup* GatherGroup(GroupList& groupList, INode& node, const CStr& name,
                           const GatherContext& context) {
  auto owned = std::make_unique<GeometryGroup>();
  GeometryGroup* group = owned.get();
  group->name = name;
  GatherNode(groupList, *group, node, context);
  groupList.materials.clear();
  group->attributeIndex.Release();
  groupList.Append(std::move(owned));
  return group;
}

void GatherNode(GroupList& groupList, GeometryGroup& group, INode& node,
                const GatherContext& context) {
  if (groupList.staticMode && groupList.staticPending) {
    groupList.staticPending = false;
    groupList.staticSetIndex = AddStaticSurfaceSet(group, LowerCaseName(node));
    group.surfaceSets[static_cast<std::size_t>(groupList.staticSetIndex)].flags |= kFlagStatic;
  }
  if (!GatherOwnMesh(groupList, group, node, context)) return;

  for (int i = 0; i < node.NumberOfChildren(); ++i) {
    INode& child = *node.GetChildNode(i);
    const CStr name = LowerCaseName(child);
    const bool isStatic = BeginsWith(name, "static");
    if (isStatic) groupList.staticMode = groupList.staticPending = true;
    if (!BeginsWith(name, "exclude")) GatherNode(groupList, group, child, context);
    if (isStatic) groupList.staticMode = false;
  }
}

}  // namespace mapexport
