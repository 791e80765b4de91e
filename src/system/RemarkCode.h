// The codes of all warnings and notes: the one list of them. docs/report.md says what each means.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

namespace mapexport {

inline constexpr const char* kRemarkCodes[] = {
    "attributes-not-kept",
    "axes",
    "cancelled",
    "collision-left-out",
    "colours-changed",
    "control-characters",
    "copies-left-out",
    "cut-name",
    "cxp-unreadable",
    "doubled-triangles",
    "equal-material-names",
    "export-log-cut",
    "exported",
    "faces-lost",
    "few-triangles-left",
    "file-unit",
    "folder-not-synced",
    "hidden-nodes",
    "idle-keyword",
    "idle-member",
    "indices-cut",
    "left-out",
    "left-out-animations",
    "left-out-attributes",
    "left-out-bones",
    "left-out-cameras",
    "left-out-channels",
    "left-out-colours",
    "left-out-corners",
    "left-out-creases",
    "left-out-curves",
    "left-out-degenerate-triangles",
    "left-out-excluded",
    "left-out-hidden",
    "left-out-lights",
    "left-out-lines",
    "left-out-materials",
    "left-out-meshes",
    "left-out-morphs",
    "left-out-objects",
    "left-out-points",
    "left-out-polygons",
    "left-out-primitives",
    "left-out-scenes",
    "left-out-skins",
    "left-out-texture-coordinates",
    "left-out-transforms",
    "left-out-triangles",
    "left-out-unreached",
    "left-out-variants",
    "left-out-vertices",
    "list-too-long",
    "many-batches",
    "material-value",
    "materials-left-out",
    "missing-side-file",
    "missing-texture",
    "near-keyword",
    "no-export-log",
    "no-triangle",
    "normals-changed",
    "not-finite",
    "not-told",
    "object-groups",
    "option-without-effect",
    "other-extension",
    "output-not-locked",
    "properties-in-doubt",
    "reader-not-confined",
    "repeated-material",
    "report-not-written",
    "scale",
    "settings-not-remembered",
    "settings-not-saved",
    "settings-unreadable",
    "shared-mesh-materials",
    "small-for-welding",
    "summary",
    "texture-clash",
    "texture-coordinates-changed",
    "texture-left-out",
    "textures-copied",
    "unknown-material",
    "unused-pattern",
    "verbose",
    "weld-stays-on",
};

/// A code of the list. It is made of a literal alone, and one that is not listed does not compile.
class RemarkCode {
 public:
  // A code is written as the literal that it is.
  // NOLINTNEXTLINE(google-explicit-constructor)
  consteval RemarkCode(const char* code) : text_(code) {
    if (std::ranges::find(kRemarkCodes, text_) == std::ranges::end(kRemarkCodes)) {
      throw std::invalid_argument("no code of a remark");
    }
  }

  std::string Text() const { return std::string(text_); }

 private:
  std::string_view text_;
};

}  // namespace mapexport
