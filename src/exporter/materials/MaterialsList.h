// The materials of an export.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <unordered_map>

#include "exporter/base/GrowableArray.h"
#include "exporter/base/TextureNames.h"
#include "exporter/materials/MaterialRecord.h"
#include "host/Mtl.h"

namespace mapexport {

/// Material records in the order in which their materials were first met. A record's index is what
/// faces and vertex attributes carry; -1 means no material. Records are never removed.
class MaterialsList {
 public:
  std::size_t Count() const { return records_.size(); }
  std::span<const MaterialRecord> Records() const { return {records_.data(), records_.size()}; }

  /// Record `i`. An index at or beyond the count extends the list with default records, whose names
  /// may be changed until the next search.
  MaterialRecord& operator[](std::size_t i) { return records_.At(i); }

  /// The index of the record with the name of `material`. When there is none yet, it is made from
  /// the material as it is at `time`, and transparent when `transparentTextures` lists its texture.
  /// `textured` receives whether the record has a texture. Constant time in the number of records.
  int FindOrAddMaterial(StdMat& material, bool& textured, TimeValue time,
                        const TextureNames& transparentTextures);
  /// The same with the process's current time and transparent textures.
  int FindOrAddMaterial(StdMat& material, bool& textured);

  /// The same for each of the first `count` sub-materials of `multi`: its index goes to the same
  /// place of `indexMap`, which has at least `count` entries. A missing sub-material and one that
  /// is no standard material leave their place as it is. Returns whether any of them is textured.
  bool FindOrAddSubMaterials(Mtl& multi, int count, std::span<int> indexMap, TimeValue time,
                             const TextureNames& transparentTextures);
  /// The same with the process's current time and transparent textures.
  bool FindOrAddSubMaterials(Mtl& multi, int count, std::span<int> indexMap);

  /// Whether the record `index` is transparent; false when there is no such record.
  bool IsTransparent(int index) const;
  /// Whether the record `index` is two-sided; false when there is no such record.
  bool IsTwoSided(int index) const;

 private:
  void IndexNewRecords();

  GrowableArray<MaterialRecord, 30> records_;
  std::unordered_map<std::string, int> indexByName_;  ///< the first record of each name
  std::size_t indexedCount_ = 0;                      ///< records that `indexByName_` knows
};

}  // namespace mapexport
