// Materials and texture maps as the host hands them out.
#pragma once

#include "host/Matrix3.h"
#include "host/Types.h"

namespace mapexport {

/// A texture map in a slot of a material.
class Texmap {
 public:
  virtual ~Texmap() = default;
  virtual Class_ID ClassID() const = 0;
  /// Stores the map's UV transform in `uvTransform` and returns true; returns false and stores
  /// nothing when the map offers none.
  virtual bool GetUVTransform(Matrix3& uvTransform) const = 0;
};

/// What a map of class kBitmapTexClassID is.
class BitmapTex : public Texmap {
 public:
  /// The bitmap's path as the host stores it; never null, possibly empty.
  virtual const char* GetMapName() const = 0;
};

/// A material of any class.
class Mtl {
 public:
  virtual ~Mtl() = default;
  virtual Class_ID ClassID() const = 0;
  /// Never null, possibly empty.
  virtual const char* GetName() const = 0;
  /// Number of sub-material slots; 0 unless the class is kMultiMtlClassID.
  virtual int NumSubMtls() const = 0;
  /// The sub-material in slot `i` (0 to NumSubMtls() - 1), null for an empty slot.
  virtual Mtl* GetSubMtl(int i) const = 0;
};

/// What a material of class kStandardMtlClassID is.
class StdMat : public Mtl {
 public:
  virtual Color GetAmbient(TimeValue t) const = 0;
  virtual Color GetDiffuse(TimeValue t) const = 0;
  virtual Color GetSpecular(TimeValue t) const = 0;
  virtual float GetOpacity(TimeValue t) const = 0;
  virtual float GetShininess(TimeValue t) const = 0;
  virtual float GetShinStr(TimeValue t) const = 0;
  virtual int GetShading() const = 0;
  virtual bool GetTwoSided() const = 0;
  /// The map in sub-texture slot `i`, null when the slot is empty. Slot 1 is the diffuse map.
  virtual Texmap* GetSubTexmap(int i) const = 0;
};

}  // namespace mapexport
