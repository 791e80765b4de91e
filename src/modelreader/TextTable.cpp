#include "modelreader/TextTable.h"

#include <algorithm>
#include <ostream>

#include "system/PrintableText.h"

namespace mapexport {

void TextTable::Write(std::size_t indent, std::ostream& out) const {
  constexpr std::size_t kGap = 2;
  std::vector<std::string> titles;
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    titles.push_back(columns_[i].title);
    widths.push_back(DisplayWidth(titles[i]));
    for (const auto& row : rows_) widths[i] = std::max(widths[i], DisplayWidth(row[i]));
  }

  const auto writeRow = [&](const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string blanks(widths[i] - DisplayWidth(cells[i]), ' ');
      line.append(i == 0 ? indent : kGap, ' ');
      line += columns_[i].align == TextAlign::kRight ? blanks + cells[i] : cells[i] + blanks;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  };
  writeRow(titles);
  for (const auto& row : rows_) writeRow(row);
}

}  // namespace mapexport
