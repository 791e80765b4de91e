// What changed between two models, as texts in tables.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "compare/CompareModels.h"
#include "modelreader/TextTable.h"

namespace mapexport {

struct DifferenceTable {
  std::string title;  ///< may be empty
  std::vector<TextTable::Column> columns;
  std::vector<std::vector<std::string>> rows;  ///< a cell per column, each a printable text
  std::size_t more = 0;                        ///< rows that are left out
};

struct DifferenceTexts {
  std::string headline;                 ///< the result in one line
  std::vector<DifferenceTable> tables;  ///< of what differs; none is empty
};

/// What WriteDifferenceText writes.
DifferenceTexts TextsOf(const ModelDifference& difference);

}  // namespace mapexport
