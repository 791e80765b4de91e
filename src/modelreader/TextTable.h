// Lays text out in columns.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace mapexport {

enum class TextAlign { kLeft, kRight };

class TextTable {
 public:
  struct Column {
    std::string title;
    TextAlign align = TextAlign::kLeft;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// One cell per column, each a printable text.
  void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  /// Writes the titles and rows, each line behind `indent` blanks.
  void Write(std::size_t indent, std::ostream& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace mapexport
