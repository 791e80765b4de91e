#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "compare/MaterialFields.h"
#include "compare/WriteDifference.h"
#include "system/JsonStream.h"

namespace mapexport {
namespace {

constexpr Both<std::string_view> kSides{"a", "b"};

class DifferenceWriter {
 public:
  explicit DifferenceWriter(std::ostream& out) : json_(out) {}

  void Write(const ModelDifference& difference, const Both<std::string>& files) {
    json_.Open('{', JsonStream::kOnLines);
    Member("format", std::string_view("mapexport-diff"));
    Member("version", 1);
    Member("result", ResultName(difference.result));
    for (std::size_t i = 0; i < files.size(); ++i) WriteModel(difference, files[i], i);
    json_.Key("triangles");
    WriteTally(difference.triangles);
    json_.Key("materials");
    json_.Open('[', JsonStream::kOnLines);
    for (const MaterialDifference& each : difference.materials) {
      if (each.Changed()) WriteMaterial(each);
    }
    json_.Close(']');
    json_.Key("withoutMaterial");
    WriteTally(difference.withoutMaterial);
    json_.Key("collisionOnly");
    WriteTally(difference.undrawn);
    json_.Key("surfaceSets");
    json_.Open('[', JsonStream::kOnLines);
    for (const SetDifference& each : difference.sets) {
      if (each.Changed()) WriteSet(each);
    }
    json_.Close(']');
    json_.Close('}');
  }

 private:
  static std::string_view ResultName(ModelComparison result) {
    switch (result) {
      case ModelComparison::kEqual:
        return "equal";
      case ModelComparison::kOrderDiffers:
        return "order";
      case ModelComparison::kDifferent:
        break;
    }
    return "different";
  }

  void Member(std::string_view key, std::string_view text) {
    json_.Key(key);
    json_.Text(text);
  }
  void Member(std::string_view key, std::integral auto number) {
    json_.Key(key);
    json_.Number(number);
  }

  template <class... Floats>
  void WriteNumbers(Floats... numbers) {
    json_.Open('[', JsonStream::kOnOneLine);
    (json_.Number(numbers), ...);
    json_.Close(']');
  }
  void Write(const std::string& text) { json_.Text(text); }
  void Write(float number) { json_.Number(number); }
  void Write(std::int32_t number) { json_.Number(number); }
  void Write(bool value) { json_.Bool(value); }
  void Write(const ModelPoint& point) { WriteNumbers(point.x, point.y, point.z); }
  void Write(const ModelColour& colour) { WriteNumbers(colour.r, colour.g, colour.b, colour.a); }

  void WriteModel(const ModelDifference& difference, const std::string& file, std::size_t i) {
    json_.Key(kSides[i]);
    json_.Open('{', JsonStream::kOnOneLine);
    Member("file", file);
    Member("layout", std::string_view(difference.layout[i] == ModelLayout::kQob ? "qob" : "kob"));
    Member("name", difference.name[i]);
    Member("groups", difference.groups[i]);
    Member("batches", difference.summary[i].batches);
    Member("vertices", difference.summary[i].vertices);
    json_.Close('}');
  }

  void WriteTally(const TriangleTally& triangles) {
    json_.Open('{', JsonStream::kOnOneLine);
    Member("a", triangles.count[0]);
    Member("b", triangles.count[1]);
    Member("onlyA", triangles.only[0]);
    Member("onlyB", triangles.only[1]);
    json_.Key("boundsA");
    WriteBounds(triangles.bounds[0]);
    json_.Key("boundsB");
    WriteBounds(triangles.bounds[1]);
    json_.Close('}');
  }

  void WriteBounds(const std::optional<Bounds>& bounds) {
    if (!bounds) {
      json_.Null();
      return;
    }
    json_.Open('[', JsonStream::kOnOneLine);
    Write(bounds->least);
    Write(bounds->most);
    json_.Close(']');
  }

  void WriteChange(bool isInA, bool isInB) {
    Member("change", std::string_view(isInA && isInB ? "changed" : isInA ? "removed" : "added"));
  }

  void WriteMaterial(const MaterialDifference& each) {
    const auto& [a, b] = each.material;
    json_.Open('{', JsonStream::kOnOneLine);
    Member("name", (a != nullptr ? a : b)->header.name);
    WriteChange(a != nullptr, b != nullptr);
    json_.Key("fields");
    json_.Open('{', JsonStream::kOnOneLine);
    if (each.fieldsDiffer) {
      VisitChangedFields(*a, *b, [&](const char* field, const auto& ofA, const auto& ofB) {
        json_.Key(field);
        json_.Open('[', JsonStream::kOnOneLine);
        Write(ofA);
        Write(ofB);
        json_.Close(']');
      });
    }
    json_.Close('}');
    json_.Key("triangles");
    WriteTally(each.triangles);
    json_.Close('}');
  }

  void WriteSet(const SetDifference& each) {
    json_.Open('{', JsonStream::kOnOneLine);
    Member("name", each.name);
    WriteChange(each.flags[0].has_value(), each.flags[1].has_value());
    for (std::size_t i = 0; i < each.flags.size(); ++i) {
      json_.Key(i == 0 ? "flagsA" : "flagsB");
      if (each.flags[i]) {
        json_.Number(*each.flags[i]);
      } else {
        json_.Null();
      }
    }
    json_.Key("triangles");
    WriteTally(each.triangles);
    json_.Close('}');
  }

  JsonStream json_;
};

}  // namespace

void WriteDifferenceJson(const ModelDifference& difference, const Both<std::string>& files,
                         std::ostream& out) {
  DifferenceWriter(out).Write(difference, files);
}

}  // namespace mapexport
