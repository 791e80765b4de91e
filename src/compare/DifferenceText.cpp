#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "compare/DifferenceTables.h"
#include "compare/MaterialFields.h"
#include "compare/WriteDifference.h"
#include "modelreader/TextTable.h"
#include "system/Counted.h"
#include "system/PrintableText.h"

namespace mapexport {
namespace {

constexpr std::size_t kMaxRows = 40;  // then a table says how many more there are
constexpr std::size_t kMaxNameColumns = 32;
constexpr TextAlign kRight = TextAlign::kRight;

std::string Shown(const ModelPoint& point) {
  return fmt::format("({}, {}, {})", point.x, point.y, point.z);
}

std::string Shown(const std::optional<Bounds>& bounds) {
  return bounds ? fmt::format("{} to {}", Shown(bounds->least), Shown(bounds->most)) : "none";
}

std::string Shown(const ModelColour& colour) {
  return fmt::format("({}, {}, {}, {})", colour.r, colour.g, colour.b, colour.a);
}

std::string Name(std::string_view name) {
  return PrintableText(name, kMaxNameColumns);
}

std::string Shown(float number) {
  return fmt::format("{}", number);
}

std::string Shown(std::int32_t number) {
  return std::to_string(number);
}

std::string Shown(bool value) {
  return value ? "yes" : "no";
}

std::string Shown(const std::string& text) {
  return Quoted(text);
}

/// Appends "WHAT OLD -> NEW".
void AppendChange(std::string& changes, std::string_view what, const Both<std::string>& values) {
  changes += fmt::format("{}{} {} -> {}", changes.empty() ? "" : "; ", what, values[0], values[1]);
}

/// A table of what has triangles in one or both models, without what did not change.
class ChangeTable {
 public:
  void Add(bool isIn0, bool isIn1, std::string name, const TriangleTally& triangles,
           std::string changes) {
    if (table_.rows.size() == kMaxRows) {
      ++table_.more;
      return;
    }
    if (isIn0 && isIn1 && triangles.bounds[0] != triangles.bounds[1]) {
      AppendChange(changes, "bounds", {Shown(triangles.bounds[0]), Shown(triangles.bounds[1])});
    }
    table_.rows.push_back({isIn0 && isIn1 ? "~"
                           : isIn0        ? "-"
                                          : "+",
                           std::move(name), std::to_string(triangles.count[0]),
                           std::to_string(triangles.count[1]), std::to_string(triangles.only[0]),
                           std::to_string(triangles.only[1]), std::move(changes)});
  }

  DifferenceTable Take(std::string title) {
    table_.title = std::move(title);
    return std::move(table_);
  }

 private:
  DifferenceTable table_{"",
                         {{""},
                          {"name"},
                          {"triangles A", kRight},
                          {"B", kRight},
                          {"only in A", kRight},
                          {"only in B", kRight},
                          {"changes"}},
                         {}};
};

DifferenceTable TableOfCounts(const ModelDifference& difference) {
  DifferenceTable table{"", {{""}, {"A"}, {"B"}}, {}};
  const auto add = [&](std::string_view what, const auto& valueOf) {
    const Both<std::string> values{valueOf(0U), valueOf(1U)};
    if (values[0] == values[1]) return;
    table.rows.push_back({std::string(what), values[0], values[1]});
  };
  const auto count = [&](std::string_view what, std::size_t ModelSummary::*member) {
    add(what, [&](std::size_t i) { return std::to_string(difference.summary[i].*member); });
  };
  add("layout", [&](std::size_t i) {
    return std::string(difference.layout[i] == ModelLayout::kQob ? "qob" : "kob");
  });
  add("name", [&](std::size_t i) { return Name(difference.name[i]); });
  add("groups", [&](std::size_t i) { return std::to_string(difference.groups[i]); });
  count("batches", &ModelSummary::batches);
  count("vertices", &ModelSummary::vertices);
  count("drawn triangles", &ModelSummary::drawn);
  count("collision only", &ModelSummary::undrawn);
  add("bounds", [&](std::size_t i) { return Shown(difference.triangles.bounds[i]); });
  return table;
}

DifferenceTable TableOfMaterials(const ModelDifference& difference) {
  ChangeTable table;
  for (const MaterialDifference& each : difference.materials) {
    if (!each.Changed()) continue;
    const auto& [a, b] = each.material;
    std::string changes;
    if (each.fieldsDiffer) {
      VisitChangedFields(*a, *b, [&](const char* field, const auto& ofA, const auto& ofB) {
        AppendChange(changes, field, {Shown(ofA), Shown(ofB)});
      });
    }
    table.Add(a != nullptr, b != nullptr, Name((a != nullptr ? a : b)->header.name), each.triangles,
              std::move(changes));
  }
  if (difference.withoutMaterial.Changed()) {
    table.Add(true, true, "(no material)", difference.withoutMaterial, "");
  }
  if (difference.undrawn.Changed()) {
    table.Add(true, true, "(collision only)", difference.undrawn, "");
  }
  return table.Take("Materials");
}

DifferenceTable TableOfSets(const ModelDifference& difference) {
  ChangeTable table;
  for (const SetDifference& each : difference.sets) {
    if (!each.Changed()) continue;
    const auto& [a, b] = each.flags;
    std::string changes;
    if (a && b && a != b) AppendChange(changes, "flags", {FlagKeywords(*a), FlagKeywords(*b)});
    table.Add(a.has_value(), b.has_value(),
              fmt::format("{} [{}]", Name(each.name), FlagKeywords(a ? *a : *b)), each.triangles,
              std::move(changes));
  }
  return table.Take("Surface sets");
}

std::string Headline(const ModelDifference& difference) {
  const TriangleTally& triangles = difference.triangles;
  switch (difference.result) {
    case ModelComparison::kEqual:
      return "equal: " + Counted(triangles.count[0], "triangle");
    case ModelComparison::kOrderDiffers:
      return fmt::format("only the order differs: the same {}, materials and surface sets",
                         Counted(triangles.count[0], "triangle"));
    case ModelComparison::kDifferent:
      break;
  }
  return triangles.Changed()
             ? fmt::format("different: {} only in A, {} only in B",
                           Counted(triangles.only[0], "triangle"), triangles.only[1])
             : "different: the same " + Counted(triangles.count[0], "triangle");
}

}  // namespace

DifferenceTexts TextsOf(const ModelDifference& difference) {
  DifferenceTexts texts{Headline(difference), {}};
  for (auto* const make : {TableOfCounts, TableOfMaterials, TableOfSets}) {
    if (DifferenceTable table = make(difference); !table.rows.empty()) {
      texts.tables.push_back(std::move(table));
    }
  }
  return texts;
}

void WriteDifferenceText(const ModelDifference& difference, std::ostream& out) {
  const DifferenceTexts texts = TextsOf(difference);
  out << texts.headline << '\n';
  for (const DifferenceTable& each : texts.tables) {
    out << '\n';
    if (!each.title.empty()) out << each.title << '\n';
    TextTable table(each.columns);
    for (const std::vector<std::string>& row : each.rows) table.AddRow(row);
    table.Write(2, out);
    if (each.more > 0) out << fmt::format("    ... and {} more\n", each.more);
  }
}

}  // namespace mapexport
