#include "view/ViewComparison.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include "compare/DifferenceTables.h"

namespace mapexport {
namespace {

void WriteTable(const DifferenceTable& table, BlockWriter& out) {
  out.Text(table.title);
  out.Count(table.columns.size());
  for (const TextTable::Column& column : table.columns) {
    out.Text(column.title);
    out.U32(column.align == TextAlign::kRight ? 1 : 0);
  }
  out.Count(table.rows.size());
  for (const std::vector<std::string>& row : table.rows) {
    for (const std::string& cell : row) out.Text(cell);
  }
  out.Count(table.more);
}

void WriteMarks(const std::vector<std::uint8_t>& marks, BlockWriter& out) {
  out.Count(marks.size());
  for (const std::uint8_t mark : marks) out.U8(mark);
  out.Align();
}

}  // namespace

void WriteComparison(const ViewComparison& comparison, BlockWriter& out) {
  const DifferenceTexts texts = TextsOf(comparison.difference);
  out.Text(texts.headline);
  out.Count(texts.tables.size());
  for (const DifferenceTable& table : texts.tables) WriteTable(table, out);
  // For each material of either model its index in both, -1 where it is not.
  out.Count(comparison.difference.materials.size());
  for (const MaterialDifference& each : comparison.difference.materials) {
    for (std::size_t i = 0; i < each.material.size(); ++i) {
      const ModelMaterial* const material = each.material[i];
      const ModelMaterial* const first = comparison.models[i]->materials.data();
      out.I32(material == nullptr ? -1 : static_cast<std::int32_t>(material - first));
    }
  }
  for (const TriangleMarks& marks : comparison.marks) {
    WriteMarks(marks.drawn, out);
    WriteMarks(marks.undrawn, out);
  }
}

}  // namespace mapexport
