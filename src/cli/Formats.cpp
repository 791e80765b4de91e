#include "cli/Formats.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "cli/FormatTable.h"

namespace mapexport {
namespace {

/// Counts of model files: all, those that are read, and of these those that have each feature.
struct Measured {
  std::string extension;
  std::size_t files = 0;
  std::size_t read = 0;
  std::array<std::size_t, 8> give{};
};

constexpr std::array<const char*, 8> kThings{"triangles", "tree", "names",  "materials",
                                             "bitmaps",   "uv",   "smooth", "user text"};

std::istream& operator>>(std::istream& in, Measured& row) {
  in >> row.extension >> row.files >> row.read;
  for (std::size_t& count : row.give) in >> count;
  return in;
}

/// How many of the `read` files have a feature, as a word.
const char* Share(std::size_t count, std::size_t read) {
  if (count == 0) return "-";
  if (count == read) return "all";
  return 2 * count >= read ? "most" : "some";
}

std::string Row(const std::string& extension, const std::string& read, const auto& cellOf) {
  std::string line = fmt::format("{:<9}  {:<9}", extension, read);
  for (std::size_t i = 0; i < kThings.size(); ++i) line += fmt::format("  {:<9}", cellOf(i));
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

/// The version of the import library in the first line of the table.
std::string LibraryMeasured() {
  const std::string_view table = kFormatTable;
  const std::string_view line = table.substr(0, table.find('\n'));
  return std::string(line.substr(line.rfind(' ') + 1));
}

/// The rows of formats that can be read.
std::vector<Measured> ReadFormats() {
  std::vector<Measured> rows;
  std::istringstream lines(kFormatTable);
  for (std::string line; std::getline(lines, line);) {
    Measured row;
    if (line.starts_with('#') || !(std::istringstream(line) >> row) || row.read == 0) continue;
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace

bool IsReadFormat(std::string_view extension) {
  const std::vector<Measured> rows = ReadFormats();
  return std::ranges::find(rows, extension, &Measured::extension) != rows.end();
}

std::string FormatsText() {
  std::string text = fmt::format(
      "Scene files (.scene.json, .scene.bin) are read completely. For other formats, the table has "
      "measurements\n"
      "on the model files of Debian's package assimp-testmodels, with version {} of the import\n"
      "library: how many are read, and how many of these give triangles, a tree of nodes, names,\n"
      "materials, bitmaps, texture coordinates, smoothing groups and user property text.\n"
      "Some files have nothing of a kind to read.\n\n",
      LibraryMeasured());
  text += Row("extension", "read", [](std::size_t i) { return kThings[i]; });
  for (const Measured& row : ReadFormats()) {
    text += Row(row.extension, fmt::format("{} of {}", row.read, row.files),
                [&](std::size_t i) { return Share(row.give[i], row.read); });
  }
  return text;
}

}  // namespace mapexport
