#include <algorithm>
#include <limits>
#include <numeric>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "modelreader/ModelAdvice.h"
#include "modelreader/ModelSummary.h"
#include "modelreader/ModelTextures.h"
#include "modelreader/TextTable.h"
#include "modelreader/WriteModel.h"
#include "system/Counted.h"
#include "system/IsFinite.h"
#include "system/PrintableText.h"

namespace mapexport {

namespace {

// How many rows a table shows at most; after them it says how many more there are.
constexpr std::size_t kAllRows = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kMaxRows = 40;
constexpr std::size_t kMaxBatchRows = 10;
constexpr std::size_t kMaxGroups = 4;  // in detail
constexpr std::size_t kMaxNameColumns = 32;

constexpr TextAlign kRight = TextAlign::kRight;

std::string Name(std::string_view name) {
  return PrintableText(name, kMaxNameColumns);
}

/// A name; the file holds the text `none` when there is no name.
std::string NameUnless(std::string_view none, std::string_view name) {
  return name == none ? "-" : Name(name);
}

void WriteMore(std::size_t count, std::size_t shown, std::ostream& out) {
  if (count > shown) out << fmt::format("    ... and {} more\n", count - shown);
}

std::size_t Triangles(const ModelGroup& group) {
  std::size_t triangles = 0;
  for (const ModelBatch& batch : group.batches) triangles += batch.faces.size();
  return triangles;
}

void WriteMaterials(const ModelFile& model, std::size_t mostRows, std::ostream& out) {
  std::vector<std::size_t> triangles(model.materials.size());
  for (const ModelGroup& group : model.groups) {
    for (const ModelBatch& batch : group.batches) {
      const auto material = static_cast<std::size_t>(batch.material);  // -1 becomes too large
      if (material < triangles.size()) triangles[material] += batch.faces.size();
    }
  }

  TextTable table({{"#", kRight},
                   {"name"},
                   {"texture"},
                   {"drawn triangles", kRight},
                   {"two-sided"},
                   {"diffuse"}});
  const std::size_t shown = std::min(model.materials.size(), mostRows);
  for (std::size_t i = 0; i < shown; ++i) {
    const ModelMaterial& material = model.materials[i];
    const ModelColour& diffuse = material.diffuse;
    table.AddRow({std::to_string(i), Name(material.header.name),
                  NameUnless("NULL", material.textureName), std::to_string(triangles[i]),
                  material.twoSided ? "yes" : "no",
                  fmt::format("{:.3g} {:.3g} {:.3g}", diffuse.r, diffuse.g, diffuse.b)});
  }
  out << "Materials\n";
  table.Write(2, out);
  WriteMore(model.materials.size(), shown, out);
}

void WriteTextures(const ModelFile& model, std::ostream& out) {
  const std::vector<ModelTexture> textures = TexturesOf(model);
  if (textures.empty()) return;
  TextTable table({{"name"}, {"materials"}});
  const std::size_t shown = std::min(textures.size(), kMaxRows);
  for (const ModelTexture& texture : std::span(textures).first(shown)) {
    std::string names;
    for (const std::string& material : texture.materials) {
      if (names.size() > kMaxNameColumns) {
        names += ", ...";
        break;
      }
      names += fmt::format("{}{}", names.empty() ? "" : ", ", Name(material));
    }
    table.AddRow({Name(texture.name), std::move(names)});
  }
  out << "\nTextures\n";
  table.Write(2, out);
  WriteMore(textures.size(), shown, out);
}

/// "(x, y, z) to (x, y, z)", the bounds of the finite points.
std::string Bounds(const std::vector<ModelPoint>& points) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  ModelPoint least{kInfinity, kInfinity, kInfinity};
  ModelPoint most{-kInfinity, -kInfinity, -kInfinity};
  for (const ModelPoint& point : points) {
    if (!IsFinite(point)) continue;
    least = {std::min(least.x, point.x), std::min(least.y, point.y), std::min(least.z, point.z)};
    most = {std::max(most.x, point.x), std::max(most.y, point.y), std::max(most.z, point.z)};
  }
  if (least.x > most.x) return "none";
  return fmt::format("({}, {}, {}) to ({}, {}, {})", least.x, least.y, least.z, most.x, most.y,
                     most.z);
}

/// What share of the entries that 16-bit indices can address such a list has.
std::string Percent(std::size_t count) {
  const double percent = 100.0 * static_cast<double>(count) / static_cast<double>(kModelIndexLimit);
  return count > 0 && percent < 0.1 ? "<0.1 %" : fmt::format("{:.1f} %", percent);
}

/// "1.0 % of 65536"
std::string ShareOfLimit(std::size_t count) {
  return fmt::format("{} of {}", Percent(count), kModelIndexLimit);
}

/// Rows of the lists that 16-bit indices address, with the share that is used.
class LimitTable {
 public:
  void Add(std::string_view list, std::size_t count) {
    const std::string over =
        count > kModelIndexLimit ? fmt::format("too long by {}", count - kModelIndexLimit) : "";
    table_.AddRow({std::string(list), std::to_string(count), Percent(count), over});
  }
  void Write(std::ostream& out) const { table_.Write(2, out); }

 private:
  TextTable table_{{{"lists addressed by 16 bits"},
                    {"entries", kRight},
                    {fmt::format("of {}", kModelIndexLimit), kRight},
                    {""}}};
};

void WriteLimits(const ModelGroup& group, ModelLayout layout, std::ostream& out) {
  std::size_t mostCorners = 0;
  std::size_t mostFaces = 0;
  for (const ModelBatch& batch : group.batches) {
    mostCorners = std::max(mostCorners, batch.corners.size());
    mostFaces = std::max(mostFaces, batch.faces.size());
  }
  LimitTable table;
  table.Add("vertices", group.vertices.size());
  table.Add("most corners of a batch", mostCorners);
  if (layout == ModelLayout::kKob) {
    table.Add("most faces of a batch", mostFaces);
    table.Add("collision points", group.collisionPoints.size());
    table.Add("faces", group.faces.size());
  }
  out << '\n';
  table.Write(out);
}

std::string MaterialOf(const ModelBatch& batch, const ModelFile& model) {
  if (batch.material == -1) return "none";
  const auto index = static_cast<std::size_t>(batch.material);
  const std::string name =
      index < model.materials.size() ? Name(model.materials[index].header.name) : "?";
  return fmt::format("{} {}", batch.material, name);
}

void WriteBatches(const ModelGroup& group, const ModelFile& model, std::size_t mostRows,
                  std::ostream& out) {
  if (group.batches.empty()) return;
  std::vector<std::size_t> order(group.batches.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const std::size_t shown = std::min(order.size(), mostRows);
  const auto isLarger = [&](std::size_t a, std::size_t b) {
    const std::size_t facesOfA = group.batches[a].faces.size();
    const std::size_t facesOfB = group.batches[b].faces.size();
    return facesOfA != facesOfB ? facesOfA > facesOfB : a < b;
  };
  std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(shown), order.end(),
                    isLarger);

  TextTable table({{"batch", kRight}, {"material"}, {"triangles", kRight}, {"corners", kRight}});
  for (std::size_t i = 0; i < shown; ++i) {
    const ModelBatch& batch = group.batches[order[i]];
    table.AddRow({std::to_string(order[i]), MaterialOf(batch, model),
                  std::to_string(batch.faces.size()), std::to_string(batch.corners.size())});
  }
  out << "\n  Batches, largest first\n";
  table.Write(4, out);
  WriteMore(order.size(), shown, out);
}

void WriteSurfaceSets(const ModelGroup& group, std::size_t mostRows, std::ostream& out) {
  if (group.surfaceSets.empty()) return;
  TextTable table({{"set", kRight}, {"name"}, {"faces", kRight}, {"flags"}});
  const std::size_t shown = std::min(group.surfaceSets.size(), mostRows);
  for (std::size_t i = 0; i < shown; ++i) {
    const ModelSurfaceSet& set = group.surfaceSets[i];
    table.AddRow({std::to_string(i), NameUnless("NONE", set.name), std::to_string(set.faces.size()),
                  FlagKeywords(set.flags)});
  }
  out << "\n  Surface sets\n";
  table.Write(4, out);
  WriteMore(group.surfaceSets.size(), shown, out);
}

void WriteKeywords(std::span<const ModelGroup> groups, std::ostream& out) {
  const std::vector<KeywordUse> uses = KeywordUses(groups);
  if (uses.empty()) return;
  TextTable table({{"keyword"}, {"sets", kRight}, {"faces", kRight}});
  for (const KeywordUse& use : uses) {
    table.AddRow({std::string(use.keyword), std::to_string(use.sets), std::to_string(use.faces)});
  }
  out << "\n  Faces by keyword\n";
  table.Write(4, out);
}

void WriteGroupTitle(std::size_t index, const ModelGroup& group, std::ostream& out) {
  out << fmt::format("Group {} {}\n", index, Quoted(group.header.name));
}

void WriteGroup(std::size_t index, const ModelFile& model, std::ostream& out) {
  const ModelGroup& group = model.groups[index];
  const std::size_t drawn = Triangles(group);
  out << '\n';
  WriteGroupTitle(index, group, out);
  out << fmt::format("  triangles         {} in {}", drawn,
                     Counted(group.batches.size(), "batch", "batches"));
  if (model.layout == ModelLayout::kKob) {
    out << fmt::format(", {} undrawn", group.planes.size());
  }
  out << fmt::format("\n  bounds            {}\n", Bounds(group.vertices));
  if (!group.collisionPoints.empty()) {
    out << fmt::format("  collision bounds  {}\n", Bounds(group.collisionPoints));
  }
  WriteLimits(group, model.layout, out);
  WriteBatches(group, model, kMaxBatchRows, out);
  WriteSurfaceSets(group, kMaxRows, out);
  WriteKeywords({&group, 1}, out);
}

/// A row per group, and the sums by keyword.
void WriteGroups(const ModelFile& model, std::ostream& out) {
  const bool isKob = model.layout == ModelLayout::kKob;
  std::vector<TextTable::Column> columns{{"#", kRight},
                                         {"name"},
                                         {"batches", kRight},
                                         {"drawn triangles", kRight},
                                         {"vertices", kRight}};
  if (isKob) columns.insert(columns.end(), {{"faces", kRight}, {"undrawn", kRight}});
  TextTable table(std::move(columns));
  const std::size_t shown = std::min(model.groups.size(), kMaxRows);
  for (std::size_t i = 0; i < shown; ++i) {
    const ModelGroup& group = model.groups[i];
    std::vector<std::string> row{std::to_string(i), Name(group.header.name),
                                 std::to_string(group.batches.size()),
                                 std::to_string(Triangles(group)), Percent(group.vertices.size())};
    if (isKob) {
      row.push_back(Percent(group.faces.size()));
      row.push_back(std::to_string(group.planes.size()));
    }
    table.AddRow(std::move(row));
  }
  out << fmt::format("\nGroups, lists in percent of the {} entries that 16-bit indices address\n",
                     kModelIndexLimit);
  table.Write(2, out);
  WriteMore(model.groups.size(), shown, out);
  WriteKeywords(model.groups, out);
}

/// The names of the materials with these indices, as many as fit into a line.
std::string MaterialNames(const ModelFile& model, const std::vector<std::size_t>& indices) {
  constexpr std::size_t kMostNames = 5;
  std::string names;
  for (std::size_t i = 0; i < std::min(indices.size(), kMostNames); ++i) {
    names += fmt::format("{}{} {}", i == 0 ? "" : ", ", indices[i],
                         Name(model.materials[indices[i]].header.name));
  }
  if (indices.size() > kMostNames) names += fmt::format(", {} more", indices.size() - kMostNames);
  return names;
}

void WriteSummary(const ModelFile& model, std::ostream& out) {
  const ModelSummary summary = Summarise(model);
  const bool isKob = model.layout == ModelLayout::kKob;
  out << fmt::format("Model in the {}: {}, {}\n",
                     isKob ? "second layout (kob)" : "first layout (qob)",
                     Counted(model.materials.size(), "material", "materials"),
                     Counted(model.groups.size(), "group", "groups"));
  out << fmt::format("  drawn             {} in {}, {}\n",
                     Counted(summary.drawn, "triangle", "triangles"),
                     Counted(summary.batches, "batch", "batches"),
                     Counted(summary.vertices, "vertex", "vertices"));
  if (isKob) {
    out << fmt::format("  collision only    {}\n",
                       Counted(summary.undrawn, "triangle", "triangles"));
  }
  if (summary.fullest.count > 0) {
    out << fmt::format("  fullest list      {}, {}\n", summary.fullest.place,
                       ShareOfLimit(summary.fullest.count));
  }
  if (!summary.unused.empty()) {
    out << fmt::format("  not drawn at all  {}: {}\n",
                       Counted(summary.unused.size(), "material", "materials"),
                       MaterialNames(model, summary.unused));
  }
}

void WriteAdvice(const ModelFile& model, std::ostream& out) {
  const std::vector<std::string> advice = Advise(model);
  if (advice.empty()) return;
  out << "\nAdvice\n";
  for (const std::string& each : advice) out << fmt::format("  {}\n", each);
}

}  // namespace

void WriteModelParts(const ModelFile& model, const ModelParts& parts, std::ostream& out) {
  if (parts.materials) WriteMaterials(model, kAllRows, out);
  if (!parts.batches && !parts.sets) return;
  for (std::size_t i = 0; i < model.groups.size(); ++i) {
    const ModelGroup& group = model.groups[i];
    if (parts.materials || i > 0) out << '\n';
    WriteGroupTitle(i, group, out);
    if (parts.batches) WriteBatches(group, model, kAllRows, out);
    if (parts.sets) WriteSurfaceSets(group, kAllRows, out);
  }
}

void WriteModelText(const ModelFile& model, std::ostream& out) {
  WriteSummary(model, out);
  if (!model.materials.empty()) {
    out << '\n';
    WriteMaterials(model, kMaxRows, out);
  }
  WriteTextures(model, out);
  if (model.groups.size() > 1) WriteGroups(model, out);
  const std::size_t shown = std::min(model.groups.size(), kMaxGroups);
  for (std::size_t i = 0; i < shown; ++i) WriteGroup(i, model, out);
  if (model.groups.size() > shown) {
    out << '\n';
    WriteMore(model.groups.size(), shown, out);
  }
  WriteAdvice(model, out);
}

}  // namespace mapexport
