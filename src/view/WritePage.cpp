#include "view/WritePage.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "view/ViewerPage.h"

namespace mapexport {
namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kPieceBytes = 3 << 14;  // whole triples, so only the last one is padded

/// Base64 of RFC 4648, with padding and without line breaks.
void WriteBase64(std::span<const std::byte> bytes, std::ostream& out) {
  std::string piece;
  while (!bytes.empty()) {
    const auto now = bytes.first(std::min(bytes.size(), kPieceBytes));
    piece.clear();
    for (std::size_t i = 0; i < now.size(); i += 3) {
      const std::size_t count = std::min<std::size_t>(3, now.size() - i);
      std::uint32_t triple = 0;
      for (std::size_t k = 0; k < 3; ++k) {
        triple = triple << 8 | (k < count ? std::to_integer<std::uint32_t>(now[i + k]) : 0);
      }
      for (std::size_t k = 0; k < 4; ++k) {
        piece += k <= count ? kDigits[triple >> (18 - 6 * k) & 63] : '=';
      }
    }
    out << piece;
    bytes = bytes.subspan(now.size());
  }
}

}  // namespace

bool CanWritePage() {
  return !kViewerPage.empty();
}

void WritePage(const ModelFile& model, const ViewInfo& info, std::ostream& out) {
  const std::size_t mark = kViewerPage.find(kModelMark);
  assert(mark != std::string_view::npos);
  out << kViewerPage.substr(0, mark);
  WriteBase64(MakeModelBlock(model, info), out);
  out << kViewerPage.substr(mark + kModelMark.size());
}

}  // namespace mapexport
