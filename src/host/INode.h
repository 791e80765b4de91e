// Scene nodes and their objects as the host hands them out.
#pragma once

#include <cstdint>

#include "host/CStr.h"
#include "host/Matrix3.h"
#include "host/Mesh.h"
#include "host/Mtl.h"
#include "host/Types.h"

namespace mapexport {

class INode;

/// A point on the screen, in pixels.
struct Point2 {
  float x = 0.0f;
  float y = 0.0f;
};

/// The view that a render mesh is made for. Hosts may choose the mesh's detail by it.
class View {
 public:
  virtual ~View() = default;
  /// The screen point of a point in view space.
  virtual Point2 ViewToScreen(Point3 p) = 0;

  int screenW = 0;  ///< pixels
  int screenH = 0;  ///< pixels
  Matrix3 worldToView;
};

/// An evaluated object.
class Object {
 public:
  virtual ~Object() = default;
  /// Whether the object can be had as an object of that class. An object that converts to
  /// kTriObjectClassID is a GeomObject.
  virtual bool CanConvertToType(Class_ID id) const = 0;
};

/// An object with a surface.
class GeomObject : public Object {
 public:
  /// The object's render mesh at time `t`, null when there is none. `needDelete` becomes true when
  /// the caller must delete the mesh; otherwise the host owns it, and it lives as long as the
  /// scene.
  virtual const Mesh* GetRenderMesh(TimeValue t, INode* node, View& view, bool& needDelete) = 0;
};

/// A node of the scene's tree. Children come in the same order on every call.
class INode {
 public:
  virtual ~INode() = default;
  /// Never null, possibly empty; valid as long as the scene.
  virtual const char* GetName() const = 0;
  virtual int NumberOfChildren() const = 0;
  /// The child `i`, 0 to NumberOfChildren() - 1; never null.
  virtual INode* GetChildNode(int i) const = 0;
  /// The node's object evaluated at time `t`, null when the node has none.
  virtual Object* EvalWorldState(TimeValue t, bool evalHidden) = 0;
  /// Object-to-world transform at time `t`.
  virtual Matrix3 GetObjectTM(TimeValue t) const = 0;
  /// The node's material, null when it has none.
  virtual Mtl* GetMtl() const = 0;
  /// Stores the user-defined property text.
  virtual void GetUserPropBuffer(CStr& buffer) const = 0;
  /// The node's display colour as 0x00BBGGRR.
  virtual std::uint32_t GetWireColor() const = 0;
};

}  // namespace mapexport
