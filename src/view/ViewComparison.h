// What a page shows of a second model that its own is compared with.
#pragma once

#include <string>
#include <utility>

#include "compare/CompareModels.h"
#include "modelreader/ModelFile.h"
#include "view/BlockWriter.h"

namespace mapexport {

/// Refers to both models.
struct ViewComparison {
  ViewComparison(const ModelFile& first, const ModelFile& second, std::string name)
      : models{&first, &second},
        fileName(std::move(name)),
        difference(CompareModels(first, second, &marks)) {}

  Both<const ModelFile*> models;
  std::string fileName;  ///< of the second one, to show; any encoding
  Both<TriangleMarks> marks;
  ModelDifference difference;  ///< behind `marks`, which comparing fills
};

/// Writes what viewer/src/compare.js reads: the texts of `diff`, which materials are the same ones,
/// and the marks of the triangles.
void WriteComparison(const ViewComparison& comparison, BlockWriter& out);

}  // namespace mapexport
