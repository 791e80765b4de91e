#include "picture/DrawSheet.h"

#include <algorithm>
#include <array>
#include <vector>

#include <fmt/format.h>

#include "modelreader/ModelSummary.h"
#include "picture/Camera.h"
#include "picture/DrawModel.h"
#include "picture/DrawText.h"

namespace mapexport {
namespace {

constexpr Rgb kInk{40, 44, 52};
constexpr Rgb kPaleInk{96, 102, 114};
constexpr Rgb kLine{200, 204, 210};
constexpr std::array kNames{"iso", "top", "front", "side"};
constexpr int kWideSheet = 900;  ///< from this width on, characters are twice as large

void Place(Picture& sheet, const Picture& part, int x, int y) {
  const auto [width, height] = part.Size();
  for (int row = 0; row < height; ++row) {
    std::copy_n(part.Row(row), width, &sheet.At(x, y + row));
  }
}

std::vector<std::string> NumbersOf(const ModelFile& model, const std::string& fileName,
                                   const PageSpace& space) {
  const ModelSummary summary = Summarise(model);
  const auto [across, up, deep] = space.FileSize();
  std::vector<std::string> lines{fileName};
  lines.push_back(fmt::format("{} triangles, {} for collision only, {} vertices", summary.drawn,
                              summary.undrawn, summary.vertices));
  lines.push_back(fmt::format("{} materials, {} batches, {} {}", model.materials.size(),
                              summary.batches, model.groups.size(),
                              model.groups.size() == 1 ? "group" : "groups"));
  lines.push_back(fmt::format("size {:.6g} x {:.6g} x {:.6g} (up {:.6g})", across, up, deep, up));
  return lines;
}

}  // namespace

Picture DrawSheet(const ModelFile& model, const std::string& fileName, const PageSpace& space,
                  const FaceColours& colours, PictureSize size) {
  Picture sheet(size, kBackground);
  const int scale = size.width >= kWideSheet ? 2 : 1;
  const int gap = kAdvance * scale;
  const std::vector<std::string> lines = NumbersOf(model, fileName, space);
  const int textHeight = static_cast<int>(lines.size()) * kLineHeight * scale + gap;
  const int viewsHeight = size.height - textHeight;
  const PictureSize each{(size.width - 1) / 2, (viewsHeight - 1) / 2};
  for (int x = 0; x < size.width; ++x) sheet.At(x, each.height) = kLine;
  for (int x = 0; x < size.width; ++x) sheet.At(x, viewsHeight - 1) = kLine;
  for (int y = 0; y < viewsHeight; ++y) sheet.At(each.width, y) = kLine;
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    const int x = i % 2 == 0 ? 0 : each.width + 1;
    const int y = i < 2 ? 0 : each.height + 1;
    Place(sheet, DrawModel(model, space, colours, kNamedViews[i], each), x, y);
    DrawText(sheet, x + gap, y + gap, scale, kPaleInk, kNames[i]);
  }
  int y = viewsHeight + gap;
  for (const std::string& line : lines) {
    DrawText(sheet, gap, y, scale, kInk, line);
    y += kLineHeight * scale;
  }
  return sheet;
}

}  // namespace mapexport
