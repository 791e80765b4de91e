// Reads the statements of an OBJ file.
#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <set>
#include <system_error>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "importer/obj/ObjFile.h"
#include "importer/text/HostText.h"
#include "importer/text/Numbers.h"
#include "importer/text/StatementLines.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

constexpr std::string_view kUnnamedPart = "defaultobject";
constexpr std::size_t kLongestQuote = 40;

/// The greatest index that a face gives of a list, for the check when the list is complete.
struct GreatestIndex {
  std::uint64_t index = 0;  // from 1; 0: none
  std::size_t line = 0;
};

class ObjReader {
 public:
  ObjReader(const std::string& path, std::string_view text) : path_(path), lines_(text) {}

  ObjFile Run() {
    while (lines_.Next()) {
      std::string_view rest = lines_.Statement();
      const std::string_view keyword = TakeWord(rest);
      ReadStatement(keyword, rest);
    }
    CheckGreatest(greatestPosition_, file_.positions.size(), "vertex", "vertices");
    CheckGreatest(greatestTexture_, file_.textureVertices.size(), "texture vertex",
                  "texture vertices");
    CheckGreatest(greatestNormal_, file_.normals.size(), "normal", "normals");
    return std::move(file_);
  }

 private:
  void ReadStatement(std::string_view keyword, std::string_view rest) {
    if (keyword == "v") {
      file_.positions.push_back(ReadPosition(rest));
    } else if (keyword == "vt") {
      file_.textureVertices.push_back(ReadPoint(rest, 1));
    } else if (keyword == "vn") {
      file_.normals.push_back(ReadPoint(rest, 3));
    } else if (keyword == "f" || keyword == "fo") {
      ReadFace(rest);
    } else if (keyword == "s") {
      ReadSmoothing(TakeWord(rest));
    } else if (keyword == "o") {
      object_ = rest;
      group_.clear();
      part_.reset();
    } else if (keyword == "g") {
      group_ = rest;
      part_.reset();
    } else if (keyword == "usemtl") {
      UseMaterial(rest);
    } else if (keyword == "mtllib") {
      if (!rest.empty() && knownLibraries_.emplace(rest).second) {
        file_.materialLibraries.emplace_back(rest);
      }
    } else if (keyword == "l") {
      CurrentPart();
      const std::size_t ends = WordCount(rest);
      if (ends > 1) file_.lines += ends - 1;
    } else if (keyword == "p") {
      CurrentPart();
      file_.points += WordCount(rest);
    } else if (keyword == "curv" || keyword == "curv2" || keyword == "surf") {
      ++file_.curves;
    }
  }

  [[noreturn]] void Fail(std::size_t line, std::string_view problem) const {
    throw SceneError(fmt::format("{}: line {}: {}", path_, line, problem));
  }

  [[noreturn]] void FailAt(std::string_view word, std::string_view problem) const {
    Fail(lines_.Line(),
         fmt::format("\"{}\" {}", FirstLine(word.substr(0, kLongestQuote)), problem));
  }

  float ReadNumber(std::string_view word) const {
    const std::optional<float> number = DecimalNumber(word);
    if (!number) FailAt(word, "is no number");
    return *number;
  }

  /// Numbers up to the end of the statement or a comment, at most as many as there is room for.
  std::size_t ReadNumbers(std::string_view rest, std::array<float, 7>& numbers) const {
    std::size_t count = 0;
    while (!rest.empty() && rest.front() != '#' && count < numbers.size()) {
      numbers[count++] = ReadNumber(TakeWord(rest));
    }
    return count;
  }

  Point3 ReadPoint(std::string_view rest, std::size_t atLeast) const {
    std::array<float, 7> n{};
    const std::size_t count = ReadNumbers(rest, n);
    if (count < atLeast) FailAt(lines_.Statement(), "has too few numbers");
    return count < 3 ? Point3{n[0], n[1], 0.0f} : Point3{n[0], n[1], n[2]};
  }

  Point3 ReadPosition(std::string_view rest) {
    std::array<float, 7> n{};
    const std::size_t count = ReadNumbers(rest, n);
    if (count < 3) FailAt(lines_.Statement(), "has too few numbers");
    if (count >= 6) ++file_.colours;
    if (count == 4 && n[3] != 1.0f) return {n[0] / n[3], n[1] / n[3], n[2] / n[3]};
    return {n[0], n[1], n[2]};
  }

  static std::size_t WordCount(std::string_view rest) {
    std::size_t count = 0;
    while (!rest.empty() && rest.front() != '#') {
      TakeWord(rest);
      ++count;
    }
    return count;
  }

  void ReadFace(std::string_view rest) {
    ObjFace face{.firstCorner = file_.corners.size(),
                 .cornerCount = 0,
                 .smoothing = smoothing_,
                 .material = material_};
    while (!rest.empty() && rest.front() != '#') {
      file_.corners.push_back(ReadCorner(TakeWord(rest)));
      ++face.cornerCount;
    }
    if (face.cornerCount >= 3) {
      CurrentPart().faces.push_back(face);
      return;
    }
    ++(face.cornerCount == 2   ? file_.lines
       : face.cornerCount == 1 ? file_.points
                               : file_.brokenPolygons);
    file_.corners.resize(face.firstCorner);
  }

  /// "v", "v/t", "v//n" or "v/t/n"; an empty part counts as not given.
  ObjCorner ReadCorner(std::string_view word) {
    const std::string_view whole = word;
    const auto takePart = [&word] {
      const std::string_view part = word.substr(0, word.find('/'));
      word.remove_prefix(std::min(part.size() + 1, word.size()));
      return part;
    };
    ObjCorner corner;
    corner.position = ReadIndex(takePart(), whole, file_.positions.size(), greatestPosition_);
    if (const std::string_view part = takePart(); !part.empty()) {
      corner.texture = ReadIndex(part, whole, file_.textureVertices.size(), greatestTexture_);
    }
    if (const std::string_view part = takePart(); !part.empty()) {
      corner.normal = ReadIndex(part, whole, file_.normals.size(), greatestNormal_);
    }
    if (!word.empty()) FailAt(whole, "is no corner of a face");
    return corner;
  }

  /// Counts from 1, or back from the end of the list so far when negative. One beyond the list may
  /// still come.
  std::uint32_t ReadIndex(std::string_view digits, std::string_view corner, std::size_t size,
                          GreatestIndex& greatest) const {
    std::int64_t index = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    if (error != std::errc{} || end != digits.data() + digits.size()) {
      FailAt(corner, "is no corner of a face");
    }
    if (index == 0) FailAt(corner, "has the index 0; indices count from 1");
    if (index < 0) index += static_cast<std::int64_t>(size) + 1;
    if (index <= 0 || index >= std::int64_t{kNoObjIndex}) {
      FailAt(corner, fmt::format("has an index beyond the list, which has {} here", size));
    }
    const auto number = static_cast<std::uint64_t>(index);
    if (number > greatest.index) greatest = {number, lines_.Line()};
    return static_cast<std::uint32_t>(number - 1);
  }

  void CheckGreatest(const GreatestIndex& greatest, std::size_t size, std::string_view one,
                     std::string_view many) const {
    if (greatest.index <= size) return;
    Fail(greatest.line, fmt::format("there is no {} {}, the file has {} {}", one, greatest.index,
                                    size, size == 1 ? one : many));
  }

  void ReadSmoothing(std::string_view word) {
    smoothing_ = word == "on" ? 1 : 0;
    std::uint32_t group = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), group);
    if (error == std::errc{} && end == word.data() + word.size()) smoothing_ = group;
  }

  void UseMaterial(std::string_view name) {
    if (name.empty()) {
      material_ = -1;
      return;
    }
    const auto [entry, isNew] =
        materialIndex_.try_emplace(std::string(name), static_cast<int>(file_.materialNames.size()));
    if (isNew) file_.materialNames.emplace_back(name);
    material_ = entry->second;
  }

  ObjPart& CurrentPart() {
    if (!part_) {
      const bool isObject = !object_.empty();
      const std::string& name = isObject ? object_ : group_;
      const auto [entry, isNew] =
          partIndex_.try_emplace(std::pair(isObject, name), file_.parts.size());
      if (isNew) file_.parts.push_back({name.empty() ? std::string(kUnnamedPart) : name, {}});
      if (isObject && !group_.empty() && innerGroups_.emplace(object_, group_).second) {
        ++file_.innerGroups;
      }
      part_ = entry->second;
    }
    return file_.parts[*part_];
  }

  const std::string& path_;
  StatementLines lines_;
  ObjFile file_;
  std::string object_;
  std::string group_;
  std::optional<std::size_t> part_;  // of object_, else group_; empty until a face needs it
  std::uint32_t smoothing_ = 0;
  int material_ = -1;
  std::map<std::pair<bool, std::string>, std::size_t> partIndex_;  // by isObject and name
  std::set<std::pair<std::string, std::string>> innerGroups_;
  std::unordered_map<std::string, int> materialIndex_;
  std::set<std::string, std::less<>> knownLibraries_;
  GreatestIndex greatestPosition_;
  GreatestIndex greatestTexture_;
  GreatestIndex greatestNormal_;
};

}  // namespace

ObjFile ReadObjFile(const std::string& path, std::string_view text) {
  return ObjReader(path, text).Run();
}

}  // namespace mapexport
